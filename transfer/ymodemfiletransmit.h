#pragma once

// Sends a list of files by YModem, or one by XModem, over a link: owns the file and
// the timers around the engine. One step of the engine every 10 ms paces everything;
// when it is quick, an answer is followed at once.
// Without a link it opens the serial port of its name.
//
// An end (statuses 3 to 6) is reported twice: when it is decided, and when its
// last bytes have left, about 100 ms later. From the first on, what the link
// receives belongs to the link's owner again.

#include "outgoingfiles.h"
#include "seriallink.h"
#include "transferdriver.h"
#include "ymodem.h"

#include <QObject>
#include <QStringList>
#include <QTimer>

#include <functional>
#include <memory>

Q_DECLARE_METATYPE(Ymodem::Status)

class XmodemSender;

class YmodemFileTransmit : public QObject, public Ymodem, public TransferDriver
{
    Q_OBJECT

public:
    using Status = Ymodem::Status;
    enum class Protocol { Xmodem, Ymodem };

    explicit YmodemFileTransmit(QObject *parent = nullptr);
    // Ends a running transfer and cancels the receiver.
    ~YmodemFileTransmit() override;

    void setFileList(const QStringList &files) { m_files.setNames(files); } // full names
    void setPortName(const QString &name) { m_portName = name; }
    // Also of the link: says how long a packet is on the line.
    void setBaudRate(qint32 baudRate) { m_baudRate = baudRate; }
    // Microseconds of a clock that only moves forward; Link::nowUs() if not set.
    void setClock(std::function<qint64()> nowUs) { m_nowUs = std::move(nowUs); }

    // What the next transfer uses. packetLength: the largest data, 128 or 1024 bytes.
    void setProtocol(Protocol protocol, int packetLength);
    void setQuick(bool quick) { m_isQuick = quick; }

    // False when the port does not open; nothing is emitted then.
    bool startTransmit();
    // The same over an open link, which has to outlive the transfer. arrived:
    // bytes that it has received already and that are meant for the transfer.
    bool startTransmit(Link *link, const QByteArray &arrived = {});
    // Nothing happens when no transfer is running.
    void stopTransmit();

    // From a successful start until the last report of its end.
    bool isBusy() const override { return m_link != nullptr; }
    void stop() override { stopTransmit(); }
    QByteArray takeUnused() override { return std::exchange(m_input, {}); }

    // Of the present file, in bytes.
    qint64 bytesSent() const { return m_files.sent(); }
    qint64 bytesDone() const override { return m_files.sent(); }
    qint64 fileSize() const override { return m_files.size(); }

    QString reason() const override { return m_reason; }
    // Files of the list whose end the receiver has not confirmed.
    QStringList unsentFiles() const { return m_files.unconfirmed(); }
    QStringList incompleteFiles() const override { return unsentFiles(); }
    const TransferLog &log() const override { return m_log; }

    // Block 0's data for a file: name in GB18030, zero, size in decimal, zero.
    // A name that is too long is cut before its suffix, at a character's end.
    static QByteArray fileHeader(const QString &fileName, qint64 size);

signals:
    // Before the receiver's first request: what is none, such as a prompt.
    void passedOn(QByteArray bytes);
    // Percent of the file of that (full) name.
    void transmitProgress(int progress, QString name);
    void transmitStatus(YmodemFileTransmit::Status status, QString name);
    // Something the user should know while the transfer goes on.
    void transmitHint(QString text);

protected:
    uint8 statusCallback(Status status, uint8 *buffer, uint32 *length) override;
    uint32 readBytes(uint8 *buffer, uint32 length) override;
    uint32 writeBytes(uint8 *buffer, uint32 length) override;

private slots:
    void readTimeOut();
    void writeTimeOut();

private:
    class Xmodem;

    uint8 openNextFile(uint8 *buffer, uint32 *length);
    uint8 readNextData(uint8 *buffer, uint32 *length);
    qint64 blockFor(qint64 left) const;
    uint8 end(Status status, const QString &reason);
    void step(bool isTimed);
    void passOn();
    QString finishWarning() const;
    void receive(const QByteArray &bytes);
    void handleLinkLost();
    void clearRecords();
    void release();
    void checkForRestart();
    bool isRunning() const { return isBusy() && m_status == Establish; }
    void scheduleStep(qint64 atUs);
    qint64 elapsedUs() const { return m_nowUs() - m_startUs; }
    qint64 elapsedMs() const { return elapsedUs() / 1000; }

    OutgoingFiles m_files;
    QString m_portName;
    qint32 m_baudRate;
    SerialLink m_ownLink;
    Link *m_link = nullptr; // of the transfer
    Protocol m_protocol = Protocol::Ymodem;
    qint64 m_largestBlock = largestData;
    bool m_isQuick = false;
    bool m_isStepping = false;
    QByteArray m_passed; // read before the first request
    QByteArray m_input;  // received and not read by the engine yet
    QTimer m_readTimer;
    QTimer m_writeTimer;
    std::unique_ptr<XmodemSender> m_xmodem;
    bool m_restartReported = false;
    Status m_status = Abort; // Establish while it runs, then how it ended
    QString m_reason;
    TransferLog m_log;
    std::function<qint64()> m_nowUs;
    qint64 m_startUs = 0; // the two below count from it
    qint64 m_nextStepAtUs = 0;
    qint64 m_lineFreeAtUs = 0;   // what was written has left by then
    bool m_stepDeferred = false; // a step is due as soon as the answer is here
};
