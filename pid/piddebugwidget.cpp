#include "piddebugwidget.h"

#include "formpanel.h"
#include "pidchart.h"
#include "pidcurvelist.h"
#include "pidoperations.h"
#include "pidpanel.h"
#include "pidplot.h"
#include "pidportpanel.h"
#include "pidrecordactions.h"
#include "pidrunningbar.h"
#include "pidsaving.h"
#include "pidsession.h"
#include "pidviewmenu.h"
#include "portname.h"
#include "profilebutton.h"
#include "qtmessagebox.h"
#include "qtserialport.h"
#include "settings.h"
#include "stateindicator.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDebug>
#include <QHBoxLayout>
#include <QPushButton>

namespace {

const auto kWarning = QStringLiteral("告警");

// Before a field's text is sent with Return.
void selectText(QObject *sender)
{
    if (auto *field = qobject_cast<QLineEdit *>(sender))
        field->selectAll();
}

} // namespace

PidDebugWidget::PidDebugWidget(QWidget *parent)
    : QtWidgetBase(parent)
    , m_link(new QtSerialPort(this))
    , m_recorder(new PidRecorder(this))
    , m_session(new PidSession(m_recorder, this))
{
    setObjectName(QStringLiteral("PidDebugWidget"));
    m_link->setTool(QStringLiteral("PID调试助手"));
    m_link->setOpensLater(true);
    buildUi();
    connectLink();
    connectPanel();
    connectWorkArea();
    addProfiles();
    setPlotStyle(QStringLiteral("black"));
    setPortState(false);
    m_memory.add(m_pid->channelBox(), &Settings::instance().pid.channel);
    m_memory.add(m_chart->zoomBox(), &Settings::instance().pid.zoom);
    reloadSettings();
}

PidDebugWidget::~PidDebugWidget()
{
    blockSignals(true);
    m_link->disconnect(this);
    if (m_link->isOpen())
        closePort();
}

// ---- building

void PidDebugWidget::buildUi()
{
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(8, 4, 8, 6);
    row->setSpacing(8);
    row->addWidget(buildPanel());
    row->addWidget(buildWorkArea(), 1);
    setPageKeys(m_portPanel->openButton(), m_chart->foldButton());
}

QWidget *PidDebugWidget::buildPanel()
{
    m_panel = new FormPanel(this);
    m_panel->setObjectName(QStringLiteral("pidConfigPanel"));
    m_portPanel = new PidPortPanel(m_panel);
    m_pid = new PidPanel(m_panel);
    m_panel->addWidget(m_portPanel);
    m_panel->addWidget(m_pid);
    return m_panel;
}

QWidget *PidDebugWidget::buildWorkArea()
{
    auto *area = new QWidget(this);
    m_chart = new PidChart(m_recorder, area);
    m_saving = new PidSaving(m_recorder, m_chart, this);
    m_record = new PidRecordActions(m_recorder, m_chart, this);
    m_record->setRefusal([this] {
        return m_link->state() == Link::State::Closed ? QString() : QStringLiteral("请先关闭串口");
    });
    connect(m_record, &PidRecordActions::notify, this, &PidDebugWidget::notify);
    m_operations = new PidOperations(area);
    auto *column = new QVBoxLayout(area);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(4);
    column->addWidget(m_chart, 1);
    auto *running = new PidRunningBar(m_recorder->runs(), area);
    column->addWidget(running);
    column->addWidget(m_operations);
    connect(running, &PidRunningBar::stopRequested, this, &PidDebugWidget::stop);
    connect(running, &PidRunningBar::stopAllRequested, this, &PidDebugWidget::stopAllRunning);
    return area;
}

void PidDebugWidget::connectLink()
{
    connect(m_link, &Link::received, m_session,
            [this](const QByteArray &bytes, qint64 arrivalUs) { m_session->receive(bytes, arrivalUs); });
    connect(m_link, &Link::stateChanged, this, &PidDebugWidget::handlePortState);
    connect(m_link, &QtSerialPort::openFailed, this, &PidDebugWidget::reportNotOpened);
    connect(m_link, &QtSerialPort::hungUp, this, &PidDebugWidget::portVanished);
    connect(m_link, &QtSerialPort::failed, this,
            [this](const QString &reason) { notify(Notice::error(reason)); });
    connect(m_portPanel, &PidPortPanel::openClicked, this, &PidDebugWidget::SltOpenSerialport);

    connect(m_session, &PidSession::command, this,
            [this](PidFrame::Command command, int channel, const QByteArray &payload) {
                SendPidFrame(command, static_cast<quint8>(channel + 1), payload);
            });
    connect(m_session, &PidSession::reported, this, &PidDebugWidget::showReport);
    connect(m_session, &PidSession::lengthSkipped, this,
            [this] { notify(Notice::error(QStringLiteral("收到长度异常的数据帧，已跳过！"))); });
    connect(m_session, &PidSession::blocked, this, [this] {
        notify(Notice::error(QStringLiteral("收到长度异常的数据帧，后续数据无法解析，请重新打开串口！")));
    });
}

void PidDebugWidget::connectPanel()
{
    connect(m_pid, &PidPanel::refused, this,
            [this](const QString &reason) { notify(Notice::error(reason)); });
    connect(m_pid->channelBox(), QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            &PidDebugWidget::SltComboPidChanged);
    connect(m_pid->sendGains(), &QPushButton::clicked, this, &PidDebugWidget::SltBtnSendPidClicked);
    connect(m_pid->sendTarget(), &QPushButton::clicked, this, &PidDebugWidget::SltBtnSendValueClicked);
    connect(m_pid->sendPeriod(), &QPushButton::clicked, this, &PidDebugWidget::SltBtnSendIntervalClicked);
    for (const PidField *field : m_pid->gainFields())
        connect(field, &QLineEdit::returnPressed, this, &PidDebugWidget::SltBtnSendPidClicked);
    connect(m_pid->targetField(), &QLineEdit::returnPressed, this, &PidDebugWidget::SltBtnSendValueClicked);
}

void PidDebugWidget::connectWorkArea()
{
    connect(m_operations->startButton(), &QPushButton::clicked, this, &PidDebugWidget::SltBtnStartClicked);
    connect(m_operations->resetButton(), &QPushButton::clicked, this, &PidDebugWidget::SltBtnResetClicked);
    connect(m_operations->stopShowBox(), &QCheckBox::toggled, m_session, &PidSession::setPaused);
    connect(m_operations->clearButton(), &QPushButton::clicked, this, &PidDebugWidget::SltBtnClearClicked);
    connect(m_operations->exportButton(), &QPushButton::clicked, this, &PidDebugWidget::SltBtnExportClicked);
    connect(m_operations->pictureButton(), &QPushButton::clicked, m_saving, &PidSaving::savePicture);
    connect(m_saving, &PidSaving::notify, this, &PidDebugWidget::notify);
    connect(m_chart, &PidChart::notify, this, &PidDebugWidget::notify);
    connect(m_chart, &PidChart::gainsProposed, this, [this](int channel, const PidGains &gains) {
        m_pid->channelBox()->setCurrentIndex(channel);
        m_pid->proposeGains(gains);
    });
    connect(m_chart->fitAllBox(), &QCheckBox::toggled, this, &PidDebugWidget::rememberFitAll);
    connect(m_chart->zoomBox(), QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            &PidDebugWidget::SltPoltScale);

    connect(m_chart->plot(), &QCustomPlot::mousePress, this, &PidDebugWidget::SltRightButtonPoltScale);
    connect(m_chart->plot(), &QCustomPlot::mouseMove, this, &PidDebugWidget::SltPlotMoveEvent);
    connect(m_chart->curveList(), &PidCurveList::signalGraphClicked, this, &PidDebugWidget::SltGraphClicked);
    connect(m_chart->foldButton(), &QPushButton::clicked, this, &PidDebugWidget::fold);
}

void PidDebugWidget::addProfiles()
{
    auto *profiles = new ProfileButton(QStringLiteral("pid"), {{QStringLiteral("Pid")}, {}}, m_chart);
    m_chart->addTool(profiles);
    profiles->setRefusal([this] {
        return m_link->state() == Link::State::Closed ? QString() : QStringLiteral("请先关闭串口");
    });
    connect(profiles, &ProfileButton::collecting, m_portPanel, &PidPortPanel::remember);
    connect(profiles, &ProfileButton::chosen, this, [this] {
        reloadSettings();
        const QString port = Settings::instance().pid.port;
        if (!port.isEmpty() && !m_portPanel->choosePort(port))
            notify(Notice::error(QStringLiteral("方案中的串口[%1]现在不存在").arg(port)));
    });
    connect(profiles, &ProfileButton::notify, this, &PidDebugWidget::notify);
}

void PidDebugWidget::reloadSettings()
{
    m_chart->fitAllBox()->setChecked(Settings::instance().pid.fitAll);
    m_memory.load();
    m_chart->load();
    m_record->load();
    if (!m_link->isOpen())
        m_portPanel->load();
}

void PidDebugWidget::rememberFitAll(bool fitAll)
{
    Settings::instance().pid.fitAll.change(fitAll);
}

// ---- the port

void PidDebugWidget::SltSerialportChanged(QStringList serialports)
{
    m_portPanel->setPorts(serialports);
    if (!m_link->isOpen())
        return;
    for (const QString &entry : qAsConst(serialports))
        if (PortName::fromEntry(entry) == m_link->portName())
            return;
    portVanished();
}

void PidDebugWidget::SltOpenSerialport()
{
    if (m_link->isOpen()) {
        closePort();
        notify(Notice::information(QStringLiteral("串口[%1]已关闭!!").arg(m_link->portName())));
        return;
    }
    if (m_link->state() == Link::State::Opening) {
        closePort();
        notify(Notice::information(QStringLiteral("已取消打开串口[%1]").arg(m_link->portName())));
        return;
    }
    const QString entry = m_portPanel->portText();
    if (entry.isEmpty()) {
        notify(Notice::error(QStringLiteral("当前系统未检测到任何串口，请重试!!!")));
        return;
    }
    const QString name = PortName::fromEntry(entry);
    if (name.isEmpty()) {
        notify(Notice::error(QStringLiteral("串口[%1]打开失败!!!").arg(entry)));
        return;
    }
    m_link->open(name, m_portPanel->baudRate(), 8, 0, 0);
}

void PidDebugWidget::handlePortState(Link::State state)
{
    if (state != Link::State::Closed)
        m_record->cancelOpening();
    if (state == Link::State::Opening) {
        m_portPanel->setOpening();
        m_chart->state()->setState(StateIndicator::Busy,
                                   QStringLiteral("正在打开%1").arg(m_link->portName()));
    } else if (state == Link::State::Open) {
        setPortState(true);
        m_portPanel->remember();
        notify(Notice::information(QStringLiteral("串口[%1]打开成功!").arg(m_link->portName())));
    }
}

void PidDebugWidget::reportNotOpened()
{
    QApplication::beep();
    setPortState(false);
    notify(Notice::error(QStringLiteral("串口[%1]打开失败!!!").arg(m_link->portName())));
    notify(Notice::error(m_link->reason()));
}

void PidDebugWidget::setPortState(bool open)
{
    m_session->setOpen(open);
    m_portPanel->setOpenState(open);
    m_operations->setOpenState(open);
    if (!open)
        m_operations->setIdle(true); // also after a report that arrived while closing
    m_chart->state()->setOn(open);
    m_chart->plot()->showHint(open);
}

void PidDebugWidget::closePort()
{
    if (m_link->isOpen())
        m_session->stopAll(m_pid->channel(), !m_operations->isIdle(), Link::nowUs());
    m_link->close();
    setPortState(false);
}

void PidDebugWidget::portVanished()
{
    m_link->close();
    setPortState(false);
    notify(Notice::error(QStringLiteral("当前串口已拔出，请重新打开!")));
}

void PidDebugWidget::closeLinks()
{
    if (m_link->isOpen() || m_link->state() == Link::State::Opening)
        closePort();
}

bool PidDebugWidget::mayClose()
{
    return m_record->mayClose();
}

bool PidDebugWidget::saveBeforeExit()
{
    const bool hasExported = m_saving->complete(); // a failed export can be repeated at another place
    return m_record->saveBeforeExit() && hasExported;
}

// ---- sending

void PidDebugWidget::SendPidFrame(quint8 command, quint8 channel, const QByteArray &payload)
{
    if (!m_link->isOpen())
        return;
    const QByteArray frame = PidFrame::build(command, channel, payload);
    qDebug().noquote() << "PID command" << command << "channel" << channel << "size" << frame.size()
                       << frame.toHex(' ') << "payload" << payload.size();
    m_link->writeBytes(frame);
}

void PidDebugWidget::reportNotSent(const QString &what)
{
    notify(Notice::error(QStringLiteral("%1为空或超出范围，未发送！").arg(what)));
}

void PidDebugWidget::SltBtnSendPidClicked()
{
    selectText(sender());
    const std::optional<PidGains> gains = m_pid->gains();
    if (!gains) {
        reportNotSent(QStringLiteral("P、I、D值"));
        return;
    }
    if (m_link->isOpen())
        m_pid->setGainsSent();
    m_session->sendGains(m_pid->channel(), *gains, Link::nowUs());
}

void PidDebugWidget::SltBtnSendValueClicked()
{
    selectText(sender());
    const std::optional<qint32> target = m_pid->target();
    if (!target) {
        reportNotSent(QStringLiteral("目标值"));
        return;
    }
    if (m_link->isOpen())
        m_pid->setTargetSent();
    m_session->sendTarget(m_pid->channel(), *target, Link::nowUs());
}

void PidDebugWidget::SltBtnSendIntervalClicked()
{
    const std::optional<qint32> period = m_pid->period();
    if (!period) {
        reportNotSent(QStringLiteral("周期"));
        return;
    }
    if (m_link->isOpen())
        m_pid->setPeriodSent();
    m_session->sendPeriod(m_pid->channel(), *period, Link::nowUs());
}

void PidDebugWidget::SltBtnStartClicked()
{
    if (!m_link->isOpen()) {
        QtMessageBox::warning(this, kWarning, QStringLiteral("请确认是否打开串口！"));
        return;
    }
    const bool start = m_operations->isIdle();
    m_operations->setIdle(!start);
    if (start)
        m_session->start(m_pid->channel(), Link::nowUs());
    else
        m_session->stop(m_pid->channel(), Link::nowUs());
}

void PidDebugWidget::stop(int channel)
{
    m_session->stop(channel, Link::nowUs());
    bool isAnyRunning = false;
    for (int other = 0; other < PidRecorder::channels; ++other)
        isAnyRunning = isAnyRunning || m_recorder->runs()->isRunning(other);
    if (channel == m_pid->channel() || !isAnyRunning)
        m_operations->setIdle(true);
}

void PidDebugWidget::stopAllRunning()
{
    for (int channel = 0; channel < PidRecorder::channels; ++channel)
        if (m_recorder->runs()->isRunning(channel))
            stop(channel);
}

void PidDebugWidget::SltBtnResetClicked()
{
    SltBtnClearClicked();
    m_session->reset(m_pid->channel());
}

// ---- receiving

void PidDebugWidget::SltRecvFromSerialport(QByteArray byData)
{
    m_session->receive(byData, Link::nowUs());
}

void PidDebugWidget::ParsePidFrames()
{
    m_session->parse();
}

void PidDebugWidget::showReport(const PidReport &report)
{
    const bool isSelected = report.channel - 1 == m_pid->channel();
    if (report.command == PidFrame::Started)
        followStart(report);
    else if (report.command == PidFrame::Stopped)
        m_operations->setIdle(true);
    else if (isSelected && report.command == PidFrame::Target)
        m_pid->showReportedTarget(report.value);
    else if (isSelected && report.command == PidFrame::Pid)
        m_pid->showReportedGains(report.gains);
    else if (isSelected && report.command == PidFrame::Period)
        m_pid->showReportedPeriod(report.value);
}

void PidDebugWidget::followStart(const PidReport &report)
{
    if (!m_operations->isIdle())
        return;
    m_operations->setIdle(false);
    if (m_recorder->hasOrigin())
        return;
    m_recorder->setOrigin(report.arrivalUs);
    SltBtnClearClicked(); // samples so far would be fifty years away
}

quint64 PidDebugWidget::actualReports() const
{
    return m_recorder->recorded();
}

void PidDebugWidget::SltComboPidChanged(int index)
{
    m_pid->showChannel(m_recorder->params(index));
}

// ---- the chart

void PidDebugWidget::SltGraphClicked(int index, bool bShow)
{
    m_chart->showCurve(index, bShow);
}

void PidDebugWidget::SltBtnClearClicked()
{
    m_recorder->clear();
}

void PidDebugWidget::SltPoltScale(int index)
{
    m_chart->setZoomAxis(index);
}

void PidDebugWidget::SltRightButtonPoltScale(QMouseEvent *event)
{
    if (event->button() == Qt::RightButton)
        m_chart->flipZoomAxis();
}

void PidDebugWidget::SltPlotMoveEvent(QMouseEvent *event)
{
    m_chart->showReadOut(event->buttons() == Qt::NoButton ? event->pos() : QPoint(-1, -1));
}

void PidDebugWidget::SltBtnExportClicked()
{
    m_saving->exportTables();
}

void PidDebugWidget::setPlotStyle(const QString &style)
{
    m_plotStyle = style;
    m_chart->plot()->setPlotStyle(style);
}

void PidDebugWidget::fold()
{
    const bool hide = m_panel->isVisibleTo(this);
    m_panel->setVisible(!hide);
    m_chart->foldButton()->setText(hide ? QStringLiteral("显示配置界面") : QStringLiteral("隐藏配置界面"));
}
