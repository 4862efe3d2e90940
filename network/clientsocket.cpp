#include "network/clientsocket.h"

#include "network/peeraddress.h"
#include "network/socketerror.h"
#include "network/tcpclient.h"
#include "network/tcpserver.h"

ClientSocket::ClientSocket(QObject *parent)
    : QTcpSocket(parent)
{
    setReadBufferSize(TcpClient::readBufferBytes);
    connect(this, &QTcpSocket::connected, this,
            [this] { setSocketOption(QAbstractSocket::LowDelayOption, 1); });
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
    if (this->error() != QAbstractSocket::RemoteHostClosedError)
        *error = socketErrorText(this->error(), errorString());
    return true;
}

qint64 ClientSocket::send(const QByteArray &bytes)
{
    if (state() != QAbstractSocket::ConnectedState)
        return 0;
    return bytesToWrite() + bytes.size() > TcpServer::mostQueued ? -1 : qMax<qint64>(0, write(bytes));
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
