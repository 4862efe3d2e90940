#include "floodmode.h"

namespace Boardsim {

static constexpr qint64 chunkBytes = 16384;

void FloodMode::Options::addTo(CommandLine &line)
{
    payload.addTo(line);
    addTotal(line, &totalBytes);
}

FloodMode::FloodMode(const Options &options, VirtualPort &port)
    : BoardMode(port)
    , m_fresh(options.payload.encoding, options.payload.seed)
    , m_total(options.totalBytes)
    , m_payload(m_fresh)
{
}

void FloodMode::start()
{
    m_payload = m_fresh;
    m_left = m_total;
    m_running = m_left != 0;
    outputEmpty();
}

void FloodMode::stop()
{
    m_running = false;
}

void FloodMode::outputEmpty()
{
    if (!m_running)
        return;
    if (m_left == 0) {
        emit finished();
        return;
    }
    const qint64 count = m_left < 0 ? chunkBytes : qMin(chunkBytes, m_left);
    if (m_left > 0)
        m_left -= count;
    port().write(m_payload.take(int(count)));
}

} // namespace Boardsim
