#include "halograph.h"

#include "contrast.h"

namespace {

constexpr double kMinContrast = 3;    // of a mark
const QColor kHalo(0x86, 0x86, 0x86); // stands out from the backgrounds of all styles

} // namespace

bool HaloGraph::hasHalo() const
{
    return m_ground.isValid() && Contrast::ratio(pen().color(), m_ground) < kMinContrast;
}

// Four thin lines around the curve: a line wider than one pixel of the device
// takes a thousand times longer where noise fills the height.
void HaloGraph::drawLinePlot(QCPPainter *painter, const QVector<QPointF> &lines) const
{
    if (hasHalo()) {
        const double step = 1 / painter->device()->devicePixelRatioF();
        const QPen own = painter->pen();
        painter->setPen(QPen(kHalo, 0));
        for (const QPointF &offset :
             {QPointF(0, -step), QPointF(0, step), QPointF(-step, 0), QPointF(step, 0)}) {
            painter->translate(offset);
            QCPGraph::drawLinePlot(painter, lines);
            painter->translate(-offset);
        }
        painter->setPen(own);
    }
    QCPGraph::drawLinePlot(painter, lines);
}

void HaloGraph::drawLegendIcon(QCPPainter *painter, const QRectF &rect) const
{
    if (hasHalo()) {
        painter->setPen(QPen(kHalo, 3));
        painter->drawLine(QLineF(rect.left(), rect.center().y(), rect.right() + 5, rect.center().y()));
    }
    QCPGraph::drawLegendIcon(painter, rect);
}
