#pragma once

// Takes packets of the camera link out of a stream that arrives in chunks of
// any size. The time it takes grows with the bytes, not with their cutting.
// A stream that has lost its step is found again after a second. Knows no picture
// format beyond the announcement and no link; the time is passed in.

#include "bytequeue.h"
#include "cameraframe.h"
#include "checksum.h"

struct CameraEvent
{
    enum Kind {
        ImageBegins,      // the header of an image packet has come
        Image,            // a whole image packet: data, checksumRight
        Format,           // an announcement: format, width, height
        Register,         // a whole read reply: status, address, data (the value)
        WrongLength,      // a read reply whose length does not fit the value length
        NoHeader,         // what has come is no packet; data holds its first four bytes
        ImpossibleLength, // a length that no packet has; all that came is dropped
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
};

class FrameAssembler
{
public:
    // Without a complete packet for so long, while the bytes of a frame came, the
    // next header that can be one is searched for in the stream.
    static constexpr qint64 searchAfterMs = 1000;

    // What was dropped because it belongs to no complete packet.
    struct Loss
    {
        qint64 bytes = 0;
        qint64 frames = 0; // image packets of which the end did not come
    };

    explicit FrameAssembler(int maxIdleBytes = ByteQueue::defaultIdleBytes)
        : m_buffer(maxIdleBytes)
    {
    }

    // nowMs: of any clock that does not go back.
    // A chunk that begins with the magic wins over an unfinished packet. So does
    // a magic that begins a chunk and ends in a later one, unless an image is
    // awaited: a line that hands over single bytes is found again.
    void append(const QByteArray &chunk, qint64 nowMs);
    // The next event of what has come; false when more has to come first.
    // valueLength: the bytes of a register's value, 1 to 4.
    bool next(CameraEvent *event, int valueLength);
    Loss takeLoss();                                 // since the last call
    bool isReceiving() const { return m_receiving; } // an image packet

    qsizetype size() const { return m_buffer.size(); }
    qsizetype capacity() const { return m_buffer.capacity(); }

private:
    void lookForHeader(const QByteArray &chunk);
    void extendChecksum();
    void watchProgress(qint64 bytes, qint64 nowMs);
    void endPacket();
    void searchHeader();
    void discard(qint64 bytes);
    void discardFrame();
    void dropPacket(quint32 length);
    bool takeImage(CameraEvent *event);
    bool takeHeader(CameraEvent *event, int valueLength, bool *isEvent);
    bool takeReply(CameraEvent *event, int valueLength);

    ByteQueue m_buffer;
    int m_begun = 0; // bytes at the back that may become a magic, of which the first began a chunk
    bool m_receiving = false;
    quint32 m_packetLength = 0; // while receiving
    qsizetype m_checked = 0;    // bytes of the packet that m_checksum covers
    Crc m_checksum{CrcModels::crc16Modbus};

    Loss m_loss;
    qint64 m_now = 0;
    qint64 m_since = 0;                          // when the first of the bytes below came
    qint64 m_bytesSince = 0;                     // since the last complete packet
    qint64 m_frameBytes = CameraFrame::overhead; // of the last good image packet
    bool m_searching = false;
    bool m_found = false;     // a header, by searching
    bool m_regained = false;  // and the packet that it begins; not reported yet
    qsizetype m_searched = 0; // bytes of the awaited packet that hold no other header
};
