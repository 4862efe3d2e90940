#pragma once

// A UDP socket on one port of this machine. Hands out what comes in while a gate
// is open; what is not read then waits in the system's buffer.

#include <QUdpSocket>

class ReadGate;

class DatagramSocket : public QUdpSocket
{
    Q_OBJECT

public:
    using QUdpSocket::QUdpSocket;

    bool listen(const QHostAddress &address, quint16 port);
    bool isListening() const { return state() == BoundState; }
    void takeAll(const ReadGate &gate);
    // What the system holds, before closing; the gate is not asked.
    void takeRest();

private:
    bool takeOne();

signals:
    void received(const QString &sender, const QByteArray &bytes);
};
