#include "registerrow.h"

namespace {

constexpr int kMaxDigits = 8;

} // namespace

bool RegisterRow::isEmpty() const
{
    return number.isEmpty() && address.isEmpty() && value.isEmpty() && description.isEmpty();
}

bool RegisterRow::parse(const QString &text, quint32 *result)
{
    QString digits = text.trimmed();
    if (digits.startsWith(QLatin1String("0x"), Qt::CaseInsensitive))
        digits.remove(0, 2);
    if (digits.isEmpty() || digits.size() > kMaxDigits)
        return false;
    for (const QChar c : qAsConst(digits)) {
        const ushort code = c.toLower().unicode();
        if (!(code >= '0' && code <= '9') && !(code >= 'a' && code <= 'f'))
            return false;
    }
    *result = digits.toUInt(nullptr, 16);
    return true;
}

QString RegisterRow::fitted(const QString &text)
{
    QString cell = text;
    cell.replace(QLatin1String("\r\n"), QLatin1String(" "));
    for (QChar &c : cell) {
        if (c == QLatin1Char(','))
            c = QChar(0xFF0C);
        else if (c == QLatin1Char('\n') || c == QLatin1Char('\r'))
            c = QLatin1Char(' ');
    }
    return cell;
}
