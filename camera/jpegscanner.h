#pragma once

// Takes JPEG pictures out of a stream without any framing, by their start and
// end markers. The time it takes grows with the bytes, not with their cutting.

#include <QByteArray>

class JpegScanner
{
public:
    void append(const QByteArray &chunk);
    // The next picture: everything up to an end marker, whether or not it is
    // one. False when more has to come first.
    bool next(QByteArray *picture);
    void clear();

    bool hasStart() const { return m_start >= 0; }
    // Asked once: a picture had no end for so long that it was given up.
    bool takeOverflow();

    qsizetype size() const { return m_buffer.size() - m_begin; }
    qsizetype capacity() const { return m_buffer.capacity(); }

private:
    qsizetype find(char second, qsizetype from) const;
    void drop(qsizetype count);

    QByteArray m_buffer;
    qsizetype m_begin = 0;
    qsizetype m_start = -1;  // of the image; -1 when not yet found
    qsizetype m_scanned = 0; // bytes without an end marker
    bool m_overflow = false;
};
