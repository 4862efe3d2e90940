#include "camera/frameassembler.h"

#include <cstring>

using namespace CameraFrame;

namespace {

constexpr int kFormatSize = 15; // of an announcement, without its checksum

// Below this, moving what is left to the front costs next to nothing.
constexpr qsizetype kCompactBytes = 4096;

bool beginsWithMagic(const char *bytes, qsizetype size)
{
    return size >= magicSize && std::memcmp(bytes, magic, magicSize) == 0;
}

} // namespace

void FrameAssembler::clear()
{
    m_buffer.clear();
    m_begin = 0;
    m_receiving = false;
}

// Used bytes stay at the front until they are at least as many as the rest, so
// that each byte is moved once on average.
void FrameAssembler::drop(qsizetype count)
{
    m_begin += qMin(count, size());
    if (m_begin == m_buffer.size()) {
        m_buffer.resize(0);
        m_begin = 0;
    } else if (m_begin >= kCompactBytes && m_begin >= size()) {
        m_buffer.remove(0, static_cast<int>(m_begin));
        m_begin = 0;
    }
}

void FrameAssembler::append(const QByteArray &chunk)
{
    if (beginsWithMagic(chunk.constData(), chunk.size())) {
        m_buffer.resize(0);
        m_begin = 0;
        m_receiving = false;
    }
    m_buffer.append(chunk);
    if (m_receiving)
        extendChecksum();
}

// Over what is there of the packet, its last two bytes apart: a large frame's
// checksum is not taken in one go when it is complete.
void FrameAssembler::extendChecksum()
{
    const qsizetype covered = qMin<qsizetype>(size(), qMax<qsizetype>(m_packetLength, 2) - 2);
    if (covered <= m_checked)
        return;
    m_checksum = crc16(front() + m_checked, covered - m_checked, m_checksum);
    m_checked = covered;
}

bool FrameAssembler::next(CameraEvent *event, int valueLength)
{
    while (m_receiving || size() >= overhead) {
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
    if (size() < static_cast<qsizetype>(m_packetLength))
        return false;
    m_receiving = false;
    *event = CameraEvent();
    event->kind = CameraEvent::Image;
    event->device = static_cast<quint8>(front()[deviceAt]) & 1;
    if (m_packetLength < overhead) { // no room for a checksum
        event->checksumRight = false;
    } else {
        const int length = static_cast<int>(m_packetLength);
        event->checksumRight = m_checksum == readU16(front() + length - 2);
        event->data = QByteArray(front() + bodyAt, length - overhead);
    }
    drop(m_packetLength);
    return true;
}

// Acts on the packet at the front, of which at least a header is there. False
// when it has to be waited for.
bool FrameAssembler::takeHeader(CameraEvent *event, int valueLength, bool *isEvent)
{
    *event = CameraEvent();
    *isEvent = true;
    if (!beginsWithMagic(front(), size())) {
        event->kind = CameraEvent::NoHeader;
        event->data = QByteArray(front(), magicSize);
        drop(size());
        return true;
    }
    const quint32 length = readU32(front() + lengthAt);
    const auto command = static_cast<quint8>(front()[commandAt]);
    event->device = static_cast<quint8>(front()[deviceAt]) & 1;
    if (length < bodyAt || length > mostBytes) {
        event->kind = CameraEvent::ImpossibleLength;
        drop(size());
        return true;
    }
    switch (command) {
    case ImageData:
        m_receiving = true;
        m_packetLength = length;
        m_checked = 0;
        m_checksum = crcStart;
        extendChecksum();
        event->kind = CameraEvent::ImageBegins;
        return true;
    case ImageFormat:
        *isEvent = length >= kFormatSize && size() >= static_cast<qsizetype>(length);
        if (*isEvent) {
            event->kind = CameraEvent::Format;
            event->format = static_cast<quint8>(front()[bodyAt]);
            event->width = readU16(front() + bodyAt + 1);
            event->height = readU16(front() + bodyAt + 3);
        }
        drop(length); // a short one is not waited for, whatever follows it
        return true;
    case ReadRegister:
        return takeReply(event, valueLength);
    default:
        *isEvent = false;
        drop(length);
        return true;
    }
}

// Waited for is what can still become a reply; a longer packet is given up at
// once, or it would hold up the pictures.
bool FrameAssembler::takeReply(CameraEvent *event, int valueLength)
{
    const quint32 length = readU32(front() + lengthAt);
    const bool isWhole = size() >= static_cast<qsizetype>(length);
    if (!isWhole && length <= registerOverhead + longestValue)
        return false;
    if (!isWhole || length != static_cast<quint32>(registerOverhead + valueLength)) {
        event->kind = CameraEvent::WrongLength;
    } else {
        event->kind = CameraEvent::Register;
        event->status = static_cast<quint8>(front()[bodyAt]);
        event->address = readU16(front() + bodyAt + 1);
        event->data = QByteArray(front() + bodyAt + 3, valueLength);
    }
    drop(length);
    return true;
}
