#pragma once

// The send box's first page: one editor and its buttons. Owns the typed text
// and its file; the box, whose slots the buttons reach, sends.

#include "notice.h"

#include <QTimer>
#include <QWidget>

class QPushButton;
class QtTextEditInput;

class SingleSendPage : public QWidget
{
    Q_OBJECT

public:
    // The text is kept in the file: written when typing pauses and at the end.
    explicit SingleSendPage(const QString &fileName, QWidget *parent = nullptr);
    ~SingleSendPage() override;

    QtTextEditInput *editor() const { return m_editor; }
    QPushButton *sendButton() const { return m_send; }
    QPushButton *loadButton() const { return m_load; }

    QString text() const;
    // Replaces the text; undo brings the former one back.
    void replaceText(const QString &text);

    // Saves a text that has changed. The reason of a failure, which is also
    // posted.
    QString saveChanges();

signals:
    void notify(const Notice &notice);

private:
    void buildUi();
    void loadText();

    QString m_fileName;
    QString m_readError; // why the file could not be read
    QTimer m_saveTimer;
    bool m_changed = false;
    QtTextEditInput *m_editor;
    QPushButton *m_send;
    QPushButton *m_load;
    QPushButton *m_clear;
};
