#pragma once

// The send box's third page: the files to send and how the transfer goes.
// Knows no protocol: the request and the stop go out as signals.

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

public slots:
    void sltBorwserXYModemFile();
    void sltSendXYModemFile();
    void sltOpenXYModemHelp();
    void sltClearXYModemFile();

signals:
    void signalSendFile(int type, int size, QStringList fileName);

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
