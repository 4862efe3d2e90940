#include "bytequeue.h"

namespace {

// Below this, dropped bytes stay: their room is not worth a move.
constexpr int kCompactBytes = 4096;

} // namespace

void ByteQueue::makeRoom(int bytes)
{
    m_store.resize(static_cast<size_t>(qMax(2 * m_end, m_end + bytes)));
}

// Dropped bytes keep their room until they are at least as many as the rest.
void ByteQueue::drop(qint64 count)
{
    m_begin += static_cast<int>(qMin<qint64>(count, size()));
    if (m_begin == m_end) {
        m_begin = 0;
        m_end = 0;
        if (capacity() > m_maxIdleBytes)
            clear();
    } else if (m_begin >= kCompactBytes && m_begin >= size()) {
        std::memmove(m_store.data(), front(), static_cast<size_t>(size()));
        m_end -= m_begin;
        m_begin = 0;
    }
}

void ByteQueue::clear()
{
    *this = ByteQueue(m_maxIdleBytes);
}
