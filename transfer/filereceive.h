#pragma once

// Receives files by XModem or YModem over a link into a folder: owns the file,
// the clock and the timer around ModemReceiver. Overwrites no file and writes
// nowhere else; a file is named ".part" until it is complete. What a sender
// announces and sends is limited, and room is left on the disk.
//
// An end is reported twice, as YmodemFileTransmit does it.

#include "link.h"
#include "modemreceiver.h"
#include "transferdriver.h"
#include "ymodem.h"

#include <QFile>
#include <QObject>
#include <QTimer>

#include <functional>

class FileReceive : public QObject, public TransferDriver, private ModemReceiver::Sink
{
    Q_OBJECT

public:
    static constexpr int maxFiles = 1000; // of a batch

    struct Target
    {
        QString folder;
        qint64 maxBytes = 64LL * 1024 * 1024; // of all files of the transfer
        // Of a file that comes without a name.
        QString defaultName = QStringLiteral("received.bin");
    };

    explicit FileReceive(QObject *parent = nullptr);
    // Ends a running transfer and cancels the sender; the part stays.
    ~FileReceive() override;

    // Milliseconds of a clock that only moves forward; Link::nowUs() if not set.
    void setClock(std::function<qint64()> nowMs) { m_nowMs = std::move(nowMs); }

    // Over an open link, which has to outlive the transfer. False where the folder is
    // none or the link is closed; reason() says it.
    bool start(Link *link, const ModemReceiver::Settings &settings, const Target &target);

    bool isBusy() const override { return m_link != nullptr; }
    bool isRunning() const { return m_receiver.isRunning(); }
    void stop() override;
    QByteArray takeUnused() override { return std::exchange(m_unused, {}); }
    qint64 bytesDone() const override { return m_bytes; }
    qint64 fileSize() const override { return m_size; }
    QString reason() const override { return m_reason; }
    QStringList incompleteFiles() const override { return m_incomplete; }
    const TransferLog &log() const override { return m_log; }
    QStringList files() const { return m_files; } // complete ones, full names

signals:
    void fileStarted(QString name); // as it will be named, without the folder
    void progressed(QString name);
    void fileReceived(QString path);
    // Belongs to no packet: the display's.
    void passedOn(QByteArray bytes);
    void ended(Ymodem::Status status);

private slots:
    void handleDue(); // of the timer; nothing happens before its time

private:
    void reply(const QByteArray &bytes) override;
    bool beginFile(const QByteArray &name, qint64 size) override;
    bool storeBytes(const char *bytes, int count) override;
    bool endFile(bool isComplete) override;
    void passOn(const QByteArray &bytes) override;
    void noteFault(ModemReceiver::Fault fault) override;
    void handleEnd(ModemReceiver::End end) override;

    bool refuse(const QString &reason);
    QString overLimit(const QString &name) const;
    bool hasRoom(qint64 bytes);
    bool openPart(const QString &name);
    bool keepPart();
    void leavePart();
    void receive(const QByteArray &bytes);
    void schedule();
    void handleLinkLost();
    void end(Ymodem::Status status, const QString &reason);
    void reportEnd();
    void release();
    qint64 elapsedMs() const { return m_nowMs() - m_startMs; }

    ModemReceiver m_receiver;
    Link *m_link = nullptr;
    Target m_target;
    QTimer m_due;
    qint64 m_timerMs = 0; // when it fires
    QTimer m_release;
    QFile m_file;
    QString m_name;              // plain
    qint64 m_size = -1;          // announced
    qint64 m_bytes = 0;          // of the file
    qint64 m_totalBytes = 0;     // of the transfer
    qint64 m_uncheckedBytes = 0; // since the room on the disk was looked at
    QStringList m_files;
    QStringList m_incomplete;
    QByteArray m_unused;
    Ymodem::Status m_status = Ymodem::Abort;
    bool m_isEndDue = false; // to be reported
    QString m_refusal;       // why a file or its bytes were not accepted
    QString m_reason;
    TransferLog m_log;
    std::function<qint64()> m_nowMs;
    qint64 m_startMs = 0;
};
