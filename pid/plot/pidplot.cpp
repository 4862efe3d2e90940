#include "pidplot.h"

#include "pidrecorder.h"

#include <QPageSize>
#include <QPdfWriter>

#include <cmath>

namespace {

constexpr int kFrameMs = 33;
constexpr double kRightMargin = 0.25; // seconds

// In the read-out a curve reaches so far beyond its ends: channels report in
// turns.
constexpr double kCurveEnd = 0.5; // seconds
// Smoothing doubles the cost of a picture and is not visible among many points.
constexpr int kMaxSmooth = 2000;

// The palette entries of the skins: panel, secondary text, border, and a shade
// between border and panel.
struct Style
{
    const char *name;
    const char *ground;
    const char *text;
    const char *axis;
    const char *grid;
    const char *subGrid;
};

constexpr Style kStyles[] = {
    {"black", "#302f2f", "#AEBFC5", "#AEBFC5", "#5a5958", "#454443"},
    {"white", "#ffffff", "#000000", "#797979", "#cccccc", "#e9e9e9"},
    {"yellow", "#263240", "#AEBFC5", "#AEBFC5", "#4d6075", "#34465a"},
};

// Times before the start are below zero, not in the 59th minute.
class TimeTicker : public QCPAxisTickerDateTime
{
protected:
    QString getTickLabel(double tick, const QLocale &locale, QChar format, int precision) override
    {
        const QString label = QCPAxisTickerDateTime::getTickLabel(std::abs(tick), locale, format, precision);
        return tick < -0.0005 ? QLatin1Char('-') + label : label;
    }
};

QCPGraphData nearestPoint(const QCPGraphDataContainer &points, double key)
{
    auto nearest = points.findBegin(key); // the last point before the key
    const auto following = nearest + 1;
    if (following != points.constEnd() && qAbs(following->key - key) < qAbs(nearest->key - key))
        nearest = following;
    return *nearest;
}

QColor color(const char *name)
{
    return QColor(QLatin1String(name));
}

} // namespace

PidPlot::PidPlot(PidRecorder *recorder, QWidget *parent)
    : QCustomPlot(parent)
    , m_recorder(recorder)
    , m_cursor(new QCPItemStraightLine(this))
    , m_hint(new QCPItemText(this))
    , m_frame(this)
{
    setObjectName(QStringLiteral("pidPlot"));
    setMinimumSize(200, 120); // the legend of a saved picture would ask for more
    setUpAxes();
    m_cursor->setVisible(false);
    showHint(false);
    m_hint->position->setType(QCPItemPosition::ptAxisRectRatio);
    m_hint->position->setCoords(0.5, 0.4);
    m_hint->setPadding({8, 4, 8, 4});
    m_frame.setSingleShot(true);
    m_frame.setTimerType(Qt::PreciseTimer);
    connect(&m_frame, &QTimer::timeout, this, &PidPlot::drawNew);
    connect(m_recorder, &PidRecorder::sampleAdded, this, &PidPlot::noteSample);
    connect(m_recorder, &PidRecorder::cleared, this, &PidPlot::recreateCurves);
    connect(this, &QCustomPlot::mouseDoubleClick, this, &PidPlot::returnToLive);
    connect(this, &QCustomPlot::afterReplot, this, [this] { ++m_pictures; });
    recreateCurves();
}

void PidPlot::setUpAxes()
{
    setInteractions(QCP::iRangeDrag | QCP::iRangeZoom);
    axisRect()->setRangeZoom(Qt::Horizontal);
    setNoAntialiasingOnDrag(true);

    const QSharedPointer<QCPAxisTickerDateTime> time(new TimeTicker);
    time->setDateTimeFormat(QStringLiteral("mm:ss:zzz"));
    time->setTickCount(5);
    xAxis->setTicker(time);
    xAxis->setLabel(QStringLiteral("时间"));
    xAxis->setRange(0, windowSeconds);
    yAxis->setLabel(QStringLiteral("幅度值"));
    yAxis->setRange(-700, 700);
    yAxis->ticker()->setTickCount(15);
    yAxis2->setVisible(true);
    yAxis2->setTickLabels(false);
    yAxis2->setRange(yAxis->range());
    yAxis2->setTicker(yAxis->ticker()); // its ticks are where the grid is
    for (QCPAxis *axis : {xAxis, yAxis})
        axis->grid()->setSubGridVisible(true);

    const auto changed = QOverload<const QCPRange &>::of(&QCPAxis::rangeChanged);
    connect(yAxis, changed, yAxis2, QOverload<const QCPRange &>::of(&QCPAxis::setRange));
    connect(xAxis, changed, this, [this] { axisChangedByUser(true); });
    connect(yAxis, changed, this, [this] { axisChangedByUser(false); });
}

void PidPlot::setPlotStyle(const QString &style)
{
    for (const Style &known : kStyles) {
        if (style != QLatin1String(known.name))
            continue;
        m_ground = color(known.ground);
        setBackground(m_ground);
        for (HaloGraph *graph : qAsConst(m_graphs))
            graph->setGround(m_ground);
        const QPen pen(color(known.axis));
        for (QCPAxis *axis : {xAxis, yAxis, xAxis2, yAxis2}) {
            axis->setBasePen(pen);
            axis->setTickPen(pen);
            axis->setSubTickPen(pen);
            axis->setTickLabelColor(color(known.text));
            axis->setLabelColor(color(known.text));
            axis->grid()->setPen(QPen(color(known.grid)));
            axis->grid()->setZeroLinePen(QPen(color(known.axis)));
            axis->grid()->setSubGridPen(QPen(color(known.subGrid), 1, Qt::DotLine));
        }
        xAxis->grid()->setZeroLinePen(Qt::NoPen);
        m_hint->setColor(color(known.text));
        m_hint->setBrush(color(known.ground));
        m_cursor->setPen(QPen(color(known.text), 1, Qt::DashLine));
        legend->setBrush(Qt::NoBrush);
        legend->setBorderPen(Qt::NoPen);
        legend->setTextColor(color(known.text));
    }
    replot(rpQueuedReplot);
}

// Shown time is absolute (local) until the recorder has an origin.
void PidPlot::recreateCurves()
{
    clearGraphs();
    m_graphs.clear();
    for (int graph = 0; graph < curves; ++graph) {
        m_graphs.append(new HaloGraph(xAxis, yAxis)); // the plot's
        m_graphs.last()->setGround(m_ground);
    }
    m_added.fill(0);
    m_lastChannel = -1;
    m_lastGraph = -1;
    m_hint->setVisible(true);
    xAxis->ticker().staticCast<QCPAxisTickerDateTime>()->setDateTimeSpec(
        m_recorder->hasOrigin() ? Qt::UTC : Qt::LocalTime);
    emit curvesCreated();
    setFollow(Live);
}

void PidPlot::showHint(bool portOpen)
{
    m_hint->setText(portOpen ? QStringLiteral("串口已打开，启动后等待开发板上报实际值")
                             : QStringLiteral("打开串口并启动后，目标值和实际值的曲线将显示在这里"));
    if (m_hint->visible())
        replot(rpQueuedReplot);
}

void PidPlot::setCurve(int graph, const QColor &color, bool shown, const QString &name)
{
    // Exactly one pixel of the device: a wider polyline takes a thousand times
    // longer where noise fills the height (seconds a picture).
    this->graph(graph)->setPen(QPen(color, 0));
    this->graph(graph)->setVisible(shown);
    this->graph(graph)->setName(name);
    replot(rpQueuedReplot);
}

void PidPlot::noteSample(int channel)
{
    m_lastChannel = channel;
    if (m_lastGraph < 0 || graph(channel + channels)->visible())
        m_lastGraph = channel + channels;
    m_hint->setVisible(false);
    requestPicture();
}

// The curves drop and get what the samples dropped and got since the last time.
void PidPlot::addNewPoints()
{
    for (int channel = 0; channel < channels; ++channel)
        addNewPoints(channel);
}

void PidPlot::addNewPoints(int channel)
{
    const PidSamples &samples = m_recorder->samples().at(static_cast<size_t>(channel));
    qint64 &next = m_added.at(static_cast<size_t>(channel));
    if (next == samples.end())
        return;
    QCPGraphDataContainer &targets = *graph(channel)->data();
    QCPGraphDataContainer &actuals = *graph(channel + channels)->data();
    const double first = m_recorder->secondsOf(samples.at(0).us);
    targets.removeBefore(first);
    actuals.removeBefore(first);
    next = qMax(next, samples.begin());
    for (int i = static_cast<int>(next - samples.begin()); i < samples.size(); ++i) {
        const PidSample &sample = samples.at(i);
        const double t = m_recorder->secondsOf(sample.us);
        targets.add(QCPGraphData(t, sample.target));
        actuals.add(QCPGraphData(t, sample.actual));
    }
    next = samples.end();
}

void PidPlot::setFitAll(bool fitAll)
{
    m_fitAll = fitAll;
    requestPicture();
}

// ---- following

void PidPlot::axisChangedByUser(bool timeAxis)
{
    if (m_isFitting)
        return;
    if (timeAxis)
        setFollow(Held);
    else if (m_follow == Live)
        setFollow(ValueFixed);
}

void PidPlot::setFollow(Follow follow)
{
    if (m_follow == follow)
        return;
    if (follow == Held)
        addNewPoints(); // curves and what the recorder keeps are the same
    m_recorder->setHeld(follow == Held);
    m_follow = follow;
    emit followChanged(follow);
}

void PidPlot::returnToLive()
{
    setFollow(Live);
    requestPicture();
}

void PidPlot::fitAxes()
{
    if (m_lastGraph < 0)
        return;
    m_isFitting = true;
    if (m_follow == Live && m_fitAll) {
        yAxis->rescale(true);
        yAxis->scaleRange(1.1);
    } else if (m_follow == Live) {
        graph(m_lastGraph)->rescaleValueAxis(false);
    }
    const qint64 lastUs = m_recorder->samples().at(static_cast<size_t>(m_lastChannel)).last().us;
    xAxis->setRange(m_recorder->secondsOf(lastUs) + kRightMargin, windowSeconds, Qt::AlignRight);
    m_isFitting = false;
}

// Samples arrive much faster than the eye can follow.
void PidPlot::requestPicture()
{
    if (m_frame.isActive())
        return;
    const qint64 since = m_sinceDrawn.isValid() ? m_sinceDrawn.elapsed() : kFrameMs;
    m_frame.start(static_cast<int>(qMax<qint64>(0, kFrameMs - since)));
}

void PidPlot::drawNew()
{
    m_sinceDrawn.start();
    if (m_follow != Held) {
        addNewPoints();
        fitAxes();
        for (int i = 0; i < graphCount(); ++i)
            graph(i)->setAntialiased(graph(i)->dataCount() < kMaxSmooth);
        replot();
    }
    emit drawn();
}

// ---- reading out

QString PidPlot::readOut(double key) const
{
    QVector<const QCPGraph *> shown;
    double time = 0; // of the point nearest to the key, of all curves
    for (int i = 0; i < graphCount(); ++i) {
        const QCPGraph *curve = graph(i);
        if (!curve->visible() || curve->data()->isEmpty())
            continue;
        const double nearest = nearestPoint(*curve->data(), key).key;
        if (shown.isEmpty() || qAbs(nearest - key) < qAbs(time - key))
            time = nearest;
        shown.append(curve);
    }
    QString rows;
    for (const QCPGraph *curve : qAsConst(shown)) {
        const QCPGraphData point = nearestPoint(*curve->data(), key);
        const bool begunAndNotEnded = curve->data()->constBegin()->key <= time + kCurveEnd &&
                                      (curve->data()->constEnd() - 1)->key >= time - kCurveEnd;
        if (!begunAndNotEnded)
            continue;
        rows += QStringLiteral("<tr><td style=\"color:%1\">■&nbsp;</td><td>%2&nbsp;&nbsp;</td>"
                               "<td align=\"right\">%3</td></tr>")
                    .arg(curve->pen().color().name(), curve->name(), QString::number(point.value, 'f', 0));
    }
    if (rows.isEmpty())
        return {};
    const auto ticker = xAxis->ticker().staticCast<QCPAxisTickerDateTime>();
    const QDateTime moment = QCPAxisTickerDateTime::keyToDateTime(time).toTimeSpec(ticker->dateTimeSpec());
    return QStringLiteral("<table><tr><td colspan=\"3\">%1</td></tr>%2</table>")
        .arg(moment.toString(ticker->dateTimeFormat()), rows);
}

void PidPlot::setCursorAt(double key)
{
    m_cursor->point1->setCoords(key, 0);
    m_cursor->point2->setCoords(key, 1);
    m_cursor->setVisible(true);
    replot(rpQueuedReplot);
}

void PidPlot::hideCursor()
{
    if (!m_cursor->visible())
        return;
    m_cursor->setVisible(false);
    replot(rpQueuedReplot);
}

void PidPlot::leaveEvent(QEvent *event)
{
    hideCursor();
    QCustomPlot::leaveEvent(event);
}

// Where a pixel of the screen is a fraction of ours, QCustomPlot leaves the last
// row and column unpainted, although it declares itself opaque.
void PidPlot::paintEvent(QPaintEvent *event)
{
    QPainter(this).fillRect(rect().adjusted(-1, -1, 1, 1), m_ground);
    QCustomPlot::paintEvent(event);
}

// ---- pictures

bool PidPlot::writePicture(QIODevice *device, Format format)
{
    hideCursor();
    // A legend in a row of its own, where it hides nothing, for this picture only.
    auto *row = new QCPLayoutGrid;
    plotLayout()->addElement(1, 0, row);
    plotLayout()->setRowStretchFactor(1, 0.001);
    auto *names = new QCPLegend;
    row->addElement(0, 0, names);
    names->setLayer(legend->layer());
    names->setFillOrder(QCPLayoutGrid::foColumnsFirst);
    names->setWrap(channels);
    names->setBrush(Qt::NoBrush);
    names->setBorderPen(Qt::NoPen);
    names->setTextColor(legend->textColor());
    names->setFont(font());
    for (int i = 0; i < graphCount(); ++i)
        if (graph(i)->visible())
            names->addItem(new QCPPlottableLegendItem(names, graph(i)));

    const bool written =
        format == Pdf ? writePdf(device) : toPixmap(width(), height(), 2.0).save(device, "PNG");

    plotLayout()->remove(row);
    plotLayout()->simplify();
    replot(rpQueuedReplot);
    return written;
}

bool PidPlot::writePdf(QIODevice *device)
{
    constexpr int dotsPerInch = 96;
    QPdfWriter writer(device);
    writer.setResolution(dotsPerInch);
    writer.setPageSize(QPageSize(QSizeF(size()) / dotsPerInch, QPageSize::Inch));
    writer.setPageMargins({0, 0, 0, 0});
    QCPPainter painter;
    if (!painter.begin(&writer))
        return false;
    painter.setMode(QCPPainter::pmVectorized);
    toPainter(&painter, width(), height());
    return painter.end();
}
