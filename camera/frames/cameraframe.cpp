#include "cameraframe.h"

#include "checksum.h"

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

QByteArray build(quint8 device, quint8 command, const QByteArray &body)
{
    QByteArray packet(magic, magicSize);
    packet.reserve(body.size() + overhead);
    packet.append(static_cast<char>(device));
    appendNumber(packet, static_cast<quint32>(body.size() + overhead), 4);
    packet.append(static_cast<char>(command));
    packet.append(body);
    appendNumber(packet, Crc::of(CrcModels::crc16Modbus, packet.constData(), packet.size()), 2);
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
