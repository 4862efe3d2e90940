#include "linksocket.h"

#include "socketsystem.h"

#include <utility>

namespace {

constexpr int kTickMs = 500;
constexpr int kMaxTicks = 30;
constexpr int kMaxIdleTicks = 6;
constexpr int kMaxEndTicks = 2;  // for the peer to close, which not every board does
constexpr int kLooksInTick = 10; // for acknowledgements, which come sooner as a rule

} // namespace

LinkSocket::LinkSocket(QObject *parent)
    : QTcpSocket(parent)
    , m_timer(this)
{
    setReadBufferSize(readBufferBytes);
    connect(&m_timer, &QTimer::timeout, this, &LinkSocket::checkProgress);
    connect(this, &QTcpSocket::connected, this, &LinkSocket::prepare);
    connect(this, &QTcpSocket::bytesWritten, this, &LinkSocket::handleWritten);
    connect(this, &QTcpSocket::readyRead, this, [this] { m_idleTicks = 0; });
    connect(this, &QTcpSocket::disconnected, &m_timer, &QTimer::stop);
    connect(this, &QTcpSocket::stateChanged, this, [this](SocketState state) {
        m_finishing = m_finishing && state != HostLookupState; // the next attempt begins
    });
}

// The base closes an open connection and reports it when this part is gone.
LinkSocket::~LinkSocket()
{
    disconnect(this, nullptr, this, nullptr);
}

void LinkSocket::prepare()
{
    m_undelivered = 0;
    m_finishing = false;
    setSocketOption(QAbstractSocket::LowDelayOption, 1);
    SocketSystem::watchPeer(socketDescriptor());
}

qint64 LinkSocket::send(const QByteArray &bytes)
{
    if (state() != ConnectedState || m_finishing)
        return 0;
    if (bytesToWrite() + bytes.size() > maxQueued)
        return -1;
    const qint64 queued = qMax<qint64>(0, write(bytes));
    m_undelivered += queued;
    return queued;
}

void LinkSocket::handleWritten(qint64 bytes)
{
    m_undelivered -= bytes;
    m_idleTicks = 0;
    if (m_finishing)
        endSendingWhenDelivered();
}

void LinkSocket::finish()
{
    flush();
    m_unacknowledged = 0;
    if (state() == ConnectedState && bytesToWrite() == 0)
        m_unacknowledged = SocketSystem::unacknowledged(socketDescriptor());
    if (state() != ConnectedState || bytesToWrite() + m_unacknowledged == 0)
        return drop();
    m_finishing = true;
    m_sendingEnded = false;
    m_ticks = 0;
    m_idleTicks = 0;
    m_timer.start(m_unacknowledged > 0 ? kTickMs / kLooksInTick : kTickMs);
}

// To close at once would discard what the peer has not read yet, if the peer is
// sending. So its end is waited for.
void LinkSocket::endSendingWhenDelivered()
{
    if (m_sendingEnded || bytesToWrite() > 0)
        return;
    m_sendingEnded = true;
    SocketSystem::endSending(socketDescriptor());
}

void LinkSocket::checkProgress()
{
    const int ticks = m_unacknowledged > 0 ? kLooksInTick : 1;
    ++m_ticks;
    ++m_idleTicks;
    if (m_unacknowledged > 0) {
        const qint64 now = SocketSystem::unacknowledged(socketDescriptor());
        if (now != std::exchange(m_unacknowledged, now))
            m_idleTicks = 0;
        if (now == 0)
            return drop();
    }
    if (m_ticks >= kMaxTicks * ticks ||
        m_idleTicks >= (m_sendingEnded ? kMaxEndTicks : kMaxIdleTicks) * ticks)
        drop();
}

void LinkSocket::drop()
{
    m_undelivered += std::exchange(m_unacknowledged, 0);
    abort();
    m_finishing = false;
}
