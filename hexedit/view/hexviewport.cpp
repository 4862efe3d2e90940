#include "hexviewport.h"

#include <QAbstractScrollArea>
#include <QScrollBar>
#include <limits>

HexViewport::HexViewport(QAbstractScrollArea *area, const HexContent &content)
    : m_area(area)
    , m_content(content)
    , m_rows(content, m_bytesPerRow)
{
}

void HexViewport::setBytesPerRow(int bytes)
{
    m_bytesPerRow = bytes == 0 ? 0 : qBound(HexLayout::minBytes, bytes, HexLayout::maxBytes);
    update();
}

// The row on top keeps its first byte where the rows get another length.
void HexViewport::update()
{
    const int bytes = m_bytesPerRow > 0 ? m_bytesPerRow
                                        : HexLayout::bytesFor(m_area->viewport()->width(),
                                                              m_area->fontMetrics(), m_rows.endAddress());
    const bool isOtherLength = bytes != m_rows.length();
    const qint64 first = isOtherLength ? m_rows.offsetAt(topRow(), 0) : 0;
    if (isOtherLength)
        m_rows.setLength(bytes);
    m_layout.update(m_area->fontMetrics(), m_rows.endAddress(), bytes);
    m_area->verticalScrollBar()->setPageStep(rows());
    m_area->verticalScrollBar()->setRange(
        0, static_cast<int>(qBound<qint64>(0, m_rows.count() - rows(), std::numeric_limits<int>::max())));
    if (isOtherLength)
        m_area->verticalScrollBar()->setValue(static_cast<int>(m_rows.placeOf(first).row));
    const int width = m_area->viewport()->width();
    m_area->horizontalScrollBar()->setPageStep(width);
    m_area->horizontalScrollBar()->setRange(0, qMax(0, m_layout.width() - width));
    m_area->horizontalScrollBar()->setSingleStep(m_layout.cellWidth());
}

void HexViewport::resetRows()
{
    m_rows.reset();
    update();
}

qint64 HexViewport::topRow() const
{
    return m_area->verticalScrollBar()->value();
}

int HexViewport::rows() const
{
    return qMax(1, m_area->viewport()->height() / m_layout.rowHeight() - 1); // one is the header
}

bool HexViewport::endsAt(qint64 address) const
{
    return m_rows.placeOf(address).row <= topRow() + rows() + 1;
}

void HexViewport::scrollTo(qint64 address)
{
    const HexRows::Place place = m_rows.placeOf(address);
    const qint64 row = place.row;
    if (row < topRow())
        m_area->verticalScrollBar()->setValue(static_cast<int>(row));
    else if (row >= topRow() + rows())
        m_area->verticalScrollBar()->setValue(static_cast<int>(row - rows() + 1));
    const QRect cell = m_content.isInText() ? m_layout.text(0, place.column) : m_layout.hex(0, place.column);
    QScrollBar *const sideways = m_area->horizontalScrollBar();
    const int leftmost = cell.right() + m_layout.cellWidth() - m_area->viewport()->width();
    const int rightmost = cell.left() - m_layout.hex(0, 0).left(); // with room for the address
    if (cell.left() < sideways->value())
        sideways->setValue(rightmost);
    else if (leftmost > sideways->value())
        sideways->setValue(qMin(leftmost, rightmost)); // a narrow one shows where the cell begins
}

void HexViewport::scrollByPages(int pages)
{
    m_area->verticalScrollBar()->setValue(m_area->verticalScrollBar()->value() + pages * rows());
}

QPoint HexViewport::origin() const
{
    return {-m_area->horizontalScrollBar()->value(), m_layout.rowHeight()};
}

QRect HexViewport::rowsRect() const
{
    return m_area->viewport()->rect().adjusted(0, m_layout.rowHeight(), 0, 0);
}

QRect HexViewport::caretRect() const
{
    const HexRows::Place place = m_rows.placeOf(m_content.caret());
    const int row = static_cast<int>(qBound<qint64>(0, place.row - topRow(), rows()));
    const int column = place.column;
    const QRect cell = m_content.isInText() ? m_layout.text(row, column) : m_layout.hex(row, column);
    return cell.translated(origin());
}

HexLayout::Place HexViewport::placeAt(const QPoint &point) const
{
    HexLayout::Place place = m_layout.placeAt(point - origin());
    place.row += topRow();
    return place;
}

qint64 HexViewport::addressAt(const QPoint &point) const
{
    const HexLayout::Place place = placeAt(point);
    return m_rows.offsetAt(place.row, place.column);
}
