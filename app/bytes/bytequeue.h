#pragma once

// Bytes that are appended at the back and dropped at the front, in one piece of
// memory. Each is moved once on average, however the stream is cut, and a small
// chunk costs hardly more than its copy.

#include <QByteArray>

#include <cstring>

class ByteQueue
{
public:
    // An empty queue keeps up to this much memory and gives back more.
    static constexpr int defaultIdleBytes = 4 * 1024 * 1024;

    explicit ByteQueue(int maxIdleBytes = defaultIdleBytes)
        : m_maxIdleBytes(maxIdleBytes)
    {
    }

    // May be null while the queue is empty.
    const char *front() const { return m_store.constData() + m_begin; }
    // Without a copy; valid until the queue changes.
    QByteArray view() const { return QByteArray::fromRawData(front(), size()); }
    int size() const { return m_end - m_begin; }
    int capacity() const { return m_store.size(); }

    void append(const char *bytes, int count)
    {
        if (count <= 0)
            return;
        if (count > capacity() - m_end)
            makeRoom(count);
        std::memcpy(m_store.data() + m_end, bytes, static_cast<size_t>(count));
        m_end += count;
    }
    void append(const QByteArray &chunk) { append(chunk.constData(), chunk.size()); }
    void drop(qint64 count); // all, where there are no more
    // Drops bytes before and behind those that it returns; there are as many. Large ones
    // are not copied into other memory, which would need as long as receiving them.
    QByteArray take(int before, int count, int behind);
    void dropBack(int count) { m_end -= count; } // not more than there are
    void clear();                                // gives the memory back

private:
    void makeRoom(int bytes);

    QByteArray m_store; // the bytes are those from m_begin to m_end; the others have no value
    int m_maxIdleBytes;
    int m_begin = 0;
    int m_end = 0;
};
