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
// occurs: a part of the pasted text is worse than none.
std::optional<QByteArray> bytes(const QString &text);

// The same a slice at a time, for text of any size.
class Reader
{
public:
    explicit Reader(const QString &text);

    enum class State { Running, Done, Invalid };
    // Reads about that many characters at most.
    State read(int characters);

    const QByteArray &bytes() const { return m_bytes; }
    int place() const { return m_place; } // of the next character

private:
    bool has(char first, char second) const;
    bool endRow();

    QString m_text;
    QByteArray m_bytes;
    int m_place = 0;
    bool m_inRow = false;
    bool m_prefixed = false;
    int m_digits = 0; // of the row
    int m_last = 0;   // digit
};

// An address: hexadecimal with "0x" before or "h" behind it, otherwise to the
// base; a sign in front makes it relative to `current`,
// and "end" before the sign to the size. Nothing where it is no
// number or lies outside 0 to `size`.
std::optional<qint64> address(const QString &text, int base, qint64 current, qint64 size);

// Upper-case pairs with blanks between.
QString text(const QByteArray &bytes);

} // namespace HexParse
