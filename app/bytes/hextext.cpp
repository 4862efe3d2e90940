#include "hextext.h"

namespace {

// The value of a hexadecimal digit, or -1.
int digitValue(QChar character)
{
    const ushort code = character.unicode();
    if (code >= '0' && code <= '9')
        return code - '0';
    if (code >= 'A' && code <= 'F')
        return code - 'A' + 10;
    if (code >= 'a' && code <= 'f')
        return code - 'a' + 10;
    return -1;
}

} // namespace

namespace HexText {

bool isDigit(QChar character)
{
    return digitValue(character) >= 0;
}

QString render(const char *bytes, int size)
{
    static const char digits[] = "0123456789ABCDEF";
    QString text(size * 3, Qt::Uninitialized);
    QChar *out = text.data();
    for (int i = 0; i < size; ++i) {
        const auto value = static_cast<unsigned char>(bytes[i]);
        *out++ = QLatin1Char(digits[value >> 4]);
        *out++ = QLatin1Char(digits[value & 0x0F]);
        *out++ = QLatin1Char(' ');
    }
    return text;
}

Parsed parse(const QString &text)
{
    Parsed result;
    result.bytes.reserve(text.size() / 2);
    int high = -1;
    int highPosition = 0;
    int position = 0;
    for (; position < text.size(); ++position) {
        const QChar character = text.at(position);
        if (character == QLatin1Char(' '))
            continue;
        const int value = digitValue(character);
        if (value < 0)
            break;
        if (high < 0) {
            high = value;
            highPosition = position;
        } else {
            result.bytes.append(static_cast<char>(high * 16 + value));
            high = -1;
        }
    }
    for (int i = high < 0 ? position : highPosition; i < text.size(); ++i) {
        if (text.at(i) != QLatin1Char(' '))
            ++result.ignored;
    }
    return result;
}

} // namespace HexText
