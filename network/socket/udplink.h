#pragma once

// Datagrams as a link: one port of this machine that receives from anybody and
// sends to one destination. A datagram leaves at once or not at all, so that
// closing takes no time. May belong to multicast groups, which it leaves when it is
// closed.

#include "link.h"
#include "multicast.h"

class QUdpSocket;

class UdpLink : public Link
{
    Q_OBJECT

public:
    struct Settings
    {
        QHostAddress address; // Any for all interfaces
        quint16 port = 0;     // 0: one of the system's choice
        MulticastSettings multicast = {};
    };
    static constexpr int maxDatagramBytes = 65507;

    explicit UdpLink(QObject *parent = nullptr);
    ~UdpLink() override;

    bool open(const Settings &settings);
    quint16 port() const;
    // Since it was opened.
    const Multicast::Joined &joined() const { return m_joined; }
    // Where send() sends to; may be changed at any time.
    void setDestination(const QHostAddress &address, quint16 port);

    // To the destination; an empty datagram is sent, too.
    qint64 pendingBytes() const override { return 0; }
    void close() override;

protected:
    qint64 accept(const QByteArray &bytes, quint64 peer) override;
    void readingChanged() override;

private:
    void readAll();
    bool readOne();
    QString checkSending(const QByteArray &bytes) const;

    QUdpSocket *m_socket;
    Multicast::Joined m_joined;
    QHostAddress m_destination;
    quint16 m_destinationPort = 0;
};
