#pragma once

// Datagrams as a link: one port of this machine that receives from anybody and
// sends to one destination. A datagram leaves at once or not at all, so that
// closing takes no time.

#include "link.h"

#include <QHostAddress>

class QUdpSocket;

class UdpLink : public Link
{
    Q_OBJECT

public:
    struct Settings
    {
        QHostAddress address; // Any for all interfaces
        quint16 port = 0;     // 0: one of the system's choice
    };
    static constexpr int maxDatagramBytes = 65507;

    explicit UdpLink(QObject *parent = nullptr);
    ~UdpLink() override;

    bool open(const Settings &settings);
    quint16 port() const;
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
    QHostAddress m_destination;
    quint16 m_destinationPort = 0;
};
