#pragma once

// Extracts the packets of the camera link from a stream that arrives in chunks of
// any size. The time it needs grows with the bytes, not with how they are cut.
// Resynchronizes a stream without complete packets after a second. Knows no picture
// format beyond the announcement and no link; the time is passed in.

#include "bytequeue.h"
#include "cameraevent.h"
#include "cameraframe.h"
#include "checksum.h"

class FrameAssembler
{
public:
    // After this time without a complete packet, in which the bytes of a frame
    // arrived, the stream is searched for the next possible header.
    static constexpr qint64 searchAfterMs = 1000;

    explicit FrameAssembler(int maxIdleBytes = ByteQueue::defaultIdleBytes)
        : m_buffer(maxIdleBytes)
    {
    }

    // nowMs: of any clock that does not go back.
    // A chunk that begins with the magic replaces an incomplete packet. So does a
    // magic that begins a chunk and ends in a later one, unless an image is awaited:
    // this way a line that delivers single bytes is resynchronized.
    void append(const QByteArray &chunk, qint64 nowMs);
    // The next event; false when more has to arrive first.
    // valueLength: the bytes of a register's value, 1 to 4.
    bool next(CameraEvent *event, int valueLength);
    CameraLoss takeLoss(); // since the last call
    // The stream has ended: what is buffered is lost.
    void end();
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
    qint64 offset() const { return m_received - m_buffer.size(); } // of the front
    void dropPacket(quint32 length);
    bool readImage(CameraEvent *event);
    bool readHeader(CameraEvent *event, int valueLength, bool *isEvent);
    void beginImage(quint32 length);
    bool readFormat(CameraEvent *event, quint32 length);
    bool readReply(CameraEvent *event, int valueLength);

    ByteQueue m_buffer;
    int m_begun = 0; // bytes at the back that may become a magic and began a chunk
    bool m_receiving = false;
    quint32 m_packetLength = 0; // while receiving
    qsizetype m_checked = 0;    // bytes of the packet that m_checksum covers
    Crc m_checksum{CrcModels::crc16Modbus};

    CameraLoss m_loss;
    qint64 m_received = 0; // bytes since the stream began
    int m_device = 0;      // of the awaited image packet
    qint64 m_now = 0;
    qint64 m_since = 0;                          // when the first of m_bytesSince arrived
    qint64 m_bytesSince = 0;                     // since the last complete packet
    qint64 m_frameBytes = CameraFrame::overhead; // of the last good image packet
    bool m_searching = false;
    bool m_found = false;     // a header, by searching
    bool m_regained = false;  // and the packet that it begins; not reported yet
    qsizetype m_searched = 0; // bytes of the awaited packet that hold no other header
};
