#pragma once

// Reads a spool from a place on, piece by piece, and the form in which numbers
// stand in one: seven bits a byte, the lowest first; the highest bit says that
// more follow.

#include "bytespool.h"

class SpoolReader
{
public:
    // The spool outlives the reader and is not chopped while it reads.
    SpoolReader(const ByteSpool &spool, qint64 at);

    static void appendNumber(quint64 number, QByteArray *bytes);

    // Of the next byte.
    qint64 at() const { return m_at - (m_piece.size() - m_used); }

    // All return false at the end, or where the file can't be read back.
    bool next(char *byte);
    bool nextNumber(quint64 *number);
    bool nextBytes(qint64 count, QByteArray *bytes);
    // The bytes of a line, without its end and those above the limit. Where nothing
    // behind the line is wanted, its end need not be found.
    bool nextLine(int maxBytes, bool isLast, QByteArray *line, bool *isCut);
    void seek(qint64 at);

private:
    bool fill();

    const ByteSpool &m_spool;
    qint64 m_at;
    QByteArray m_piece;
    int m_used = 0;
};
