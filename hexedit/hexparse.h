#pragma once

// Hexadecimal text as people paste and type it: what other tools, dumps and
// source code contain.

#include <QByteArray>
#include <QString>
#include <optional>

namespace HexParse {

// Pairs of digits, in one row or parted by blanks, commas, semicolons, colons,
// hyphens or brackets, each row with "0x" or "\x" before it if need be. A
// single digit is a byte only behind such a prefix. Nothing where anything else
// occurs: half of what was pasted is worse than none.
std::optional<QByteArray> bytes(const QString &text);

// An address: hexadecimal with "0x" before or "h" behind it, otherwise decimal;
// a sign in front makes it relative to `current`. Nothing where it is no number or
// lies outside 0 to `size`.
std::optional<qint64> address(const QString &text, qint64 current, qint64 size);

// Upper-case pairs with blanks between.
QString text(const QByteArray &bytes);

} // namespace HexParse
