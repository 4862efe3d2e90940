#pragma once

// What the readers of a camera stream report: events, and bytes that were dropped.

#include <QByteArray>

struct CameraEvent
{
    enum Kind {
        ImageBegins,      // the header of an image packet has arrived
        Image,            // a complete image packet: data, checksumRight
        Format,           // an announcement: format, width, height
        Register,         // a complete read reply: status, address, data (the value)
        WrongLength,      // a read reply whose length does not fit the value length
        NoHeader,         // the buffered bytes are no packet; data holds the first four
        ImpossibleLength, // a length that no packet has; all buffered bytes are dropped
        Resynchronized    // a search for a header has led to the packet before
    };
    Kind kind = NoHeader;
    quint8 device = 0; // 0 or 1
    QByteArray data;
    bool checksumRight = true;
    quint8 format = 0;
    quint16 width = 0;
    quint16 height = 0;
    quint8 status = 0;
    quint16 address = 0;
    qint64 offset = 0; // of the packet's first byte, since the stream began
    QByteArray head;   // the first bytes of an image packet with a wrong checksum
};

// Bytes that were dropped because they belong to no complete packet or picture.
struct CameraLoss
{
    static constexpr int headBytes = 16;

    qint64 bytes = 0;
    qint64 frames = 0; // without an end
    int device = -1;   // of the last such frame, 0 or 1; -1: unknown
    qint64 offset = 0; // of the first dropped byte, since the stream began
    QByteArray head;   // the first dropped bytes
};
