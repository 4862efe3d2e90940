#include "jpegscanner.h"

#include "cameraframe.h"

#include <cstring>
#include <utility>

namespace {

constexpr char kPrefix = '\xFF';
constexpr char kStart = '\xD8';
constexpr char kScan = '\xDA';
constexpr char kEnd = '\xD9';
constexpr int kMarkerSize = 2;

} // namespace

// The place of a marker's first byte; -1 for none.
int JpegScanner::find(char second, int from) const
{
    const char *const bytes = m_buffer.front();
    for (int at = from; at + 1 < size(); ++at) {
        const void *const prefix = std::memchr(bytes + at, kPrefix, static_cast<size_t>(size() - 1 - at));
        if (!prefix)
            return -1;
        at = static_cast<int>(static_cast<const char *>(prefix) - bytes);
        if (bytes[at + 1] == second)
            return at;
    }
    return -1;
}

void JpegScanner::drop(int bytes)
{
    if (bytes > 0 && m_loss.bytes == 0) {
        m_loss.offset = offset();
        m_loss.head = QByteArray(m_buffer.front(), qMin(size(), CameraLoss::headBytes));
    }
    m_loss.bytes += bytes;
    m_buffer.drop(bytes);
}

void JpegScanner::append(const QByteArray &chunk)
{
    if (chunk.size() > static_cast<int>(CameraFrame::maxBytes) - size()) {
        end();
        m_hasOverflown = true;
    }
    m_buffer.append(chunk);
    m_received += chunk.size();
}

bool JpegScanner::takeOverflow()
{
    return std::exchange(m_hasOverflown, false);
}

CameraLoss JpegScanner::takeLoss()
{
    return std::exchange(m_loss, {});
}

bool JpegScanner::takeLast(QByteArray *picture)
{
    if (!m_hasStart || find(kScan, 0) < 0)
        return false;
    *picture = QByteArray(m_buffer.front(), size());
    m_buffer.drop(size());
    end();
    return true;
}

void JpegScanner::end()
{
    m_loss.frames += m_hasStart ? 1 : 0;
    drop(size());
    m_hasStart = false;
    m_scanned = 0;
}

bool JpegScanner::next(QByteArray *picture)
{
    if (size() == 0)
        return false;
    if (!m_hasStart) {
        const int start = find(kStart, 0);
        m_hasStart = start >= 0;
        drop(qMax(0, start));
    }
    const int end = find(kEnd, m_scanned);
    if (end >= 0) {
        *picture = QByteArray(m_buffer.front(), end + kMarkerSize);
        m_buffer.drop(end + kMarkerSize);
        m_hasStart = false;
        m_scanned = 0;
        return true;
    }
    const int last = size() - 1; // which may be half a marker
    if (m_hasStart)
        m_scanned = last;
    else
        drop(m_buffer.front()[last] == kPrefix ? last : last + 1);
    return false;
}
