#pragma once

// Bytes that come in at the back and are used up at the front. Each is moved
// once on average, however the stream is cut, and a small chunk costs hardly
// more than its copy.

#include <QByteArray>

#include <cstring>
#include <vector>

class ByteQueue
{
public:
    // An empty queue keeps up to this much memory; a large frame's is given back.
    static constexpr int defaultIdleBytes = 4 * 1024 * 1024;

    explicit ByteQueue(int maxIdleBytes = defaultIdleBytes)
        : m_maxIdleBytes(maxIdleBytes)
    {
    }

    // May be null while the queue is empty.
    const char *front() const { return m_store.data() + m_begin; }
    int size() const { return m_end - m_begin; }
    int capacity() const { return static_cast<int>(m_store.size()); }

    void append(const QByteArray &chunk)
    {
        if (chunk.isEmpty())
            return;
        if (chunk.size() > capacity() - m_end)
            makeRoom(chunk.size());
        std::memcpy(m_store.data() + m_end, chunk.constData(), static_cast<size_t>(chunk.size()));
        m_end += chunk.size();
    }
    void drop(qint64 count); // all, where there are no more
    void clear();            // gives the memory back

private:
    void makeRoom(int bytes);

    std::vector<char> m_store; // of which the bytes are a part
    int m_maxIdleBytes;
    int m_begin = 0;
    int m_end = 0;
};
