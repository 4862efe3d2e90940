#include "pidplot.h"

#include "pidrecorder.h"

#include <cmath>

namespace {

constexpr double kRightMargin = 0.25; // seconds

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
{
    setObjectName(QStringLiteral("pidPlot"));
    setUpAxes();
    showHint(false);
    connect(m_recorder, &PidRecorder::sampleAdded, this, &PidPlot::noteSample);
    connect(m_recorder, &PidRecorder::cleared, this, &PidPlot::recreateCurves);
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
    yAxis->ticker()->setTickCount(15);
    yAxis2->setVisible(true);
    yAxis2->setTickLabels(false);
    yAxis2->setTicker(yAxis->ticker()); // its ticks are where the grid is
    connect(yAxis, QOverload<const QCPRange &>::of(&QCPAxis::rangeChanged), yAxis2,
            QOverload<const QCPRange &>::of(&QCPAxis::setRange));
    setRanges({0, windowSeconds}, {-700, 700});
}

// Shown time is absolute (local) until the recorder has an origin.
void PidPlot::recreateCurves()
{
    clearCurves();
    for (int graph = 0; graph < curves; ++graph)
        addCurve();
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

// Curves and what the recorder keeps are the same.
void PidPlot::prepareFollow(Follow follow)
{
    if (follow == Held)
        addNewPoints();
    m_recorder->setHeld(follow == Held);
}

void PidPlot::fitAxes()
{
    if (m_lastGraph < 0)
        return;
    if (follow() == Live && m_fitAll) {
        yAxis->rescale(true);
        yAxis->scaleRange(1.1);
    } else if (follow() == Live) {
        graph(m_lastGraph)->rescaleValueAxis(false);
    }
    const qint64 lastUs = m_recorder->samples().at(static_cast<size_t>(m_lastChannel)).last().us;
    xAxis->setRange(m_recorder->secondsOf(lastUs) + kRightMargin, windowSeconds, Qt::AlignRight);
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
        rows.append({curve->pen().color(), curve->name(), QString::number(point.value, 'f', 0)});
    }
    if (rows.isEmpty())
        return {};
    const auto ticker = xAxis->ticker().staticCast<QCPAxisTickerDateTime>();
    const QDateTime moment = QCPAxisTickerDateTime::keyToDateTime(time).toTimeSpec(ticker->dateTimeSpec());
    return readOutTable(moment.toString(ticker->dateTimeFormat()), rows);
}
