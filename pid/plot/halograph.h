#pragma once

// A curve that can be told from the ground whatever its color: where both are
// too much alike, a line of another color shows on its sides.

#include "customplot.h"

class HaloGraph : public QCPGraph
{
    Q_OBJECT

public:
    using QCPGraph::QCPGraph;

    void setGround(const QColor &ground) { m_ground = ground; }
    bool hasHalo() const;

protected:
    void drawLinePlot(QCPPainter *painter, const QVector<QPointF> &lines) const override;
    void drawLegendIcon(QCPPainter *painter, const QRectF &rect) const override;

private:
    QColor m_ground;
};
