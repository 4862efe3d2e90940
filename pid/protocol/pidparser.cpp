#include "pidparser.h"

#include <QtEndian>

#include <cstring>

namespace {

constexpr int kMagicSize = 4;
constexpr int kChannelAt = 4;
constexpr int kLengthAt = 5;
constexpr int kCommandAt = 9;
constexpr int kPayloadAt = 10;
constexpr int kLongestSensible = 256;   // far beyond any frame of the protocol
constexpr int kMostBlocked = 64 * 1024; // bytes kept behind a length of 0 or less

bool startsWithMagic(const char *at)
{
    return std::memcmp(at, "ORVN", kMagicSize) == 0;
}

// A frame where it lies in the buffer. It may be shorter than what is read from
// it: what is missing is zero.
struct Frame
{
    const char *start;
    int size;

    quint8 byteAt(int at) const { return at < size ? static_cast<quint8>(start[at]) : quint8(0); }
    qint32 int32At(int at) const { return at + 4 <= size ? qFromLittleEndian<qint32>(start + at) : 0; }
    float floatAt(int at) const
    {
        const qint32 bits = int32At(at);
        float value = 0;
        std::memcpy(&value, &bits, sizeof value);
        return value;
    }
};

PidReport decode(const Frame &frame)
{
    PidReport report;
    report.command = frame.byteAt(kCommandAt);
    report.channel = frame.byteAt(kChannelAt);
    switch (report.command) {
    case PidFrame::Target:
    case PidFrame::Actual:
    case PidFrame::Period:
        report.value = frame.int32At(kPayloadAt);
        break;
    case PidFrame::Pid:
        report.p = frame.floatAt(kPayloadAt);
        report.i = frame.floatAt(kPayloadAt + 4);
        report.d = frame.floatAt(kPayloadAt + 8);
        break;
    default:
        break;
    }
    return report;
}

} // namespace

void PidParser::append(const QByteArray &bytes)
{
    if (isBlocked() && size() > kMostBlocked)
        return;
    compact();
    m_buffer += bytes;
}

void PidParser::clear()
{
    m_buffer.clear();
    m_at = 0;
}

PidParser::Outcome PidParser::next(PidReport *report)
{
    resynchronise();
    if (size() < PidFrame::overhead)
        return Outcome::Waiting;
    if (size() < length())
        return Outcome::Waiting;
    const int taken = qMax(0, length());
    *report = decode({m_buffer.constData() + m_at, taken});
    m_at += taken;
    const bool known =
        static_cast<quint8>(report->channel - 1) < PidFrame::channels && report->command <= PidFrame::Period;
    return known ? Outcome::Report : Outcome::Dropped;
}

qint32 PidParser::length() const
{
    return qFromLittleEndian<qint32>(m_buffer.constData() + m_at + kLengthAt);
}

bool PidParser::hasHead() const
{
    return size() >= PidFrame::overhead && startsWithMagic(m_buffer.constData() + m_at);
}

bool PidParser::isBlocked() const
{
    return hasHead() && length() <= 0;
}

bool PidParser::isOverlong() const
{
    return hasHead() && length() > kLongestSensible;
}

void PidParser::skipHead()
{
    m_at += qMin(1, size());
}

// Drops bytes until the magic is in front. Three bytes may be its beginning
// and stay.
void PidParser::resynchronise()
{
    const char *const begin = m_buffer.constData();
    const char *at = begin + m_at;
    const char *const end = begin + m_buffer.size();
    while (end - at >= kMagicSize && !startsWithMagic(at)) {
        const void *first = std::memchr(at + 1, 'O', static_cast<size_t>(end - at - 1));
        at = first ? static_cast<const char *>(first) : end;
        at = qMin(at, end - (kMagicSize - 1));
    }
    m_at = static_cast<int>(at - begin);
}

// Used bytes go once they are the greater part, so that none is moved twice.
void PidParser::compact()
{
    if (m_at == m_buffer.size()) {
        clear();
    } else if (m_at > m_buffer.size() / 2) {
        m_buffer.remove(0, m_at);
        m_at = 0;
    }
}
