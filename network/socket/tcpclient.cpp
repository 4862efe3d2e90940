#include "tcpclient.h"

#include "socketsystem.h"

#include <utility>

namespace {

constexpr int kTickMs = 500;
constexpr int kMaxTicks = 30;
constexpr int kMaxIdleTicks = 6;
constexpr int kMaxEndTicks = 2;    // for the peer to close, which not every board does
constexpr int kChecksPerTick = 10; // for acknowledgements, which come sooner as a rule
constexpr int kMaxRestReads = 128; // of one socket buffer each

} // namespace

TcpClient::TcpClient(QObject *parent)
    : QTcpSocket(parent)
    , m_timer(this)
{
    setReadBufferSize(readBufferBytes);
    connect(&m_timer, &QTimer::timeout, this, &TcpClient::checkProgress);
    connect(this, &QTcpSocket::connected, this, &TcpClient::prepare);
    connect(this, &QTcpSocket::bytesWritten, this, &TcpClient::handleWritten);
    connect(this, &QTcpSocket::readyRead, this, [this] { m_idleTicks = 0; });
    connect(this, &QTcpSocket::readyRead, this, &TcpClient::SltReadMessage);
    connect(this, &QTcpSocket::disconnected, &m_timer, &QTimer::stop);
    connect(this, &QTcpSocket::stateChanged, this, [this](SocketState state) {
        m_finishing = m_finishing && state != HostLookupState; // the next attempt begins
    });
}

// The base closes an open connection and reports it when this part is gone.
TcpClient::~TcpClient()
{
    disconnect(this, nullptr, this, nullptr);
    if (isOpen())
        close();
}

bool TcpClient::adopt(qintptr descriptor, quint64 id)
{
    if (!setSocketDescriptor(descriptor, ConnectedState, ReadWrite))
        return false;
    m_peer.id = id;
    prepare();
    return true;
}

void TcpClient::prepare()
{
    m_peer.address = peerAddress();
    m_peer.port = peerPort();
    m_undelivered = 0;
    m_finishing = false;
    m_blocked = false;
    setSocketOption(QAbstractSocket::LowDelayOption, 1);
    SocketSystem::watchPeer(socketDescriptor());
}

void TcpClient::SltReadMessage()
{
    if (m_reading && bytesAvailable() > 0)
        emit signalReadMessage(m_name, readAll());
}

void TcpClient::readRest()
{
    for (int i = 0; i < kMaxRestReads; ++i) {
        m_reading = true; // the owner may pause again at each message
        SltReadMessage();
        if (state() != ConnectedState || !waitForReadyRead(0))
            return;
    }
}

qint64 TcpClient::send(const QByteArray &bytes)
{
    if (state() != ConnectedState || m_finishing || m_blocked)
        return 0;
    if (bytesToWrite() + bytes.size() > maxQueuedBytes) {
        if (bytesToWrite() > maxQueuedBytes / 2)
            setBlocked(true);
        return 0;
    }
    const qint64 queued = qMax<qint64>(0, write(bytes));
    m_undelivered += queued;
    return queued;
}

void TcpClient::setBlocked(bool blocked)
{
    m_blocked = blocked;
    emit blockedChanged(blocked);
}

void TcpClient::handleWritten(qint64 bytes)
{
    m_undelivered -= bytes;
    m_idleTicks = 0;
    if (m_blocked && bytesToWrite() <= maxQueuedBytes / 2)
        setBlocked(false);
    if (m_finishing)
        endSendingWhenDelivered();
}

void TcpClient::finish()
{
    flush();
    m_unacknowledged = 0;
    if (state() == ConnectedState && bytesToWrite() == 0)
        m_unacknowledged = SocketSystem::unacknowledged(socketDescriptor());
    if (state() != ConnectedState || bytesToWrite() + m_unacknowledged == 0)
        return drop();
    m_finishing = true;
    m_sendingEnded = false;
    m_held = 0;
    m_ticks = 0;
    m_idleTicks = 0;
    m_timer.start(m_unacknowledged > 0 ? kTickMs / kChecksPerTick : kTickMs);
}

// Closing at once would discard what the peer has not read yet, if the peer is
// sending. So its end is waited for.
void TcpClient::endSendingWhenDelivered()
{
    if (m_sendingEnded || bytesToWrite() > 0)
        return;
    m_sendingEnded = true;
    SocketSystem::endSending(socketDescriptor());
}

void TcpClient::checkProgress()
{
    const int ticks = m_unacknowledged > 0 ? kChecksPerTick : 1;
    ++m_ticks;
    ++m_idleTicks;
    if (m_unacknowledged > 0) {
        const qint64 now = SocketSystem::unacknowledged(socketDescriptor());
        if (now != std::exchange(m_unacknowledged, now))
            m_idleTicks = 0;
        if (now == 0)
            return drop();
    }
    // A slow peer still has to be sent what the system holds.
    const qint64 held = m_sendingEnded ? SocketSystem::unacknowledged(socketDescriptor()) : 0;
    if (held != std::exchange(m_held, held))
        m_idleTicks = 0;
    const int maxIdleTicks = m_sendingEnded && held == 0 ? kMaxEndTicks : kMaxIdleTicks;
    if (m_ticks >= kMaxTicks * ticks || m_idleTicks >= maxIdleTicks * ticks)
        drop();
}

void TcpClient::drop()
{
    m_undelivered += std::exchange(m_unacknowledged, 0);
    abort();
    m_finishing = false;
}
