#include "numbertext.h"

#include <QByteArray>
#include <QString>

#include <cmath>

namespace {

constexpr int kMaxUnit = 8;
constexpr int kMaxExactDigits = 15; // of a number that a double holds as an integer
constexpr double kPowers[] = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                              1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};

bool isDigit(const QChar *at, const QChar *end)
{
    return at < end && at->unicode() >= '0' && at->unicode() <= '9';
}

int hexDigit(QChar character)
{
    const ushort code = character.unicode();
    if (code >= '0' && code <= '9')
        return code - '0';
    const int letter = (code | 0x20) - 'a';
    return code < 0x80 && letter >= 0 && letter < 6 ? letter + 10 : -1;
}

bool isUnit(QChar character)
{
    const ushort code = character.unicode();
    return character.isLetter() || code == '%' || code == '/' || code == 0xB0 || code == 0x2103 ||
           code == 0xB2 || code == 0xB3;
}

const QChar *behindDigits(const QChar *at, const QChar *end)
{
    while (isDigit(at, end))
        ++at;
    return at;
}

// Behind the exponent at a place, or the place where there is none.
const QChar *behindExponent(const QChar *at, const QChar *end)
{
    if (at == end || (at->unicode() | 0x20) != 'e')
        return at;
    const QChar *digits = at + 1;
    if (digits < end && (*digits == QLatin1Char('+') || *digits == QLatin1Char('-')))
        ++digits;
    return isDigit(digits, end) ? behindDigits(digits, end) : at;
}

// Digits with at most one point.
bool readExactly(const QChar *begin, const QChar *end, double *value)
{
    qint64 digits = 0;
    int count = 0;
    int decimals = -1;
    for (const QChar *at = begin; at < end; ++at) {
        if (*at == QLatin1Char('.')) {
            decimals = 0;
            continue;
        }
        digits = digits * 10 + (at->unicode() - '0');
        decimals += decimals >= 0 ? 1 : 0;
        if (++count > kMaxExactDigits)
            return false;
    }
    *value = double(digits) / kPowers[qMax(0, decimals)];
    return true;
}

// Of the text without sign. Returns the end of the number, or `begin` where there is
// none.
const QChar *readDecimal(const QChar *begin, const QChar *end, double *value)
{
    const QChar *at = behindDigits(begin, end);
    if (at < end && *at == QLatin1Char('.') && (at > begin || isDigit(at + 1, end)))
        at = behindDigits(at + 1, end);
    if (at == begin)
        return begin;
    const QChar *const digitsEnd = at;
    at = behindExponent(at, end);
    if (at > digitsEnd || !readExactly(begin, digitsEnd, value))
        *value = QStringView(begin, at).toLatin1().toDouble();
    return at;
}

const QChar *readHex(const QChar *begin, const QChar *end, double *value)
{
    if (end - begin < 3 || begin[0] != QLatin1Char('0') || (begin[1].unicode() | 0x20) != 'x' ||
        hexDigit(begin[2]) < 0)
        return begin;
    *value = 0;
    const QChar *at = begin + 2;
    for (; at < end && hexDigit(*at) >= 0; ++at)
        *value = *value * 16 + hexDigit(*at);
    return at;
}

// "nan", "inf" or "infinity".
const QChar *readNotFinite(const QChar *begin, const QChar *end)
{
    for (const QLatin1String word : {QLatin1String("infinity"), QLatin1String("inf"), QLatin1String("nan")}) {
        const int size = word.size();
        if (end - begin >= size && QStringView(begin, size).compare(word, Qt::CaseInsensitive) == 0 &&
            (begin + size == end || !begin[size].isLetterOrNumber()))
            return begin + size;
    }
    return begin;
}

// Behind the unit; nullptr where what follows makes it no number.
const QChar *behindUnit(const QChar *at, const QChar *end)
{
    const QChar *const begin = at;
    while (at < end && isUnit(*at))
        ++at;
    if (at - begin > kMaxUnit)
        return nullptr;
    if (at == end || NumberText::isDelimiter(*at))
        return at;
    // The end of a sentence.
    const bool isStop = *at == QLatin1Char('.') && (at + 1 == end || at[1].isSpace());
    return isStop ? at : nullptr;
}

} // namespace

bool NumberText::isDelimiter(QChar character)
{
    switch (character.unicode()) {
    case ',':
    case ';':
    case '|':
    case '&':
    case '!':
    case '*':
    case '"':
    case '\'':
    case '(':
    case ')':
    case '[':
    case ']':
    case '{':
    case '}':
    case '<':
    case '>':
    case 0x3001: // the Chinese comma of lists, then full stop, comma, semicolon, parentheses
    case 0x3002:
    case 0xFF0C:
    case 0xFF1B:
    case 0xFF08:
    case 0xFF09:
        return true;
    default:
        return character.isSpace();
    }
}

NumberText::Number NumberText::read(const QChar *begin, const QChar *end)
{
    Number number;
    const QChar *at = begin;
    const bool isNegative = at < end && *at == QLatin1Char('-');
    if (isNegative || (at < end && *at == QLatin1Char('+')))
        ++at;
    const QChar *const digits = at;
    at = readHex(digits, end, &number.value);
    if (at == digits)
        at = readDecimal(digits, end, &number.value);
    if (at == digits) {
        at = readNotFinite(digits, end);
        number.isFinite = false;
    }
    const QChar *const behind = at == digits ? nullptr : behindUnit(at, end);
    if (!behind)
        return {};
    number.length = int(behind - begin);
    number.isFinite = number.isFinite && std::isfinite(number.value);
    if (isNegative)
        number.value = -number.value;
    return number;
}

NumberText::Number NumberText::readAll(const QChar *begin, const QChar *end)
{
    Number number = read(begin, end);
    if (number.length == 0)
        return number;
    const QChar *at = begin + number.length;
    while (at < end && at->isSpace())
        ++at;
    const QChar *const unit = at;
    while (at < end && isUnit(*at))
        ++at;
    if (at < end || at - unit > kMaxUnit)
        return {};
    number.length = int(end - begin);
    return number;
}
