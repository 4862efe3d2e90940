#include "linesgroup.h"

#include "seriallink.h"
#include "settings.h"

#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QTimer>

namespace {

constexpr int kPollMs = 100;

const QSerialPort::FlowControl kFlowControls[] = {QSerialPort::NoFlowControl, QSerialPort::HardwareControl,
                                                  QSerialPort::SoftwareControl};

const struct
{
    const char *name;
    const char *toolTip;
    bool SerialLink::Lines::*line;
} kLamps[] = {
    {"CTS", "允许发送（对方的RTS）", &SerialLink::Lines::cts},
    {"DSR", "设备就绪（对方的DTR）", &SerialLink::Lines::dsr},
    {"DCD", "载波检测", &SerialLink::Lines::dcd},
    {"RI", "振铃指示", &SerialLink::Lines::ri},
};

} // namespace

LinesGroup::LinesGroup(SerialLink *link, QWidget *parent)
    : FormGroup(QStringLiteral("线路控制"), parent)
    , m_link(link)
    , m_pulse(link)
    , m_poll(new QTimer(this))
    , m_flow(new QComboBox(this))
    , m_dtr(new QCheckBox(QStringLiteral("DTR"), this))
    , m_rts(new QCheckBox(QStringLiteral("RTS"), this))
{
    buildUi();
    load();
    m_poll->setInterval(kPollMs);
    connect(m_poll, &QTimer::timeout, this, &LinesGroup::showLines);
    connect(this, &QGroupBox::toggled, this, [this](bool isOpen) {
        if (!m_isLoading)
            Settings::instance().serialPage.showsLines.change(isOpen);
        updatePolling();
    });
    connect(m_flow, QOverload<int>::of(&QComboBox::currentIndexChanged), this, [this](int index) {
        if (!m_isLoading)
            Settings::instance().serialPage.flowControl.change(index);
        m_rts->setEnabled(kFlowControls[index] != QSerialPort::HardwareControl);
    });
    connect(m_dtr, &QCheckBox::stateChanged, this, &LinesGroup::applyLines);
    connect(m_rts, &QCheckBox::stateChanged, this, &LinesGroup::applyLines);
    showState(false, false);
}

void LinesGroup::buildUi()
{
    setObjectName(QStringLiteral("linesGroup"));
    m_flow->setObjectName(QStringLiteral("comboFlowControl"));
    m_dtr->setObjectName(QStringLiteral("checkDtr"));
    m_rts->setObjectName(QStringLiteral("checkRts"));
    m_flow->addItems({QStringLiteral("无"), QStringLiteral("RTS/CTS"), QStringLiteral("XON/XOFF")});
    m_rts->setTristate(true);
    m_dtr->setToolTip(QStringLiteral("勾选为有效。打开串口时系统可能先短暂置为有效"));
    m_rts->setToolTip(QStringLiteral("勾选为有效，中间状态由系统决定。使用RTS/CTS流控时由驱动控制"));
    letShrink(m_flow);
    QHBoxLayout *outputs = addLine();
    addTo(outputs, QStringLiteral("流控"), m_flow);
    outputs->addWidget(m_dtr);
    outputs->addWidget(m_rts);

    QHBoxLayout *inputs = addLine();
    for (const auto &lamp : kLamps) {
        auto *label = new QLabel(QLatin1String(lamp.name), this);
        label->setObjectName(QStringLiteral("lamp") + QLatin1String(lamp.name));
        label->setToolTip(QString::fromUtf8(lamp.toolTip));
        label->setProperty("kind", QStringLiteral("lamp"));
        label->setAlignment(Qt::AlignCenter);
        inputs->addWidget(label, 1);
        m_lamps.append(label);
    }

    QHBoxLayout *actions = addLine();
    const auto addAction = [&](const QString &text, const char *name, const QString &toolTip,
                               void (LinePulse::*pulse)()) {
        auto *button = new QPushButton(text, this);
        button->setObjectName(QLatin1String(name));
        button->setToolTip(toolTip);
        connect(button, &QPushButton::clicked, &m_pulse, pulse);
        actions->addWidget(button, 1);
        m_actions.append(button);
    };
    addAction(QStringLiteral("复位"), "btnBoardReset",
              QStringLiteral("用DTR和RTS复位开发板（常见的双三极管自动下载电路）"), &LinePulse::reset);
    addAction(QStringLiteral("下载模式"), "btnBootLoader",
              QStringLiteral("复位并进入下载模式（常见的双三极管自动下载电路）"),
              &LinePulse::enterBootLoader);
    addAction(QStringLiteral("Break"), "btnBreak", QStringLiteral("发送250毫秒的Break信号"),
              &LinePulse::sendBreak);
    setFoldable();
}

void LinesGroup::load()
{
    m_isLoading = true;
    const Settings::SerialPage &remembered = Settings::instance().serialPage;
    setChecked(remembered.showsLines);
    m_flow->setCurrentIndex(remembered.flowControl);
    m_dtr->setChecked(remembered.dtr);
    m_rts->setCheckState(static_cast<Qt::CheckState>(remembered.rts.value()));
    m_isLoading = false;
}

void LinesGroup::writeTo(SerialSettings *settings) const
{
    settings->flowControl = kFlowControls[m_flow->currentIndex()];
    settings->dtr = m_dtr->isChecked();
    settings->rts.reset();
    if (m_rts->checkState() != Qt::PartiallyChecked)
        settings->rts = m_rts->isChecked();
}

void LinesGroup::applyLines()
{
    if (m_isLoading)
        return;
    Settings::SerialPage &remembered = Settings::instance().serialPage;
    remembered.dtr.change(m_dtr->isChecked());
    remembered.rts.change(m_rts->checkState());
    m_link->setDtr(m_dtr->isChecked());
    if (m_rts->checkState() != Qt::PartiallyChecked)
        m_link->setRts(m_rts->isChecked());
}

void LinesGroup::showState(bool isOpen, bool isBusy)
{
    m_isOpen = isOpen;
    m_flow->setEnabled(!isOpen && !isBusy);
    m_dtr->setEnabled(!isBusy);
    m_rts->setEnabled(!isBusy && kFlowControls[m_flow->currentIndex()] != QSerialPort::HardwareControl);
    for (QWidget *action : qAsConst(m_actions))
        action->setEnabled(isOpen && !isBusy);
    updatePolling();
}

void LinesGroup::updatePolling()
{
    if (m_isOpen && isChecked())
        m_poll->start();
    else
        m_poll->stop();
    showLines();
}

void LinesGroup::showLines()
{
    const SerialLink::Lines lines =
        m_poll->isActive() && !window()->isMinimized() ? m_link->lines() : SerialLink::Lines();
    int i = 0;
    for (const auto &lamp : kLamps) {
        QLabel *label = m_lamps.at(i++);
        const QString state =
            !lines.isKnown ? QStringLiteral("unknown") : QLatin1String(lines.*lamp.line ? "on" : "off");
        if (label->property("state") == state)
            continue;
        label->setProperty("state", state);
        label->setAccessibleDescription(!lines.isKnown     ? QStringLiteral("未知")
                                        : lines.*lamp.line ? QStringLiteral("有效")
                                                           : QStringLiteral("无效"));
        style()->unpolish(label);
        style()->polish(label);
    }
}
