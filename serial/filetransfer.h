#pragma once

// File transfers of the serial page: hands the page's port to the driver and
// takes it back, and tells how it goes on the send box's file page.

#include "transfer/ymodemfiletransmit.h"

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

    bool isBusy() const { return m_driver && m_driver->isBusy(); }

    // Closes the open port and gives its device to the driver. When that fails
    // the port is taken back at once.
    void start(const QStringList &files);
    void stop();

    // What the driver reports. An end comes twice: its words are shown at the
    // first, the port is taken back at the last.
    void showProgress(int percent, const QString &name);
    void takeStatus(Ymodem::Status status, const QString &name);

    void showLog(QWidget *parent) const;

signals:
    // The port is the driver's.
    void handedOver();
    // The port is the page's again, open where it could be opened.
    void returned(bool open);
    void notify(const QString &text, int kind);

private:
    void showEnd(Ymodem::Status status);
    void takeBack();

    QextSerialPort *m_port;
    const SerialConfigPanel *m_config;
    FileSendPage *m_view;
    YmodemFileTransmit *m_driver = nullptr;
    bool m_endShown = false;
};
