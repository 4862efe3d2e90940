#include "pid/pidpanel.h"

#include "pid/pidgainfield.h"

#include <QComboBox>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <QRegularExpressionValidator>

namespace {

bool isBeingTyped(const QLineEdit *field)
{
    return field->hasFocus() && field->isModified();
}

void showReported(QLineEdit *field, qint32 value)
{
    if (!isBeingTyped(field))
        field->setText(QString::number(value));
}

std::optional<qint32> takeInteger(QLineEdit *field)
{
    bool ok = false;
    const qint32 value = field->text().toInt(&ok, 10);
    if (!ok)
        return std::nullopt;
    field->setModified(false);
    return value;
}

std::array<float, 3> gainsOf(const PidChannelParams &params)
{
    return {params.p, params.i, params.d};
}

} // namespace

PidPanel::PidPanel(QWidget *parent)
    : FormGroup(QStringLiteral("PID值配置"), parent)
    , m_channel(new QComboBox(this))
    , m_gains{new PidGainField(this), new PidGainField(this), new PidGainField(this)}
    , m_target(new QLineEdit(this))
    , m_period(new QLineEdit(this))
    , m_sendGains(new QPushButton(QStringLiteral("发送PID"), this))
    , m_sendTarget(new QPushButton(QStringLiteral("发送目标值"), this))
    , m_sendPeriod(new QPushButton(QStringLiteral("发送周期"), this))
{
    buildUi();
}

void PidPanel::buildUi()
{
    m_channel->setObjectName(QStringLiteral("comboPidChannel"));
    m_gains[0]->setObjectName(QStringLiteral("editP"));
    m_gains[1]->setObjectName(QStringLiteral("editI"));
    m_gains[2]->setObjectName(QStringLiteral("editD"));
    m_target->setObjectName(QStringLiteral("editTarget"));
    m_period->setObjectName(QStringLiteral("editPeriod"));
    m_sendGains->setObjectName(QStringLiteral("btnSendPid"));
    m_sendTarget->setObjectName(QStringLiteral("btnSendTarget"));
    m_sendPeriod->setObjectName(QStringLiteral("btnSendPeriod"));

    for (int n = 1; n <= 5; ++n)
        m_channel->addItem(QStringLiteral("CH%1").arg(n));
    const QRegularExpression integer(QStringLiteral("-?\\d+"));
    for (QLineEdit *field : {m_target, m_period})
        field->setValidator(new QRegularExpressionValidator(integer, field));

    addRow(QStringLiteral("选择通道"), m_channel);
    addRow(QStringLiteral("P"), m_gains[0])->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    addRow(QStringLiteral("I"), m_gains[1])->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    addRow(QStringLiteral("D"), m_gains[2])->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    addWide(m_sendGains);
    addRow(QStringLiteral("    目标值"), m_target);
    addRow(QStringLiteral("    周期"), m_period);
    addPair(m_sendTarget, m_sendPeriod);
    setTabOrder(m_gains[2], m_sendGains);
    setTabOrder(m_sendGains, m_target);
    // Everything in sight in a window of the first size.
    qobject_cast<QGridLayout *>(layout())->setVerticalSpacing(4);
}

int PidPanel::channel() const
{
    return m_channel->currentIndex();
}

void PidPanel::showChannel(const PidChannelParams &params)
{
    const std::array<float, 3> gains = gainsOf(params);
    for (size_t k = 0; k < gains.size(); ++k)
        m_gains[k]->showValue(gains[k], QStringLiteral("%1").arg(static_cast<double>(gains[k]), 0, 'f', 3));
    m_target->setText(QString::number(params.target));
    m_period->setText(QString::number(params.period));
}

void PidPanel::showReportedGains(const PidChannelParams &params)
{
    const std::array<float, 3> gains = gainsOf(params);
    for (size_t k = 0; k < gains.size(); ++k)
        if (!isBeingTyped(m_gains[k]))
            m_gains[k]->showValue(gains[k], QString::number(static_cast<double>(gains[k]), 'g', 6));
}

void PidPanel::showReportedTarget(qint32 target)
{
    showReported(m_target, target);
}

void PidPanel::showReportedPeriod(qint32 period)
{
    showReported(m_period, period);
}

std::optional<std::array<float, 3>> PidPanel::takeGains()
{
    std::array<float, 3> gains{};
    for (size_t k = 0; k < gains.size(); ++k) {
        const std::optional<float> value = m_gains[k]->value();
        if (!value)
            return std::nullopt;
        gains[k] = *value;
    }
    for (size_t k = 0; k < gains.size(); ++k)
        m_gains[k]->setSent(gains[k]);
    return gains;
}

std::optional<qint32> PidPanel::takeTarget()
{
    return takeInteger(m_target);
}

std::optional<qint32> PidPanel::takePeriod()
{
    return takeInteger(m_period);
}
