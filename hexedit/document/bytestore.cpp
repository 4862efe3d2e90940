#include "bytestore.h"

#include <algorithm>

namespace {
constexpr int kBlockSize = 1 << 16;
}

void ByteStore::addBlock(const QByteArray &block)
{
    if (block.isEmpty())
        return;
    m_blocks.push_back({m_size, block});
    m_size += block.size();
    m_room = 0;
}

void ByteStore::append(const char *bytes, qint64 count)
{
    while (count > 0) {
        if (m_room == 0) {
            QByteArray block;
            block.reserve(kBlockSize);
            m_blocks.push_back({m_size, block});
            m_room = kBlockSize;
        }
        const int now = static_cast<int>(std::min<qint64>(count, m_room));
        m_blocks.back().bytes.append(bytes, now);
        m_room -= now;
        m_size += now;
        bytes += now;
        count -= now;
    }
}

const char *ByteStore::at(qint64 offset, qint64 *inRow) const
{
    const auto next =
        std::upper_bound(m_blocks.begin(), m_blocks.end(), offset,
                         [](qint64 wanted, const Block &block) { return wanted < block.start; });
    const Block &block = *std::prev(next);
    *inRow = block.start + block.bytes.size() - offset;
    return block.bytes.constData() + (offset - block.start);
}
