#pragma once

// The text of a cell as a page shows it and as the table stores it. Values are stored
// in hexadecimal and shown in the base that the user has chosen; addresses are always
// hexadecimal. The same rules hold for what is typed and what is pasted.

#include <QString>

#include <optional>

namespace RegisterCell {

enum Base { Hexadecimal, Decimal, Binary }; // as the setting stores it

// A value in that base; what is no number stays as it is.
QString shown(const QString &value, Base base);

// What is stored of a text for a column of RegisterTableModel. Numbers may have "0x"
// before them, in binary "0b" and blanks between the digits, and may be empty. None where
// the cell can't hold it.
std::optional<QString> stored(int column, const QString &text, Base base);

// What the cells of a column can hold, for the user.
QString rule(int column, Base base);

} // namespace RegisterCell
