#pragma once

// Addresses as users read and write them.

#include <QHostAddress>
#include <QString>

namespace PeerAddress {

// Without the prefix that marks an IPv4 peer of a socket for both families.
QString text(const QHostAddress &address);

// Without what is pasted along with an address: blanks around it, characters of no
// width, and the brackets of an IPv6 address.
QString cleaned(const QString &text);

// An address in full: four decimal numbers, or IPv6, with a scope where it
// needs one. Null for everything else, host names and shortened IPv4 included.
QHostAddress fromText(const QString &text);

// A port from 1 to 65535; 0 for everything else.
quint16 portFromText(const QString &text);

} // namespace PeerAddress
