#pragma once

// File transfers of the serial page: lends the page's open port to the driver
// and takes it back, and tells how it goes on the send box's file page.

#include "notice.h"
#include "ymodemfiletransmit.h"

#include <QObject>

class FileSendPage;
class QextSerialPort;
class SerialConfigPanel;

class FileTransfer : public QObject
{
    Q_OBJECT

public:
    // All must outlive it.
    FileTransfer(QextSerialPort *port, const SerialConfigPanel *config, FileSendPage *view, QObject *parent);

    // The driver; made by create() for the first transfer, null before.
    YmodemFileTransmit *driver() const { return m_driver; }
    YmodemFileTransmit *create(QObject *parent);

    // From the start until the port is the page's again.
    bool isBusy() const { return m_lending || (m_driver && m_driver->isBusy()); }

    // Lends the open port to the driver as soon as what was written to it has
    // left. When the transfer cannot begin the port is taken back at once.
    void start(const QStringList &files);
    void stop();
    // Ends without a word to the user; the receiver is told.
    void abandon();

    // What the driver reports. An end comes twice: its words are shown at the
    // first, the port is taken back at the last.
    void showProgress(int percent, const QString &name);
    void takeStatus(Ymodem::Status status, const QString &name);

    void showLog(QWidget *parent) const;

signals:
    // The port is the driver's.
    void handedOver();
    // What has come in is still, or already, the page's: it takes that now.
    void readDue();
    // The port is the page's again, open where it could be opened.
    void returned(bool open);
    void notify(const Notice &notice);

private:
    void begin(QSerialPort *port, qint64 unsentBytes);
    void endEarly(Ymodem::Status status, const QString &reason);
    void showHint(const QString &text);
    void showEnd(Ymodem::Status status);
    void takeBack();

    QextSerialPort *m_port;
    const SerialConfigPanel *m_config;
    FileSendPage *m_view;
    YmodemFileTransmit *m_driver = nullptr;
    bool m_lending = false; // the page's last bytes are still leaving
    bool m_endShown = false;
    QString m_earlyReason; // of an end before the driver began
};
