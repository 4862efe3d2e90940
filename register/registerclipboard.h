#pragma once

// Cells of a register table on the clipboard, as spreadsheets have them: tabs between
// cells, a line for each row. What is pasted has to be what may be typed.

#include "registertablemodel.h"

#include <QModelIndex>

class RegisterViewModel;

namespace RegisterClipboard {

// The selected cells as shown, and those between them as empty ones.
QString text(const RegisterViewModel &view, const QModelIndexList &selected);

struct Pasted
{
    QVector<RegisterTableModel::Cell> cells; // none where a text is refused
    int rows = 0;
    int beyond = 0;      // rows for which the table has no room
    int overwritten = 0; // filled cells that would get another text
    QString refusal;     // why nothing can be pasted, for the user
};
// The text from a cell on. A page goes on with the next one, rows that were searched or
// sorted end with the last of them.
Pasted read(const QString &text, const RegisterViewModel &view, const RegisterTableModel &table,
            const QModelIndex &begin);

} // namespace RegisterClipboard
