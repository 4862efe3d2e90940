#include "linestamp.h"

#include <QDateTime>

namespace {

QString seconds(qint64 ms)
{
    return QString::number(double(ms) / 1000, 'f', 3);
}

QString clock(qint64 ms)
{
    return QDateTime::fromMSecsSinceEpoch(ms).toString(QStringLiteral("hh:mm:ss.zzz"));
}

} // namespace

int LineStamp::columns() const
{
    constexpr int clockColumns = 12;
    constexpr int directionColumns = 3; // a Chinese character behind a space
    const int timeColumns = time == Time::None ? 0 : time == Time::Clock ? clockColumns : 10;
    return hasDirection ? clockColumns + directionColumns : timeColumns;
}

QString LineStamp::text(const LineStore::Line &line, qint64 previousMs) const
{
    const bool isSent = line.origin == LineStore::Origin::Sent;
    QString text;
    if (time == Time::Clock || (time == Time::None && hasDirection && isSent))
        text = clock(line.arrivalMs);
    else if (time == Time::SincePrevious)
        text = QLatin1Char('+') + seconds(line.arrivalMs - previousMs);
    else if (time == Time::SinceOpening)
        text = seconds(line.arrivalMs - (openingMs > 0 ? openingMs : line.arrivalMs));
    if (!hasDirection)
        return text;
    return (text.isEmpty() ? QString() : text + QLatin1Char(' ')) +
           (isSent ? QStringLiteral("发") : QStringLiteral("收"));
}

QString LineStamp::prefix(const LineStore::Line &line, qint64 previousMs) const
{
    return QLatin1Char('[') + text(line, previousMs) + QStringLiteral("] ");
}
