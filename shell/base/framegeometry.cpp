#include "framegeometry.h"

#include <QtGlobal>

namespace FrameGeometry {

Qt::Edges edgesAt(const QPoint &point, const QSize &window, int width)
{
    if (!QRect(QPoint(0, 0), window).contains(point))
        return {};
    const int right = window.width() - 1 - point.x();
    const int bottom = window.height() - 1 - point.y();
    const bool onEdge = point.x() < width || right < width || point.y() < width || bottom < width;
    if (!onEdge)
        return {};
    const int corner = 2 * width;
    const bool onSide = point.x() < width || right < width;
    const bool onTopOrBottom = point.y() < width || bottom < width;
    Qt::Edges edges;
    if (point.x() < (onTopOrBottom ? corner : width))
        edges |= Qt::LeftEdge;
    else if (right < (onTopOrBottom ? corner : width))
        edges |= Qt::RightEdge;
    if (point.y() < (onSide ? corner : width))
        edges |= Qt::TopEdge;
    else if (bottom < (onSide ? corner : width))
        edges |= Qt::BottomEdge;
    return edges;
}

Qt::CursorShape cursorFor(Qt::Edges edges)
{
    const bool left = edges.testFlag(Qt::LeftEdge);
    const bool right = edges.testFlag(Qt::RightEdge);
    const bool top = edges.testFlag(Qt::TopEdge);
    const bool bottom = edges.testFlag(Qt::BottomEdge);
    if ((left && top) || (right && bottom))
        return Qt::SizeFDiagCursor;
    if ((right && top) || (left && bottom))
        return Qt::SizeBDiagCursor;
    if (left || right)
        return Qt::SizeHorCursor;
    if (top || bottom)
        return Qt::SizeVerCursor;
    return Qt::ArrowCursor;
}

QRect resized(const QRect &start, Qt::Edges edges, const QPoint &delta, const QSize &smallest,
              const QSize &largest)
{
    QRect result = start;
    if (edges.testFlag(Qt::LeftEdge)) {
        const int width = qBound(smallest.width(), start.width() - delta.x(), largest.width());
        result.setLeft(start.right() - width + 1);
    } else if (edges.testFlag(Qt::RightEdge)) {
        result.setWidth(qBound(smallest.width(), start.width() + delta.x(), largest.width()));
    }
    if (edges.testFlag(Qt::TopEdge)) {
        const int height = qBound(smallest.height(), start.height() - delta.y(), largest.height());
        result.setTop(start.bottom() - height + 1);
    } else if (edges.testFlag(Qt::BottomEdge)) {
        result.setHeight(qBound(smallest.height(), start.height() + delta.y(), largest.height()));
    }
    return result;
}

QRect pulledOff(const QSize &normal, const QRect &maximised, const QPoint &pointer)
{
    const int width = qMax(1, maximised.width());
    const int offset = (pointer.x() - maximised.left()) * normal.width() / width;
    return {QPoint(pointer.x() - offset, maximised.top()), normal};
}

QRect keptInside(const QRect &rect, const QRect &bounds)
{
    QRect result = rect;
    if (result.right() > bounds.right())
        result.moveRight(bounds.right());
    if (result.bottom() > bounds.bottom())
        result.moveBottom(bounds.bottom());
    if (result.left() < bounds.left())
        result.moveLeft(bounds.left());
    if (result.top() < bounds.top())
        result.moveTop(bounds.top());
    return result;
}

} // namespace FrameGeometry
