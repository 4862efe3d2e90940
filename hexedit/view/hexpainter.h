#pragma once

// Draws the header, the rows on display and the caret of the editor, in the
// colors of the skin. Knows the content and its layout, no widget.

#include "hexcontent.h"
#include "hexlayout.h"
#include "hexmark.h"
#include "hexrows.h"

#include <QColor>
#include <QPoint>

class QPainter;

class HexPainter
{
public:
    // What of the content is on display, in pixels and rows.
    struct View
    {
        int width = 0;
        QPoint origin; // of the first row
        qint64 topRow = 0;
        int rows = 0; // that are complete
        bool isCaretOn = false;
        const std::vector<HexMark> *marks = nullptr; // by their beginnings
    };

    HexPainter(QPainter *painter, const HexContent &content, const HexRows &rows, const HexLayout &layout,
               const View &view);

    void paint();

private:
    void paintHeader();
    void paintRow(int row, const HexRows::Row &line);
    void paintByte(int row, int column, qint64 address, quint8 byte, bool changed);
    void paintMarks(int row, const HexRows::Row &line);
    void paintText(int row, const HexRows::Row &line);
    void paintCaret();
    QColor colorOf(qint64 address) const;

    QPainter &m_painter;
    const HexContent &m_content;
    const HexRows &m_rows;
    const HexLayout &m_layout;
    View m_view;
    HexRows::Place m_caret;
};
