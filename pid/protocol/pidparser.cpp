#include "pidparser.h"

#include <QtEndian>

#include <cstring>

namespace {

constexpr int kMagicSize = 4;
constexpr int kChannelAt = 4;
constexpr int kLengthAt = 5;
constexpr int kCommandAt = 9;
constexpr int kPayloadAt = 10;
constexpr int kMaxFrame = 256;              // far beyond any frame of the protocol
constexpr int kMaxBlockedBytes = 64 * 1024; // kept behind a length of 0 or less

bool startsWithMagic(const char *at)
{
    return std::memcmp(at, "ORVN", kMagicSize) == 0;
}

// A frame inside the buffer. Bytes beyond its end read as zero.
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
        report.gains.p = frame.floatAt(kPayloadAt);
        report.gains.i = frame.floatAt(kPayloadAt + 4);
        report.gains.d = frame.floatAt(kPayloadAt + 8);
        break;
    default:
        break;
    }
    return report;
}

} // namespace

void PidParser::append(const QByteArray &bytes, qint64 arrivalUs)
{
    if (isBlocked() && size() > kMaxBlockedBytes)
        return;
    m_pending.append(bytes);
    m_arrivals.push_back({m_parsed + size(), arrivalUs});
}

void PidParser::clear()
{
    drop(size());
}

PidParser::Outcome PidParser::next(PidReport *report)
{
    resynchronize();
    if (size() < PidFrame::overhead)
        return Outcome::Waiting;
    if (size() < length())
        return Outcome::Waiting;
    const int frameSize = qMax(0, length());
    *report = decode({m_pending.front(), frameSize});
    findArrival(m_parsed + frameSize - 1);
    report->arrivalUs = m_arrival.us;
    drop(frameSize);
    const bool known =
        static_cast<quint8>(report->channel - 1) < PidFrame::channels && report->command <= PidFrame::Period;
    return known ? Outcome::Report : Outcome::Dropped;
}

qint32 PidParser::length() const
{
    return qFromLittleEndian<qint32>(m_pending.front() + kLengthAt);
}

bool PidParser::hasHead() const
{
    return size() >= PidFrame::overhead && startsWithMagic(m_pending.front());
}

bool PidParser::isBlocked() const
{
    return hasHead() && length() <= 0;
}

bool PidParser::isOverlong() const
{
    return hasHead() && length() > kMaxFrame;
}

void PidParser::skipHead()
{
    drop(qMin(1, size()));
}

// Drops bytes until the magic is at the front. Three bytes may be its beginning
// and stay.
void PidParser::resynchronize()
{
    const char *const begin = m_pending.front();
    const char *const end = begin + size();
    const char *at = begin;
    while (end - at >= kMagicSize && !startsWithMagic(at)) {
        const void *first = std::memchr(at + 1, 'O', static_cast<size_t>(end - at - 1));
        at = first ? static_cast<const char *>(first) : end;
        at = qMin(at, end - (kMagicSize - 1));
    }
    drop(static_cast<int>(at - begin));
}

void PidParser::drop(int bytes)
{
    m_pending.drop(bytes);
    m_parsed += bytes;
    findArrival(m_parsed);
}

void PidParser::findArrival(qint64 byte)
{
    while (m_arrival.end <= byte && !m_arrivals.empty()) {
        m_arrival = m_arrivals.front();
        m_arrivals.pop_front();
    }
}
