#pragma once

// One serial port behind a five-argument open call, a byte-array write and a
// byte-array read signal. The link of the pages that only exchange frames.

#include "serialline.h"

#include <QByteArray>

class QtSerialPort : public QObject
{
    Q_OBJECT

public:
    explicit QtSerialPort(QObject *parent = nullptr);

    bool isOpen() const { return m_line.isOpen(); }
    QString portName() const { return m_line.name(); } // as given to open(); empty before
    // Why opening or writing failed, for the user.
    QString reason() const { return m_line.reason(); }

    void flush() { m_line.flush(); }

public slots:
    // (Re)opens the port. dataBits: 5 to 8. stopBits: 0 one, 1 one and a half,
    // 2 two; other values are passed on. parity: the QSerialPort::Parity value.
    // A failure rings the bell; isOpen() tells the outcome.
    void open(QString portName, int baudRate, int dataBits, int stopBits, int parity);
    // The device is let go when what was written has left it, see SerialLine.
    void close();
    void writeBytes(QByteArray data);
    void SltReadFromSerialport();

signals:
    // All bytes that were waiting at one read notification.
    void bytesRead(QByteArray byData);
    void hungUp(); // see SerialLine
    // Written bytes did not leave, while the port was open or closing: the
    // notice for the user.
    void failed(QString notice);

private:
    SerialLine m_line;
};
