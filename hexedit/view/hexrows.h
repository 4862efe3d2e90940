#pragma once

// The rows of the content: each has addresses from a multiple of its length on,
// so that the columns are the last digits of the addresses. A run begins on a
// row of its own. Owns where the runs' rows begin; knows no pixels.

#include "hexcontent.h"

class HexRows
{
public:
    struct Row
    {
        qint64 address = 0; // of the first column
        qint64 begin = 0;   // offsets in the document
        qint64 end = 0;
        int column = 0;           // of the first byte
        bool isBehindGap = false; // the first of a run that is not the first
    };
    struct Place
    {
        qint64 row = 0;
        int column = 0;
    };

    HexRows(const HexContent &content, int length);

    int length() const { return m_length; } // bytes
    void setLength(int length);
    // After the addresses of the content have changed.
    void reset();

    qint64 count() const; // with that of the end, where the caret can stand
    qint64 endAddress() const;
    Row row(qint64 index) const;
    Place placeOf(qint64 offset) const;
    // The nearest byte of the row, or the end of the content.
    qint64 offsetAt(qint64 row, int column) const;
    // Rows below a place, nothing where the content ends before.
    std::optional<qint64> offsetBelow(const Place &place, int rows) const;
    // Where End leads in a row: to its last byte, behind it where a selection
    // shall hold it or where more may be typed.
    qint64 endOf(const Row &row, bool isSelecting) const;

private:
    const HexContent &m_content;
    int m_length;                // bytes
    std::vector<qint64> m_first; // row of each run
};
