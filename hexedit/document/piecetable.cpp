#include "piecetable.h"

#include <algorithm>

void PieceTable::reset(qint64 originalSize)
{
    m_pieces.clear();
    if (originalSize > 0)
        m_pieces.push_back({0, originalSize, false});
    shiftFrom(0);
}

size_t PieceTable::indexOf(qint64 address) const
{
    const auto next = std::upper_bound(m_starts.begin(), m_starts.end(), address);
    return static_cast<size_t>(next - m_starts.begin()) - 1;
}

Piece PieceTable::from(qint64 address) const
{
    const size_t index = indexOf(address);
    const qint64 skipped = address - m_starts[index];
    const Piece &piece = m_pieces[index];
    return {piece.offset + skipped, piece.length - skipped, piece.added};
}

Pieces PieceTable::copy(qint64 address, qint64 length) const
{
    Pieces range;
    while (length > 0) {
        Piece piece = from(address);
        piece.length = std::min(piece.length, length);
        append(range, piece);
        address += piece.length;
        length -= piece.length;
    }
    return range;
}

void PieceTable::replace(qint64 address, qint64 length, const Pieces &pieces)
{
    // The neighbors are replaced as well, so that they can join the new pieces.
    const qint64 end = address + length;
    const size_t first = address > 0 ? indexOf(address - 1) : 0;
    const size_t last = end < m_size ? indexOf(end) + 1 : m_pieces.size();
    const qint64 begin = first < m_pieces.size() ? m_starts[first] : m_size;
    const qint64 stop = last < m_pieces.size() ? m_starts[last] : m_size;
    Pieces merged = copy(begin, address - begin);
    for (const Piece &piece : pieces)
        append(merged, piece);
    for (const Piece &piece : copy(end, stop - end))
        append(merged, piece);

    const auto at = [this](size_t index) { return m_pieces.begin() + static_cast<std::ptrdiff_t>(index); };
    const size_t common = std::min(last - first, merged.size());
    std::copy_n(merged.begin(), common, at(first));
    if (merged.size() > common)
        m_pieces.insert(at(first + common), merged.begin() + static_cast<std::ptrdiff_t>(common),
                        merged.end());
    else
        m_pieces.erase(at(first + common), at(last));
    shiftFrom(first);
}

void PieceTable::append(Pieces &pieces, const Piece &piece)
{
    if (piece.length == 0)
        return;
    if (!pieces.empty()) {
        Piece &last = pieces.back();
        if (last.added == piece.added && last.offset + last.length == piece.offset) {
            last.length += piece.length;
            return;
        }
    }
    pieces.push_back(piece);
}

qint64 PieceTable::lengthOf(const Pieces &pieces)
{
    qint64 length = 0;
    for (const Piece &piece : pieces)
        length += piece.length;
    return length;
}

void PieceTable::shiftFrom(size_t index)
{
    m_starts.resize(m_pieces.size());
    m_size = index > 0 ? m_starts[index - 1] + m_pieces[index - 1].length : 0;
    for (; index < m_pieces.size(); ++index) {
        m_starts[index] = m_size;
        m_size += m_pieces[index].length;
    }
}
