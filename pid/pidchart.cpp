#include "pidchart.h"

#include "pidanalysispane.h"
#include "pidchannelsdialog.h"
#include "pidcurvelist.h"
#include "pidplot.h"
#include "pidrecorder.h"
#include "pidviewmenu.h"
#include "settings.h"
#include "stateindicator.h"

#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QSplitter>
#include <QToolTip>

#include <limits>
#include <utility>

PidChart::PidChart(PidRecorder *recorder, QWidget *parent)
    : QWidget(parent)
    , m_recorder(recorder)
    , m_row(new QHBoxLayout)
    , m_plot(new PidPlot(recorder, this))
    , m_split(new QSplitter(Qt::Vertical, this))
    , m_view(new PidViewMenu(this))
    , m_curves(new PidCurveList(this))
    , m_zoom(new QComboBox(this))
    , m_fitAll(new QCheckBox(QStringLiteral("适应全部曲线"), this))
    , m_fold(new QPushButton(QStringLiteral("隐藏配置界面"), this))
    , m_follow(new QLabel(this))
    , m_live(new QPushButton(QStringLiteral("返回实时"), this))
    , m_state(new StateIndicator(this))
{
    buildUi();
    connect(m_plot, &PidPlot::followChanged, this, &PidChart::showFollow);
    connect(m_plot, &PidPlot::drawn, this, &PidChart::showValues);
    connect(m_plot, &PidPlot::curvesCreated, this, &PidChart::applyCurves);
    connect(recorder, &PidRecorder::cleared, this, &PidChart::clearValues);
    connect(m_live, &QPushButton::clicked, m_plot, &PidPlot::returnToLive);
    connect(m_fitAll, &QCheckBox::toggled, m_plot, &PidPlot::setFitAll);
    connect(m_curves, &PidCurveList::colorChanged, this, &PidChart::applyCurve);
    connect(m_view, &PidViewMenu::changed, this, &PidChart::load);
    connect(m_view, &PidViewMenu::namesRequested, this, &PidChart::askForNames);
    applyCurves();
    showFollow();
}

void PidChart::buildUi()
{
    m_zoom->setObjectName(QStringLiteral("comboPidZoom"));
    m_zoom->setAccessibleName(QStringLiteral("曲线缩放"));
    m_zoom->addItems({QStringLiteral("X轴缩放"), QStringLiteral("Y轴缩放")});
    m_zoom->setToolTip(QStringLiteral("滚轮缩放哪个坐标轴；在曲线上单击右键可切换"));
    m_fitAll->setObjectName(QStringLiteral("checkPidFitAll"));
    m_fitAll->setToolTip(QStringLiteral("幅度轴包括所有显示的曲线；不勾选时只适应最近上报的通道的实际值"));
    m_plot->setAccessibleName(QStringLiteral("目标值和实际值的曲线"));
    m_fold->setObjectName(QStringLiteral("btnFold"));
    m_follow->setObjectName(QStringLiteral("labelPidFollow"));
    m_follow->setProperty("kind", "hint");
    m_live->setObjectName(QStringLiteral("btnPidLive"));

    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(4);
    buildTopRow();
    column->addLayout(m_row);
    m_split->setObjectName(QStringLiteral("splitPidAnalysis"));
    m_split->setChildrenCollapsible(false);
    m_split->addWidget(m_plot);
    column->addWidget(m_split, 1);
    column->addWidget(m_curves);
}

void PidChart::buildTopRow()
{
    m_row->setSpacing(8);
    m_row->addWidget(m_fold);
    m_row->addSpacing(8);
    auto *zoom = new QLabel(QStringLiteral("曲线缩放"), this);
    zoom->setBuddy(m_zoom);
    m_row->addWidget(zoom);
    m_row->addWidget(m_zoom);
    m_row->addWidget(m_fitAll);
    m_row->addWidget(m_view);
    m_row->addStretch();
    m_row->addWidget(m_follow);
    m_row->addWidget(m_live);
    m_row->addWidget(m_state);
}

void PidChart::addTool(QWidget *tool)
{
    m_row->insertWidget(1, tool);
    setTabOrder(m_fold, tool);
}

void PidChart::load()
{
    const auto &choices = Settings::instance().pid;
    m_view->load();
    m_plot->setWindow(choices.windowSeconds);
    m_plot->setUnits(choices.axesByUnit ? choices.channelUnits.value() : QStringList());
    m_curves->setLarge(choices.largeValues);
    m_curves->load();
    applyCurves();
    openAnalysis(choices.analysis);
}

void PidChart::openAnalysis(bool open)
{
    if (open && !m_analysis) {
        m_analysis = new PidAnalysisPane(m_recorder, m_plot, m_split);
        connect(m_analysis, &PidAnalysisPane::notify, this, &PidChart::notify);
        connect(m_analysis, &PidAnalysisPane::gainsProposed, this, &PidChart::gainsProposed);
        m_split->addWidget(m_analysis);
        m_split->setStretchFactor(0, 1);
        m_analysis->show();
    } else if (open) {
        m_analysis->load();
    } else if (m_analysis) {
        delete std::exchange(m_analysis, nullptr); // first: a fit may end just now
        m_plot->setOverlays({});
        m_plot->setFit({});
    }
}

void PidChart::showAll()
{
    qint64 fromUs = std::numeric_limits<qint64>::max();
    qint64 toUs = std::numeric_limits<qint64>::min();
    for (int channel = 0; channel < channels; ++channel) {
        const SampleStore &record = m_recorder->record(channel);
        if (record.isEmpty())
            continue;
        fromUs = qMin(fromUs, record.firstUs());
        toUs = qMax(toUs, record.last().us);
    }
    if (fromUs <= toUs)
        m_plot->showRange(fromUs, toUs);
}

void PidChart::askForNames()
{
    PidChannelsDialog dialog(this);
    if (dialog.exec() == QDialog::Accepted)
        load();
}

void PidChart::applyCurve(int graph)
{
    const int key = PidCurveList::keyOf(graph);
    m_plot->setCurve(graph, m_curves->color(key), m_curves->isShown(key), m_curves->name(graph));
}

void PidChart::applyCurves()
{
    for (int graph = 0; graph < PidCurveList::curves; ++graph)
        applyCurve(graph);
}

void PidChart::showCurve(int graph, bool shown)
{
    if (QCPGraph *curve = m_plot->graph(graph))
        curve->setVisible(shown);
    m_plot->replot(QCustomPlot::rpQueuedReplot);
}

// Numbers change with the picture, not with each report.
void PidChart::showValues()
{
    for (int channel = 0; channel < channels; ++channel) {
        const PidSamples &samples = m_recorder->samples().at(static_cast<size_t>(channel));
        qint64 &shown = m_valuesShown.at(static_cast<size_t>(channel));
        if (shown == samples.end())
            continue;
        shown = samples.end();
        m_curves->setValue(channel, samples.last().target);
        m_curves->setValue(channel + channels, samples.last().actual);
    }
    // The curves move below a resting mouse.
    if (m_plot->underMouse() && QToolTip::isVisible())
        showReadOut(m_plot->mapFromGlobal(QCursor::pos()));
    else
        m_plot->hideCursor(); // without values it would only drift away
}

void PidChart::clearValues()
{
    m_valuesShown.fill(0);
    m_curves->clearValues();
}

void PidChart::setZoomAxis(int index)
{
    m_plot->axisRect()->setRangeZoom(index == 0 ? Qt::Horizontal : Qt::Vertical);
}

void PidChart::flipZoomAxis()
{
    m_zoom->setCurrentIndex(1 - m_zoom->currentIndex());
}

void PidChart::showReadOut(const QPoint &position)
{
    const double key = m_plot->xAxis->pixelToCoord(position.x());
    const QString text = m_plot->axisRect()->rect().contains(position) ? m_plot->readOut(key) : QString();
    if (text.isEmpty()) {
        m_plot->hideCursor();
        QToolTip::hideText();
        return;
    }
    m_plot->setCursorAt(key);
    QToolTip::showText(m_plot->mapToGlobal(position) + QPoint(12, 12), text, m_plot);
}

void PidChart::showFollow()
{
    const PidPlot::Follow follow = m_plot->follow();
    m_live->setVisible(follow != PidPlot::Live);
    if (follow == PidPlot::Live)
        m_follow->setText(QStringLiteral("实时"));
    else if (follow == PidPlot::ValueFixed)
        m_follow->setText(QStringLiteral("幅度已固定"));
    else
        m_follow->setText(QStringLiteral("已暂停"));
}

bool PidChart::savePicture(const QString &fileName, QString *error) const
{
    return m_plot->savePicture(fileName, error);
}
