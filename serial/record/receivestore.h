#pragma once

// What a page has received: every byte of the session in a spool file, what of
// it the display shows, and whether it was saved. Saves to files at the user's
// wish and when the program closes.

#include "bytespool.h"
#include "notice.h"

#include <QObject>

class QtTerminalWidget;
class QWidget;

class ReceiveStore : public QObject
{
    Q_OBJECT

public:
    // The dialogs belong to the page; the spool file's name begins with stem.
    ReceiveStore(QtTerminalWidget *terminal, const QString &stem, QWidget *page);

    void add(const QByteArray &bytes);
    // Some of what was added is not shown: a text file will not hold it.
    void setHidden() { m_hidden = true; }
    // To be called some times a second while bytes come.
    void flush();
    // The user has thrown away what is shown; the session's bytes can still be
    // saved.
    void clear();

    // Asks for a file and saves: the text shown since the last clearing, or
    // the bytes of the whole session as they came. False when there is nothing
    // to save, the user cancelled, or saving failed.
    bool save();

    // The end of the program, by the close behaviour of the settings. Asks what
    // becomes of unsaved data, and for the file. False: stay open.
    bool mayClose();
    // Saves as answered; asks only where all of it came after the question.
    // False: it could not be saved, and the program stays open.
    bool saveBeforeExit();

    const ByteSpool &spool() const { return m_spool; }

signals:
    void notify(const Notice &notice);

private:
    struct Target
    {
        QString name; // empty: cancelled
        bool asBytes = false;
    };
    enum class AtExit { Unasked, Discard, Save };

    bool isEmpty() const;
    Target askForFile();
    bool writeTo(const Target &target);
    bool writeText(const QString &name, QString *error);
    bool writeBytes(const QString &name, QString *error);
    bool askAtExit(const QString &question);
    bool autoSave();
    bool saveBesideProgram(QString *error);
    bool saveTo(const QString &folder, QString *error);

    QtTerminalWidget *m_terminal;
    QWidget *m_page;
    ByteSpool m_spool;
    ByteSpool::State m_stateTold = ByteSpool::State::OnDisk;
    bool m_hidden = false;
    bool m_unsaved = false;  // something came since the last save or clearing
    qint64 m_bytesSaved = 0; // so many from the session's beginning are in a file as they came
    AtExit m_atExit = AtExit::Unasked;
    Target m_exitFile;
};
