#pragma once

// Opens a device whose opening may take seconds (a Bluetooth adapter connects to
// its partner first) in a thread of its own, so that the window goes on.
//
// The call cannot be interrupted. An opening that is not wanted any more goes on,
// and its port is closed as soon as it is open.

#include <QObject>

#include <functional>
#include <memory>

class QSerialPort;

class PortOpening : public QObject
{
    Q_OBJECT

public:
    using Open = std::function<bool(QSerialPort &)>; // runs in the other thread

    explicit PortOpening(QObject *parent = nullptr)
        : QObject(parent)
    {
    }

    // port: with its name, not open. finished() comes later.
    void start(std::unique_ptr<QSerialPort> port, const Open &open);
    // After finished(): the port, which belongs to this thread again.
    std::unique_ptr<QSerialPort> takePort();

    // Whether a call that opens the device has not returned yet.
    static bool isOpening(const QString &portName);

signals:
    void finished(bool isOpen);

private:
    std::unique_ptr<QSerialPort> m_port;
};
