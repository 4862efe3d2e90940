#pragma once

// Multicast groups as users write them, and how a port for datagrams joins them.

#include <QHostAddress>
#include <QStringList>
#include <QVector>

class QUdpSocket;

struct MulticastSettings
{
    QVector<QHostAddress> groups; // without any, nothing below counts
    QStringList noGroups;         // what was written and is no group's address
    QString interfaceName;        // of the system; empty: of its choice
    int ttl = 1;                  // networks that a datagram may cross
    bool loopsBack = true;        // this machine's programs get what is sent here
};

namespace Multicast {

// Addresses between blanks, commas or semicolons, each once.
MulticastSettings fromText(const QString &text);

// A socket receives datagrams of groups at a wildcard address of their family only.
QHostAddress addressFor(const MulticastSettings &settings, const QHostAddress &wanted);

struct Joined
{
    QStringList groups;
    QStringList faults; // why others were not, for the user
};
// Joins what can be joined. The socket can be used in any case.
Joined join(QUdpSocket *socket, const MulticastSettings &settings);

} // namespace Multicast
