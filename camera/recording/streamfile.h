#pragma once

// The file of recorded camera bytes: what arrived, from whom and when. All numbers are
// little-endian. The head, 32 bytes:
//   "KORVXCAM" | version (1) | flags (1): 1 raw JPEG, 2 big-endian pixels |
//   length of a register's value (1) | 0 (1) | for each of two devices: format code (1),
//   width (2), height (2) | 0 (2) | time of the beginning, ms since 1970 (8)
// then records:
//   kind (1) | flags (1): 1 datagram | bytes of the sender's name (2) | bytes (4) |
//   us since the beginning (8) | name, UTF-8 | bytes
// A file whose end is missing is good up to the last complete record.

#include "pixelformat.h"

#include <QByteArray>
#include <QString>

#include <array>

class QIODevice;

struct StreamHead
{
    bool isRawJpeg = false;
    bool isBigEndian = false;
    quint8 valueLength = 1;             // of a register, in bytes
    std::array<ImageRecord, 2> formats; // of each device's frames until it announces another one
    qint64 beganMs = 0;                 // since 1970

    QByteArray bytes() const;
};

struct StreamRecord
{
    enum Kind : quint8 {
        Bytes, // arrived
        Ended, // the sender has closed in order
        Lost,  // the sender has gone otherwise, or the link was closed
    };
    Kind kind = Bytes;
    bool isDatagram = false;
    qint64 timeUs = 0; // since the beginning
    QString sender;
    QByteArray bytes;

    QByteArray toBytes() const;
};

class StreamReader
{
public:
    enum Result { Record, End, Damaged };

    // False where it is no such file. The device stays open for as long as this reads.
    bool open(QIODevice *device);
    const StreamHead &head() const { return m_head; }
    // Damaged: no record begins here, or the rest of it is missing.
    Result next(StreamRecord *record);

private:
    QIODevice *m_device = nullptr;
    StreamHead m_head;
};
