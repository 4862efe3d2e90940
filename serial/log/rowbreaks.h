#pragma once

// Where the rows of a log break, in columns of one monospaced face: one for a
// narrow character, two for a wide one, a tab up to the next multiple of eight.
// Rows break between words, or in a word that is longer than a row; one space
// too many hangs behind the row, unseen.

#include <QString>
#include <QVector>

namespace RowBreaks {

constexpr int tabColumns = 8;

// Everything that is not surely narrow counts as wide: too early a break is
// harmless, too late a one hides text.
inline int columnsOf(ushort unit)
{
    return unit < 0x0250 ? 1 : 2;
}

// An upper limit for a paragraph that no row breaks: tabs count in full, and a
// line separator more than any row holds.
int maxColumnsOf(const QString &text);

// A row may break behind this character.
bool breaksBehind(QChar character);

// A row that starts in the middle of a paragraph, behind text that is stored
// elsewhere: the column at which it starts, and whether it may break there.
struct Start
{
    int column = 0;
    bool mayBreak = false;
};

struct Row
{
    int start; // characters
    int end;
    int startColumn;
    int endColumn;
};

// The row that starts at a character, of at most so many columns.
Row row(const QString &text, int start, int columns, Start from = {});
// The same where each character takes one column and none is a tab or a line
// separator, without a walk over all of them.
Row narrowRow(const QString &text, int start, int columns, Start from = {});

// All rows of a text; one, empty, of an empty text.
QVector<Row> rows(const QString &text, int columns, Start from = {});

} // namespace RowBreaks
