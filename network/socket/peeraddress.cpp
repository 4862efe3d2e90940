#include "peeraddress.h"

namespace PeerAddress {

QString text(const QHostAddress &address)
{
    return address.toString().remove(QStringLiteral("::ffff:"));
}

QString cleaned(const QString &text)
{
    QString address = text;
    address.remove(QChar(0x200B)).remove(QChar(0xFEFF));
    address = address.trimmed();
    if (address.startsWith(QLatin1Char('[')) && address.endsWith(QLatin1Char(']')))
        address = address.mid(1, address.size() - 2).trimmed();
    return address;
}

QHostAddress fromText(const QString &text)
{
    const QString trimmed = cleaned(text);
    // "8000" is 0.0.31.64 to the parser, which no user means.
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
