#pragma once

// A socket's error in the user's words; the system's own where it is a rare one.

#include <QAbstractSocket>

QString socketErrorText(QAbstractSocket::SocketError error, const QString &systemText);
