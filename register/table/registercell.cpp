#include "registercell.h"

#include "registertablemodel.h"

#include <algorithm>

namespace {

constexpr int kGroup = 4; // binary digits between blanks

bool isNumberColumn(int column)
{
    return column == RegisterTableModel::Address || column == RegisterTableModel::Value;
}

// Complete bytes.
QString hexadecimal(quint32 number)
{
    const QString digits = QString::number(number, 16).toUpper();
    return digits.rightJustified((digits.size() + 1) / 2 * 2, QLatin1Char('0'));
}

std::optional<QString> fromDigits(const QString &digits, int base)
{
    const int maxDigits = base == 2 ? 32 : 10;
    const bool hasDigitsOnly = std::all_of(digits.begin(), digits.end(), [base](QChar c) {
        return c >= QLatin1Char('0') && c < QChar('0' + base);
    });
    bool isNumber = false;
    const quint32 number = digits.toUInt(&isNumber, base);
    if (!hasDigitsOnly || digits.size() > maxDigits || !isNumber)
        return std::nullopt;
    return hexadecimal(number);
}

} // namespace

namespace RegisterCell {

QString shown(const QString &value, Base base)
{
    quint32 number = 0;
    if (base == Hexadecimal || !RegisterRow::parse(value, &number))
        return value;
    if (base == Decimal)
        return QString::number(number);
    QString digits = QString::number(number, 2);
    digits = digits.rightJustified((digits.size() + 7) / 8 * 8, QLatin1Char('0'));
    for (int at = digits.size() - kGroup; at > 0; at -= kGroup)
        digits.insert(at, QLatin1Char(' '));
    return digits;
}

std::optional<QString> stored(int column, const QString &text, Base base)
{
    if (!isNumberColumn(column)) {
        const bool fitsFile = std::none_of(text.begin(), text.end(), [](QChar c) {
            return c == QLatin1Char(',') || c == QLatin1Char('\n') || c == QLatin1Char('\r');
        });
        return fitsFile ? std::optional(text) : std::nullopt;
    }
    QString digits = text.trimmed();
    if (digits.isEmpty())
        return digits;
    const bool isPrefixed = digits.startsWith(QLatin1String("0x"), Qt::CaseInsensitive);
    if (column == RegisterTableModel::Address || base == Hexadecimal || isPrefixed) {
        quint32 number = 0;
        if (!RegisterRow::parse(digits, &number))
            return std::nullopt;
        return (isPrefixed ? digits.mid(2) : digits).rightJustified(2, QLatin1Char('0'));
    }
    if (base == Binary) {
        digits.remove(QLatin1Char(' '));
        if (digits.startsWith(QLatin1String("0b"), Qt::CaseInsensitive))
            digits.remove(0, 2);
    }
    return fromDigits(digits, base == Binary ? 2 : 10);
}

QString rule(int column, Base base)
{
    if (!isNumberColumn(column))
        return QStringLiteral("不能含有逗号和换行！");
    if (column == RegisterTableModel::Address || base == Hexadecimal)
        return QStringLiteral("请输入2到8位十六进制数！");
    return base == Decimal ? QStringLiteral("请输入0到4294967295的十进制数！")
                           : QStringLiteral("请输入1到32位二进制数！");
}

} // namespace RegisterCell
