#include "pidplot.h"

#include <QScopedValueRollback>

#include <cmath>
#include <limits>

namespace {

constexpr double kRightMargin = 0.25; // seconds
constexpr int kValueTicks = 15;
constexpr int kTickPixels = 18; // that a label needs; a low chart has fewer ticks
constexpr int kAxisPixels = 60; // of the time axis

// In the read-out a curve reaches so far beyond its ends: channels report in
// turns.
constexpr double kCurveEnd = 0.5; // seconds

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

} // namespace

PidPlot::PidPlot(PidRecorder *recorder, QWidget *parent)
    : CurvePlot(parent)
    , m_recorder(recorder)
    , m_axes(this)
{
    setObjectName(QStringLiteral("pidPlot"));
    setUpAxes();
    showHint(false);
    connect(m_recorder, &PidRecorder::sampleAdded, this, &PidPlot::noteSample);
    connect(m_recorder, &PidRecorder::cleared, this, &PidPlot::recreateCurves);
    connect(this, &QCustomPlot::beforeReplot, this, &PidPlot::matchExtras);
    recreateCurves();
}

void PidPlot::setUpAxes()
{
    const QSharedPointer<QCPAxisTickerDateTime> time(new TimeTicker);
    time->setDateTimeFormat(QStringLiteral("mm:ss:zzz"));
    time->setTickCount(5);
    xAxis->setTicker(time);
    xAxis->setLabel(QStringLiteral("时间"));
    yAxis->setLabel(QStringLiteral("幅度值"));
    yAxis->ticker()->setTickCount(kValueTicks);
    yAxis2->setVisible(true);
    yAxis2->setTickLabels(false);
    yAxis2->setTicker(yAxis->ticker()); // its ticks are where the grid is
    connect(yAxis, QOverload<const QCPRange &>::of(&QCPAxis::rangeChanged), yAxis2,
            [this](const QCPRange &range) {
                if (!m_axes.isSplit())
                    yAxis2->setRange(range);
            });
    setRanges({0, windowSeconds}, {-700, 700});
}

// Shown time is absolute (local) until the recorder has an origin.
void PidPlot::recreateCurves()
{
    clearCurves();
    for (int graph = 0; graph < curves; ++graph)
        addCurve()->setValueAxis(m_axes.axisOf(graph % channels));
    addExtras();
    m_isThinned = false;
    m_added.fill(0);
    m_lastChannel = -1;
    m_lastGraph = -1;
    setHintVisible(true);
    xAxis->ticker().staticCast<QCPAxisTickerDateTime>()->setDateTimeSpec(
        m_recorder->hasOrigin() ? Qt::UTC : Qt::LocalTime);
    emit curvesCreated();
    setFollow(Live);
}

void PidPlot::showHint(bool portOpen)
{
    setHint(portOpen ? QStringLiteral("串口已打开，启动后等待开发板上报实际值")
                     : QStringLiteral("打开串口并启动后，目标值和实际值的曲线将显示在这里"));
}

void PidPlot::noteSample(int channel)
{
    m_lastChannel = channel;
    if (m_lastGraph < 0 || graph(channel + channels)->visible())
        m_lastGraph = channel + channels;
    setHintVisible(false);
    requestPicture();
}

bool PidPlot::showsRecord() const
{
    return follow() == Held || m_window != int(windowSeconds);
}

// The curves drop and get what the samples dropped and got since the last time.
void PidPlot::addNewPoints()
{
    if (showsRecord())
        return; // fitAxes() knows what to load
    if (m_isThinned) {
        for (int graph = 0; graph < curves; ++graph)
            this->graph(graph)->data()->clear();
        m_added.fill(-1);
        m_isThinned = false;
    }
    for (int channel = 0; channel < channels; ++channel)
        addNewPoints(channel);
}

void PidPlot::addNewPoints(int channel)
{
    const PidSamples &samples = m_recorder->samples().at(static_cast<size_t>(channel));
    qint64 &next = m_added.at(static_cast<size_t>(channel));
    if (next == samples.end() || samples.isEmpty())
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

// ---- the record

QVector<QCPGraphData> PidPlot::graphData(const QVector<SampleStore::Point> &points, qint64 shiftUs) const
{
    QVector<QCPGraphData> loaded;
    loaded.reserve(points.size());
    for (const SampleStore::Point &point : points)
        loaded.append({m_recorder->secondsOf(point.us + shiftUs), double(point.value)});
    return loaded;
}

void PidPlot::load(const QCPRange &keys)
{
    const qint64 fromUs = m_recorder->usOf(keys.lower);
    const qint64 toUs = m_recorder->usOf(keys.upper);
    for (int channel = 0; channel < channels; ++channel) {
        const SampleStore::Curves found =
            m_recorder->record(channel).thinned(fromUs, toUs, qMax(1, width()), m_recorder->file());
        graph(channel)->data()->set(graphData(found.targets), true);
        graph(channel + channels)->data()->set(graphData(found.actuals), true);
        if (!found.actuals.isEmpty())
            setHintVisible(false);
    }
    m_isThinned = true;
    loadExtras(keys);
}

void PidPlot::loadExtras(const QCPRange &keys)
{
    const qint64 fromUs = m_recorder->usOf(keys.lower);
    const qint64 toUs = m_recorder->usOf(keys.upper);
    for (int i = 0; i < m_overlays.size(); ++i) {
        const Overlay &overlay = m_overlays.at(i);
        const qint64 from = qMax(overlay.fromUs, fromUs - overlay.shiftUs);
        const qint64 to = qMin(overlay.toUs, toUs - overlay.shiftUs);
        QVector<QCPGraphData> loaded;
        if (from < to)
            loaded = graphData(m_recorder->record(overlay.channel)
                                   .thinned(from, to, qMax(1, width()), m_recorder->file())
                                   .actuals,
                               overlay.shiftUs);
        graph(curves + i)->data()->set(loaded, true);
    }
}

// Behind the ten curves come those of the overlays, and the fit's.
void PidPlot::addExtras()
{
    while (graphCount() > curves)
        removeCurve(graphCount() - 1);
    for (const Overlay &overlay : qAsConst(m_overlays)) {
        HaloGraph *curve = addCurve();
        curve->setValueAxis(m_axes.axisOf(overlay.channel));
        curve->setName(overlay.name);
    }
    matchExtras();
    if (m_fit.points.isEmpty())
        return;
    HaloGraph *curve = addCurve();
    curve->setName(m_fit.name);
    QVector<QCPGraphData> loaded;
    for (const QPointF &point : qAsConst(m_fit.points))
        loaded.append({m_recorder->secondsOf(qRound64(point.x())), point.y()});
    curve->data()->set(loaded, true);
    matchExtras();
}

// Overlays are as pale and as visible as the curves of their channels, also after a change
// of colors or of the skin.
void PidPlot::matchExtras()
{
    for (int i = 0; i < m_overlays.size() && curves + i < graphCount(); ++i) {
        const QCPGraph *own = graph(m_overlays.at(i).channel + channels);
        const QColor color = own->pen().color();
        graph(curves + i)
            ->setPen(QPen(QColor((color.red() + ground().red()) / 2, (color.green() + ground().green()) / 2,
                                 (color.blue() + ground().blue()) / 2),
                          0));
        graph(curves + i)->setVisible(own->visible());
    }
    if (graphCount() > curves + m_overlays.size())
        graph(graphCount() - 1)->setPen(QPen(xAxis->labelColor(), 0, Qt::DashLine));
}

void PidPlot::setOverlays(const QVector<Overlay> &overlays)
{
    if (overlays.isEmpty() && m_overlays.isEmpty())
        return;
    m_overlays = overlays;
    addExtras();
    loadExtras(xAxis->range());
    replot(rpQueuedReplot);
}

void PidPlot::setFit(const Fit &fit)
{
    m_fit = fit;
    addExtras();
    loadExtras(xAxis->range());
    replot(rpQueuedReplot);
}

void PidPlot::setUnits(const QStringList &units)
{
    m_axes.setUnits(units);
    for (int graph = 0; graph < curves; ++graph)
        this->graph(graph)->setValueAxis(m_axes.axisOf(graph % channels));
    addExtras();
    loadExtras(xAxis->range());
    requestPicture();
}

void PidPlot::setWindow(int seconds)
{
    if (m_window == seconds)
        return;
    m_window = seconds;
    returnToLive();
}

void PidPlot::showRange(qint64 fromUs, qint64 toUs)
{
    setFollow(Held);
    const double from = m_recorder->secondsOf(fromUs);
    const double to = qMax(m_recorder->secondsOf(toUs), from + 0.001);
    const QCPRange keys(from - (to - from) * 0.05, to + (to - from) * 0.05);
    load(keys);
    setRanges(keys, yAxis->range());
    fitValues();
    replot(rpQueuedReplot);
}

void PidPlot::resizeEvent(QResizeEvent *event)
{
    CurvePlot::resizeEvent(event);
    yAxis->ticker()->setTickCount(qBound(2, (height() - kAxisPixels) / kTickPixels, kValueTicks));
    if (follow() == Held)
        load(xAxis->range());
}

// ---- following

void PidPlot::handleKeyRange(const QCPRange &range, const QCPRange &before)
{
    CurvePlot::handleKeyRange(range, before);
    load(range);
}

// What the recorder keeps is what was on the screen.
void PidPlot::prepareFollow(Follow follow)
{
    m_recorder->setHeld(follow == Held);
}

QCPRange PidPlot::liveKeys() const
{
    qint64 firstUs = std::numeric_limits<qint64>::max();
    qint64 lastUs = std::numeric_limits<qint64>::min();
    for (int channel = 0; channel < channels; ++channel) {
        const SampleStore &record = m_recorder->record(channel);
        if (record.isEmpty())
            continue;
        firstUs = qMin(firstUs, record.firstUs());
        lastUs = qMax(lastUs, record.last().us);
    }
    if (firstUs > lastUs)
        return xAxis->range();
    const double last = m_recorder->secondsOf(lastUs);
    const double first = m_window > 0 ? last - m_window : m_recorder->secondsOf(firstUs);
    return {first, last + qMax(0.001, (last - first) * kRightMargin / windowSeconds)};
}

// The value axes take in the shown curves, with a little room.
void PidPlot::fitValues()
{
    const QScopedValueRollback<bool> fitting(isFitting(), true);
    m_axes.fit();
}

void PidPlot::fitAxes()
{
    if (showsRecord()) {
        const QCPRange keys = liveKeys();
        load(keys);
        xAxis->setRange(keys);
    } else if (m_lastGraph >= 0) {
        const qint64 lastUs = m_recorder->samples().at(static_cast<size_t>(m_lastChannel)).last().us;
        xAxis->setRange(m_recorder->secondsOf(lastUs) + kRightMargin, windowSeconds, Qt::AlignRight);
        loadExtras(xAxis->range());
    }
    if (follow() != Live)
        return;
    if (m_fitAll || m_axes.isSplit())
        fitValues();
    else if (m_lastGraph >= 0)
        graph(m_lastGraph)->rescaleValueAxis(false);
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
    QVector<ReadOutRow> rows;
    for (const QCPGraph *curve : qAsConst(shown)) {
        const QCPGraphData point = nearestPoint(*curve->data(), key);
        const bool begunAndNotEnded = curve->data()->constBegin()->key <= time + kCurveEnd &&
                                      (curve->data()->constEnd() - 1)->key >= time - kCurveEnd;
        if (!begunAndNotEnded)
            continue;
        rows.append(
            {curve->pen().color(), curve->name().toHtmlEscaped(), QString::number(point.value, 'f', 0)});
    }
    if (rows.isEmpty())
        return {};
    const auto ticker = xAxis->ticker().staticCast<QCPAxisTickerDateTime>();
    const QDateTime moment = QCPAxisTickerDateTime::keyToDateTime(time).toTimeSpec(ticker->dateTimeSpec());
    return readOutTable(moment.toString(ticker->dateTimeFormat()), rows);
}
