#pragma once

// A port that its owner has closed, until what was written to it has left:
// only then are the device's settings restored and the device let go. Outlives
// its owner and, for a limited time, the last window; deletes itself.

#include <QObject>
#include <QString>

#include <memory>

class PortDrain;
class QSerialPort;

class ClosingPort : public QObject
{
    Q_OBJECT

public:
    ClosingPort(std::unique_ptr<QSerialPort> port, qint64 lineFreeAtNs);
    ~ClosingPort() override;

    void start(); // may emit closed() from within
    qint64 pendingBytes() const;
    void dropRest(); // emits closed() from within

    // Whether the device is still on its way to being closed.
    static bool isClosing(const QString &portName);
    // Blocks until all are closed; the application calls it at its end.
    static void finishAll();

signals:
    void closed(qint64 unsentBytes);

private:
    void close(qint64 unsentBytes);

    std::unique_ptr<QSerialPort> m_port;
    std::unique_ptr<PortDrain> m_drain;
};
