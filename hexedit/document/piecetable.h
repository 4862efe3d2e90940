#pragma once

// A sequence of bytes as pieces of two stores. Replacing a range touches the
// pieces around it and shifts the starts of those behind it, never the bytes.
// Knows offsets only.

#include <QtGlobal>
#include <vector>

struct Piece
{
    qint64 offset; // in its store
    qint64 length;
    bool added; // of the store of added bytes, not of the file
};

using Pieces = std::vector<Piece>;

class PieceTable
{
public:
    void reset(qint64 originalSize);

    qint64 size() const { return m_size; }
    size_t pieceCount() const { return m_pieces.size(); }
    const Pieces &pieces() const { return m_pieces; }

    // The rest of the piece that holds the address, from the address on.
    Piece from(qint64 address) const;

    // The pieces of a range inside the sequence.
    Pieces copy(qint64 address, qint64 length) const;

    // Puts pieces in the place of a range inside the sequence.
    void replace(qint64 address, qint64 length, const Pieces &pieces);

    // Appends and joins with the last one where they are neighbours.
    static void append(Pieces &pieces, const Piece &piece);
    static qint64 lengthOf(const Pieces &pieces);

private:
    size_t indexOf(qint64 address) const;
    void shiftFrom(size_t index);

    Pieces m_pieces;
    std::vector<qint64> m_starts; // of each piece
    qint64 m_size = 0;
};
