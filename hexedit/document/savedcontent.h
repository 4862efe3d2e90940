#pragma once

// Which bytes of the two stores are in the file as it was last read or saved,
// and where. The cost grows with the number of pieces, not with the file's size.

#include "piecetable.h"

#include <array>

class SavedContent
{
public:
    void set(const PieceTable &table);

    const PieceTable &table() const { return m_table; }
    // The byte at an offset of the store of added bytes or of the original.
    bool has(bool added, qint64 offset) const;

private:
    PieceTable m_table;
    std::array<Pieces, 2> m_ranges; // of the original and of the added bytes, by offset
};
