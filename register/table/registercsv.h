#pragma once

// The register table's file: GB18030 text, one register per line, four cells
// separated by commas: number, address, value, description. Bytes in, rows out. Reads
// also what spreadsheets make of such a file: a byte order mark, semicolons or tabs
// between the cells, quoted cells.

#include "csvtext.h"
#include "registerreader.h"
#include "registertext.h"

#include <QStringList>

namespace RegisterCsv {

// The header line that every exported file begins with.
QStringList titles();

// A cell that begins with a quote is quoted, since it would lose the quote otherwise.
QByteArray write(const QVector<RegisterRow> &rows);

// What the first lines of a file look like: the separator with which most have four
// cells or more, and how many have.
struct Form
{
    char separator = ',';
    int lines = 0;
};
Form formOf(const QByteArray &text);

// Lines with fewer than four cells are skipped. What a cell can't hold is replaced.
class Reader : public RegisterReader
{
public:
    Reader(const RegisterText &text, int maxRows);

    bool read(int lines) override;

private:
    RegisterText m_text;
    CsvText::Reader m_records;
};

} // namespace RegisterCsv
