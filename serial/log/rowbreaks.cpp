#include "rowbreaks.h"

namespace {

constexpr int kForcedBreak = 1 << 16; // columns

// A row may break before and behind these: Chinese, Japanese, Korean.
bool isIdeograph(ushort unit)
{
    return unit >= 0x2E80;
}

} // namespace

namespace RowBreaks {

int maxColumnsOf(const QString &text)
{
    int columns = 0;
    for (const QChar character : text) {
        const ushort unit = character.unicode();
        columns += unit == '\t' ? tabColumns : unit == QChar::LineSeparator ? kForcedBreak : columnsOf(unit);
    }
    return columns;
}

bool breaksBehind(QChar character)
{
    return character == QLatin1Char(' ') || character == QLatin1Char('\t') ||
           isIdeograph(character.unicode());
}

Row row(const QString &text, int start, int columns, Start from)
{
    const bool isContinued = from.column > 0;
    const QChar *const characters = text.constData();
    const int size = text.size();
    int used = from.column;
    int breakAt = start;
    int breakColumn = used;
    for (int i = start; i < size; ++i) {
        const ushort unit = characters[i].unicode();
        const bool isWide = isIdeograph(unit);
        if (isWide) {
            breakAt = i;
            breakColumn = used;
        }
        const int next = used + (unit == '\t' ? tabColumns - used % tabColumns : columnsOf(unit));
        if (next > columns && (i > start || isContinued)) {
            if (unit == ' ') // hangs
                return {start, i + 1, from.column, columns};
            if (breakAt > start || (isContinued && from.mayBreak))
                return {start, breakAt, from.column, breakColumn};
            return {start, i, from.column, used};
        }
        used = next;
        if (unit == QChar::LineSeparator)
            return {start, i + 1, from.column, columns};
        if (QChar::isHighSurrogate(unit) && i + 1 < size && characters[i + 1].isLowSurrogate())
            ++i;
        if (isWide || unit == ' ' || unit == '\t') {
            breakAt = i + 1;
            breakColumn = used;
        }
    }
    return {start, size, from.column, used};
}

Row narrowRow(const QString &text, int start, int columns, Start from)
{
    const int full = start + columns - from.column;
    if (full >= text.size())
        return {start, text.size(), from.column, from.column + text.size() - start};
    const bool isContinued = from.column > 0;
    if (text.at(full) == QLatin1Char(' ') && (full > start || isContinued))
        return {start, full + 1, from.column, columns};
    int end = full;
    while (end > start && text.at(end - 1) != QLatin1Char(' '))
        --end;
    if (end == start && !(isContinued && from.mayBreak))
        end = full;
    return {start, end, from.column, from.column + end - start};
}

QVector<Row> rows(const QString &text, int columns, Start from)
{
    QVector<Row> result{row(text, 0, columns, from)};
    while (result.last().end < text.size())
        result.append(row(text, result.last().end, columns));
    return result;
}

} // namespace RowBreaks
