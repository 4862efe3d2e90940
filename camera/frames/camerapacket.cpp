#include "camerapacket.h"

#include <cstring>

using namespace CameraFrame;

namespace {

CameraEvent event(CameraEvent::Kind kind, const char *packet)
{
    CameraEvent event;
    event.kind = kind;
    event.device = static_cast<quint8>(packet[deviceAt]) & 1;
    return event;
}

} // namespace

namespace CameraPacket {

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
        return length >= formatSize && length <= formatSize + checksumSize;
    case ReadRegister:
        return length > registerOverhead && length <= registerOverhead + maxValueBytes;
    default:
        return false;
    }
}

CameraEvent imageWithoutData(const char *packet, int length, bool checksumRight)
{
    CameraEvent image = event(CameraEvent::Image, packet);
    image.checksumRight = checksumRight;
    if (!checksumRight)
        image.head = QByteArray(packet, qMin(length, CameraLoss::headBytes));
    return image;
}

CameraEvent image(const char *packet, int length, bool checksumRight)
{
    CameraEvent image = imageWithoutData(packet, length, checksumRight);
    image.data = QByteArray(packet + bodyAt, length - overhead);
    return image;
}

CameraEvent format(const char *packet)
{
    CameraEvent format = event(CameraEvent::Format, packet);
    format.format = static_cast<quint8>(packet[bodyAt]);
    format.width = readU16(packet + bodyAt + 1);
    format.height = readU16(packet + bodyAt + 3);
    return format;
}

CameraEvent reply(const char *packet, int valueLength)
{
    CameraEvent reply = event(CameraEvent::Register, packet);
    reply.status = static_cast<quint8>(packet[bodyAt]);
    reply.address = readU16(packet + bodyAt + 1);
    reply.data = QByteArray(packet + bodyAt + 3, valueLength);
    return reply;
}

} // namespace CameraPacket
