#include "savedcontent.h"

#include <algorithm>

void SavedContent::set(const PieceTable &table)
{
    m_table = table;
    for (Pieces &ranges : m_ranges)
        ranges.clear();
    for (const Piece &piece : m_table.pieces())
        m_ranges[piece.added].push_back(piece);
    for (Pieces &ranges : m_ranges)
        std::sort(ranges.begin(), ranges.end(),
                  [](const Piece &left, const Piece &right) { return left.offset < right.offset; });
}

bool SavedContent::has(bool added, qint64 offset) const
{
    // A piece stands in a table once, so that ranges don't overlap.
    const Pieces &ranges = m_ranges[added];
    const auto next =
        std::upper_bound(ranges.begin(), ranges.end(), offset,
                         [](qint64 wanted, const Piece &piece) { return wanted < piece.offset; });
    return next != ranges.begin() && offset < std::prev(next)->offset + std::prev(next)->length;
}
