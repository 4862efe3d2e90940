#include "clientsocket.h"

#include "peeraddress.h"
#include "socketerror.h"

namespace {
constexpr qint64 kMaxRest = 8 * 1024 * 1024; // a server may send without end
}

ClientSocket::ClientSocket(QObject *parent)
    : LinkSocket(parent)
{
    // Later: the socket is still at work on its failure, and may try the next
    // address of a host.
    connect(this, &QAbstractSocket::errorOccurred, this, &ClientSocket::checkFailed, Qt::QueuedConnection);
}

QString ClientSocket::peerText() const
{
    return QStringLiteral("%1:%2").arg(PeerAddress::text(peerAddress())).arg(peerPort());
}

bool ClientSocket::takeEnd(QString *error)
{
    if (!isOpen())
        return false;
    takeAll();
    close();
    if (isFinishing())
        return false;
    if (this->error() != QAbstractSocket::RemoteHostClosedError)
        *error = socketErrorText(this->error(), errorString());
    return true;
}

void ClientSocket::takeRest()
{
    qint64 left = kMaxRest;
    const auto counter = connect(this, &ClientSocket::received, this,
                                 [&left](const QByteArray &bytes) { left -= bytes.size(); });
    do
        takeAll();
    while (left > 0 && state() == ConnectedState && waitForReadyRead(0));
    disconnect(counter);
}

void ClientSocket::takeAll()
{
    if (bytesAvailable() > 0)
        emit received(readAll());
}

// A refused socket stays open; closed, the next attempt begins anew.
void ClientSocket::checkFailed()
{
    if (state() != QAbstractSocket::UnconnectedState || !isOpen())
        return;
    const QString why = socketErrorText(error(), errorString());
    close();
    emit failed(why);
}
