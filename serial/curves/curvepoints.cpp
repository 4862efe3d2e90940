#include "curvepoints.h"

#include <cmath>

namespace {

constexpr int kPerColumn = 4; // points that a column is reduced to
constexpr int kLateReserve = 16 * 1024;

} // namespace

void CurvePoints::append(const Point &point)
{
    Point next = point;
    if (!isEmpty())
        next.ms = qMax(next.ms, last().ms);
    if (m_points.size() < capacity) {
        if (m_points.size() == kLateReserve)
            m_points.reserve(capacity); // instead of doubling beyond it
        m_points.append(next);
        return;
    }
    m_points[m_first] = next;
    m_first = m_first + 1 < capacity ? m_first + 1 : 0;
}

int CurvePoints::indexOf(double key, Axis axis) const
{
    int low = 0;
    int high = size();
    while (low < high) {
        const int middle = (low + high) / 2;
        if (CurvePoints::key(at(middle), axis) < key)
            low = middle + 1;
        else
            high = middle;
    }
    return low;
}

const CurvePoints::Point &CurvePoints::nearest(double key, Axis axis) const
{
    const int behind = indexOf(key, axis);
    if (behind == 0)
        return at(0);
    if (behind == size())
        return last();
    const double before = key - CurvePoints::key(at(behind - 1), axis);
    return at(CurvePoints::key(at(behind), axis) - key < before ? behind : behind - 1);
}

QVector<QPointF> CurvePoints::thinned(double from, double to, int columns, Axis axis) const
{
    QVector<QPointF> points;
    const int begin = qMax(0, indexOf(from, axis) - 1);
    const int end = qMin(size(), indexOf(to, axis) + 1);
    const double width = (to - from) / qMax(1, columns);
    const bool isFew = end - begin <= kPerColumn * columns || width <= 0;
    points.reserve(isFew ? end - begin : kPerColumn * (columns + 2));
    for (int first = begin; first < end;) {
        // Of few points, each is a column.
        const double columnEnd =
            isFew ? from : from + width * (std::floor((key(at(first), axis) - from) / width) + 1);
        int lowest = first;
        int highest = first;
        int next = first + 1;
        for (; next < end && key(at(next), axis) < columnEnd && !isFew; ++next) {
            const double value = at(next).value;
            if (value < at(lowest).value)
                lowest = next;
            else if (value > at(highest).value)
                highest = next;
        }
        int shownLast = -1;
        for (const int index : {first, qMin(lowest, highest), qMax(lowest, highest), next - 1}) {
            if (index > shownLast)
                points.append(shown(index, axis));
            shownLast = qMax(shownLast, index);
        }
        first = next;
    }
    return points;
}
