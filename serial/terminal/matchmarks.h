#pragma once

// Marks every match of a search in a receive display: in its text, and on its
// scroll bar, over which this lies and lets the mouse through.

#include "loglayout.h"

#include <QWidget>

class LineSearch;
class LogWindow;
class QScrollBar;

class MatchMarks : public QWidget
{
public:
    // The parts of the display.
    MatchMarks(LogLayout *layout, const LogWindow &window, QScrollBar *bar);

    // The search outlives this. To be called again when another begins; update()
    // when it has gone on.
    void show(const LineSearch &search);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    LogLayout::Marks marksOf(const QTextBlock &block) const;

    LogLayout *m_layout;
    const LogWindow &m_window;
    const LineSearch *m_search = nullptr;
};
