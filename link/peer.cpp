#include "peer.h"

QString Peer::text() const
{
    if (address.isNull())
        return {};
    bool isIpv4 = false;
    const quint32 ipv4 = address.toIPv4Address(&isIpv4);
    const QString host = isIpv4 ? QHostAddress(ipv4).toString() : address.toString();
    return QStringLiteral("%1:%2").arg(host).arg(port);
}
