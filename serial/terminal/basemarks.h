#pragma once

// The colors and faces that the text of a receive display brings along: those
// that escape sequences set, and the color of lines that were sent.

#include "linestore.h"
#include "linestyles.h"
#include "textmarks.h"

class LogWindow;
class ReceivedText;

class BaseMarks
{
public:
    // The parts of the display, which outlive this.
    BaseMarks(TextMarks *marks, const LogWindow &window, const ReceivedText &received,
              const QWidget *display);

    // Where both are off, nothing is asked of the record.
    void show(bool styles, bool sent);

private:
    TextMarks::Marks marksOf(const QTextBlock &block);
    bool isSent(qint64 line);
    QTextCharFormat formatOf(const TextStyle &style) const;

    TextMarks *m_marks;
    const LogWindow &m_window;
    const ReceivedText &m_received;
    const QWidget *m_display;
    bool m_styles = false;
    bool m_sent = false;

    // Lines that were read at once, since drawing asks for those that follow each other.
    QVector<LineStore::Line> m_read;
    qint64 m_firstRead = 0;
    int m_generation = -1;
};
