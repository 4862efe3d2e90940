#include "tcpclientlink.h"

#include "socketerror.h"
#include "tcpclient.h"

TcpClientLink::TcpClientLink(QObject *parent)
    : Link(parent)
    , m_socket(new TcpClient(this))
{
    connect(m_socket, &QTcpSocket::connected, this, &TcpClientLink::handleConnected);
    connect(m_socket, &QTcpSocket::disconnected, this, &TcpClientLink::handleDisconnected);
    connect(m_socket, &QAbstractSocket::errorOccurred, this, &TcpClientLink::socketError);
    // Later: the socket is still at work on its failure, and may try the next
    // address of a host.
    connect(m_socket, &QAbstractSocket::errorOccurred, this, &TcpClientLink::handleFailure,
            Qt::QueuedConnection);
    connect(m_socket, &TcpClient::signalReadMessage, this, [this](const QString &, const QByteArray &bytes) {
        emit received(bytes, nowUs(), m_socket->peer());
    });
    connect(m_socket, &QTcpSocket::bytesWritten, this,
            [this](qint64 bytes) { emit handedOver(bytes, m_socket->peer()); });
    connect(m_socket, &TcpClient::blockedChanged, this,
            [this](bool isBlocked) { emit blocked(m_socket->peer(), isBlocked); });
}

TcpClientLink::~TcpClientLink()
{
    m_socket->disconnect(this); // it outlives this part, and reports its end
}

bool TcpClientLink::open(const Settings &settings)
{
    if (state() != State::Closed)
        return false;
    m_settings = settings;
    m_closedHere = false;
    m_socket->setReading(isReading());
    setState(State::Opening);
    m_socket->connectToHost(settings.host, settings.port, QIODevice::ReadWrite,
                            QAbstractSocket::AnyIPProtocol);
    return true;
}

void TcpClientLink::handleConnected()
{
    setState(State::Open);
    emit peerJoined(m_socket->peer());
}

// A refused socket stays open; closed, it can connect again.
void TcpClientLink::handleFailure()
{
    if (state() != State::Opening || m_socket->state() != QAbstractSocket::UnconnectedState)
        return;
    const QString reason = socketErrorText(m_socket->error(), m_socket->errorString());
    m_socket->close();
    setState(State::Closed, reason);
}

void TcpClientLink::timeOut()
{
    if (state() != State::Opening)
        return;
    m_socket->drop();
    m_socket->close();
    setState(State::Closed, socketErrorText(QAbstractSocket::SocketTimeoutError, {}));
}

qint64 TcpClientLink::accept(const QByteArray &bytes, quint64 peer)
{
    if (!isOpen() || peer != allPeers)
        return 0;
    const qint64 queued = m_socket->send(bytes);
    const bool isRefused = queued == 0 && !bytes.isEmpty() && m_socket->state() == QTcpSocket::ConnectedState;
    setRefusal(isRefused ? QStringLiteral("服务器长时间未接收数据，本次数据未发送！") : QString());
    return queued;
}

qint64 TcpClientLink::pendingBytes() const
{
    return m_socket->bytesToWrite();
}

void TcpClientLink::close()
{
    if (state() == State::Closed)
        return;
    m_closedHere = true;
    const bool wasOpen = isOpen();
    setState(State::Closing);
    if (wasOpen) {
        m_socket->readRest(); // which may find the connection's end
        m_socket->finish();
    } else {
        m_socket->drop();
    }
    if (!m_socket->isFinishing())
        setState(State::Closed);
}

QString TcpClientLink::socketErrorString() const
{
    return m_socket->errorString();
}

QVector<Peer> TcpClientLink::peers() const
{
    return isOpen() ? QVector<Peer>{m_socket->peer()} : QVector<Peer>();
}

void TcpClientLink::handleDisconnected()
{
    if (state() == State::Opening)
        return; // see timeOut()
    const QAbstractSocket::SocketError error = m_socket->error();
    const QString systemText = m_socket->errorString();
    m_socket->setReading(true);
    m_socket->SltReadMessage(); // what was not read yet
    m_socket->close();
    const bool inOrder = m_closedHere || error == QAbstractSocket::RemoteHostClosedError;
    const QString fault = inOrder ? QString() : socketErrorText(error, systemText);
    if (m_socket->undelivered() > 0)
        emit dropped(m_socket->undelivered(), m_socket->peer());
    emit peerLeft(m_socket->peer(), fault);
    setState(State::Closed, m_closedHere ? QString() : inOrder ? QStringLiteral("服务器已断开连接") : fault);
}

void TcpClientLink::readingChanged()
{
    m_socket->setReading(isReading());
    m_socket->SltReadMessage();
}
