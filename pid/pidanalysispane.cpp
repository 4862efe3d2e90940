#include "pidanalysispane.h"

#include "pidplot.h"
#include "pidrecorder.h"
#include "runmodel.h"
#include "runpanel.h"
#include "tuningpanel.h"

namespace {
constexpr int kOverlayMs = 100;
} // namespace

PidAnalysisPane::PidAnalysisPane(PidRecorder *recorder, PidPlot *plot, QWidget *parent)
    : QTabWidget(parent)
    , m_recorder(recorder)
    , m_plot(plot)
    , m_runs(new RunPanel(recorder, this))
    , m_tuning(new TuningPanel(recorder, &m_runs->model()->figures(), this))
{
    setObjectName(QStringLiteral("pidAnalysis"));
    addTab(m_runs, QStringLiteral("运行记录"));
    addTab(m_tuning, QStringLiteral("整定建议"));
    connect(m_runs, &RunPanel::selectionChanged, m_tuning, &TuningPanel::setRun);
    connect(m_tuning, &TuningPanel::gainsProposed, this, &PidAnalysisPane::gainsProposed);
    connect(m_tuning, &TuningPanel::fitted, this, [this](const QVector<QPointF> &curve) {
        m_plot->setFit({curve, QStringLiteral("模型")});
    });
    connect(m_runs, &RunPanel::showRequested, this, &PidAnalysisPane::showRun);
    connect(m_runs, &RunPanel::notify, this, &PidAnalysisPane::notify);
    m_overlays.setSingleShot(true);
    m_overlays.setInterval(kOverlayMs);
    connect(&m_overlays, &QTimer::timeout, this, &PidAnalysisPane::showOverlays);
    connect(recorder->runs(), &PidRuns::changed, this, [this] {
        if (!m_overlays.isActive())
            m_overlays.start();
    });
    connect(plot, &PidPlot::followChanged, this, [this](CurvePlot::Follow follow) {
        if (follow == CurvePlot::Held)
            return;
        m_shown = 0;
        showOverlays();
    });
    showOverlays();
}

void PidAnalysisPane::load()
{
    m_runs->load();
    m_tuning->load();
}

// With some of what was before.
void PidAnalysisPane::showRun(int id)
{
    const PidRun *run = m_recorder->runs()->find(id);
    if (!run)
        return;
    const SampleStore &record = m_recorder->record(run->channel);
    if (!run->isOpen() && run->end <= record.begin()) {
        emit notify(Notice::error(QStringLiteral("该运行的数据已超出记录上限，被丢弃")));
        return;
    }
    m_plot->showRange(run->beginUs - (run->endUs - run->beginUs) / 20, run->endUs);
    m_shown = id; // after the view was held
    showOverlays();
}

void PidAnalysisPane::showOverlays()
{
    QVector<PidPlot::Overlay> overlays;
    for (const PidRun &run : m_recorder->runs()->runs()) {
        if (!run.isReference)
            continue;
        const PidRun *current = m_recorder->runs()->find(m_shown);
        if (!current || current->channel != run.channel)
            current = m_recorder->runs()->newest(run.channel);
        if (!current || current->id == run.id)
            continue;
        const QString name = run.name.isEmpty() ? QStringLiteral("P=%1 I=%2 D=%3")
                                                      .arg(double(run.gains.p))
                                                      .arg(double(run.gains.i))
                                                      .arg(double(run.gains.d))
                                                : run.name;
        overlays.append({run.channel, run.beginUs, run.endUs, current->beginUs - run.beginUs,
                         QStringLiteral("参考 CH%1 %2").arg(run.channel + 1).arg(name)});
    }
    m_plot->setOverlays(overlays);
}
