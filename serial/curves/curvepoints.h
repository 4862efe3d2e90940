#pragma once

// The newest points of one curve, in the order of their lines; neither lines nor
// times decrease. Hands out what a chart of so many pixels can show of them.

#include <QPointF>
#include <QVector>

class CurvePoints
{
public:
    static constexpr int capacity = 100000;

    enum class Axis { Time, Line };

    struct Point
    {
        double value;
        qint64 line;
        qint64 ms; // since the epoch
    };

    // A time before that of the last point becomes that one.
    void append(const Point &point);

    int size() const { return m_points.size(); }
    bool isEmpty() const { return m_points.isEmpty(); }
    // From the oldest one on.
    const Point &at(int index) const
    {
        const int place = m_first + index;
        return m_points.at(place < m_points.size() ? place : place - m_points.size());
    }
    const Point &last() const { return at(size() - 1); }
    qint64 memoryBytes() const { return qint64(m_points.capacity()) * qint64(sizeof(Point)); }

    // Seconds since the epoch, or the number of the line.
    static double key(const Point &point, Axis axis)
    {
        return axis == Axis::Time ? double(point.ms) / 1000 : double(point.line);
    }
    // The first point at a key or behind it; size() where there is none.
    int indexOf(double key, Axis axis) const;
    // That nearest to a key; not of an empty curve.
    const Point &nearest(double key, Axis axis) const;

    // Of the points from one key to another, and one more on each side: all of them,
    // or, where they are many, the extremes within each of so many columns.
    QVector<QPointF> thinned(double from, double to, int columns, Axis axis) const;

private:
    QVector<Point> m_points;
    int m_first = 0; // the oldest
};
