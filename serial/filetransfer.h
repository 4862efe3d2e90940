#pragma once

// File transfers of the serial page, in both directions: lets a driver use the
// page's open link and reports the progress on the send box's file page. While a
// transfer with a protocol runs, what the link receives is the driver's, before and
// after it the page's reader's.

#include "filereceive.h"
#include "notice.h"
#include "rawfilesend.h"
#include "seriallink.h"
#include "ymodemfiletransmit.h"

#include <QObject>

#include <memory>

class FileSendPage;
class QuietReader;

class FileTransfer : public QObject
{
    Q_OBJECT

public:
    // All must outlive it.
    FileTransfer(SerialLink *link, QuietReader *reader, FileSendPage *view, QObject *parent);

    ~FileTransfer() override;

    // The driver that sends; made by create() for the first transfer, null before.
    YmodemFileTransmit *driver() const { return m_driver; }
    YmodemFileTransmit *create(QObject *parent);

    // The driver that receives; null before the first time.
    FileReceive *receiver() const { return m_receive.get(); }

    // From the start until the link is the page's again.
    bool isBusy() const { return m_draining || (m_active && m_active->isBusy()); }

    // Both begin as soon as what was sent before has left the open link. Files go by
    // the protocol of that index of the page's list with packets of that length, or
    // raw, as the page's options say.
    void start(int protocol, int packetLength, const QStringList &files);
    void receive();
    void stop();
    // Ends without a notice for the user; the receiver is cancelled.
    void abandon();

    // What the driver reports. An end comes twice: it is shown at the first, and
    // the link is the page's again at the second.
    void showProgress(int percent, const QString &name);
    void handleStatus(Ymodem::Status status, const QString &name);

    void showLog(QWidget *parent) const;

signals:
    void started();
    // The link is the page's again, with the page's parameters. Where the device
    // has gone meanwhile, it was opened again if that was possible.
    void ended();
    void notify(const Notice &notice);

private:
    void makeReceiver();
    void makeRawSender();
    void prepare(TransferDriver *driver);
    void begin();
    bool startDriver(const QByteArray &arrived);
    void showAmount(qint64 done, const QString &name);
    void passOn(const QByteArray &bytes);
    bool isReceiving() const { return m_active && m_active == m_receive.get(); }
    void endEarly(Ymodem::Status status, const QString &reason);
    void giveReceivedToPage();
    void showHint(const QString &text);
    void showEnd(Ymodem::Status status);
    void release();

    SerialLink *m_link;
    QuietReader *m_reader;
    FileSendPage *m_view;
    YmodemFileTransmit *m_driver = nullptr;
    std::unique_ptr<FileReceive> m_receive; // made for the first transfer, as the next
    std::unique_ptr<RawFileSend> m_raw;
    TransferDriver *m_active = nullptr; // of the present transfer, or of the last one
    FileReceive::Target m_target;       // of the next receiving
    QStringList m_rawFiles;
    SerialSettings m_pageSettings; // of the link, without a transfer
    bool m_draining = false;       // the page's last bytes are still leaving
    char m_lastByte = '\0';        // received in the page's present packet or since
    bool m_endShown = false;
    QString m_earlyReason; // of an end before the driver began
};
