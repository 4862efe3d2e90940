#pragma once

// Finding in a receive display: searches the whole record a slice at a time, as
// the user types and as lines arrive, leads the display to the matches, and lets
// it show only lines that match.

#include "linefilter.h"

#include <QObject>
#include <QTimer>

#include <optional>

class FindBar;
class QtTerminalWidget;

class LogFind : public QObject
{
    Q_OBJECT

public:
    LogFind(QtTerminalWidget *terminal, FindBar *bar);

    // Takes a selected text over.
    void open();
    void next();
    void previous();

private:
    enum class Direction { None, Forward, Backward };

    void close();
    void restart();
    void search();
    void refilter();
    bool isFiltering() const; // and has something to filter by
    void updateFilter();
    void goToLine(qint64 line);
    void go(Direction direction, const LineSearch::Place &from);
    bool goNearby(const LineSearch::Place &from);
    void goPending();
    void show(const LineSearch::Match &match);
    void showState();

    QtTerminalWidget *m_terminal;
    FindBar *m_bar;
    LineSearch m_search;
    LineFilter m_filter;
    bool m_isFiltered = false; // the display is
    int m_generation = 0;      // of the record, as searched
    QTimer m_timer;
    std::optional<LineSearch::Match> m_current;
    qint64 m_index = -1;                   // of the current match, where it is known
    Direction m_pending = Direction::None; // until the search has passed m_from
    LineSearch::Place m_from;
};
