#include "contrast.h"

#include <cmath>

namespace {

double linear(double channel)
{
    return channel <= 0.04045 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
}

QColor withLightness(const QColor &color, double lightness)
{
    return QColor::fromHslF(qMax(0.0, color.hslHueF()), color.hslSaturationF(), lightness).toRgb();
}

} // namespace

namespace Contrast {

double luminance(const QColor &color)
{
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

double ratio(const QColor &one, const QColor &other)
{
    const double a = luminance(one);
    const double b = luminance(other);
    return (qMax(a, b) + 0.05) / (qMin(a, b) + 0.05);
}

// Of any ground, black or white has a contrast of at least 4.58.
QColor readableOn(const QColor &ground, const QColor &color, double wanted)
{
    if (ratio(ground, color) >= wanted)
        return color;
    constexpr int kSteps = 100;
    const double lightness = color.lightnessF();
    for (int step = 1; step <= kSteps; ++step) {
        for (const double moved : {lightness + step / double(kSteps), lightness - step / double(kSteps)}) {
            const QColor nearest = withLightness(color, qBound(0.0, moved, 1.0));
            if (ratio(ground, nearest) >= wanted)
                return nearest;
        }
    }
    return ratio(ground, Qt::white) > ratio(ground, Qt::black) ? QColor(Qt::white) : QColor(Qt::black);
}

} // namespace Contrast
