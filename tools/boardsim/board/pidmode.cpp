#include "pidmode.h"

namespace Boardsim {

namespace {

constexpr int tickMs = 2;
constexpr qsizetype maxQueued = 1 << 16; // a board waits for its line
constexpr int gluedBytes = 20 * 15;      // twenty actual values
constexpr int faultPeriodMs = 2000;
constexpr int silenceMs = 1000;
constexpr int bootMs = 300;

} // namespace

void PidMode::Options::addTo(CommandLine &line)
{
    line.addNumber("report-rate", "n", QStringLiteral("Actual values per second of each running loop"),
                   &reportsPerSecond, 1, 100000);
    line.addNumber("noise", "units", QStringLiteral("Noise of the measurement, either way"), &noise, 0, 1000);
    line.addNumber("seed", "n", QStringLiteral("Seed of noise and faults"), &seed, 0,
                   std::numeric_limits<quint32>::max());
    line.addChoice("pid-fault", QStringLiteral("What is wrong with it"), &fault,
                   {{"none", Fault::None},
                    {"garbage", Fault::Garbage},
                    {"glued", Fault::Glued},
                    {"cut", Fault::Cut},
                    {"flood", Fault::Flood},
                    {"silence", Fault::Silence},
                    {"reset", Fault::Reset}});
}

PidMode::PidMode(const Options &options, VirtualPort &port)
    : BoardMode(port)
    , m_board(options.reportsPerSecond, options.noise, options.seed)
    , m_fault(options.fault)
    , m_seed(options.seed)
{
    m_tick.setInterval(tickMs);
    m_tick.setTimerType(Qt::PreciseTimer);
    connect(&m_tick, &QTimer::timeout, this, &PidMode::tick);
}

void PidMode::start()
{
    m_clock.start();
    m_advanced = 0;
    m_quietUntil = 0;
    m_nextFault = faultPeriodMs;
    m_held.clear();
    m_board.greet(false);
    m_tick.start();
}

// The loops go on, since a board does not notice that no host listens. Their time
// passes only while one does, which no host can tell.
void PidMode::stop()
{
    m_tick.stop();
}

void PidMode::received(const QByteArray &bytes)
{
    if (!m_clock.isValid() || m_clock.elapsed() >= m_quietUntil || m_fault != Fault::Reset)
        m_board.receive(bytes);
}

void PidMode::tick()
{
    const qint64 now = m_clock.elapsed();
    if (port().queued() < maxQueued) {
        m_board.advance(now - m_advanced);
        m_advanced = now;
    }
    if (now >= m_nextFault) {
        m_nextFault = now + faultPeriodMs;
        if (m_fault == Fault::Silence)
            m_quietUntil = now + silenceMs;
        else if (m_fault == Fault::Reset && m_board.isRunning())
            crash();
    }
    send(m_board.takeOutput());
}

// Time advances with each call: as many reports as the host reads.
void PidMode::outputEmpty()
{
    if (m_fault != Fault::Flood || !m_tick.isActive() || !m_board.isRunning())
        return;
    m_board.advance(20);
    send(m_board.takeOutput());
}

void PidMode::send(QByteArray bytes)
{
    if (m_clock.elapsed() < m_quietUntil)
        return;
    switch (m_fault) {
    case Fault::Garbage:
        addGarbage(bytes);
        break;
    case Fault::Glued:
        m_held += bytes;
        if (m_board.isRunning() && m_held.size() < gluedBytes)
            return;
        bytes.swap(m_held);
        m_held.clear();
        break;
    case Fault::Cut:
        sendInPieces(bytes);
        return;
    default:
        break;
    }
    if (!bytes.isEmpty())
        port().write(bytes);
}

// Noise between frames, sometimes with the beginning of a magic. Output begins
// and ends between frames.
void PidMode::addGarbage(QByteArray &bytes)
{
    if (bytes.isEmpty())
        return;
    QByteArray garbage;
    for (quint32 left = random(20); left > 0; --left)
        garbage += char(random(256));
    if (random(4) == 0)
        garbage += QByteArray("ORVN").left(int(random(4)));
    bytes.prepend(garbage);
}

// One piece now, the rest with the next tick: frames are cut anywhere.
void PidMode::sendInPieces(const QByteArray &bytes)
{
    m_held += bytes;
    if (m_held.isEmpty())
        return;
    const int count = m_board.isRunning() ? int(random(quint32(m_held.size()))) + 1 : m_held.size();
    port().write(m_held.left(count));
    m_held.remove(0, count);
}

// The board crashes in the middle of a frame and restarts with all loops stopped.
void PidMode::crash()
{
    port().write(m_board.takeOutput() + QByteArray("ORVN\x01\x0f\x00\x00", 8));
    m_board.reset();
    m_quietUntil = m_clock.elapsed() + bootMs;
    QTimer::singleShot(bootMs + tickMs, this, [this] {
        port().write("\r\nboot ok\r\n");
        m_board.greet(true);
    });
}

quint32 PidMode::random(quint32 below)
{
    return scrambled(m_seed ^ 0x5EEDU, m_randoms++) % below;
}

QString PidMode::statistics() const
{
    return QStringLiteral(" reports=%1").arg(m_board.reports());
}

} // namespace Boardsim
