#pragma once

// The serial page's port: stands in for the event-driven serial library of
// that class name over QSerialPort, with the operations that the page uses
// (docs/adr/0001). Parameters are set after opening, as list indices.
//
// A device that hangs up (adapter unplugged, pseudo-terminal gone) is reported
// once through hungUp(); the owner closes the port then.

#include <QByteArray>
#include <QIODevice>
#include <QObject>
#include <QSerialPort>
#include <QString>

class QextSerialPort : public QObject
{
    Q_OBJECT

public:
    enum QueryMode { Polling, EventDriven };

    explicit QextSerialPort(QueryMode mode, QObject *parent = nullptr);
    ~QextSerialPort() override;

    void setPortName(const QString &name);
    QString portName() const { return m_name; }

    bool open(QIODevice::OpenMode mode);
    // Writes what can be written without waiting, then closes.
    void close();
    bool isOpen() const;
    QString errorString() const;

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

private:
    void handleError(QSerialPort::SerialPortError error);

    QSerialPort m_port;
    QString m_name;
    bool m_hungUp = false;
};
