#include "hexlayout.h"

namespace {
constexpr int kMargin = 8;
}

void HexLayout::update(const QFontMetrics &font, qint64 highest, int bytes)
{
    m_bytes = bytes;
    m_cell = qMax(font.horizontalAdvance(QLatin1Char('0')), font.horizontalAdvance(QLatin1Char('W')));
    m_rowHeight = font.height() + 2;
    m_digits = qMax(8, QString::number(highest, 16).size());
    m_hexLeft = 2 * kMargin + m_digits * m_cell + m_cell;
    // Three cells for a byte, and a gap in the middle.
    m_textLeft = m_hexLeft + (m_bytes * 3 + 1) * m_cell + m_cell;
    // A wide character may begin in the last cell.
    m_width = m_textLeft + (m_bytes + 1) * m_cell + kMargin;
}

int HexLayout::bytesFor(int width, const QFontMetrics &font, qint64 highest)
{
    HexLayout layout;
    int bytes = minBytes;
    for (int more = minBytes; more <= maxBytes; more += 8) {
        layout.update(font, highest, more);
        if (layout.width() <= width)
            bytes = more;
    }
    return bytes;
}

QRect HexLayout::address(int row) const
{
    return {0, row * m_rowHeight, 2 * kMargin + m_digits * m_cell, m_rowHeight};
}

QRect HexLayout::hex(int row, int column) const
{
    const int gap = column >= m_bytes / 2 ? 1 : 0;
    return {m_hexLeft + (column * 3 + gap) * m_cell, row * m_rowHeight, 2 * m_cell, m_rowHeight};
}

QRect HexLayout::text(int row, int column, int cells) const
{
    return {m_textLeft + column * m_cell, row * m_rowHeight, cells * m_cell, m_rowHeight};
}

HexLayout::Place HexLayout::placeAt(const QPoint &point) const
{
    Place place;
    place.row = point.y() < 0 ? (point.y() - m_rowHeight + 1) / m_rowHeight : point.y() / m_rowHeight;
    place.inText = point.x() >= m_textLeft - m_cell;
    if (place.inText) {
        place.column = qBound(0, (point.x() - m_textLeft) / m_cell, m_bytes - 1);
        return place;
    }
    const int half = hex(0, m_bytes / 2).left();
    const int x = point.x() >= half - m_cell / 2 ? point.x() - m_cell : point.x();
    const int cells = (x - m_hexLeft + m_cell / 2) / m_cell;
    place.column = qBound(0, cells / 3, m_bytes - 1);
    place.lowDigit = x >= m_hexLeft && x - m_hexLeft - place.column * 3 * m_cell >= m_cell;
    return place;
}
