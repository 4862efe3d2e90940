#pragma once

// What a page has received, and whether it was saved. Owns every byte of the
// session, in a spool file; the text is the display's. Saves to files when the
// user asks for it and when the program closes.

#include "bytespool.h"
#include "notice.h"

#include <QObject>
#include <functional>

class QtTerminalWidget;
class QWidget;

class ReceiveStore : public QObject
{
    Q_OBJECT

public:
    // The dialogs belong to the page; the spool file's name begins with stem.
    ReceiveStore(QtTerminalWidget *terminal, const QString &stem, QWidget *page);

    void add(const QByteArray &bytes);
    // Some of what was added is not shown, so that no text file will hold it.
    void setHidden() { m_hidden = true; }
    // To be called some times a second while bytes arrive. Notifies once when the
    // disk refuses them, and when it accepts them again.
    void flush();
    // Clears the display too. The session's bytes can still be saved.
    void clear();

    // Asks for a file and saves: the text shown since the last clearing, or
    // the bytes of the whole session as they came. False when there is nothing
    // to save, the user cancelled, or saving failed.
    bool save();
    // Parts of the text shown: what is selected, or the lines of the filter.
    void saveSelected();
    void saveFiltered();

    // The end of the program, by the close behaviour of the settings. Asks what to
    // do with unsaved data, and for the file. False: stay open.
    bool mayClose();
    // Saves as answered; asks where there was nothing to save at the question.
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
    void showPending();
    void savePart(const std::function<bool(const QString &name, int codec, QString *error)> &write);
    void reportFailure(const QString &name, const QString &error);
    bool writeText(const QString &name, QString *error);
    bool writeBytes(const QString &name, QString *error);
    bool askAtExit(const QString &question);
    bool autoSave();
    bool saveBesideProgram(QString *error);
    bool saveTo(const QString &folder, QString *error);

    QtTerminalWidget *m_terminal;
    QWidget *m_page;
    ByteSpool m_spool;
    ByteSpool::State m_reportedState = ByteSpool::State::OnDisk;
    bool m_hidden = false;
    bool m_unsaved = false;  // bytes arrived since the last save or clearing
    qint64 m_bytesSaved = 0; // from the session's beginning, in a file as they came
    AtExit m_atExit = AtExit::Unasked;
    Target m_exitFile;
};
