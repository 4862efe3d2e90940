#include "camera/jpegscanner.h"

#include "camera/cameraframe.h"

#include <cstring>

namespace {

constexpr char kPrefix = '\xFF';
constexpr char kStart = '\xD8';
constexpr char kEnd = '\xD9';
constexpr qsizetype kCompactBytes = 4096;

} // namespace

void JpegScanner::clear()
{
    m_buffer.clear();
    m_begin = 0;
    m_start = -1;
    m_scanned = 0;
}

void JpegScanner::append(const QByteArray &chunk)
{
    if (size() + chunk.size() > static_cast<qsizetype>(CameraFrame::mostBytes)) {
        clear();
        m_overflow = true;
    }
    m_buffer.append(chunk);
}

bool JpegScanner::takeOverflow()
{
    return std::exchange(m_overflow, false);
}

// The place of a marker's first byte, counted from the front; -1 for none.
qsizetype JpegScanner::find(char second, qsizetype from) const
{
    const char *const front = m_buffer.constData() + m_begin;
    const char *const last = front + size() - 1; // a marker's second byte at most
    for (const char *at = front + from; at < last; ++at) {
        at = static_cast<const char *>(std::memchr(at, kPrefix, static_cast<size_t>(last - at)));
        if (!at)
            return -1;
        if (at[1] == second)
            return at - front;
    }
    return -1;
}

void JpegScanner::drop(qsizetype count)
{
    m_begin += count;
    if (m_begin == m_buffer.size()) {
        m_buffer.resize(0);
        m_begin = 0;
    } else if (m_begin >= kCompactBytes && m_begin >= size()) {
        m_buffer.remove(0, static_cast<int>(m_begin));
        m_begin = 0;
    }
}

bool JpegScanner::next(QByteArray *picture)
{
    if (m_start < 0) {
        m_start = find(kStart, 0);
        if (m_start > 0) {
            drop(m_start);
            m_scanned = 0;
        }
    }
    const qsizetype end = find(kEnd, m_scanned);
    if (end >= 0) {
        *picture = QByteArray(m_buffer.constData() + m_begin, static_cast<int>(end + 2));
        drop(end + 2);
        m_start = -1;
        m_scanned = 0;
        return true;
    }
    if (m_start < 0) {
        // Of what precedes a picture only half a marker may matter.
        const bool isHalf = size() > 0 && m_buffer.at(m_buffer.size() - 1) == kPrefix;
        drop(size() - (isHalf ? 1 : 0));
        m_scanned = 0;
    } else {
        m_scanned = qMax<qsizetype>(0, size() - 1);
    }
    return false;
}
