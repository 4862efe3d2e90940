#pragma once

// Tables as text: fields between commas, quoted where they hold one, a quote or a line
// end, as spreadsheets read and write them.

#include <QStringList>
#include <QVector>

namespace CsvText {

// Rows without a field are left out. Empty where a quote is not closed.
QVector<QStringList> read(const QString &text);
QString write(const QVector<QStringList> &rows);

} // namespace CsvText
