#pragma once

// Looks for a row of bytes in a document, forwards or backwards, a slice at a
// time, so that a large file can be searched without a pause. It wraps
// once and ends where it began. The document must not change meanwhile.

#include "hexdocument.h"

#include <functional>

class HexSearch
{
public:
    enum Direction { Forward, Backward };
    enum Around { Wrap, StopAtEnd };
    enum class State { Running, Found, NotFound };

    // Forward finds begin at `from` or behind it, Backward ones before it. Preparing
    // costs the square of the pattern's length at worst: a few thousand bytes are fine.
    HexSearch(const HexDocument &document, const QByteArray &pattern, qint64 from, Direction direction,
              Around around = Wrap);

    Q_DISABLE_COPY_MOVE(HexSearch)

    // Looks through about a quarter of a megabyte.
    State step();

    qint64 position() const { return m_found; }
    bool hasWrapped() const { return m_leg > 0; }
    int permille() const;

    // Continues the search after a find.
    void continueFrom(qint64 from);

private:
    struct Leg // where finds may begin
    {
        qint64 begin;
        qint64 end;
    };
    void setLegs(qint64 from, Around around);

    const HexDocument &m_document;
    QByteArray m_pattern;
    Direction m_direction;
    Leg m_legs[2];
    int m_leg = 0;
    qint64 m_found = -1;
    qint64 m_searched = 0;
    QByteArray m_window; // what was read last
    qint64 m_windowBegin = 0;
    qint64 m_windowEnd = 0; // finds begin before it
    std::function<qint64(const char *, const char *)> m_matcher;
};
