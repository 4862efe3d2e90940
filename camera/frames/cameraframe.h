#pragma once

// The packets of the camera link, in bytes:
//   "ORVN" | device (1, only bit 0) | length of the packet (4) | command (1) |
//   body | CRC-16/MODBUS of everything before it (2)
// All numbers are little-endian. Knows no link and no clock.

#include <QByteArray>

namespace CameraFrame {

constexpr char magic[] = {'O', 'R', 'V', 'N'};
constexpr int magicSize = 4;
constexpr int deviceAt = 4;
constexpr int lengthAt = 5;
constexpr int commandAt = 9;
constexpr int bodyAt = 10;
constexpr int overhead = 12;         // of a packet without a body
constexpr int registerOverhead = 15; // of a read reply without its value
constexpr int maxValueBytes = 4;     // of a register's address or value

// Of a packet and of a picture without framing: a false length must not fill the
// memory.
constexpr quint32 maxBytes = 64U * 1024 * 1024;

enum Command { ImageFormat = 1, ImageData = 2, WriteRegister = 16, ReadRegister = 17 };

quint16 readU16(const char *at);
quint32 readU32(const char *at);

QByteArray build(quint8 device, quint8 command, const QByteArray &body);

// Requests to the board; the lengths are 1 to 4 bytes, higher bytes are cut off.
QByteArray readRequest(quint8 device, quint16 regId, quint32 address, int addressLength);
QByteArray writeRequest(quint8 device, quint32 address, int addressLength, quint32 value, int valueLength);

} // namespace CameraFrame
