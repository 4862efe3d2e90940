#pragma once

// The margin beside a receive display: number and time of each line in view.

#include "linestore.h"

#include <QWidget>

class LogWindow;
class QAbstractScrollArea;
class TerminalDocument;

class LogMargin : public QWidget
{
    Q_OBJECT

public:
    // Of a line, as the margin shows it.
    enum class Time { None, Clock, SincePrevious, SinceOpening };

    LogMargin(TerminalDocument *document, const LogWindow &window, const LineStore &lines,
              QAbstractScrollArea *display);

    void setTime(Time time) { m_time = time; }
    Time time() const { return m_time; }
    void setNumbers(bool on) { m_hasNumbers = on; }
    // From which SinceOpening counts; milliseconds since the epoch.
    void setOpening(qint64 ms) { m_openingMs = ms; }

    // Pixels, 0 where it shows nothing.
    int wantedWidth() const;
    // On the left of the text, with the width wanted.
    void placeBeside(const QRect &text);
    // Text of the display, each line behind its time.
    QString withTimes(int start, int end) const;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    struct Row
    {
        int top;     // pixels in the view
        qint64 line; // its number in the record
    };

    QVector<Row> rowsInView() const;
    // "12:34:56.789", "+0.120" or "3.456" seconds. previousMs is the arrival of the
    // line before.
    QString timeText(qint64 arrivalMs, qint64 previousMs) const;

    TerminalDocument *m_document;
    const LogWindow &m_window;
    const LineStore &m_lines;
    QAbstractScrollArea *m_display;
    Time m_time = Time::None;
    bool m_hasNumbers = false;
    qint64 m_openingMs = 0;
};
