#pragma once

// The serial page's port: stands in for the event-driven serial library of
// that class name over SerialLine, with the operations that the page uses
// (docs/adr/0001). Parameters are set after opening, as list indices. At most
// a limited number of received bytes is held; what the page does not read
// stays with the system.

#include "serialline.h"

#include <QByteArray>

class QextSerialPort : public QObject
{
    Q_OBJECT

public:
    enum QueryMode { Polling, EventDriven };

    explicit QextSerialPort(QueryMode mode, QObject *parent = nullptr);

    void setPortName(const QString &name);
    QString portName() const { return m_name; }

    bool open(QIODevice::OpenMode mode);
    // See SerialLine for these.
    void close() { m_line.close(); }
    bool isOpen() const { return m_line.isOpen(); }
    bool isClosing() const { return m_line.isClosing(); }
    QString reason() const { return m_line.reason(); }
    QString writeFailedText(qint64 unsentBytes) const { return m_line.writeFailedText(unsentBytes); }
    QString unsentText(qint64 unsentBytes) const { return m_line.unsentText(unsentBytes); }
    void lend() { m_line.lend(); }
    bool takeBack() { return m_line.takeBack(); }

    // Each is applied to the open port at once. False when the device refuses;
    // the port stays open.
    bool setBaudRate(int baudRate);
    bool setDataBits(int bits);  // 5 to 8
    bool setStopBits(int index); // 0: 1, 1: 1.5, 2: 2
    bool setParity(int index);   // 0 none, 1 odd, 2 even, 3 mark, 4 space
    bool setFlowControlOff();

    int baudRate() const;

    qint64 bytesAvailable() const;
    QByteArray readAll();
    // Queues the bytes; returns how many were taken, -1 on error.
    qint64 write(const QByteArray &bytes);
    qint64 bytesToWrite() const;

signals:
    void readyRead();
    void hungUp();
    void writeFailed(qint64 unsentBytes);
    void closed(qint64 unsentBytes);
    void lent(QSerialPort *port, qint64 unsentBytes);

private:
    SerialLine m_line;
    QString m_name;
};
