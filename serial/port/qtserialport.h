#pragma once

// The port of the pages that only exchange frames: SerialLink behind an open
// call of five arguments, a byte-array write and a byte-array read signal.

#include "seriallink.h"

class QtSerialPort : public SerialLink
{
    Q_OBJECT

public:
    explicit QtSerialPort(QObject *parent = nullptr);

    QString portName() const { return settings().name; } // empty before open()

public slots:
    // dataBits: 5 to 8. stopBits: 0 one, 1 one and a half, 2 two; other values
    // are passed on. parity: the QSerialPort::Parity value. isOpen() is the
    // outcome, or the state Opening where it comes later; a failure emits
    // openFailed().
    void open(QString portName, int baudRate, int dataBits, int stopBits, int parity);
    // Once: what is leaving is not dropped by a second call.
    void close() override;
    void writeBytes(QByteArray data);
    // Reads what is there.
    void SltReadFromSerialport();

signals:
    void bytesRead(QByteArray byData);
    void openFailed();
    // The device went away; the port is closed.
    void hungUp();

private:
    State m_former = State::Closed;
};
