#pragma once

// One serial port behind a five-argument open call, a byte-array write and a
// byte-array read signal. The link of the pages that only exchange frames.

#include <QByteArray>
#include <QObject>
#include <QString>

class QSerialPort;

class QtSerialPort : public QObject
{
    Q_OBJECT

public:
    explicit QtSerialPort(QObject *parent = nullptr);
    ~QtSerialPort() override;

    bool isOpen() const;
    QString portName() const; // as given to open(); empty before

    // Waits until what was written has left, as far as that can be told, but
    // not longer than the given time. For last words before closing.
    void drain(int timeoutMs);

public slots:
    // (Re)opens the port. dataBits: 5 to 8. stopBits: 0 one, 1 one and a half,
    // 2 two; other values are passed on. parity: the QSerialPort::Parity value.
    // A failure rings the bell; isOpen() tells the outcome.
    void open(QString portName, int baudRate, int dataBits, int stopBits, int parity);
    void close();
    void writeBytes(QByteArray data);
    void SltReadFromSerialport();

signals:
    // All bytes that were waiting at one read notification.
    void bytesRead(QByteArray byData);
    // The device went away (adapter unplugged, pseudo-terminal gone). Told once;
    // the owner closes the port then.
    void hungUp();

private:
    void handleError();

    QSerialPort *m_port;
    QString m_name;
    bool m_hungUp = false;
};
