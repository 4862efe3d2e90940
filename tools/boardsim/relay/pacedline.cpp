#include "pacedline.h"

namespace Boardsim {

static constexpr qint64 bitsPerByte = 10; // start, eight data, stop
static constexpr qint64 nsPerSecond = 1000000000;

PacedLine::PacedLine(int baudRate)
    : m_baudRate(baudRate)
{
}

// When so many bytes since m_startNs have arrived, to the nanosecond above.
qint64 PacedLine::arrivalNs(qint64 bytes) const
{
    if (m_baudRate == 0)
        return m_startNs;
    const qint64 bits = bytes * bitsPerByte;
    return m_startNs + bits / m_baudRate * nsPerSecond +
           (bits % m_baudRate * nsPerSecond + m_baudRate - 1) / m_baudRate;
}

void PacedLine::append(const QByteArray &bytes, qint64 nowNs)
{
    if (m_buffer.isEmpty())
        hold(nowNs); // idle until now
    m_buffer += bytes;
}

QByteArray PacedLine::take(qint64 nowNs)
{
    // The guess is a little low at most.
    const double elapsed = double(nowNs - m_startNs);
    qint64 carried = qint64(elapsed * m_baudRate / (double(nsPerSecond) * bitsPerByte)) - 2;
    carried = qBound(m_carried, carried, m_carried + m_buffer.size());
    while (carried < m_carried + m_buffer.size() && arrivalNs(carried + 1) <= nowNs)
        ++carried;
    const int count = int(carried - m_carried);
    const QByteArray bytes = m_buffer.left(count);
    m_buffer.remove(0, count);
    m_carried += count;
    return bytes;
}

void PacedLine::hold(qint64 nowNs)
{
    m_startNs = nowNs;
    m_carried = 0;
}

qint64 PacedLine::doneNs() const
{
    return arrivalNs(m_carried + m_buffer.size());
}

} // namespace Boardsim
