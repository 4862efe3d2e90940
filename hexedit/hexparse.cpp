#include "hexedit/hexparse.h"

namespace HexParse {

namespace {

int digitOf(QChar character)
{
    const ushort code = character.unicode();
    if (code >= '0' && code <= '9')
        return code - '0';
    if (code >= 'a' && code <= 'f')
        return code - 'a' + 10;
    if (code >= 'A' && code <= 'F')
        return code - 'A' + 10;
    return -1;
}

bool isSeparator(QChar character)
{
    return character.isSpace() || QStringLiteral(",;:-{}[]()").contains(character);
}

} // namespace

std::optional<QByteArray> bytes(const QString &text)
{
    QByteArray result;
    int place = 0;
    const auto has = [&](QLatin1Char first, QLatin1Char second) {
        return place + 1 < text.size() && text.at(place) == first && text.at(place + 1).toLower() == second;
    };
    while (place < text.size()) {
        if (isSeparator(text.at(place))) {
            ++place;
            continue;
        }
        const bool prefixed =
            has(QLatin1Char('0'), QLatin1Char('x')) || has(QLatin1Char('\\'), QLatin1Char('x'));
        if (prefixed)
            place += 2;
        const int begin = place;
        while (place < text.size() && digitOf(text.at(place)) >= 0 &&
               !(place > begin && (place - begin) % 2 == 0 && has(QLatin1Char('0'), QLatin1Char('x'))))
            ++place;
        const int digits = place - begin;
        if (digits == 1 && prefixed) {
            result.append(static_cast<char>(digitOf(text.at(begin))));
            continue;
        }
        if (digits == 0 || digits % 2 != 0)
            return std::nullopt;
        for (int i = begin; i < place; i += 2)
            result.append(static_cast<char>(digitOf(text.at(i)) * 16 + digitOf(text.at(i + 1))));
    }
    return result;
}

std::optional<qint64> address(const QString &text, qint64 current, qint64 size)
{
    QString number = text.trimmed();
    const bool forward = number.startsWith(QLatin1Char('+'));
    const bool backward = number.startsWith(QLatin1Char('-'));
    if (forward || backward)
        number = number.mid(1);
    int base = 10;
    if (number.startsWith(QLatin1String("0x"), Qt::CaseInsensitive)) {
        number = number.mid(2);
        base = 16;
    } else if (number.endsWith(QLatin1Char('h'), Qt::CaseInsensitive)) {
        number.chop(1);
        base = 16;
    }
    if (number.isEmpty() || digitOf(number.at(0)) < 0)
        return std::nullopt; // no second sign, no blank
    bool isNumber = false;
    const qint64 value = number.toLongLong(&isNumber, base);
    if (!isNumber || value > size)
        return std::nullopt;
    const qint64 result = forward ? current + value : backward ? current - value : value;
    if (result < 0 || result > size)
        return std::nullopt;
    return result;
}

QString text(const QByteArray &bytes)
{
    return QString::fromLatin1(bytes.toHex(' ').toUpper());
}

} // namespace HexParse
