#pragma once

// Curves as one table of comma-separated values (RFC 4180) in UTF-8 with a byte
// order mark: the time of the line, then one column for each curve, one row for
// each line. Built in pieces, since there may be many points.

#include "curvepoints.h"

#include <QByteArray>
#include <QStringList>

class CurveTable
{
public:
    // A name for each curve.
    CurveTable(const QStringList &names, const QVector<CurvePoints> &curves);

    // Adds up to so many rows to the piece. True when the table is complete.
    bool advance(int maxRows);
    // What was added since the last call.
    QByteArray takePiece();

private:
    void appendTime(qint64 ms);

    const QVector<CurvePoints> m_curves;
    QVector<int> m_next; // point of each curve
    QByteArray m_piece;
    qint64 m_second = -1; // of the text below
    QByteArray m_secondText;
};
