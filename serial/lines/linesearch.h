#pragma once

// Finds all matches in the lines of a session, a piece of them at a time, and
// goes on as lines are added. Keeps an entry for each piece, not for each match:
// what is in a piece is found again when it is asked for.

#include "linematcher.h"
#include "lineset.h"
#include "textscan.h"

#include <optional>

class LineStore;

class LineSearch
{
public:
    struct Place
    {
        qint64 line = 0;
        int column = 0; // UTF-16 units
    };
    struct Match
    {
        Place place;
        int length = 0;
    };

    // The store outlives the search.
    explicit LineSearch(const LineStore &lines);

    // Begins at the first line; an empty matcher ends the search. Where the store
    // is cleared, the next step begins again.
    void start(const LineMatcher &matcher);
    const LineMatcher &matcher() const { return m_matcher; }

    // Looks through the next piece, about a quarter of a megabyte. False where
    // there is nothing to look through for now.
    bool step();
    bool hasMore() const;
    // All matches before a place are known.
    bool hasPassed(const Place &place) const;

    qint64 count() const { return m_count; }
    // Those with a match.
    const LineSet &lines() const { return m_matching; }
    // The line that is looked through next; all before it are known.
    qint64 nextLine() const { return m_pieces.isEmpty() ? 0 : m_next.begin.line; }
    // The expression took too many steps on several lines: the search has ended.
    bool hasGivenUp() const { return m_givenUp >= maxHardPieces; }

    // By number, in the order of the text.
    std::optional<Match> at(qint64 index) const;
    // The number of the first match at a place or behind it; count() where there is none.
    qint64 indexFrom(const Place &place) const;

    static constexpr int maxHardPieces = 3;

private:
    struct Piece
    {
        qint64 offset = 0;  // bytes
        Place begin;        // of its first character
        qint64 matches = 0; // before it
    };

    void forgetChopped();
    // From the begin of a piece on; less than so many bytes where the text ends.
    QByteArray read(const Piece &piece, qint64 maxBytes) const;
    QVector<Match> matchesIn(const Piece &piece, const QByteArray &bytes, bool *isKnown = nullptr) const;
    QVector<Match> matchesIn(const Piece &piece) const;
    bool find(const Place &begin, const QByteArray &lines, QVector<Match> *matches) const;

    const LineStore &m_store;
    LineMatcher m_matcher;
    TextScan::Needle m_needle;
    QVector<Piece> m_pieces;
    Piece m_next; // where the next step begins in the last one: at a line that may still grow
    LineSet m_matching;
    qint64 m_count = 0;
    qint64 m_searched = 0; // bytes, the last piece included
    int m_generation = 0;
    int m_chops = 0; // of the text, as searched
    int m_givenUp = 0;
};
