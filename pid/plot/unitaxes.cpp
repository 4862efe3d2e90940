#include "unitaxes.h"

UnitAxes::UnitAxes(QCustomPlot *plot)
    : m_plot(plot)
{
}

QCPAxis *UnitAxes::axisFor(int index)
{
    if (index == 0)
        return m_plot->yAxis;
    if (index == 1)
        return m_plot->yAxis2;
    while (m_extra.size() < index - 1) {
        QCPAxis *axis = m_plot->axisRect()->addAxis(QCPAxis::atRight);
        const QCPAxis *like = m_plot->yAxis;
        axis->setBasePen(like->basePen());
        axis->setTickPen(like->tickPen());
        axis->setSubTickPen(like->subTickPen());
        axis->setTickLabelColor(like->tickLabelColor());
        axis->setLabelColor(like->labelColor());
        axis->grid()->setVisible(false);
        m_extra.append(axis);
    }
    return m_extra.at(index - 2);
}

void UnitAxes::setUnits(const QStringList &units)
{
    m_units = units;
    QStringList distinct = units;
    distinct.removeDuplicates();
    m_axes.clear();
    for (int index = 0; index < distinct.size(); ++index)
        m_axes.append(axisFor(index));
    for (QCPAxis *axis : qAsConst(m_extra))
        axis->setVisible(m_axes.contains(axis));

    const bool split = isSplit();
    m_plot->yAxis2->setTickLabels(split);
    m_plot->yAxis2->setTicker(split ? QSharedPointer<QCPAxisTicker>(new QCPAxisTicker)
                                    : m_plot->yAxis->ticker());
    m_plot->yAxis2->setLabel(QString());
    m_plot->yAxis->setLabel(QStringLiteral("幅度值"));
    for (int index = 0; index < m_axes.size(); ++index)
        if (split || !distinct.at(index).isEmpty())
            m_axes.at(index)->setLabel(distinct.at(index).isEmpty() ? QStringLiteral("幅度值")
                                                                    : distinct.at(index));
    if (!split)
        m_plot->yAxis2->setRange(m_plot->yAxis->range());
    QList<QCPAxis *> moved{m_plot->xAxis, m_plot->yAxis};
    for (QCPAxis *axis : qAsConst(m_axes))
        if (!moved.contains(axis))
            moved.append(axis);
    m_plot->axisRect()->setRangeDragAxes(moved);
    m_plot->axisRect()->setRangeZoomAxes(moved);
}

QCPAxis *UnitAxes::axisOf(int channel) const
{
    if (!isSplit())
        return m_plot->yAxis;
    QStringList distinct = m_units;
    distinct.removeDuplicates();
    return m_axes.at(qMax(0, distinct.indexOf(m_units.value(channel)))); // a list may be short
}

void UnitAxes::fit() const
{
    for (QCPAxis *axis : isSplit() ? m_axes : QVector<QCPAxis *>{m_plot->yAxis}) {
        const double size = axis->range().size();
        axis->rescale(true);
        // Without points, or around a constant, the size stays: each picture would add room.
        if (!qFuzzyCompare(axis->range().size(), size))
            axis->scaleRange(1.1);
    }
}
