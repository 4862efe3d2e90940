#pragma once

// The send box's first page: one editor and its buttons. Knows the editor's
// text and modes; what is done with the bytes is the box's business.

#include <QByteArray>
#include <QWidget>

class QPushButton;
class QtTextEditInput;

class SingleSendPage : public QWidget
{
    Q_OBJECT

public:
    explicit SingleSendPage(QWidget *parent = nullptr);

    QtTextEditInput *editor() const { return m_editor; }
    QPushButton *sendButton() const { return m_send; }
    QPushButton *loadButton() const { return m_load; }

    QString text() const;
    void setText(const QString &text);

    // Puts a file's content into the editor: as text, or in hexadecimal mode
    // as digits (the file's own where it holds nothing else).
    void showFile(const QByteArray &content);

private:
    QtTextEditInput *m_editor;
    QPushButton *m_send;
    QPushButton *m_load;
    QPushButton *m_clear;
};
