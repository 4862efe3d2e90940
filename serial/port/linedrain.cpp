#include "linedrain.h"

namespace {

constexpr qint64 kSecondNs = 1000LL * 1000 * 1000;
constexpr qint64 kMaxDrainNs = 10 * kSecondNs;
constexpr qint64 kGraceNs = kSecondNs; // for what is not the line's own time

} // namespace

qint64 LineDrain::byteNs(int baudRate, int bitsPerByte)
{
    return baudRate > 0 ? bitsPerByte * kSecondNs / baudRate : 0;
}

LineDrain::LineDrain(qint64 nowNs, qint64 pendingBytes, qint64 byteNs, qint64 lineFreeAtNs)
    : m_byteNs(byteNs)
    , m_lineFreeAtNs(lineFreeAtNs)
    , m_pendingBytes(pendingBytes)
    , m_progressAtNs(nowNs)
{
    const qint64 countedBytes = qMin(pendingBytes + transmitterBytes, kMaxDrainNs); // cannot overflow
    const qint64 lineNs = m_byteNs > 0 ? qMin(countedBytes, kMaxDrainNs / m_byteNs + 1) * m_byteNs : 0;
    m_deadlineNs = nowNs + qMin(lineNs + lineNs / 2 + kGraceNs, kMaxDrainNs);
}

LineDrain::State LineDrain::check(qint64 nowNs, qint64 pendingBytes)
{
    if (pendingBytes < m_pendingBytes)
        m_progressAtNs = nowNs;
    m_pendingBytes = pendingBytes;
    if (pendingBytes == 0 && m_emptyAtNs < 0)
        m_emptyAtNs = nowNs;
    if (pendingBytes == 0 && expectedNs(nowNs, 0) <= 0)
        return State::Left;
    const qint64 stallLimitNs = kGraceNs + transmitterBytes * m_byteNs;
    const bool stuck = pendingBytes > 0 && nowNs - m_progressAtNs > stallLimitNs;
    return stuck || nowNs > m_deadlineNs ? State::TimedOut : State::Pending;
}

qint64 LineDrain::expectedNs(qint64 nowNs, qint64 pendingBytes) const
{
    const qint64 emptyAtNs = m_emptyAtNs < 0 ? nowNs : m_emptyAtNs;
    const qint64 shiftNs = qMin(m_lineFreeAtNs, emptyAtNs + transmitterBytes * m_byteNs) - nowNs;
    return qMax(pendingBytes * m_byteNs, qMax<qint64>(0, shiftNs));
}
