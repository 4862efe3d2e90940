#include "network/peeraddress.h"

namespace PeerAddress {

QString text(const QHostAddress &address)
{
    return address.toString().remove(QStringLiteral("::ffff:"));
}

QHostAddress fromText(const QString &text)
{
    const QString trimmed = text.trimmed();
    // "8000" is 0.0.31.64 to the parser, which nobody means.
    const bool complete = trimmed.contains(QLatin1Char(':')) || trimmed.count(QLatin1Char('.')) == 3;
    return complete ? QHostAddress(trimmed) : QHostAddress();
}

quint16 portFromText(const QString &text)
{
    bool isNumber = false;
    const ushort port = text.trimmed().toUShort(&isNumber);
    return isNumber ? port : quint16(0);
}

} // namespace PeerAddress
