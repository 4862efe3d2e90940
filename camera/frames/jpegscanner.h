#pragma once

// Takes JPEG pictures out of a stream without any framing, by their start and
// end markers. The time it takes grows with the bytes, not with their cutting.

#include "bytequeue.h"

class JpegScanner
{
public:
    explicit JpegScanner(int maxIdleBytes = ByteQueue::defaultIdleBytes)
        : m_buffer(maxIdleBytes)
    {
    }

    void append(const QByteArray &chunk);
    // The next picture: everything up to an end marker, whether or not it is
    // one. False when more has to come first.
    bool next(QByteArray *picture) { return m_mayHold && take(picture); }
    void clear();

    bool hasStart() const { return m_start >= 0; }
    // Asked once: a picture had no end for so long that it was given up.
    bool takeOverflow();
    // The bytes before pictures that were dropped since the last call.
    qint64 takeLost();

    int size() const { return m_buffer.size(); }
    int capacity() const { return m_buffer.capacity(); }

private:
    bool take(QByteArray *picture);

    ByteQueue m_buffer;
    int m_start = -1;            // of the image; -1 when not yet found
    int m_scanned = 0;           // bytes before which no end marker begins
    bool m_mayHold = false;      // there is something that next() has not seen
    bool m_endsInPrefix = false; // the last byte may be half a marker
    bool m_overflow = false;
    qint64 m_lost = 0;
};
