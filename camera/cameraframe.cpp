#include "camera/cameraframe.h"

namespace CameraFrame {

namespace {

void appendNumber(QByteArray &bytes, quint32 number, int size)
{
    for (int i = 0; i < size; ++i)
        bytes.append(static_cast<char>(number >> (8 * i) & 0xFF));
}

} // namespace

quint16 readU16(const char *at)
{
    return static_cast<quint16>(static_cast<uchar>(at[0]) | static_cast<uchar>(at[1]) << 8);
}

quint32 readU32(const char *at)
{
    return static_cast<quint32>(readU16(at)) | static_cast<quint32>(readU16(at + 2)) << 16;
}

// The remainders of the sixteen nibbles for the reflected polynomial 0xA001.
quint16 crc16(const char *bytes, qsizetype size, quint16 crc)
{
    static constexpr quint16 table[16] = {0x0000, 0xCC01, 0xD801, 0x1400, 0xF001, 0x3C00, 0x2800, 0xE401,
                                          0xA001, 0x6C00, 0x7800, 0xB401, 0x5000, 0x9C01, 0x8801, 0x4400};
    quint32 c = crc;
    for (const char *end = bytes + size; bytes != end; ++bytes) {
        c ^= static_cast<uchar>(*bytes);
        c = c >> 4 ^ table[c & 0xF];
        c = c >> 4 ^ table[c & 0xF];
    }
    return static_cast<quint16>(c);
}

QByteArray build(quint8 device, quint8 command, const QByteArray &body)
{
    QByteArray packet(magic, magicSize);
    packet.reserve(body.size() + overhead);
    packet.append(static_cast<char>(device));
    appendNumber(packet, static_cast<quint32>(body.size() + overhead), 4);
    packet.append(static_cast<char>(command));
    packet.append(body);
    appendNumber(packet, crc16(packet.constData(), packet.size()), 2);
    return packet;
}

QByteArray readRequest(quint8 device, quint16 regId, quint32 address, int addressLength)
{
    QByteArray body;
    appendNumber(body, regId, 2);
    appendNumber(body, address, addressLength);
    return build(device, ReadRegister, body);
}

QByteArray writeRequest(quint8 device, quint32 address, int addressLength, quint32 value, int valueLength)
{
    QByteArray body;
    appendNumber(body, address, addressLength);
    appendNumber(body, value, valueLength);
    return build(device, WriteRegister, body);
}

} // namespace CameraFrame
