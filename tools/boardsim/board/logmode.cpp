#include "logmode.h"

#include "loglines.h"

namespace Boardsim {

static constexpr qsizetype maxQueued = 1 << 16;
static constexpr int minTickMs = 5;

void LogMode::Options::addTo(CommandLine &line)
{
    payload.addTo(line);
    line.addNumber("rate", "n", QStringLiteral("Lines per second"), &linesPerSecond, 1, 100000);
}

LogMode::LogMode(const Options &options, VirtualPort &port)
    : BoardMode(port)
    , m_encoding(options.payload.encoding)
    , m_seed(options.payload.seed)
    , m_linesPerSecond(options.linesPerSecond)
{
    m_timer.setTimerType(Qt::PreciseTimer);
    m_timer.setInterval(qMax(minTickMs, 1000 / m_linesPerSecond));
    connect(&m_timer, &QTimer::timeout, this, &LogMode::printDue);
}

void LogMode::start()
{
    m_firstLine = m_nextLine;
    m_clock.start();
    m_timer.start();
}

void LogMode::stop()
{
    m_timer.stop();
}

void LogMode::printDue()
{
    const auto due = quint32(m_clock.elapsed() * m_linesPerSecond / 1000);
    QByteArray lines;
    for (; m_nextLine - m_firstLine < due; ++m_nextLine) {
        const qint64 timeMs = qint64(m_nextLine) * 1000 / m_linesPerSecond;
        lines += encoded(logLine(m_nextLine, timeMs, m_seed) + QStringLiteral("\r\n"), m_encoding);
    }
    if (!lines.isEmpty() && port().queued() < maxQueued)
        port().write(lines);
}

} // namespace Boardsim
