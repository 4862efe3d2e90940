#pragma once

// The colors of curves: those that the user is offered, and one for each curve of
// a chart that does not know its curves beforehand.

#include <QColor>
#include <QIcon>

class QWidget;

namespace CurveColors {

// Different for each of some dozen curves; stands out from light and from dark
// backgrounds.
QColor ofCurve(int index);

QIcon swatch(const QColor &color, const QColor &outline);

// A menu below the swatch: the curve's own color first, then others. Invalid
// where none was chosen.
QColor choose(QWidget *swatch, const QColor &own);

} // namespace CurveColors
