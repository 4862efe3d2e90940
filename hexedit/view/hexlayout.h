#pragma once

// Where the hexadecimal editor draws what: address, bytes and text in cells of
// a monospaced font, in pixels from the content's left edge and the top of the
// first row. Knows no document.

#include <QFontMetrics>
#include <QRect>

class HexLayout
{
public:
    static constexpr int minBytes = 8;
    static constexpr int maxBytes = 64;

    struct Place
    {
        qint64 row = 0;
        int column = 0; // of the byte
        bool lowDigit = false;
        bool inText = false;
    };

    // The address column is as wide as the highest address needs.
    void update(const QFontMetrics &font, qint64 highest, int bytes);
    // How many bytes, in steps of 8, a row of that width has room for; 8 at least.
    static int bytesFor(int width, const QFontMetrics &font, qint64 highest);

    int bytes() const { return m_bytes; } // of a row

    int rowHeight() const { return m_rowHeight; }
    int cellWidth() const { return m_cell; }
    int width() const { return m_width; }
    int addressDigits() const { return m_digits; }
    QRect address(int row) const;
    QRect hex(int row, int column) const; // both digits
    QRect text(int row, int column, int cells = 1) const;

    // The byte nearest to a point.
    Place placeAt(const QPoint &point) const;

private:
    int m_bytes = 16;
    int m_cell = 1;
    int m_rowHeight = 1;
    int m_digits = 8;
    int m_hexLeft = 0;
    int m_textLeft = 0;
    int m_width = 0;
};
