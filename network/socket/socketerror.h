#pragma once

// A socket's error in the user's words. The system's text of a rare one goes to the
// log, for it may be in another language.

#include <QAbstractSocket>

QString socketErrorText(QAbstractSocket::SocketError error, const QString &systemText);
