#pragma once

// The value axes of a chart whose channels have units of their own: the first unit is
// at the left, the others at the right, each with its own range. Without units there
// is one, whose twin at the right has its ticks where the grid is.

#include "halograph.h"

#include <QStringList>

class UnitAxes
{
public:
    explicit UnitAxes(QCustomPlot *plot);

    // By channel; an empty list for one axis.
    void setUnits(const QStringList &units);
    bool isSplit() const { return m_axes.size() > 1; }
    QCPAxis *axisOf(int channel) const;
    // Each axis includes the visible ones of its curves, with a little room.
    void fit() const;

private:
    QCPAxis *axisFor(int index);

    QCustomPlot *m_plot;
    QStringList m_units;
    QVector<QCPAxis *> m_axes;  // in use, one for each unit
    QVector<QCPAxis *> m_extra; // at the right, kept for the next use
};
