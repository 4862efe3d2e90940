#pragma once

// Computes new bytes for a range of a document, a slice at a time: a pattern, an
// operation with each byte or with each unit of some bytes, another order. Reads
// the document and changes nothing; the caller puts the slices in the place of
// the range, or, of a pattern, between its bytes.

#include "hexdocument.h"

#include <QByteArray>

struct HexOperation
{
    enum class Kind {
        // The operand is repeated from the begin of the range on.
        Fill,
        Xor,
        And,
        Or,
        // With each byte, or all of them.
        Not,
        ReverseBits,
        ReverseOrder,
        // With each unit.
        Add, // modulo the unit's range
        SwapBytes,
        ShiftLeft, // zeros follow
        ShiftRight,
        RotateLeft,
        RotateRight,
    };

    Kind kind = Kind::Fill;
    QByteArray operand;       // of the first four, not empty
    quint64 addend = 0;       // of Add, which a unit can hold
    int unit = 1;             // 1, 2, 4 or 8 bytes
    bool isBigEndian = false; // the unit's byte order
    int bits = 1;             // of shifts and rotations, 1 to those of a unit less one

    bool hasOperand() const { return kind <= Kind::Or; }
    bool hasUnit() const { return kind >= Kind::Add; }
    bool hasBits() const { return kind >= Kind::ShiftLeft; }
    // Bytes on both sides of a gap have nothing to do with each other.
    bool joinsBytes() const { return kind == Kind::ReverseOrder || (hasUnit() && unit > 1); }
};

class HexTransform
{
public:
    static constexpr qint64 maxLength = qint64(512) << 20; // all results are kept in memory

    // The document must keep still. A pattern may be longer than the document.
    HexTransform(const HexDocument &document, qint64 begin, qint64 length, HexOperation operation);

    bool isDone() const { return m_done == m_length; }
    qint64 position() const { return m_begin + m_done; } // of the next bytes
    QByteArray next();
    // At the end of the range: a part of a unit, which stays as it is.
    qint64 unchanged() const { return m_cut; }
    int permille() const;

private:
    void combine(QByteArray &bytes) const;
    void changeUnits(QByteArray &bytes) const;
    quint64 changed(quint64 value) const;

    const HexDocument &m_document;
    qint64 m_begin;
    qint64 m_length;
    qint64 m_cut = 0;
    qint64 m_done = 0;
    HexOperation m_operation;
};
