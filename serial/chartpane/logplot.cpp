#include "logplot.h"

#include "curvefeed.h"

#include <QDateTime>
#include <QLocale>

namespace {

constexpr double kMargin = 0.02;      // of the keys, at the right
constexpr double kValueMargin = 0.05; // above and below
constexpr double kFineSeconds = 20;   // with milliseconds at the ticks
constexpr double kDay = 24 * 3600;
constexpr int kTickPixels = 140;
constexpr int kMaxSmooth = 600; // points

// Line numbers have no decimals.
class LineTicker : public QCPAxisTicker
{
protected:
    double getTickStep(const QCPRange &range) override
    {
        return qMax(1.0, QCPAxisTicker::getTickStep(range));
    }
};

} // namespace

LogPlot::LogPlot(const CurveFeed *feed, QWidget *parent)
    : CurvePlot(parent)
    , m_feed(feed)
    , m_times(new QCPAxisTickerDateTime)
    , m_numbers(new LineTicker)
{
    setObjectName(QStringLiteral("logPlot"));
    setMaxSmooth(kMaxSmooth);
    setPlottingHint(QCP::phFastPolylines);
    yAxis->setNumberPrecision(7);
    xAxis->setNumberFormat(QStringLiteral("f"));
    xAxis->setNumberPrecision(0);
    setAxis(Axis::Time);
}

void LogPlot::setStyleOf(int curve, const QColor &color, bool shown, const QString &name)
{
    while (graphCount() <= curve)
        addCurve()->setAdaptiveSampling(false); // what it gets is thinned
    setCurve(curve, color, shown, name);
    refresh();
}

void LogPlot::dropCurves()
{
    clearCurves();
    hideCursor();
    setHintVisible(true);
    m_span = 0;
    setFollow(Live);
    replot(rpQueuedReplot);
}

void LogPlot::setAxis(Axis axis)
{
    m_axis = axis;
    m_span = 0;
    if (axis == Axis::Time)
        xAxis->setTicker(m_times);
    else
        xAxis->setTicker(m_numbers);
    fit();
}

void LogPlot::fit()
{
    m_span = 0;
    if (follow() != Held)
        return returnToLive();
    addNewPoints();
    const QCPRange keys = allKeys();
    load(keys);
    setRanges(keys, shownValues());
    replot(rpQueuedReplot);
}

void LogPlot::refresh()
{
    if (!isVisible())
        return;
    if (follow() == Held) {
        load(xAxis->range());
        replot(rpQueuedReplot);
    }
    requestPicture();
}

void LogPlot::showEvent(QShowEvent *event)
{
    CurvePlot::showEvent(event);
    refresh();
}

void LogPlot::resizeEvent(QResizeEvent *event)
{
    CurvePlot::resizeEvent(event);
    refresh();
}

bool LogPlot::isShown(int curve) const
{
    return graph(curve)->visible() && !m_feed->curves().at(curve).isEmpty();
}

// There is a graph for each curve that the list knows.
void LogPlot::addNewPoints()
{
    for (const CurvePoints &curve : m_feed->curves())
        if (!curve.isEmpty())
            setHintVisible(false);
}

QCPRange LogPlot::allKeys() const
{
    QCPRange keys;
    bool isFirst = true;
    for (int curve = 0; curve < qMin(graphCount(), m_feed->curves().size()); ++curve) {
        if (!isShown(curve))
            continue;
        const CurvePoints &points = m_feed->curves().at(curve);
        const QCPRange own(CurvePoints::key(points.at(0), m_axis), CurvePoints::key(points.last(), m_axis));
        keys = isFirst ? own : keys.expanded(own);
        isFirst = false;
    }
    if (isFirst)
        return xAxis->range();
    const double least = m_axis == Axis::Time ? 0.1 : 1;
    if (keys.size() < least)
        keys.lower = keys.upper - least;
    return keys;
}

QCPRange LogPlot::shownValues() const
{
    QCPRange values;
    bool isFirst = true;
    for (int curve = 0; curve < graphCount(); ++curve) {
        bool isFound = false;
        const QCPRange own = graph(curve)->getValueRange(isFound);
        if (!isFound || !graph(curve)->visible())
            continue;
        values = isFirst ? own : values.expanded(own);
        isFirst = false;
    }
    if (isFirst)
        return yAxis->range();
    double room = values.size() * kValueMargin;
    if (room < qAbs(values.center()) * 1e-9 || room <= 0) // level
        room = qMax(qAbs(values.center()) * kValueMargin, 0.5);
    return {values.lower - room, values.upper + room};
}

// Ten points or a hundred thousand: a picture costs the same.
void LogPlot::load(const QCPRange &keys)
{
    const int columns = qMax(1, width()); // the axes' width follows it later
    for (int curve = 0; curve < qMin(graphCount(), m_feed->curves().size()); ++curve) {
        QVector<QCPGraphData> points;
        if (isShown(curve))
            for (const QPointF &point :
                 m_feed->curves().at(curve).thinned(keys.lower, keys.upper, columns, m_axis))
                points.append({point.x(), point.y()});
        graph(curve)->data()->set(points, true);
    }
    fitTicker(keys);
}

void LogPlot::fitTicker(const QCPRange &keys)
{
    xAxis->ticker()->setTickCount(qMax(2, width() / kTickPixels));
    m_times->setDateTimeFormat(keys.size() < kFineSeconds ? QStringLiteral("HH:mm:ss.zzz")
                               : keys.size() < kDay       ? QStringLiteral("HH:mm:ss")
                                                          : QStringLiteral("MM-dd HH:mm"));
}

void LogPlot::fitAxes()
{
    QCPRange keys = allKeys();
    if (m_span > 0)
        keys.lower = qMax(keys.lower, keys.upper - m_span);
    keys.upper += keys.size() * kMargin;
    load(keys);
    xAxis->setRange(keys);
    if (follow() == Live)
        yAxis->setRange(shownValues());
}

// Zooming the key axis while it follows chooses how much it shows.
void LogPlot::handleKeyRange(const QCPRange &range, const QCPRange &before)
{
    const bool isZoomed = qAbs(range.size() - before.size()) > before.size() * 1e-6;
    if (follow() != Held && isZoomed) {
        m_span = range.size();
        requestPicture();
    } else {
        setFollow(Held);
    }
    load(range);
}

void LogPlot::wheelEvent(QWheelEvent *event)
{
    axisRect()->setRangeZoom(event->modifiers() & Qt::ControlModifier ? Qt::Vertical : Qt::Horizontal);
    CurvePlot::wheelEvent(event);
}

QString LogPlot::readOut(double key) const
{
    const CurvePoints::Point *nearest = nullptr;
    for (int curve = 0; curve < qMin(graphCount(), m_feed->curves().size()); ++curve) {
        if (!isShown(curve))
            continue;
        const CurvePoints::Point &point = m_feed->curves().at(curve).nearest(key, m_axis);
        if (!nearest ||
            qAbs(CurvePoints::key(point, m_axis) - key) < qAbs(CurvePoints::key(*nearest, m_axis) - key))
            nearest = &point;
    }
    QVector<ReadOutRow> rows;
    for (int curve = 0; nearest && curve < qMin(graphCount(), m_feed->curves().size()); ++curve) {
        if (!isShown(curve))
            continue;
        // Some curves have their own lines.
        const CurvePoints &points = m_feed->curves().at(curve);
        const CurvePoints::Point &point = points.nearest(double(nearest->line), Axis::Line);
        if (points.at(0).line <= nearest->line && points.last().ms >= nearest->ms - 1000)
            rows.append({graph(curve)->pen().color(), graph(curve)->name().toHtmlEscaped(),
                         QString::number(point.value, 'g', QLocale::FloatingPointShortest)});
    }
    if (rows.isEmpty())
        return {};
    const QString time = QDateTime::fromMSecsSinceEpoch(nearest->ms).toString(QStringLiteral("HH:mm:ss.zzz"));
    return readOutTable(QStringLiteral("%1　第%2行").arg(time).arg(nearest->line), rows);
}
