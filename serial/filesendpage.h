#pragma once

// The send box's third page: the files to send and how the transfer goes.
// Knows no protocol; the box, whose slots its buttons reach, asks for the transfer.

#include <QStringList>
#include <QWidget>

class QComboBox;
class QLabel;
class QListWidget;
class QProgressBar;
class QPushButton;

class FileSendPage : public QWidget
{
    Q_OBJECT

public:
    explicit FileSendPage(QWidget *parent = nullptr);

    QStringList files() const;
    int protocol() const;     // index: XModem, YModem
    int packetLength() const; // bytes: 128 or 1024

    // Whether the owner can send files at all; the button says why not.
    void setSendingPossible(bool possible);

    // How a transfer goes: percent of the file of that name.
    void setProgress(int percent, const QString &name);

    QPushButton *openButton() const { return m_open; }
    QPushButton *sendButton() const { return m_send; }
    QPushButton *clearButton() const { return m_clear; }
    QPushButton *helpButton() const { return m_help; }

    void chooseFiles(); // adds what the user picks
    void clearFiles();

private:
    void buildUi();

    QListWidget *m_files;
    QComboBox *m_protocol;
    QComboBox *m_length;
    QPushButton *m_open;
    QPushButton *m_send;
    QPushButton *m_clear;
    QPushButton *m_help;
    QLabel *m_hint;
    QProgressBar *m_progress;
};
