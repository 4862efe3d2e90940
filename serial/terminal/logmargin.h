#pragma once

// The margin beside a receive display: number and time of each line in view.

#include "linestamp.h"

#include <QWidget>

class LogWindow;
class QAbstractScrollArea;
class TerminalDocument;

class LogMargin : public QWidget
{
    Q_OBJECT

public:
    LogMargin(TerminalDocument *document, const LogWindow &window, const LineStore &lines,
              QAbstractScrollArea *display);

    void setStamp(const LineStamp &stamp) { m_stamp = stamp; }
    const LineStamp &stamp() const { return m_stamp; }
    void setNumbers(bool on) { m_hasNumbers = on; }

    // Pixels, 0 where it shows nothing.
    int wantedWidth() const;
    // On the left of the text, with the width wanted.
    void placeBeside(const QRect &text);
    // Text of the display, each line behind its stamp.
    QString withStamps(int start, int end, const LineStamp &stamp) const;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    struct Row
    {
        int top;     // pixels in the view
        qint64 line; // its number in the record
    };

    QVector<Row> rowsInView() const;

    TerminalDocument *m_document;
    const LogWindow &m_window;
    const LineStore &m_lines;
    QAbstractScrollArea *m_display;
    LineStamp m_stamp;
    bool m_hasNumbers = false;
};
