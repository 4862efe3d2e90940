#include "commandrunner.h"

#include "link.h"

#include <QDateTime>

namespace {

constexpr int kProgressMs = 50;
// Of work in one turn of the event loop, where delays are zero.
constexpr qint64 kSliceUs = 4000;
constexpr qint64 kMaxPendingBytes = 64 * 1024;
constexpr int kPendingMs = 5;

} // namespace

CommandRunner::CommandRunner(QObject *parent)
    : QObject(parent)
{
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    m_progress.setInterval(kProgressMs);
    connect(&m_timer, &QTimer::timeout, this, &CommandRunner::step);
    connect(&m_progress, &QTimer::timeout, this, &CommandRunner::progressed);
}

void CommandRunner::setDevice(const Transmit &transmit, const std::function<qint64()> &pendingBytes)
{
    m_transmit = transmit;
    m_pendingBytes = pendingBytes;
}

void CommandRunner::start(const QVector<CommandSequence::Row> &rows, int rounds, int codecIndex)
{
    m_startUs = Link::nowUs();
    m_startMs = QDateTime::currentMSecsSinceEpoch();
    m_isPaused = false;
    m_sequence.start(rows, rounds, codecIndex, m_startUs);
    m_progress.start();
    emit progressed();
    arm();
}

void CommandRunner::stop()
{
    m_sequence.stop();
    arm();
}

void CommandRunner::setPaused(bool isPaused)
{
    m_isPaused = isPaused;
    m_sequence.setPaused(isPaused, Link::nowUs());
    arm();
}

void CommandRunner::receive(const QByteArray &bytes, qint64 arrivalUs)
{
    if (!isRunning())
        return;
    m_sequence.receive(bytes, arrivalUs);
    arm();
}

void CommandRunner::step()
{
    if (m_isStepping)
        return;
    m_isStepping = true;
    const qint64 startUs = Link::nowUs();
    while (isRunning() && Link::nowUs() - startUs < kSliceUs && m_pendingBytes() < kMaxPendingBytes) {
        const QByteArray bytes = m_sequence.due(Link::nowUs());
        if (bytes.isEmpty())
            break;
        QString reason;
        const bool isAccepted = m_transmit(bytes, &reason); // may stop the sequence
        if (isRunning())
            m_sequence.handleSent(isAccepted, reason, Link::nowUs());
    }
    m_isStepping = false;
    arm();
}

void CommandRunner::arm()
{
    if (m_isStepping)
        return;
    if (!isRunning()) {
        m_timer.stop();
        if (m_progress.isActive()) {
            m_progress.stop();
            emit progressed();
            emit ended();
        }
        return;
    }
    const qint64 nextUs = m_sequence.nextUs();
    if (nextUs < 0)
        m_timer.stop();
    else if (m_pendingBytes() >= kMaxPendingBytes)
        m_timer.start(kPendingMs);
    else
        m_timer.start(static_cast<int>(qMax<qint64>(0, nextUs - Link::nowUs() + 999) / 1000));
}
