#include "frameassembler.h"

#include <cstring>
#include <utility>

using namespace CameraFrame;

namespace {

constexpr int kFormatSize = 15; // of an announcement, without its checksum
constexpr int kChecksumSize = 2;

bool beginsWithMagic(const char *bytes, qsizetype size)
{
    return size >= magicSize && std::memcmp(bytes, magic, magicSize) == 0;
}

// How many bytes of the magic there are when the chunk follows some of them; 0
// where it does not go on so.
int magicReached(const QByteArray &chunk, int before)
{
    const int compared = qMin(chunk.size(), magicSize - before);
    return std::memcmp(chunk.constData(), magic + before, static_cast<size_t>(compared)) == 0
               ? before + compared
               : 0;
}

// Whether the bytes, as far as they have come, can be the header of a packet that
// a board sends.
bool mayBeHeader(const char *bytes, qsizetype size)
{
    if (std::memcmp(bytes, magic, static_cast<size_t>(qMin<qsizetype>(size, magicSize))) != 0)
        return false;
    if (size < bodyAt)
        return true;
    const quint32 length = readU32(bytes + lengthAt);
    switch (static_cast<quint8>(bytes[commandAt])) {
    case ImageData:
        return length >= overhead && length <= maxBytes;
    case ImageFormat:
        return length >= kFormatSize && length <= kFormatSize + kChecksumSize;
    case ReadRegister:
        return length > registerOverhead && length <= registerOverhead + maxValueBytes;
    default:
        return false;
    }
}

} // namespace

FrameAssembler::Loss FrameAssembler::takeLoss()
{
    return std::exchange(m_loss, {});
}

void FrameAssembler::discard(qint64 bytes)
{
    m_loss.bytes += qMin<qint64>(bytes, m_buffer.size());
    m_buffer.drop(bytes);
}

// The awaited image packet does not become complete.
void FrameAssembler::discardFrame()
{
    m_loss.frames += m_receiving ? 1 : 0;
    m_receiving = false;
}

// Looks for a magic that begins with a chunk.
void FrameAssembler::lookForHeader(const QByteArray &chunk)
{
    if (m_begun > m_buffer.size()) // of these, some have been used up
        m_begun = 0;
    int matched = magicReached(chunk, m_begun);
    if (matched == 0) {
        m_begun = 0;
        matched = magicReached(chunk, 0);
    }
    if (matched == magicSize) {
        discard(m_buffer.size() - m_begun);
        discardFrame();
    }
    m_begun = matched == magicSize || m_receiving ? 0 : matched;
}

void FrameAssembler::append(const QByteArray &chunk, qint64 nowMs)
{
    watchProgress(chunk.size(), nowMs);
    if (m_begun > 0 || chunk.startsWith(magic[0]))
        lookForHeader(chunk);
    m_buffer.append(chunk);
    if (m_receiving)
        extendChecksum();
}

// Over what is there of the packet, its last two bytes apart: a large frame's
// checksum is not taken in one go when it is complete.
void FrameAssembler::extendChecksum()
{
    const qsizetype covered = qMin<qsizetype>(m_buffer.size(), qMax<qsizetype>(m_packetLength, 2) - 2);
    if (covered <= m_checked)
        return;
    m_checksum.add(m_buffer.front() + m_checked, covered - m_checked);
    m_checked = covered;
}

void FrameAssembler::watchProgress(qint64 bytes, qint64 nowMs)
{
    m_now = nowMs;
    if (m_bytesSince == 0)
        m_since = nowMs;
    else if (m_bytesSince >= m_frameBytes && nowMs - m_since >= searchAfterMs)
        m_searching = true;
    m_bytesSince += bytes;
}

void FrameAssembler::endPacket()
{
    m_since = m_now;
    m_bytesSince = m_buffer.size(); // the beginning of the next one
    m_searching = false;
    m_regained = std::exchange(m_found, false);
}

// Drops what precedes the next bytes that can be a header; the beginning of one
// at the end of what has come is kept. Within an awaited image packet the search
// ends where the packet does.
void FrameAssembler::searchHeader()
{
    const char *const bytes = m_buffer.front();
    const qsizetype size = m_buffer.size();
    const qsizetype end = m_receiving ? qMin<qsizetype>(size, m_packetLength) : size;
    qsizetype at = m_receiving ? qMax<qsizetype>(m_searched, 1) : 0;
    while (at < end && !mayBeHeader(bytes + at, size - at)) {
        const void *const next = std::memchr(bytes + at + 1, magic[0], static_cast<size_t>(end - at - 1));
        at = next ? static_cast<const char *>(next) - bytes : end;
    }
    m_searched = at;
    if (m_receiving && (at >= end || size - at < bodyAt))
        return; // none, or not all of it has come
    m_found = m_found || at > 0;
    discardFrame();
    discard(at);
}

bool FrameAssembler::next(CameraEvent *event, int valueLength)
{
    if (std::exchange(m_regained, false)) {
        *event = CameraEvent();
        event->kind = CameraEvent::Resynchronized;
        return true;
    }
    while (m_receiving || m_buffer.size() >= overhead) {
        if (m_searching)
            searchHeader();
        if (!m_receiving && m_buffer.size() < overhead)
            return false;
        if (m_receiving)
            return takeImage(event);
        bool isEvent = false;
        if (!takeHeader(event, valueLength, &isEvent))
            return false;
        if (isEvent)
            return true;
    }
    return false;
}

bool FrameAssembler::takeImage(CameraEvent *event)
{
    if (m_buffer.size() < static_cast<qsizetype>(m_packetLength))
        return false;
    m_receiving = false;
    *event = CameraEvent();
    event->kind = CameraEvent::Image;
    event->device = static_cast<quint8>(m_buffer.front()[deviceAt]) & 1;
    if (m_packetLength < overhead) { // no room for a checksum
        event->checksumRight = false;
    } else {
        const int length = static_cast<int>(m_packetLength);
        event->checksumRight = m_checksum.value() == readU16(m_buffer.front() + length - 2);
        event->data = QByteArray(m_buffer.front() + bodyAt, length - overhead);
    }
    m_buffer.drop(m_packetLength);
    if (event->checksumRight)
        m_frameBytes = m_packetLength;
    endPacket();
    return true;
}

// Acts on the packet at the front, of which at least a header is there. False
// when it has to be waited for.
bool FrameAssembler::takeHeader(CameraEvent *event, int valueLength, bool *isEvent)
{
    *event = CameraEvent();
    *isEvent = true;
    if (!beginsWithMagic(m_buffer.front(), m_buffer.size())) {
        event->kind = CameraEvent::NoHeader;
        event->data = QByteArray(m_buffer.front(), magicSize);
        discard(m_buffer.size() - m_begun);
        return true;
    }
    const quint32 length = readU32(m_buffer.front() + lengthAt);
    const auto command = static_cast<quint8>(m_buffer.front()[commandAt]);
    event->device = static_cast<quint8>(m_buffer.front()[deviceAt]) & 1;
    if (length < bodyAt || length > maxBytes) {
        event->kind = CameraEvent::ImpossibleLength;
        discard(m_buffer.size());
        return true;
    }
    switch (command) {
    case ImageData:
        m_receiving = true;
        m_packetLength = length;
        m_checked = 0;
        m_searched = 0;
        m_checksum.reset();
        extendChecksum();
        event->kind = CameraEvent::ImageBegins;
        return true;
    case ImageFormat:
        *isEvent = length >= kFormatSize && m_buffer.size() >= static_cast<qsizetype>(length);
        if (!*isEvent) { // a short one is not waited for, whatever follows it
            discard(length);
        } else {
            event->kind = CameraEvent::Format;
            event->format = static_cast<quint8>(m_buffer.front()[bodyAt]);
            event->width = readU16(m_buffer.front() + bodyAt + 1);
            event->height = readU16(m_buffer.front() + bodyAt + 3);
            m_buffer.drop(length);
            endPacket();
        }
        return true;
    case ReadRegister:
        return takeReply(event, valueLength);
    default:
        *isEvent = false;
        dropPacket(length);
        return true;
    }
}

// One that means nothing here. What an incomplete one claims is lost.
void FrameAssembler::dropPacket(quint32 length)
{
    if (m_buffer.size() < static_cast<qsizetype>(length))
        discard(m_buffer.size());
    else
        m_buffer.drop(length);
}

// Waited for is what can still become a reply; a longer packet is given up at
// once, or it would hold up the pictures.
bool FrameAssembler::takeReply(CameraEvent *event, int valueLength)
{
    const quint32 length = readU32(m_buffer.front() + lengthAt);
    const bool isWhole = m_buffer.size() >= static_cast<qsizetype>(length);
    if (!isWhole && length <= registerOverhead + maxValueBytes)
        return false;
    const bool isReply = isWhole && length == static_cast<quint32>(registerOverhead + valueLength);
    if (!isReply) {
        event->kind = CameraEvent::WrongLength;
    } else {
        event->kind = CameraEvent::Register;
        event->status = static_cast<quint8>(m_buffer.front()[bodyAt]);
        event->address = readU16(m_buffer.front() + bodyAt + 1);
        event->data = QByteArray(m_buffer.front() + bodyAt + 3, valueLength);
    }
    if (!isReply) {
        dropPacket(length);
        return true;
    }
    m_buffer.drop(length);
    endPacket();
    return true;
}
