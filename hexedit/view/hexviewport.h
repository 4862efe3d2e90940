#pragma once

// Which rows of the content are on display: the layout of the font, the scroll
// bars that follow from it, and where a byte or a point lies. Pixels of the
// area's viewport, whose first row is the header. Owns layout and rows only.

#include "hexcontent.h"
#include "hexlayout.h"
#include "hexrows.h"

class QAbstractScrollArea;

class HexViewport
{
public:
    HexViewport(QAbstractScrollArea *area, const HexContent &content);

    // 8 to 64 bytes in a row; 0: as many as fit.
    void setBytesPerRow(int bytes);
    // After the font, the viewport or the number of bytes has changed.
    void update();
    // After the addresses of the bytes have changed as well.
    void resetRows();
    const HexLayout &layout() const { return m_layout; }
    const HexRows &lines() const { return m_rows; }

    qint64 topRow() const;
    int rows() const;                  // that are complete
    bool endsAt(qint64 address) const; // no row on display has bytes behind it
    void scrollTo(qint64 address);     // no further than needed
    void scrollByPages(int pages);

    QPoint origin() const;   // of the first row
    QRect rowsRect() const;  // below the header
    QRect caretRect() const; // of the caret's byte in its column
    HexLayout::Place placeAt(const QPoint &point) const;
    qint64 addressAt(const QPoint &point) const; // of the byte there, or the end

private:
    QAbstractScrollArea *m_area;
    int m_bytesPerRow = 16;
    const HexContent &m_content;
    HexLayout m_layout;
    HexRows m_rows;
};
