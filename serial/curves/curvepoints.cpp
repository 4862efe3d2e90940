#include "curvepoints.h"

#include <cmath>
#include <limits>

namespace {

constexpr int kExact = 4; // points of a column that are all shown
constexpr int kLateReserve = 16 * 1024;

using Point = CurvePoints::Point;
using Axis = CurvePoints::Axis;

// Reduces points in their order. A column of many points becomes a line between its
// extremes, which goes on where the one before ends: drawing costs by the pixel.
class Thinner
{
public:
    Thinner(Axis axis, double from, double to, int columns, QVector<QPointF> *shown)
        : m_scale(axis == Axis::Time ? 1000 : 1)
        , m_key(axis == Axis::Time ? &Point::ms : &Point::line)
        , m_from(from * m_scale)
        , m_width((to - from) * m_scale / qMax(1, columns))
        , m_shown(shown)
    {
    }

    void add(const Point *points, int count)
    {
        const Point *const end = points + count;
        for (const Point *point = points; point < end;) {
            const bool isGap = double(point->*m_key) >= m_end + m_width;
            if (m_count == 0 || !(double(point->*m_key) < m_end)) {
                endColumn(isGap);
                begin(point, isGap);
                ++point;
            }
            point = addToColumn(point, end);
        }
    }

    // Before a gap, the line to the next column begins at the last point.
    void endColumn(bool isBeforeGap)
    {
        for (int i = 0; m_size <= kExact && i < m_count; ++i)
            show(*m_exact[i], m_exact[i]->value);
        if (m_size <= kExact)
            return;
        if (m_isBehindGap)
            show(*m_exact[0], m_exact[0]->value);
        const bool isRising = qAbs(m_shownLast - m_lowest) < qAbs(m_shownLast - m_highest);
        show(*m_exact[0], isRising ? m_lowest : m_highest);
        show(*m_last, isRising ? m_highest : m_lowest);
        if (isBeforeGap)
            show(*m_last, m_last->value);
    }

private:
    // The inner loop over all points of a curve. Returns the first one behind the column.
    const Point *addToColumn(const Point *point, const Point *end)
    {
        const double columnEnd = m_end;
        double lowest = m_lowest;
        double highest = m_highest;
        const Point *const first = point;
        for (; point < end && double(point->*m_key) < columnEnd; ++point) {
            lowest = point->value < lowest ? point->value : lowest;
            highest = point->value > highest ? point->value : highest;
        }
        for (const Point *exact = first; exact < point && m_count < kExact; ++exact)
            m_exact[m_count++] = exact;
        if (point > first)
            m_last = point - 1;
        m_lowest = lowest;
        m_highest = highest;
        m_size += int(point - first);
        return point;
    }
    void begin(const Point *point, bool isBehindGap)
    {
        m_end = m_from + m_width * (std::floor((double(point->*m_key) - m_from) / m_width) + 1);
        m_lowest = m_highest = point->value;
        m_exact[0] = m_last = point;
        m_count = m_size = 1;
        m_isBehindGap = isBehindGap;
    }
    void show(const Point &point, double value)
    {
        m_shown->append({double(point.*m_key) / m_scale, value});
        m_shownLast = value;
    }

    const double m_scale;
    qint64 Point::*const m_key;
    const double m_from;
    const double m_width;
    QVector<QPointF> *m_shown;
    double m_end = -std::numeric_limits<double>::infinity(); // of the column
    double m_lowest = 0;
    double m_highest = 0;
    const Point *m_exact[kExact] = {};
    const Point *m_last = nullptr;
    int m_count = 0; // of m_exact
    int m_size = 0;  // points of the column
    bool m_isBehindGap = true;
    double m_shownLast = 0;
};

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
    const int begin = qMax(0, indexOf(from, axis) - 1);
    const int end = qMin(size(), indexOf(to, axis) + 1);
    QVector<QPointF> points;
    if (end - begin <= kExact * columns) {
        points.reserve(end - begin);
        for (int i = begin; i < end; ++i)
            points.append({key(at(i), axis), at(i).value});
        return points;
    }
    points.reserve(kExact * (columns + 2));
    Thinner thinner(axis, from, to, columns, &points);
    const int wrap = size() - m_first; // the point at the front of the ring
    if (begin < wrap)
        thinner.add(m_points.constData() + m_first + begin, qMin(end, wrap) - begin);
    if (end > wrap)
        thinner.add(m_points.constData() + qMax(begin, wrap) - wrap, end - qMax(begin, wrap));
    thinner.endColumn(true);
    return points;
}
