#include "registerclipboard.h"

#include "csvtext.h"
#include "registerviewmodel.h"

#include <QStringList>

#include <algorithm>

namespace {

constexpr char kTab = '\t';

QString quoted(const QString &cell)
{
    const bool isPlain = !cell.contains(QLatin1Char(kTab)) && !cell.startsWith(QLatin1Char('"'));
    return isPlain ? cell : '"' + QString(cell).replace('"', QLatin1String("\"\"")) + '"';
}

const QString &textOf(const RegisterRow &row, int column)
{
    return column == RegisterTableModel::Number    ? row.number
           : column == RegisterTableModel::Address ? row.address
           : column == RegisterTableModel::Value   ? row.value
                                                   : row.description;
}

} // namespace

namespace RegisterClipboard {

QString text(const RegisterViewModel &view, const QModelIndexList &selected)
{
    if (selected.isEmpty())
        return {};
    QMap<int, QMap<int, QString>> rows;
    int first = RegisterTableModel::columns;
    int last = 0;
    for (const QModelIndex &index : selected) {
        rows[index.row()][index.column()] = view.data(index, Qt::EditRole).toString();
        first = qMin(first, index.column());
        last = qMax(last, index.column());
    }
    QString text;
    for (const auto &row : qAsConst(rows)) {
        QStringList cells;
        for (int column = first; column <= last; ++column)
            cells += quoted(row.value(column));
        text += cells.join(QLatin1Char(kTab)) + QLatin1Char('\n');
    }
    return text;
}

Pasted read(const QString &text, const RegisterViewModel &view, const RegisterTableModel &table,
            const QModelIndex &begin)
{
    Pasted pasted;
    CsvText::Reader reader(text.toUtf8(), kTab);
    const int firstRow = begin.row();
    for (int line = 0; !reader.atEnd(); ++line) {
        const QVector<QByteArray> cells = reader.next(RegisterTableModel::columns + 1);
        const int row = view.isList()
                            ? (firstRow + line < view.rowCount() ? view.tableRow(firstRow + line) : -1)
                            : view.tableRow(firstRow) + line;
        const bool hasRow = row >= 0 && row < RegisterTableModel::maxRows;
        pasted.rows += hasRow ? 1 : 0;
        pasted.beyond += hasRow ? 0 : 1;
        for (int i = 0; i < cells.size() && hasRow; ++i) {
            const int column = begin.column() + i;
            const QString cell = QString::fromUtf8(cells.at(i));
            if (column >= RegisterTableModel::columns && cell.isEmpty())
                continue;
            const std::optional<QString> stored = column < RegisterTableModel::columns
                                                      ? RegisterCell::stored(column, cell, view.base())
                                                      : std::nullopt;
            if (!stored) {
                const QString why = column < RegisterTableModel::columns
                                        ? RegisterCell::rule(column, view.base())
                                        : QStringLiteral("超出了表格的列！");
                pasted.cells.clear();
                pasted.refusal = QStringLiteral("没有粘贴：第%1行第%2列“%3”%4")
                                     .arg(line + 1)
                                     .arg(i + 1)
                                     .arg(cell.left(20), why);
                return pasted;
            }
            const QString &old = row < table.rowCount() ? textOf(table.row(row), column) : QString();
            pasted.overwritten += !old.isEmpty() && old != *stored ? 1 : 0;
            pasted.cells.append({row, column, *stored});
        }
    }
    return pasted;
}

} // namespace RegisterClipboard
