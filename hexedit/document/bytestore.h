#pragma once

// Bytes in blocks: what a file held when it was opened, or what was added
// since. It only grows, so that an offset stays good; blocks are taken over
// without a copy. No limit of 2 GB.

#include <QByteArray>
#include <vector>

class ByteStore
{
public:
    qint64 size() const { return m_size; }

    // Takes the block over as it is.
    void addBlock(const QByteArray &block);

    // Appends a copy to blocks of a size that suits many small pieces.
    void append(const char *bytes, qint64 count);

    // The bytes at an offset inside the store, and how many follow in a row.
    const char *at(qint64 offset, qint64 *inRow) const;

private:
    struct Block
    {
        qint64 start;
        QByteArray bytes;
    };

    std::vector<Block> m_blocks;
    qint64 m_size = 0;
    int m_room = 0; // left in the last block, where it was made by append()
};
