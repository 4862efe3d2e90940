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

bool isDigit(QChar character); // 0 to 9, A to F, a to f

struct Parsed
{
    QByteArray bytes;
    int ignored = 0; // characters other than spaces from the first one that makes no byte
};

// Spaces are skipped; each byte is made of two digits, high one first. The
// first character that is neither ends the conversion. A single digit at the
// end makes no byte: "1" could mean 0x01 or 0x10.
Parsed parse(const QString &text);

} // namespace HexText
