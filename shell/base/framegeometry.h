#pragma once

// The arithmetic of a window that draws its own frame: which edges a point
// grabs, which cursor shows that, and what a drag makes of a rectangle. Knows no
// window; all values are logical pixels.

#include <QRect>
#include <Qt>

namespace FrameGeometry {

// Edges within `width` of a point inside a window of the given size, empty in
// the middle. Near a corner, twice the width along the edge grabs both edges,
// because a corner of 5 x 5 pixels is hard to hit.
Qt::Edges edgesAt(const QPoint &point, const QSize &window, int width);

Qt::CursorShape cursorFor(Qt::Edges edges);

// The rectangle after the grabbed edges were moved by `delta`. Where the
// smallest or largest size is reached, the grabbed edge stops and the opposite
// one stays where it was.
QRect resized(const QRect &start, Qt::Edges edges, const QPoint &delta, const QSize &smallest,
              const QSize &largest);

// Where a maximised window's normal rectangle goes when it is pulled off by
// its title bar: the pointer keeps its relative place along the bar.
QRect pulledOff(const QSize &normal, const QRect &maximised, const QPoint &pointer);

// The rectangle moved, not resized, so that as much of it as possible is
// inside the bounds; its top left corner wins.
QRect keptInside(const QRect &rect, const QRect &bounds);

} // namespace FrameGeometry
