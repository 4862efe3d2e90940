#include "packagename.h"

#include <QRegularExpression>

namespace {

constexpr int kMaxCharacters = 150;

// The value behind "filename=": up to the closing quote, or to the next field.
QString valueOf(const QString &header)
{
    static const QString key = QStringLiteral("filename=");
    const int at = header.indexOf(key);
    if (at < 0)
        return QString();
    const QString rest = header.mid(at + key.size()).trimmed();
    if (rest.startsWith(QLatin1Char('"')))
        return rest.mid(1).section(QLatin1Char('"'), 0, 0);
    return rest.section(QLatin1Char(';'), 0, 0);
}

// Windows opens a device for these names, with any suffix.
bool isDevice(const QString &name)
{
    static const QRegularExpression devices(
        QStringLiteral("^(CON|PRN|AUX|NUL|CONIN\\$|CONOUT\\$|(COM|LPT)[0-9¹²³])\\s*(\\..*)?$"),
        QRegularExpression::CaseInsensitiveOption);
    return devices.match(name).hasMatch();
}

} // namespace

QString PackageName::fallback()
{
    return QStringLiteral("package.bin");
}

QString PackageName::fromHeader(const QString &contentDisposition)
{
    static const QRegularExpression meaningful(QStringLiteral("[\\x00-\\x1F\\x7F<>:\"|?*']"));
    QString name = valueOf(contentDisposition);
    name = name.mid(qMax(name.lastIndexOf(QLatin1Char('/')), name.lastIndexOf(QLatin1Char('\\'))) + 1);
    name.replace(meaningful, QStringLiteral("_"));
    name = name.trimmed();
    while (name.endsWith(QLatin1Char('.')) || name.endsWith(QLatin1Char(' ')))
        name.chop(1); // Windows drops them and opens another file
    const bool usable = !name.isEmpty() && name.size() <= kMaxCharacters && !isDevice(name);
    return usable ? name : fallback();
}
