#pragma once

// Sends a list of files by YModem: owns the serial port, the file and the
// timers around the engine. One step of the engine every 10 ms paces all.
// An open port can be lent to it in place of its own.
//
// An end (statuses 3 to 6) is reported twice: when it is decided, and about
// 100 ms later, when the port is free for others: its own is closed then, a
// lent one stays open with what came in after the end.

#include "transferlog.h"
#include "ymodem.h"

#include <QDateTime>
#include <QElapsedTimer>
#include <QFile>
#include <QObject>
#include <QSerialPort>
#include <QStringList>
#include <QTimer>

Q_DECLARE_METATYPE(Ymodem::Status)

class YmodemFileTransmit : public QObject, public Ymodem
{
    Q_OBJECT

public:
    using Status = Ymodem::Status;

    explicit YmodemFileTransmit(QObject *parent = nullptr);
    // Ends a running transfer; the receiver is told.
    ~YmodemFileTransmit() override;

    void setFileList(const QStringList &files); // full names
    void setPortName(const QString &name);      // as the system knows it
    void setBaudRate(qint32 baudRate);
    // What block 0 and the data are framed in: 8 data bits always. Applied
    // after opening; a device that refuses keeps its own.
    void setFrame(QSerialPort::StopBits stopBits, QSerialPort::Parity parity);

    // False when the port does not open; nothing is emitted then.
    bool startTransmit();
    // The same over an open port, which has to outlive the transfer.
    bool startTransmit(QSerialPort *lentPort);
    // Nothing happens when no transfer is running.
    void stopTransmit();

    // From a successful start until the port is free again.
    bool isBusy() const { return m_port != nullptr; }

    // Of the present file, in bytes.
    qint64 bytesSent() const { return m_sentBytes; }
    qint64 fileSize() const { return m_fileSize; }

    // What went wrong in the last transfer, for the user; empty if nothing did.
    QString reason() const { return m_reason; }
    // Files of the list whose end the receiver has not confirmed.
    QStringList unsentFiles() const { return m_files.mid(m_completed); }
    const TransferLog &log() const { return m_log; }

    // Block 0's data for a file: name in GB18030, zero, size in decimal, zero.
    // A name that is too long is cut before its suffix, at a character's end.
    static QByteArray fileHeader(const QString &fileName, qint64 size);

signals:
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
    uint8 openNextFile(uint8 *buffer, uint32 *length);
    uint8 readNextData(uint8 *buffer, uint32 *length);
    uint8 end(Status status, const QString &reason);
    QString blemish() const;
    void handleError(QSerialPort::SerialPortError error);
    void clearRecords(const QSerialPort &port);
    void begin(QSerialPort *port);
    void release();
    void noticeRestart();
    bool isRunning() const { return isBusy() && (m_status == Establish || m_status == Transmit); }
    void scheduleStep(qint64 atUs);
    qint64 nowUs() const;

    QStringList m_files;
    int m_next = 0;      // index of the next name
    int m_completed = 0; // files whose end the receiver has confirmed
    QFile m_file;
    QSerialPort m_ownPort;
    QSerialPort *m_port = nullptr; // that of the transfer, its own or a lent one
    QSerialPort::StopBits m_stopBits = QSerialPort::OneStop;
    QSerialPort::Parity m_parity = QSerialPort::NoParity;
    QTimer m_readTimer;
    QTimer m_writeTimer;
    qint64 m_fileSize = 0;
    QDateTime m_fileTime; // of its last change, when it was opened
    bool m_restartTold = false;
    QStringList m_changed; // files that were written to while they were sent
    qint64 m_sentBytes = 0;
    int m_progress = 0; // percent, as last emitted
    Status m_status = Abort;
    QString m_reason;
    TransferLog m_log;
    QElapsedTimer m_clock;     // since the start
    bool m_stepPutOff = false; // a step is due, and waits for the answer
    qint64 m_nextStepAtUs = 0; // microseconds on it
    qint64 m_lineFreeAtUs = 0; // microseconds on it: what was written has left by then
};
