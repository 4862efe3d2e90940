#pragma once

// A socket's error in the user's words. The system's text of a rare one goes to the
// log, for it may be in another language.

#include <QAbstractSocket>

QString socketErrorText(QAbstractSocket::SocketError error, const QString &systemText);

// Why a port could not be opened. tool: the tool of this program that has the port;
// empty where none has it.
QString openErrorText(QAbstractSocket::SocketError error, const QString &systemText, const QString &tool);

// How links name their ports to each other.
namespace SocketResource {
QString tcp(quint16 port);
QString udp(quint16 port);
} // namespace SocketResource
