#include "quietreader.h"

#include "link.h"

#include <utility>

namespace {

constexpr int kQuietMs = 10;

// A busy line is handed out in pieces of this size.
constexpr int kPieceBytes = 256 * 1024;
// A packet that becomes this large ends without a pause, so that memory is bounded.
constexpr qint64 kMaxPacketBytes = 64LL * 1024 * 1024;
// Reading pauses above this, and goes on below the second. Lines that carry
// only what a UART can stay far below: they would lose bytes by a pause.
constexpr qint64 kMaxPendingBytes = 128LL * 1024 * 1024;
constexpr qint64 kResumeBytes = 112LL * 1024 * 1024;
constexpr int kResumeCheckMs = 20;

constexpr int kProgressMs = 500;

} // namespace

QuietReader::QuietReader(Link *link, std::function<qint64()> backlog, QObject *parent)
    : QObject(parent)
    , m_link(link)
    , m_backlog(std::move(backlog))
    , m_quietMs(kQuietMs)
{
    m_quiet.setSingleShot(true);
    m_quiet.setTimerType(Qt::PreciseTimer);
    m_paused.setInterval(kResumeCheckMs);
    m_progress.setInterval(kProgressMs);
    connect(m_link, &Link::received, this, [this](const QByteArray &bytes) {
        if (m_active)
            append(bytes);
    });
    connect(&m_quiet, &QTimer::timeout, this, &QuietReader::checkQuiet);
    connect(&m_paused, &QTimer::timeout, this, &QuietReader::checkBacklog);
    connect(&m_progress, &QTimer::timeout, this, &QuietReader::showGathering);
}

void QuietReader::setActive(bool active)
{
    if (m_active == active)
        return;
    if (!active)
        stop();
    m_active = active;
}

void QuietReader::stop()
{
    m_paused.stop();
    m_stopping = true;
    m_link->setReading(true); // what arrived during a pause
    m_stopping = false;
    m_quiet.stop();
    endPacket();
}

void QuietReader::append(const QByteArray &bytes)
{
    m_piece += bytes;
    if (m_piece.size() >= kPieceBytes)
        endPiece();
    if (m_pieceBytes >= kMaxPacketBytes)
        endPacket();
    handleArrival();
}

// Restarting the timer for each arrival would be expensive: when it ends, the
// time of the last arrival is checked.
void QuietReader::handleArrival()
{
    if (isPaused() || !m_active)
        return;
    m_arrivalUs = Link::nowUs();
    if (!m_quiet.isActive())
        m_quiet.start(m_quietMs);
    if (!m_progress.isActive())
        m_progress.start();
    pauseIfDue();
}

void QuietReader::checkQuiet()
{
    const qint64 leftUs = m_quietMs * 1000LL - (Link::nowUs() - m_arrivalUs);
    if (leftUs > 0)
        m_quiet.start(static_cast<int>((leftUs + 999) / 1000));
    else
        emit quiet();
}

void QuietReader::pauseIfDue()
{
    if (m_stopping || m_pieceBytes + m_piece.size() + m_backlog() < kMaxPendingBytes)
        return;
    m_quiet.stop(); // silence that is our own making ends no packet
    m_paused.start();
    m_link->setReading(false);
}

void QuietReader::checkBacklog()
{
    if (m_pieceBytes + m_piece.size() + m_backlog() >= kResumeBytes)
        return;
    m_paused.stop();
    m_link->setReading(true);
    handleArrival();
}

char QuietReader::lastByte() const
{
    if (!m_piece.isEmpty())
        return m_piece.back();
    return m_pieces.isEmpty() ? '\0' : m_pieces.last().back();
}

void QuietReader::endPiece()
{
    if (m_piece.isEmpty())
        return;
    m_pieceBytes += m_piece.size();
    m_pieces.append(std::exchange(m_piece, {}));
    emit pieceRead(m_pieces.last());
}

void QuietReader::endPacket()
{
    endPiece();
    m_progress.stop();
    if (std::exchange(m_gatheringShown, false))
        emit gathering(0);
    if (!m_pieces.isEmpty())
        emit packetRead(std::exchange(m_pieces, {}), std::exchange(m_pieceBytes, 0));
}

void QuietReader::showGathering()
{
    m_gatheringShown = true;
    emit gathering(m_pieceBytes + m_piece.size());
}
