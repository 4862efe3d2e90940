#pragma once

// The send box's third page: the files to send, the button that receives some, and
// how the transfer goes. Knows no protocol; the box, whose slots its buttons reach,
// asks for the transfer, and the box's owner says how it goes.

#include "fieldmemory.h"

#include <QElapsedTimer>
#include <QStringList>
#include <QWidget>
#include <deque>
#include <utility>

class FileList;
class QComboBox;
class QLabel;
class QPlainTextEdit;
class QProgressBar;
class QPushButton;
class TransferOptions;

class FileSendPage : public QWidget
{
    Q_OBJECT

public:
    explicit FileSendPage(QWidget *parent = nullptr);

    QStringList files() const;
    // Of several files; empty where not exactly one is selected.
    QString selectedFile() const;
    int protocol() const;     // index: XModem, YModem
    int packetLength() const; // bytes: 128 or 1024
    TransferOptions *options() const { return m_options; }
    void load(); // the settings have other values now

    // Whether the owner can send files at all, and whether its device is open.
    void setSendingPossible(bool possible);
    void setDeviceOpen(bool open);

    // While files are being sent the button stops them and the list is fixed.
    void setSending(bool sending);
    bool isSending() const { return m_sending; }
    // The same for receiving, of which the other button is.
    void setReceiving(bool receiving);

    // How a transfer goes: percent of the file of that name, -1 where its size is not
    // known; bytes of it, from which speed and remaining time follow; and in words.
    void setProgress(int percent, const QString &name);
    void setAmount(qint64 sent, qint64 size);
    void appendText(const QString &text);
    void setEnd(const QString &words, bool complete);

    QPushButton *openButton() const { return m_open; }
    QPushButton *sendButton() const { return m_send; }
    QPushButton *receiveButton() const { return m_receive; }
    QPushButton *clearButton() const { return m_clear; }
    QPushButton *helpButton() const { return m_help; }
    QPushButton *logButton() const { return m_log; }

    void chooseFiles(); // adds what the user picks and is not there yet
    void clearFiles();

private:
    void buildUi();
    QWidget *buildButtons();
    QLayout *buildProgress();
    void updateButtons();
    void updateProtocol();
    void beginTransfer(const QString &waiting);
    void showOptions(bool shown);

    bool m_possible = false;
    bool m_deviceOpen = false;
    bool m_sending = false;
    bool m_receiving = false;
    QString m_name;                                 // of the file that is being sent
    int m_percent = 0;                              // as shown
    QElapsedTimer m_clock;                          // of the transfer
    std::deque<std::pair<qint64, qint64>> m_recent; // milliseconds, bytes: of the last seconds
    qint64 m_amountShownAt = 0;
    QString m_sizes; // as shown: sent, of how much

    FieldMemory m_memory;
    FileList *m_files;
    QPlainTextEdit *m_text;
    QComboBox *m_protocol;
    QComboBox *m_length;
    QPushButton *m_open;
    QPushButton *m_send;
    QPushButton *m_clear;
    QPushButton *m_help;
    QPushButton *m_log;
    QPushButton *m_receive;
    QPushButton *m_more;
    TransferOptions *m_options;
    QProgressBar *m_progress;
    QLabel *m_amount;
};
