#include "versionnumber.h"

#include <QStringList>

quint64 VersionNumber::fromText(const QString &text)
{
    const QStringList parts = text.split(QLatin1Char('.'));
    if (parts.size() < 3)
        return 0;
    quint64 number = 0;
    for (int i = 0; i < parts.size(); ++i) {
        const int shift = (parts.size() - 1 - i) * 8;
        if (shift < 64)
            number |= static_cast<quint64>(qMax(0, parts.at(i).toInt())) << shift;
    }
    return number;
}
