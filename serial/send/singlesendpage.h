#pragma once

// The send box's first page: one editor, its buttons, the history of what was sent
// and the bar of what is added to the text. Owns the typed text and its file; the
// box, whose slots the buttons reach, sends.

#include "notice.h"
#include "sendhistory.h"

#include <QTimer>
#include <QWidget>

class HistoryPopup;
class QPushButton;
class QtTextEditInput;
class SendFormatBar;
class SentTexts;

class SingleSendPage : public QWidget
{
    Q_OBJECT

public:
    // The text is kept in the file: written when typing pauses and at the end.
    SingleSendPage(const QString &fileName, const QString &historyFile, QWidget *parent = nullptr);
    ~SingleSendPage() override;

    QtTextEditInput *editor() const { return m_editor; }
    QPushButton *sendButton() const { return m_send; }
    QPushButton *loadButton() const { return m_load; }
    SendFormatBar *formatBar() const { return m_formatBar; }

    QString text() const;
    // Replaces the text; undo brings the former one back.
    void replaceText(const QString &text);

    // What was sent goes to the history.
    void keepSent(bool isHex);

    // Saves a text that has changed. The reason of a failure, which is also
    // posted.
    QString saveChanges();

signals:
    void notify(const Notice &notice);
    void hexWanted(bool isHex); // for an entry of the history

private:
    void buildUi();
    QLayout *buildButtons();
    void connectHistory();
    void loadText();
    void walk(int direction, bool *hasOne);

    QString m_fileName;
    QString m_readError; // why the file could not be read
    QTimer m_saveTimer;
    bool m_changed = false;
    QtTextEditInput *m_editor;
    QPushButton *m_send;
    QPushButton *m_load;
    QPushButton *m_clear;
    QPushButton *m_history;
    QPushButton *m_format;
    SendFormatBar *m_formatBar;
    SentTexts *m_sent;
    HistoryPopup *m_historyPopup = nullptr;
    bool m_isWalking = false; // the text changes by a step through the history
};
