#include "jpegscanner.h"

#include "cameraframe.h"

#include <cstring>
#include <utility>

#if defined(__SSE2__) || defined(_M_X64)
#define KORVEX_SSE2
#include <emmintrin.h>
#endif

namespace {

constexpr char kPrefix = '\xFF';
constexpr char kStart = '\xD8';
constexpr char kEnd = '\xD9';

// The place of a marker's first byte; -1 for none.
int find(char second, const char *bytes, int size, int from = 0)
{
    for (int at = from; at + 1 < size; ++at) {
        const void *const prefix = std::memchr(bytes + at, kPrefix, static_cast<size_t>(size - 1 - at));
        if (!prefix)
            return -1;
        at = static_cast<int>(static_cast<const char *>(prefix) - bytes);
        if (bytes[at + 1] == second)
            return at;
    }
    return -1;
}

#ifdef KORVEX_SSE2

constexpr int kPlaces = 16; // looked at together
constexpr int kFewBytes = 256;

// Quicker than a search where there are few bytes, of which hardly any hold a
// marker: there is no way out before the end.
bool fewHoldEnd(const char *bytes, int size)
{
    const __m128i prefix = _mm_set1_epi8(kPrefix);
    const __m128i second = _mm_set1_epi8(kEnd);
    __m128i found = _mm_setzero_si128();
    const auto look = [&](const char *at) {
        const __m128i firsts = _mm_loadu_si128(reinterpret_cast<const __m128i *>(at));
        const __m128i seconds = _mm_loadu_si128(reinterpret_cast<const __m128i *>(at + 1));
        found = _mm_or_si128(found,
                             _mm_and_si128(_mm_cmpeq_epi8(firsts, prefix), _mm_cmpeq_epi8(seconds, second)));
    };
    const char *const last = bytes + size - 1 - kPlaces;
    for (; bytes < last; bytes += kPlaces)
        look(bytes);
    look(last);
    return _mm_movemask_epi8(found) != 0;
}

#endif

bool holdsEnd(const char *bytes, int size)
{
#ifdef KORVEX_SSE2
    if (size > kPlaces && size <= kFewBytes)
        return fewHoldEnd(bytes, size);
#endif
    return find(kEnd, bytes, size) >= 0;
}

} // namespace

void JpegScanner::clear()
{
    m_buffer.clear();
    m_start = -1;
    m_scanned = 0;
    m_mayHold = false;
    m_endsInPrefix = false;
    m_overflow = false;
}

void JpegScanner::append(const QByteArray &chunk)
{
    if (chunk.size() > static_cast<int>(CameraFrame::mostBytes) - size()) {
        m_lost += size();
        clear();
        m_overflow = true;
    }
    if (chunk.isEmpty())
        return;
    // Looked at before it is copied: a processor is slow to read what it has only
    // just written, and of small chunks that is all.
    const char *const bytes = chunk.constData();
    if (!m_mayHold &&
        (m_start < 0 || (m_endsInPrefix && bytes[0] == kEnd) || holdsEnd(bytes, chunk.size()))) {
        m_mayHold = true;
        m_scanned = qMax(0, size() - 1);
    }
    m_endsInPrefix = bytes[chunk.size() - 1] == kPrefix;
    m_buffer.append(chunk);
}

bool JpegScanner::takeOverflow()
{
    return std::exchange(m_overflow, false);
}

qint64 JpegScanner::takeLost()
{
    return std::exchange(m_lost, 0);
}

bool JpegScanner::take(QByteArray *picture)
{
    if (m_start < 0) {
        m_start = find(kStart, m_buffer.front(), size());
        if (m_start > 0) {
            m_lost += m_start;
            m_buffer.drop(m_start);
        }
    }
    const int end = find(kEnd, m_buffer.front(), size(), m_scanned);
    if (end >= 0) {
        *picture = QByteArray(m_buffer.front(), end + 2);
        m_buffer.drop(end + 2);
        m_start = -1;
        m_scanned = 0;
        return true;
    }
    m_mayHold = false;
    if (m_start < 0) { // of what precedes a picture only half a marker may matter
        const int useless = size() - (size() > 0 && m_endsInPrefix ? 1 : 0);
        m_lost += useless;
        m_buffer.drop(useless);
    }
    return false;
}
