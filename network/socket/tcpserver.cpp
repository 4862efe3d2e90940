#include "tcpserver.h"

#include "peeraddress.h"
#include "socketsystem.h"

#include <QDebug>

#include <algorithm>

namespace {

// The base class accepts all pending connections in one go; a thousand would be
// felt.
constexpr int kMaxAcceptedAtOnce = 50;
constexpr int kAcceptRetryMs = 1000;

} // namespace

TcpServer::TcpServer(QObject *parent)
    : QTcpServer(parent)
    , m_acceptTimer(this)
{
    m_acceptTimer.setSingleShot(true);
    connect(&m_acceptTimer, &QTimer::timeout, this, &TcpServer::acceptMore);
    // The base class accepts no more after any failure, one of a peer that was
    // gone before it was accepted included (Windows reports those).
    connect(this, &QTcpServer::acceptError, this, [this] { m_acceptTimer.start(kAcceptRetryMs); });
}

TcpServer::~TcpServer()
{
    close();
    const QList<TcpClient *> all = clients();
    for (TcpClient *client : all) {
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

TcpClient *TcpServer::client(quint64 id) const
{
    for (TcpClient *client : m_clients) {
        if (client->peer().id == id)
            return client;
    }
    return nullptr;
}

int TcpServer::clientCount() const
{
    return static_cast<int>(std::count_if(m_clients.begin(), m_clients.end(), [](const TcpClient *client) {
        return client->state() == QAbstractSocket::ConnectedState && !client->isFinishing();
    }));
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
    if (++m_acceptedNow >= kMaxAcceptedAtOnce)
        setMaxPendingConnections(0);
    m_acceptTimer.start(0);
    auto *client = new TcpClient(this);
    client->setReading(m_reading);
    connect(client, &TcpClient::signalReadMessage, this, &TcpServer::signalReadMessage);
    connect(client, &TcpClient::disconnected, this, &TcpServer::SltClientDisconnected);
    if (!client->adopt(descriptor, m_lastId + 1)) {
        qWarning().noquote() << "cannot adopt a connection:" << client->errorString();
        client->deleteLater();
        return;
    }
    ++m_lastId;
    const QString name =
        QStringLiteral("%1 %2").arg(PeerAddress::text(client->peerAddress())).arg(descriptor);
    client->setName(name);
    m_clients.insert(name, client);
    emit joined(client);
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
    client->SltReadMessage(); // what was not read yet
    const QString name = client->name();
    emit signalClientDisconnected(name);
    emit left(client);
    client->disconnect(this);
    m_clients.remove(name);
    client->deleteLater();
    m_acceptTimer.start(0); // a descriptor is free again
}

void TcpServer::closeClient(TcpClient *client)
{
    if (client->isFinishing())
        return client->drop();
    client->readRest();
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
    // A copy: each one that leaves removes itself from the table.
    const QStringList names = name.isEmpty() ? m_clients.keys() : QStringList{name};
    for (const QString &each : names) {
        if (TcpClient *const client = m_clients.value(each))
            closeClient(client);
    }
}

qint64 TcpServer::SltSendMsgToAllClient(QByteArray data)
{
    qint64 sum = 0;
    const QList<TcpClient *> all = clients();
    for (TcpClient *client : all)
        sum += client->send(data);
    return sum;
}

qint64 TcpServer::SltSendMsgToClient(QString name, QByteArray data)
{
    TcpClient *client = m_clients.value(name);
    return client ? client->send(data) : 0;
}

void TcpServer::setReading(bool reading)
{
    m_reading = reading;
    for (TcpClient *client : qAsConst(m_clients))
        client->setReading(reading);
    if (!reading)
        return;
    // Round from where the last one ended, until reading is paused again.
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
