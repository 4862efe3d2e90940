#pragma once

// Looks for a pattern in a document, forwards or backwards, a slice at a
// time, so that a large file can be searched without a pause. It wraps
// once and ends where it began. The document must not change meanwhile.

#include "hexdocument.h"
#include "hexpattern.h"

class HexSearch
{
public:
    enum Direction { Forward, Backward };
    enum Around { Wrap, StopAtEnd };
    enum class State { Running, Found, NotFound, TooHard };

    // Forward finds begin at `from` or behind it, Backward ones before it.
    HexSearch(const HexDocument &document, const HexPattern &pattern, qint64 from, Direction direction,
              Around around = Wrap);

    Q_DISABLE_COPY_MOVE(HexSearch)

    // Looks through a slice, see HexPattern::slice(). TooHard: an expression takes too
    // many steps, and it is unknown whether there is a match.
    State step();

    qint64 position() const { return m_found.begin; }
    qint64 length() const { return m_found.length; }
    bool hasWrapped() const { return m_leg > 0; }
    int permille() const;

    // Continues the search after a find: next ones begin at `from` or behind it, or
    // before it.
    void continueFrom(qint64 from);

private:
    struct Leg // where finds may begin
    {
        qint64 begin;
        qint64 end;
    };
    void setLegs(qint64 from, Around around);
    void readWindow(const Leg &leg);

    const HexDocument &m_document;
    HexPattern m_pattern;
    Direction m_direction;
    Leg m_legs[2];
    int m_leg = 0;
    HexPattern::Match m_found;
    qint64 m_searched = 0;
    QByteArray m_window;      // what was read last
    qint64 m_windowBegin = 0; // in the document
    qint64 m_windowFrom = 0;  // finds begin here
    qint64 m_windowEnd = 0;   // and before this
};
