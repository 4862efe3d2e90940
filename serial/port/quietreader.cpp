#include "quietreader.h"

#include "qextserialport.h"

#include <utility>

namespace {

constexpr int kQuietMs = 10;

// A busy line is read in pieces of this size.
constexpr qint64 kPieceBytes = 256LL * 1024;
// A packet that becomes this large ends without a pause, so that memory is bounded.
constexpr qint64 kMaxPacketBytes = 64LL * 1024 * 1024;
// Reading pauses above this, and goes on below the second. Lines that carry
// only what a UART can stay far below: they would lose bytes by a pause.
constexpr qint64 kMaxPendingBytes = 128LL * 1024 * 1024;
constexpr qint64 kResumeBytes = 112LL * 1024 * 1024;
constexpr int kResumeCheckMs = 20;

constexpr int kProgressMs = 500;

} // namespace

QuietReader::QuietReader(QextSerialPort *port, std::function<qint64()> backlog, QObject *parent)
    : QObject(parent)
    , m_port(port)
    , m_backlog(std::move(backlog))
{
    m_quiet.setSingleShot(true);
    m_quiet.setInterval(kQuietMs);
    m_quiet.setTimerType(Qt::PreciseTimer);
    m_paused.setInterval(kResumeCheckMs);
    m_progress.setInterval(kProgressMs);
    connect(&m_quiet, &QTimer::timeout, this, &QuietReader::quiet);
    connect(&m_paused, &QTimer::timeout, this, &QuietReader::checkBacklog);
    connect(&m_progress, &QTimer::timeout, this, &QuietReader::showGathering);
}

void QuietReader::handleArrival()
{
    if (isPaused())
        return;
    m_quiet.start();
    if (!m_progress.isActive())
        m_progress.start();
    if (m_port->bytesAvailable() >= kPieceBytes)
        takePiece();
    if (m_bytes >= kMaxPacketBytes)
        takePacket();
    if (m_bytes + m_backlog() >= kMaxPendingBytes) {
        m_quiet.stop(); // silence that is our own making ends no packet
        m_paused.start();
    }
}

void QuietReader::checkBacklog()
{
    if (m_bytes + m_backlog() >= kResumeBytes)
        return;
    m_paused.stop();
    handleArrival();
}

void QuietReader::takePiece()
{
    const QByteArray bytes = m_port->readAll();
    if (bytes.isEmpty())
        return;
    m_pieces.append(bytes);
    m_bytes += bytes.size();
    emit pieceRead(bytes);
}

void QuietReader::takePacket()
{
    takePiece();
    m_progress.stop();
    if (std::exchange(m_gatheringShown, false))
        emit gathering(0);
    if (!m_pieces.isEmpty())
        emit packetRead(std::exchange(m_pieces, {}), std::exchange(m_bytes, 0));
}

void QuietReader::stop()
{
    takePacket();
    m_quiet.stop();
    m_paused.stop();
}

void QuietReader::showGathering()
{
    m_gatheringShown = true;
    emit gathering(m_bytes + m_port->bytesAvailable());
}
