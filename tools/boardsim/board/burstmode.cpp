#include "burstmode.h"

namespace Boardsim {

namespace {
constexpr int kRestPeriodMs = 500;
} // namespace

void BurstMode::Options::addTo(CommandLine &line)
{
    payload.addTo(line);
    addTotal(line, &totalBytes);
    line.addNumber("bytes-per-second", "n", QStringLiteral("Mean rate"), &bytesPerSecond, 1, 100000000);
    line.addNumber("burst-pause", "ms", QStringLiteral("Silence between bursts"), &pauseMs, 1, 60000);
    line.addNumber("rest", "ms", QStringLiteral("Silence twice a second"), &restMs, 0, 400);
}

BurstMode::BurstMode(const Options &options, VirtualPort &port)
    : BoardMode(port)
    , m_fresh(options.payload.encoding, options.payload.seed)
    , m_total(options.totalBytes)
    , m_payload(m_fresh)
    , m_bytesPerSecond(options.bytesPerSecond)
    , m_pauseMs(options.pauseMs)
    , m_restMs(options.restMs)
{
    m_pause.setSingleShot(true);
    m_pause.setTimerType(Qt::PreciseTimer);
    connect(&m_pause, &QTimer::timeout, this, &BurstMode::send);
}

void BurstMode::start()
{
    m_payload = m_fresh;
    m_left = m_total;
    if (m_left == 0)
        return;
    m_sinceBurst.start();
    m_sinceRest.start();
    m_pause.start(m_pauseMs);
}

void BurstMode::stop()
{
    m_pause.stop();
    m_sending = false;
}

void BurstMode::send()
{
    // What the rate allows for the time since the last burst, so that late
    // timers do not lower the rate; at most that of two pauses, or rests.
    const qint64 elapsedUs =
        qMin(m_sinceBurst.nsecsElapsed() / 1000, qint64(qMax(m_pauseMs, m_restMs)) * 2000);
    m_sinceBurst.start();
    m_owed += elapsedUs * m_bytesPerSecond;
    qint64 count = m_owed / 1000000;
    m_owed %= 1000000;
    if (m_left >= 0)
        count = qMin(count, m_left);
    if (count == 0) { // a rate below one byte a pause
        m_pause.start(m_pauseMs);
        return;
    }
    if (m_left > 0)
        m_left -= count;
    m_sending = true;
    port().write(m_payload.take(int(count)));
}

void BurstMode::outputEmpty()
{
    if (!m_sending)
        return;
    m_sending = false;
    if (m_left == 0) {
        emit finished();
        return;
    }
    const bool isRest = m_restMs > 0 && m_sinceRest.elapsed() >= kRestPeriodMs;
    if (isRest)
        m_sinceRest.start();
    m_pause.start(isRest ? m_restMs : m_pauseMs);
}

} // namespace Boardsim
