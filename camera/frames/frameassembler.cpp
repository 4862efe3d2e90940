#include "frameassembler.h"

#include "camerapacket.h"

#include <cstring>
#include <utility>

using namespace CameraFrame;
using CameraPacket::formatSize;
using CameraPacket::mayBeHeader;

namespace {

bool beginsWithMagic(const char *bytes, qsizetype size)
{
    return size >= magicSize && std::memcmp(bytes, magic, magicSize) == 0;
}

// How many bytes of the magic have arrived with the chunk, which follows `before` of
// them; 0 where it does not continue the magic.
int magicReached(const QByteArray &chunk, int before)
{
    const int compared = qMin(chunk.size(), magicSize - before);
    return std::memcmp(chunk.constData(), magic + before, static_cast<size_t>(compared)) == 0
               ? before + compared
               : 0;
}

} // namespace

CameraLoss FrameAssembler::takeLoss()
{
    return std::exchange(m_loss, {});
}

void FrameAssembler::discard(qint64 bytes)
{
    if (m_loss.bytes == 0) {
        m_loss.offset = offset();
        m_loss.head = QByteArray(m_buffer.front(), qMin<int>(m_buffer.size(), CameraLoss::headBytes));
    }
    m_loss.bytes += qMin<qint64>(bytes, m_buffer.size());
    m_buffer.drop(bytes);
}

// The awaited image packet stays incomplete.
void FrameAssembler::discardFrame()
{
    m_loss.frames += m_receiving ? 1 : 0;
    m_loss.device = m_receiving ? m_device : m_loss.device;
    m_receiving = false;
}

void FrameAssembler::end()
{
    discardFrame();
    discard(m_buffer.size());
    m_begun = 0;
}

// Finds a magic that begins with a chunk.
void FrameAssembler::lookForHeader(const QByteArray &chunk)
{
    if (m_begun > m_buffer.size()) // some of them have been read
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
    m_received += chunk.size();
    if (m_receiving)
        extendChecksum();
}

// Over the bytes of the packet so far, except its last two, so that the checksum of
// a large frame is not computed in one go.
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
    m_bytesSince = m_buffer.size(); // of the next packet
    m_searching = false;
    m_regained = std::exchange(m_found, false);
}

// Drops what precedes the next possible header, or the beginning of one at the end
// of the buffer. Within an awaited image packet the search ends where the packet
// does.
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
        return; // none, or an incomplete one
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
            return readImage(event);
        bool isEvent = false;
        if (!readHeader(event, valueLength, &isEvent))
            return false;
        if (isEvent)
            return true;
    }
    return false;
}

bool FrameAssembler::readImage(CameraEvent *event)
{
    if (m_buffer.size() < static_cast<qsizetype>(m_packetLength))
        return false;
    m_receiving = false;
    const int length = static_cast<int>(m_packetLength);
    if (length < overhead) { // no room for a checksum
        *event = CameraEvent();
        event->kind = CameraEvent::Image;
        event->device = static_cast<quint8>(m_device);
        event->checksumRight = false;
        event->head = QByteArray(m_buffer.front(), length);
    } else {
        *event = CameraPacket::imageWithoutData(m_buffer.front(), length,
                                                m_checksum.value() == readU16(m_buffer.front() + length - 2));
    }
    event->offset = offset();
    if (length < overhead)
        m_buffer.drop(m_packetLength);
    else
        event->data = m_buffer.take(bodyAt, length - overhead, overhead - bodyAt);
    if (event->checksumRight)
        m_frameBytes = m_packetLength;
    endPacket();
    return true;
}

// Reads the packet at the front, of which at least the header has arrived. False
// when the rest has to arrive first.
bool FrameAssembler::readHeader(CameraEvent *event, int valueLength, bool *isEvent)
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
        beginImage(length);
        event->kind = CameraEvent::ImageBegins;
        return true;
    case ImageFormat:
        *isEvent = readFormat(event, length);
        return true;
    case ReadRegister:
        return readReply(event, valueLength);
    default:
        *isEvent = false;
        dropPacket(length);
        return true;
    }
}

void FrameAssembler::beginImage(quint32 length)
{
    m_receiving = true;
    m_device = static_cast<quint8>(m_buffer.front()[deviceAt]) & 1;
    m_packetLength = length;
    m_checked = 0;
    m_searched = 0;
    m_checksum.reset();
    extendChecksum();
}

// False for a cut announcement, which is dropped with what follows it.
bool FrameAssembler::readFormat(CameraEvent *event, quint32 length)
{
    if (length < formatSize || m_buffer.size() < static_cast<qsizetype>(length)) {
        discard(length);
        return false;
    }
    *event = CameraPacket::format(m_buffer.front());
    m_buffer.drop(length);
    endPacket();
    return true;
}

// Drops a packet that has no meaning here; the buffered bytes of an incomplete one
// are lost.
void FrameAssembler::dropPacket(quint32 length)
{
    if (m_buffer.size() < static_cast<qsizetype>(length))
        discard(m_buffer.size());
    else
        m_buffer.drop(length);
}

// Waits for a packet that can still become a reply. A longer one is dropped at once,
// because waiting for it would delay the pictures.
bool FrameAssembler::readReply(CameraEvent *event, int valueLength)
{
    const quint32 length = readU32(m_buffer.front() + lengthAt);
    const bool isComplete = m_buffer.size() >= static_cast<qsizetype>(length);
    if (!isComplete && length <= registerOverhead + maxValueBytes)
        return false;
    if (!isComplete || length != static_cast<quint32>(registerOverhead + valueLength)) {
        event->kind = CameraEvent::WrongLength;
        dropPacket(length);
        return true;
    }
    *event = CameraPacket::reply(m_buffer.front(), valueLength);
    m_buffer.drop(length);
    endPacket();
    return true;
}
