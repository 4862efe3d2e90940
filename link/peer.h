#pragma once

// Who is at the other end of a link.

#include <QHostAddress>
#include <QMetaType>
#include <QString>

struct Peer
{
    // Never used twice by one link. 0 where a link has one other end only.
    quint64 id = 0;
    QHostAddress address; // null for a serial port
    quint16 port = 0;

    bool operator==(const Peer &other) const
    {
        return id == other.id && address == other.address && port == other.port;
    }
    // "address:port", an IPv4 address that arrived over IPv6 in its short form;
    // empty where the address is null.
    QString text() const;
};

Q_DECLARE_METATYPE(Peer)
