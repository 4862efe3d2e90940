#pragma once

// Finds JPEG pictures in a stream without any framing, by their start and end
// markers. The time it needs grows with the bytes, not with how they are cut.

#include "bytequeue.h"
#include "cameraevent.h"

class JpegScanner
{
public:
    explicit JpegScanner(int maxIdleBytes = ByteQueue::defaultIdleBytes)
        : m_buffer(maxIdleBytes)
    {
    }

    void append(const QByteArray &chunk);
    // The next picture: everything up to an end marker, whether or not it is a
    // picture. False when more has to arrive first.
    bool next(QByteArray *picture);

    bool hasStart() const { return m_hasStart; }
    // Whether a picture without an end was dropped since the last call.
    bool takeOverflow();
    CameraLoss takeLoss(); // since the last call
    // The stream has ended: what is buffered is lost.
    void end();
    // The same, but where the data of a picture have begun, they are the last picture,
    // which counts as one without an end.
    bool takeLast(QByteArray *picture);
    qint64 offset() const { return m_received - m_buffer.size(); } // of the front

    int size() const { return m_buffer.size(); }
    int capacity() const { return m_buffer.capacity(); }

private:
    int find(char second, int from) const;
    void drop(int bytes);

    ByteQueue m_buffer;
    bool m_hasStart = false; // the buffer begins with a start marker
    int m_scanned = 0;       // bytes in which no end marker begins
    bool m_hasOverflown = false;
    qint64 m_received = 0; // bytes since the stream began
    CameraLoss m_loss;
};
