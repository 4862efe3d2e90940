#include "piddebugwidget.h"

#include "pidchart.h"
#include "pidoperations.h"
#include "pidpanel.h"
#include "pidplot.h"
#include "pidportpanel.h"
#include "pidsaving.h"
#include "portname.h"
#include "qtmessagebox.h"
#include "qtserialport.h"
#include "settings.h"
#include "stateindicator.h"

#include <QCheckBox>
#include <QDateTime>
#include <QDebug>
#include <QLineEdit>

namespace {

const auto kWarning = QStringLiteral("告警");

quint32 bit(int channel)
{
    return 1U << channel;
}

} // namespace

PidDebugWidget::PidDebugWidget(QWidget *parent)
    : QtWidgetBase(parent)
    , m_link(new QtSerialPort(this))
    , m_receiver([this](const PidReport &report, bool late) { return act(report, late); }, this)
    , m_epoch(QDateTime::currentMSecsSinceEpoch())
{
    setObjectName(QStringLiteral("PidDebugWidget"));
    m_sinceEpoch.start();
    buildUi();
    connectParts();
    setPlotStyle(QStringLiteral("black"));
    setPortState(false);
    reloadSettings();
}

PidDebugWidget::~PidDebugWidget()
{
    blockSignals(true); // nobody is to be told any more
    m_link->disconnect(this);
    if (m_link->isOpen())
        closePort();
}

void PidDebugWidget::reloadSettings()
{
    m_chart->fitAllBox()->setChecked(Settings::instance().pid.fitAll);
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
    if (!m_link->isOpen()) {
        notify(Notice::error(QStringLiteral("串口[%1]打开失败!!!").arg(name)));
        notify(Notice::error(m_link->reason()));
        return;
    }
    setPortState(true);
    notify(Notice::information(QStringLiteral("串口[%1]打开成功!").arg(name)));
}

// What is left over from before goes both ways: a length that never ends would
// block the link for good, and nothing may act any more when the port is closed.
void PidDebugWidget::setPortState(bool open)
{
    m_receiver.clear();
    m_portPanel->setOpenState(open);
    m_operations->setOpenState(open);
    m_chart->state()->setOn(open);
    m_chart->plot()->showHint(open);
}

void PidDebugWidget::closePort()
{
    stopRunning();
    m_link->close();
    setPortState(false);
}

void PidDebugWidget::portVanished()
{
    if (!m_link->isOpen())
        return;
    m_link->close();
    m_operations->setIdle(true);
    m_startedHere = 0;
    setPortState(false);
    notify(Notice::error(QStringLiteral("当前串口已拔出，请重新打开!")));
}

// Sends stop for the selected channel where the button says that it runs, and
// for every other channel that was started from here; returns when that has
// left.
void PidDebugWidget::stopRunning()
{
    const int current = m_pid->channel();
    quint32 running = m_startedHere;
    if (!m_operations->isIdle())
        running |= bit(current);
    if (running == 0)
        return;
    m_operations->setIdle(true);
    for (int channel = 0; channel < PidFrame::channels; ++channel)
        if (channel != current && (running & bit(channel)))
            SendPidFrame(PidFrame::Stop, static_cast<quint8>(channel + 1), {});
    if (running & bit(current))
        SendPidFrame(PidFrame::Stop, static_cast<quint8>(current + 1), {});
    m_startedHere = 0;
    m_link->flush(); // the session may be about to end
}

void PidDebugWidget::closeLinks()
{
    if (m_link->isOpen())
        closePort();
}

bool PidDebugWidget::saveBeforeExit()
{
    return m_saving->complete(); // a failed export can be tried at another place
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

quint8 PidDebugWidget::channelByte() const
{
    return static_cast<quint8>(m_pid->channel() + 1);
}

PidChannelParams &PidDebugWidget::selected()
{
    return m_params.at(static_cast<size_t>(m_pid->channel()));
}

void PidDebugWidget::sendCommand(PidFrame::Command command, const QByteArray &payload)
{
    SendPidFrame(command, channelByte(), payload);
}

void PidDebugWidget::sayNotSent(const QString &what)
{
    notify(Notice::error(QStringLiteral("%1为空或超出范围，未发送！").arg(what)));
}

void PidDebugWidget::SltBtnSendPidClicked()
{
    if (auto *field = qobject_cast<QLineEdit *>(sender()))
        field->selectAll();
    const std::optional<std::array<float, 3>> gains = m_pid->gains();
    if (!gains) {
        sayNotSent(QStringLiteral("P、I、D值"));
        return;
    }
    PidChannelParams &params = selected();
    params.p = (*gains)[0];
    params.i = (*gains)[1];
    params.d = (*gains)[2];
    if (m_link->isOpen())
        m_pid->setGainsSent();
    sendCommand(PidFrame::SetPid, FloatToBytes(params.p) + FloatToBytes(params.i) + FloatToBytes(params.d));
}

void PidDebugWidget::SltBtnSendValueClicked()
{
    if (auto *field = qobject_cast<QLineEdit *>(sender()))
        field->selectAll();
    const std::optional<qint32> target = m_pid->target();
    if (!target) {
        sayNotSent(QStringLiteral("目标值"));
        return;
    }
    selected().target = *target;
    if (m_link->isOpen())
        m_pid->setTargetSent();
    sendCommand(PidFrame::SetTarget, Int32ToBytes(*target));
}

// The period is the board's to tell: only its report is stored.
void PidDebugWidget::SltBtnSendIntervalClicked()
{
    const std::optional<qint32> period = m_pid->period();
    if (!period) {
        sayNotSent(QStringLiteral("周期"));
        return;
    }
    if (m_link->isOpen())
        m_pid->setPeriodSent();
    sendCommand(PidFrame::SetPeriod, Int32ToBytes(*period));
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
        m_startedHere |= bit(m_pid->channel());
    else
        m_startedHere &= ~bit(m_pid->channel());
    sendCommand(start ? PidFrame::Start : PidFrame::Stop);
}

void PidDebugWidget::SltBtnResetClicked()
{
    SltBtnClearClicked();
    sendCommand(PidFrame::Reset);
}

// ---- receiving

void PidDebugWidget::SltRecvFromSerialport(QByteArray byData)
{
    m_receiver.append(byData);
    ParsePidFrames();
}

void PidDebugWidget::ParsePidFrames()
{
    m_receiver.parse();
}

// False when the run ends with this report.
bool PidDebugWidget::act(const PidReport &report, bool late)
{
    const int channel = report.channel - 1;
    const bool isSelected = channel == m_pid->channel();
    PidChannelParams &params = m_params.at(static_cast<size_t>(channel));
    switch (report.command) {
    case PidFrame::Target:
        params.target = report.value;
        if (isSelected)
            m_pid->showReportedTarget(report.value);
        break;
    case PidFrame::Actual:
        if (m_operations->stopShow())
            return false;
        if (!late)
            actOnActual(report);
        break;
    case PidFrame::Pid:
        params.p = report.p;
        params.i = report.i;
        params.d = report.d;
        if (isSelected)
            m_pid->showReportedGains(params);
        break;
    case PidFrame::Started:
        actOnStarted();
        break;
    case PidFrame::Stopped:
        m_operations->setIdle(true);
        m_startedHere &= ~bit(channel);
        break;
    case PidFrame::Period:
        params.period = report.value;
        if (isSelected)
            m_pid->showReportedPeriod(report.value);
        break;
    default:
        break;
    }
    return true;
}

void PidDebugWidget::actOnStarted()
{
    if (!m_operations->isIdle())
        return;
    m_operations->setIdle(false);
    if (m_timeOrigin != -1)
        return;
    m_timeOrigin = now();
    m_chart->plot()->setTimeAbsolute(false);
    SltBtnClearClicked(); // keys so far are absolute and would be far away
}

void PidDebugWidget::actOnActual(const PidReport &report)
{
    const int channel = report.channel - 1;
    const double t = static_cast<double>(now() - m_timeOrigin) / 1000.0;
    m_chart->addValue(channel, t, m_params.at(static_cast<size_t>(channel)).target, report.value);
    ++m_actualReports;
}

void PidDebugWidget::SltComboPidChanged(int index)
{
    m_pid->showChannel(m_params.at(static_cast<size_t>(index)));
}

// ---- the chart

void PidDebugWidget::SltGraphClicked(int index, bool bShow)
{
    m_chart->showCurve(index, bShow);
}

void PidDebugWidget::SltBtnClearClicked()
{
    m_chart->clear();
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
