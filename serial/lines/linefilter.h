#pragma once

// The lines that a filtered display shows: those with a match, or those without
// one, with some lines around each. Follows a search as it goes on.

#include "linesearch.h"
#include "linestore.h"

class LineFilter
{
public:
    struct Options
    {
        bool isInverted = false;
        int context = 0; // lines before and behind
    };

    // Both outlive the filter.
    LineFilter(const LineStore &store, const LineSearch &search);

    void start(Options options);
    // Takes in what the search knows by now: complete lines, some hundred thousand
    // at a time. True where there may be more.
    bool update();

    // The lines before this one were judged.
    qint64 nextLine() const { return m_next; }
    // Lines by their position among those shown.
    const LineSet &lines() const { return m_lines; }
    LineStore::Extract extract(qint64 first, int maxLines, qint64 maxBytes) const;
    LineStore::Extract extractBefore(qint64 position, int maxLines) const;

private:
    void show(qint64 line);
    LineStore::Extract between(qint64 first, qint64 end, qint64 maxBytes) const;

    const LineStore &m_store;
    const LineSearch &m_search;
    Options m_options;
    LineSet m_lines;
    qint64 m_next = 0;       // the line to be judged next
    qint64 m_shown = 0;      // behind the last line shown
    qint64 m_contextEnd = 0; // of the last match
};
