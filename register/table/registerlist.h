#pragma once

// Lists of registers as makers of sensors print them, and as C source: an address and
// a value in braces, parentheses, brackets or none, several such pairs in a line where
// they have brackets, with comments:
//     {0x3008, 0x82}, // reset
//     0x3009 0x01
// Numbers are hexadecimal with "0x" or a trailing "h" and decimal without; where a
// file has neither braces nor such numbers, all are hexadecimal, as in the table.
// A comment in the line of a pair becomes its description. Bytes in, rows out.

#include "registerreader.h"
#include "registertext.h"

namespace RegisterList {

// Whether the first lines are of such a list rather than a table's: more lines of
// pairs than others with four cells.
bool isList(const RegisterText &text);

// Blank lines, comments and lines of brackets only are no rows and not counted. Any
// other line is skipped as a whole, also one that has a pair among other things.
class Reader : public RegisterReader
{
public:
    Reader(const RegisterText &text, int maxRows);

    bool read(int lines) override;
    // Whether numbers without a prefix are hexadecimal.
    bool isHexadecimal() const { return m_isHexadecimal; }

private:
    RegisterText m_text;
    bool m_isHexadecimal;
    bool m_isInComment = false; // that began in an earlier line
    int m_at = 0;
    int m_line = 0;
};

enum Form { Array, Header };

struct Written
{
    QByteArray text;    // UTF-8
    int pairs = 0;      // that it has
    bool hasAll = true; // the text of all cells is in it
};
// An array of pairs; the header has an include guard. Rows without an address or a
// value are left out. The lengths, in bytes, say how many digits numbers have at
// least; the name is reduced to what C allows.
Written write(const QVector<RegisterRow> &rows, Form form, const QString &name, int addressLength,
              int valueLength);

} // namespace RegisterList
