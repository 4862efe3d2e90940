#include "tcpserver.h"

#include "peeraddress.h"
#include "socketsystem.h"
#include "tcpclient.h"

#include <QDebug>

#include <algorithm>

namespace {

// The base class accepts all that wait in one go; a thousand would be felt.
constexpr int kMostAcceptedAtOnce = 50;
constexpr int kAcceptAgainMs = 1000;
constexpr int kMaxRestReads = 64; // of one socket buffer each; a peer may send without end

} // namespace

TcpServer::TcpServer(QObject *parent)
    : QTcpServer(parent)
    , m_acceptTimer(this)
{
    m_acceptTimer.setSingleShot(true);
    connect(&m_acceptTimer, &QTimer::timeout, this, &TcpServer::acceptMore);
    // The base class accepts no more after any failure, one of a peer that was
    // gone before it was accepted included (Windows reports those).
    connect(this, &QTcpServer::acceptError, this, [this] { m_acceptTimer.start(kAcceptAgainMs); });
}

TcpServer::~TcpServer()
{
    close();
    const QList<TcpClient *> clients = m_clients.values();
    for (TcpClient *client : clients) {
        client->flush();
        client->drop();
    }
}

bool TcpServer::listen(const QHostAddress &address, quint16 port)
{
    if (!QTcpServer::listen(address, port))
        return false;
    SocketSystem::lengthenListenQueue(socketDescriptor());
    return true;
}

int TcpServer::clientCount() const
{
    return static_cast<int>(std::count_if(m_clients.begin(), m_clients.end(), [](const TcpClient *client) {
        return client->state() == QAbstractSocket::ConnectedState && !client->isFinishing();
    }));
}

bool TcpServer::isFinishing() const
{
    return std::any_of(m_clients.begin(), m_clients.end(), [](const TcpClient *client) {
        return client->isFinishing() && client->state() == QAbstractSocket::ConnectedState;
    });
}

quint64 TcpServer::connectionOf(const QString &name) const
{
    return m_connections.value(name);
}

// Goes on accepting, after a full turn or a failure.
void TcpServer::acceptMore()
{
    m_acceptedNow = 0;
    setMaxPendingConnections(1);
    if (isListening())
        resumeAccepting();
}

void TcpServer::incomingConnection(qintptr descriptor)
{
    // No connection is ever pending, and none may be: the base class stops.
    if (++m_acceptedNow >= kMostAcceptedAtOnce)
        setMaxPendingConnections(0);
    m_acceptTimer.start(0);
    auto *client = new TcpClient(this);
    client->setReading(m_reading);
    connect(client, &TcpClient::signalReadMessage, this, &TcpServer::signalReadMessage);
    connect(client, &TcpClient::disconnected, this, &TcpServer::SltClientDisconnected);
    connect(client, &TcpClient::bytesWritten, this, [this, client](qint64 bytes) {
        emit bytesHandedOver(bytes);
        noticeTaken(client);
    });
    if (!client->adopt(descriptor)) {
        qWarning().noquote() << "cannot adopt a connection:" << client->errorString();
        client->deleteLater();
        return;
    }
    const QString name =
        QStringLiteral("%1 %2").arg(PeerAddress::text(client->peerAddress())).arg(descriptor);
    client->setName(name);
    m_clients.insert(name, client);
    m_connections.insert(name, ++m_lastConnection);
    emit signalClientConnected(name);
    // One that was gone before it was accepted may not be reported by the system.
    QTimer::singleShot(0, client, [client] { client->waitForReadyRead(0); });
}

void TcpServer::SltClientDisconnected()
{
    auto *client = qobject_cast<TcpClient *>(sender());
    if (!client)
        return;
    client->setReading(true);
    client->SltReadMessage(); // what was held back
    const QString name = client->name();
    emit signalClientDisconnected(name);
    client->disconnect(this);
    m_clients.remove(name);
    m_connections.remove(name);
    if (client->undelivered() > 0)
        emit clientUndelivered(name, client->undelivered());
    client->deleteLater();
    m_acceptTimer.start(0); // a descriptor is free again
}

// What has come from it, as far as that ends.
void TcpServer::takeRest(TcpClient *client)
{
    client->setReading(true);
    for (int i = 0; i < kMaxRestReads; ++i) {
        client->SltReadMessage();
        if (client->state() != QAbstractSocket::ConnectedState || !client->waitForReadyRead(0))
            return;
    }
}

void TcpServer::closeAny(TcpClient *client)
{
    if (client->isFinishing())
        return client->drop();
    takeRest(client);
    client->finish();
}

void TcpServer::closeAll()
{
    if (isListening())
        close();
    closeClient(QString());
}

void TcpServer::closeClient(const QString &name)
{
    // A copy: each one that goes takes itself out of the table.
    const QStringList names = name.isEmpty() ? m_clients.keys() : QStringList{name};
    for (const QString &each : names) {
        if (TcpClient *const client = m_clients.value(each))
            closeAny(client);
    }
}

qint64 TcpServer::SltSendMsgToAllClient(QByteArray data)
{
    qint64 sum = 0;
    const QList<TcpClient *> clients = m_clients.values();
    for (TcpClient *client : clients)
        sum += send(client, data);
    return sum;
}

qint64 TcpServer::SltSendMsgToClient(QString name, QByteArray data)
{
    TcpClient *client = m_clients.value(name);
    return client ? send(client, data) : 0;
}

qint64 TcpServer::send(TcpClient *client, const QByteArray &data)
{
    const qint64 queued = client->isBlocked() ? 0 : client->send(data);
    if (queued < 0) {
        client->setBlocked(true);
        emit clientBlocked(client->name(), true);
    }
    return qMax<qint64>(0, queued);
}

// A peer that reads again is written to again when half of what waited is gone.
void TcpServer::noticeTaken(TcpClient *client)
{
    if (!client->isBlocked() || client->bytesToWrite() > mostQueued / 2)
        return;
    client->setBlocked(false);
    emit clientBlocked(client->name(), false);
}

void TcpServer::setReading(bool reading)
{
    m_reading = reading;
    for (TcpClient *client : qAsConst(m_clients))
        client->setReading(reading);
    if (!reading)
        return;
    // Round from where the last one ended, until whoever takes has enough.
    QList<TcpClient *> round;
    for (auto it = m_clients.upperBound(m_lastResumed); it != m_clients.end(); ++it)
        round.append(it.value());
    for (auto it = m_clients.begin(); it != m_clients.end() && round.size() < m_clients.size(); ++it)
        round.append(it.value());
    for (TcpClient *client : qAsConst(round)) {
        if (!m_reading)
            return;
        m_lastResumed = client->name();
        client->SltReadMessage();
    }
}
