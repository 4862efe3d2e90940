#pragma once

// Hexadecimal text: how bytes are shown and how typed digits become bytes.

#include <QByteArray>
#include <QString>

namespace HexText {

// Each byte as two upper-case digits followed by one space.
QString render(const char *bytes, int size);
inline QString render(const QByteArray &bytes)
{
    return render(bytes.constData(), bytes.size());
}

struct Parsed
{
    QByteArray bytes;
    int ignored = 0; // characters from the first one that is no digit, or the odd last digit
};

// Spaces are skipped; each byte is made of two digits, high one first. The
// first character that is neither ends the conversion. A single digit left
// over makes no byte: nobody can tell whether "1" meant 0x01 or 0x10.
Parsed parse(const QString &text);

} // namespace HexText
