#include "bytequeue.h"

#include <utility>

namespace {

// Below this, dropped bytes stay: their room is not worth a move.
constexpr int kCompactBytes = 4096;

} // namespace

// The new memory is not written to before bytes arrive: where there is much of it, this
// alone would need tens of milliseconds.
void ByteQueue::makeRoom(int bytes)
{
    const int capacity = qMax(2 * m_end, m_end + bytes);
    m_store.reserve(capacity); // no more than that
    m_store.resize(capacity);
}

QByteArray ByteQueue::take(int before, int count, int behind)
{
    const int all = before + count + behind;
    if (capacity() <= m_maxIdleBytes || size() - all > count) {
        const QByteArray bytes(front() + before, count);
        drop(all);
        return bytes;
    }
    const QByteArray rest(front() + all, size() - all);
    QByteArray bytes = std::exchange(m_store, QByteArray());
    std::memmove(bytes.data(), bytes.constData() + m_begin + before, static_cast<size_t>(count));
    bytes.resize(count);
    bytes.squeeze();
    clear();
    append(rest);
    return bytes;
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
