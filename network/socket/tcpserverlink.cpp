#include "tcpserverlink.h"

#include "socketerror.h"
#include "tcpserver.h"

#include <algorithm>

TcpServerLink::TcpServerLink(QObject *parent)
    : Link(parent)
    , m_server(new TcpServer(this))
{
    connect(m_server, &TcpServer::joined, this, &TcpServerLink::addClient);
    connect(m_server, &TcpServer::left, this, &TcpServerLink::removeClient);
    connect(m_server, &QTcpServer::acceptError, this, [this](QAbstractSocket::SocketError error) {
        emit acceptFailed(socketErrorText(error, m_server->errorString()));
    });
}

TcpServerLink::~TcpServerLink()
{
    m_server->disconnect(this); // it outlives this part, and reports its end
}

bool TcpServerLink::open(const Settings &settings)
{
    if (state() != State::Closed)
        return false;
    if (!m_server->listen(settings.address, settings.port)) {
        setState(State::Closed, openErrorText(m_server->serverError(), m_server->errorString(),
                                              toolUsing(SocketResource::tcp(settings.port))));
        return false;
    }
    setResource(SocketResource::tcp(port()));
    setState(State::Open);
    return true;
}

quint16 TcpServerLink::port() const
{
    return m_server->serverPort();
}

qint64 TcpServerLink::accept(const QByteArray &bytes, quint64 peer)
{
    if (!isOpen())
        return 0;
    TcpClient *const one = m_server->client(peer);
    const qint64 queued = one                ? one->send(bytes)
                          : peer == allPeers ? m_server->SltSendMsgToAllClient(bytes)
                                             : 0;
    if (queued > 0 || bytes.isEmpty())
        setRefusal(QString());
    else if (m_server->clientCount() == 0)
        setRefusal(QStringLiteral("没有已连接的客户端，数据未发送！"));
    else
        setRefusal(QStringLiteral("客户端长时间未接收数据，本次数据未发送！"));
    return queued;
}

qint64 TcpServerLink::pendingBytes() const
{
    qint64 sum = 0;
    for (const TcpClient *client : m_server->clients())
        sum += client->bytesToWrite();
    return sum;
}

void TcpServerLink::close()
{
    if (state() == State::Closed)
        return;
    setState(State::Closing);
    m_server->closeAll();
    closeIfDone();
}

void TcpServerLink::closeIfDone()
{
    if (state() != State::Closing)
        return;
    const QList<TcpClient *> clients = m_server->clients();
    const bool isDone = std::none_of(clients.begin(), clients.end(), [](const TcpClient *client) {
        return client->state() != QAbstractSocket::UnconnectedState;
    });
    if (isDone)
        setState(State::Closed);
}

QVector<Peer> TcpServerLink::peers() const
{
    QVector<Peer> peers;
    for (const TcpClient *client : m_server->clients()) {
        if (client->state() == QAbstractSocket::ConnectedState && !client->isFinishing())
            peers.append(client->peer());
    }
    return peers;
}

void TcpServerLink::closePeer(quint64 peer)
{
    if (peer == allPeers)
        m_server->closeClient(QString());
    else if (TcpClient *const client = m_server->client(peer))
        m_server->closeClient(client);
}

quint64 TcpServerLink::peerNamed(const QString &name) const
{
    for (const TcpClient *client : m_server->clients()) {
        if (client->name() == name)
            return client->peer().id;
    }
    return 0;
}

QString TcpServerLink::peerName(const Peer &peer) const
{
    const TcpClient *const client = m_server->client(peer.id);
    return client ? client->name() : Link::peerName(peer);
}

void TcpServerLink::addClient(TcpClient *client)
{
    connect(client, &TcpClient::signalReadMessage, this,
            [this, client](const QString &, const QByteArray &bytes) {
                emit received(bytes, nowUs(), client->peer());
            });
    connect(client, &TcpClient::bytesWritten, this,
            [this, client](qint64 bytes) { emit handedOver(bytes, client->peer()); });
    connect(client, &TcpClient::blockedChanged, this,
            [this, client](bool isBlocked) { emit blocked(client->peer(), isBlocked); });
    emit peerJoined(client->peer());
}

void TcpServerLink::removeClient(TcpClient *client)
{
    const bool inOrder = client->isFinishing() || client->error() == QAbstractSocket::RemoteHostClosedError ||
                         client->error() == QAbstractSocket::UnknownSocketError;
    client->disconnect(this);
    if (client->undelivered() > 0)
        emit dropped(client->undelivered(), client->peer());
    emit peerLeft(client->peer(),
                  inOrder ? QString() : socketErrorText(client->error(), client->errorString()));
    closeIfDone();
}

void TcpServerLink::readingChanged()
{
    m_server->setReading(isReading());
}
