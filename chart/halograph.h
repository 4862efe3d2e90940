#pragma once

// A curve that stands out from the background in any color: where the
// contrast is too low, a line of another color is drawn along both its sides.

// The header of QCustomPlot iterates with a keyword that our build switches off.
#ifdef QT_NO_FOREACH
#define foreach(variable, container) for (variable : container)
#endif
#include <qcustomplot.h>
#ifdef QT_NO_FOREACH
#undef foreach
#endif

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
