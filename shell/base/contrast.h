#pragma once

// How well a text color can be read on a background: the contrast ratio of
// WCAG 2.1 ("relative luminance" and "contrast ratio"), 1 to 21. Text needs
// at least 4.5.

#include <QColor>

namespace Contrast {

constexpr double readable = 4.5;

double luminance(const QColor &color);
double ratio(const QColor &one, const QColor &other);

// The color, where it has the contrast to the ground; otherwise the nearest one of
// its hue that has, lighter or darker.
QColor readableOn(const QColor &ground, const QColor &color, double wanted = readable);

} // namespace Contrast
