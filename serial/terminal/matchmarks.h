#pragma once

// Marks every match of a search in a receive display: in its text, and on its
// scroll bar, over which this lies and lets the mouse through.

#include "textmarks.h"

#include <QWidget>

class LineSearch;
class LogWindow;
class QScrollBar;

class MatchMarks : public QWidget
{
public:
    // The parts of the display.
    MatchMarks(TextMarks *marks, const LogWindow &window, QScrollBar *bar);

    // The search outlives this. To be called again when another begins; update()
    // when it has gone on.
    void show(const LineSearch &search);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    TextMarks::Marks marksOf(const QTextBlock &block) const;

    TextMarks *m_marks;
    const LogWindow &m_window;
    const LineSearch *m_search = nullptr;
};
