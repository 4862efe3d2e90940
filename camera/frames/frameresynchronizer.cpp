#include "frameresynchronizer.h"

#include "camerapacket.h"

#include <algorithm>
#include <cstring>
#include <utility>

using namespace CameraFrame;

namespace {

constexpr int kMaxForeignBytes = 4096; // of a packet with another command
constexpr int kBudgetFactor = 4;       // bytes that may be checked again for each that arrives
constexpr int kDoubtFactor = 2;        // a frame longer than the usual one by it is doubted

// A packet with another command is not for this side, but is not damaged either.
bool mayBeForeign(const char *bytes, qint64 size)
{
    if (size < bodyAt || std::memcmp(bytes, magic, magicSize) != 0)
        return false;
    const auto command = static_cast<quint8>(bytes[commandAt]);
    const quint32 length = readU32(bytes + lengthAt);
    return command != ImageData && command != ImageFormat && command != ReadRegister && length >= overhead &&
           length <= kMaxForeignBytes;
}

bool mayBegin(const char *bytes, qint64 size)
{
    return CameraPacket::mayBeHeader(bytes, static_cast<qsizetype>(size)) || mayBeForeign(bytes, size);
}

} // namespace

CameraLoss FrameResynchronizer::takeLoss()
{
    return std::exchange(m_loss, {});
}

void FrameResynchronizer::append(const QByteArray &chunk, qint64 nowMs)
{
    if (m_hasFront && nowMs - m_lastChunkMs >= pauseMs && chunk.size() >= bodyAt &&
        mayBegin(chunk.constData(), chunk.size()))
        m_pausedAt = m_received;
    m_lastChunkMs = nowMs;
    m_buffer.append(chunk);
    m_received += chunk.size();
    m_budget =
        qMin<qint64>(m_budget + kBudgetFactor * qint64(chunk.size()), kBudgetFactor * qint64(maxBytes));
}

void FrameResynchronizer::end()
{
    if (m_hasFront)
        cutTo(m_received);
    discardTo(m_received);
    m_rivals.clear();
}

// ---- headers

FrameResynchronizer::Header FrameResynchronizer::headerAt(qint64 at) const
{
    const char *const bytes = bytesAt(at);
    Header header;
    header.at = at;
    header.length = static_cast<int>(readU32(bytes + lengthAt));
    header.command = static_cast<quint8>(bytes[commandAt]);
    header.device = static_cast<quint8>(bytes[deviceAt]) & 1;
    return header;
}

bool FrameResynchronizer::isHeader(qint64 at) const
{
    return isThere(at + bodyAt) && mayBegin(bytesAt(at), m_received - at);
}

// Where the next header begins, or what may become one; `to` where none does.
qint64 FrameResynchronizer::findHeader(qint64 from, qint64 to) const
{
    while (from < to && !mayBegin(bytesAt(from), m_received - from)) {
        const void *const next = std::memchr(bytesAt(from) + 1, magic[0], static_cast<size_t>(to - from - 1));
        from = next ? from + (static_cast<const char *>(next) - bytesAt(from)) : to;
    }
    return qMin(from, to);
}

void FrameResynchronizer::discardTo(qint64 at)
{
    const qint64 lostFrom = qMax(frontAt(), m_reportedTo);
    if (at > lostFrom && m_loss.bytes == 0) {
        m_loss.offset = lostFrom;
        m_loss.head = QByteArray(
            bytesAt(lostFrom), static_cast<int>(qMin<qint64>(m_received - lostFrom, CameraLoss::headBytes)));
    }
    m_loss.bytes += qMax<qint64>(0, at - lostFrom);
    m_buffer.drop(at - frontAt());
    m_hasFront = false;
}

// The packet at the front ends there, before its time.
void FrameResynchronizer::cutTo(qint64 at)
{
    if (m_front.command == ImageData) {
        ++m_loss.frames;
        m_loss.device = m_front.device;
    }
    discardTo(at);
}

// Whether the buffer begins with a header. Reading the same bytes again for another
// one has to stay within the budget.
bool FrameResynchronizer::findFront()
{
    while (!m_hasFront) {
        discardTo(findHeader(frontAt(), m_received));
        if (m_buffer.size() < bodyAt)
            return false;
        m_front = headerAt(frontAt());
        const qint64 again = qMin(m_front.end(), m_checkedTo) - m_front.at;
        if (again > m_budget) {
            discardTo(m_front.at + 1);
            continue;
        }
        m_budget -= qMax<qint64>(0, again);
        m_hasFront = true;
        m_isBegun = false;
    }
    return true;
}

// ---- checksums

void FrameResynchronizer::beginFront()
{
    m_isBegun = true;
    m_isReported = false;
    m_checked = 0;
    m_checksum.reset();
    const auto isBefore = [this](const Header &rival) { return rival.at <= m_front.at; };
    m_rivals.erase(std::remove_if(m_rivals.begin(), m_rivals.end(), isBefore), m_rivals.end());
}

// Over the bytes of the packet so far, except its checksum, so that the checksum of a
// large frame is not computed in one go.
void FrameResynchronizer::extendChecksum()
{
    const int covered = qMin(m_buffer.size(), m_front.length - CameraPacket::checksumSize);
    if (covered <= m_checked)
        return;
    m_checksum.add(m_buffer.front() + m_checked, covered - m_checked);
    m_checked = covered;
    m_checkedTo = qMax(m_checkedTo, m_front.at + covered);
}

bool FrameResynchronizer::isFrontRight() const
{
    const bool hasNone = m_front.command == ImageFormat &&
                         m_front.length < CameraPacket::formatSize + CameraPacket::checksumSize;
    return hasNone || m_checksum.value() == readU16(bytesAt(m_front.end() - CameraPacket::checksumSize));
}

bool FrameResynchronizer::hasRightChecksum(const Header &header)
{
    m_rivalChecksum.reset();
    m_rivalChecksum.add(bytesAt(header.at), header.length - CameraPacket::checksumSize);
    return m_rivalChecksum.value() == readU16(bytesAt(header.end() - CameraPacket::checksumSize));
}

// ---- an incomplete packet

// Whether there is nothing to do but to wait for the packet at the front; otherwise
// it has been dropped.
bool FrameResynchronizer::isWaiting()
{
    if (m_pausedAt > m_front.at) {
        cutTo(findHeader(m_front.at + 1, m_pausedAt));
        return false;
    }
    return m_front.length <= kDoubtFactor * m_usual.at(m_front.device) || !findRival();
}

// Drops the packet at the front where another one inside is complete and right.
bool FrameResynchronizer::findRival()
{
    for (size_t i = 0; i < m_rivals.size();) {
        const Verdict verdict = judge(&m_rivals[i]);
        if (verdict == Verdict::Right) {
            cutTo(m_rivals[i].at);
            return true;
        }
        if (verdict == Verdict::Wrong)
            m_rivals.erase(m_rivals.begin() + static_cast<std::ptrdiff_t>(i));
        else
            ++i;
    }
    m_searched = qMax(m_searched, m_front.at + 1);
    while (isHeader(m_searched = findHeader(m_searched, m_received))) {
        Header rival = headerAt(m_searched++);
        const Verdict verdict = judge(&rival);
        if (verdict == Verdict::Right) {
            cutTo(rival.at);
            return true;
        }
        if (verdict == Verdict::Open)
            addRival(rival);
    }
    return false;
}

void FrameResynchronizer::addRival(const Header &rival)
{
    m_rivals.push_back(rival);
    if (m_rivals.size() > maxRivals)
        m_rivals.erase(std::max_element(m_rivals.begin(), m_rivals.end(),
                                        [](const Header &a, const Header &b) { return a.end() < b.end(); }));
}

// Where no checksums are asked for, a packet that another one follows is right, too.
FrameResynchronizer::Verdict FrameResynchronizer::judge(Header *rival)
{
    if (!isThere(rival->end()))
        return Verdict::Open;
    if (!rival->isChecked) {
        if (rival->length > m_budget)
            return Verdict::Open;
        m_budget -= rival->length;
        rival->isChecked = true;
        if (hasRightChecksum(*rival))
            return Verdict::Right;
    }
    if (m_requires)
        return Verdict::Wrong;
    if (!isThere(rival->end() + bodyAt))
        return Verdict::Open;
    return isHeader(rival->end()) ? Verdict::Right : Verdict::Wrong;
}

// ---- a complete packet

// Where another packet begins inside the one at the front, whose checksum is wrong;
// -1 for nowhere.
qint64 FrameResynchronizer::findInside()
{
    const auto next = [this](qint64 from) {
        const qint64 at = findHeader(from, m_front.end());
        return at < m_front.end() && isHeader(at) ? at : -1;
    };
    const qint64 first = next(m_front.at + 1);
    if (m_requires || first < 0)
        return first;
    qint64 cost = m_front.length;
    for (qint64 at = first; at >= 0 && cost <= m_budget; at = next(at + 1)) {
        const Header header = headerAt(at);
        if (!isThere(header.end()) || cost + header.length > m_budget)
            continue;
        cost += header.length;
        if (hasRightChecksum(header)) {
            m_budget -= cost;
            return at;
        }
    }
    m_budget -= qMin(cost, m_budget);
    return isHeader(m_front.end()) ? -1 : first;
}

// The end of a damaged packet may be the beginning of the next one, which has moved
// by a lost byte.
void FrameResynchronizer::finish(CameraEvent *event, bool isRight)
{
    const qint64 end = m_front.end();
    const qint64 to = isRight ? end : findHeader(qMax(m_front.at + 1, end - bodyAt + 1), end);
    m_reportedTo = end;
    if (isRight && m_front.command == ImageData) // its data are not in the event yet
        event->data = m_buffer.take(bodyAt, m_front.length - overhead, overhead - bodyAt);
    else
        m_buffer.drop(to - frontAt());
    m_hasFront = false;
}

// False where the packet is none, or nothing is to be reported of it.
bool FrameResynchronizer::readFront(CameraEvent *event, int valueLength)
{
    const bool isRight = isFrontRight();
    const qint64 inside = isRight ? -1 : findInside();
    if (inside >= 0) {
        cutTo(inside);
        return false;
    }
    const bool isImage = m_front.command == ImageData;
    const bool isKnown = isImage || m_front.command == ImageFormat || m_front.command == ReadRegister;
    if (!isRight && (!isKnown || (m_requires && !isImage))) {
        discardTo(m_front.at + 1);
        return false;
    }
    if (isKnown)
        readPacket(event, valueLength, isRight);
    finish(event, isRight);
    return isKnown;
}

void FrameResynchronizer::readPacket(CameraEvent *event, int valueLength, bool isRight)
{
    const char *const packet = m_buffer.front();
    if (m_front.command == ImageData) {
        *event = isRight ? CameraPacket::imageWithoutData(packet, m_front.length, true)
                         : CameraPacket::image(packet, m_front.length, false);
        if (isRight)
            m_usual.at(m_front.device) = m_front.length;
    } else if (m_front.command == ImageFormat) {
        *event = CameraPacket::format(packet);
    } else if (m_front.length == registerOverhead + valueLength) {
        *event = CameraPacket::reply(packet, valueLength);
    } else {
        *event = CameraEvent();
        event->kind = CameraEvent::WrongLength;
        event->device = m_front.device;
    }
    event->offset = m_front.at;
}

bool FrameResynchronizer::next(CameraEvent *event, int valueLength)
{
    while (findFront()) {
        if (!m_isBegun)
            beginFront();
        extendChecksum();
        if (m_front.command == ImageData && !std::exchange(m_isReported, true)) {
            *event = CameraEvent();
            event->device = m_front.device;
            event->kind = CameraEvent::ImageBegins;
            return true;
        }
        if (!isThere(m_front.end())) {
            if (isWaiting())
                return false;
        } else if (readFront(event, valueLength)) {
            return true;
        }
    }
    return false;
}
