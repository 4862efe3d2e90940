#pragma once

// The frames of the PID link: how numbers are encoded and how a frame to the
// board is built. All numbers are little-endian.
//
//   offset 0      "ORVN"
//          4      channel, 1 to 5
//          5      length of the frame, int32: payload + 11
//          9      command
//          10     payload
//          length - 1   sum of all bytes before it, modulo 256

#include <QByteArray>
#include <QtGlobal>

struct PidGains
{
    float p = 0;
    float i = 0;
    float d = 0;

    bool operator==(const PidGains &other) const { return p == other.p && i == other.i && d == other.d; }
    bool operator!=(const PidGains &other) const { return !(*this == other); }
};

namespace PidFrame {

constexpr int channels = 5;
constexpr int overhead = 11; // bytes around a payload

enum Command : quint8 { // to the board
    SetPid = 0x10,
    SetTarget = 0x11,
    Start = 0x12,
    Stop = 0x13,
    Reset = 0x14,
    SetPeriod = 0x15,
};

enum Report : quint8 { // from the board
    Target = 1,
    Actual = 2,
    Pid = 3,
    Started = 4,
    Stopped = 5,
    Period = 6,
};

QByteArray magic(); // "ORVN"

QByteArray build(quint8 command, quint8 channel, const QByteArray &payload);

QByteArray int32ToBytes(qint32 value);
QByteArray floatToBytes(float value);
// 0 unless there are exactly four bytes.
qint32 bytesToInt32(const QByteArray &bytes);
float bytesToFloat(const QByteArray &bytes);

} // namespace PidFrame
