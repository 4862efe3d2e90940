#include "pidpanel.h"

#include <QComboBox>
#include <QLabel>
#include <QPushButton>

#include <algorithm>

namespace {

std::array<float, 3> arrayOf(const PidGains &gains)
{
    return {gains.p, gains.i, gains.d};
}

} // namespace

PidPanel::PidPanel(QWidget *parent)
    : FormGroup(QStringLiteral("PID值配置"), parent)
    , m_channel(new QComboBox(this))
    , m_gains{new PidField(PidField::Gain, this), new PidField(PidField::Gain, this),
              new PidField(PidField::Gain, this)}
    , m_target(new PidField(PidField::Integer, this))
    , m_period(new PidField(PidField::Integer, this))
    , m_sendGains(new QPushButton(QStringLiteral("发送PID"), this))
    , m_sendTarget(new QPushButton(QStringLiteral("发送目标值"), this))
    , m_sendPeriod(new QPushButton(QStringLiteral("发送周期"), this))
{
    buildUi();
    connectFields();
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

    addRow(QStringLiteral("选择通道"), m_channel);
    const auto addAtRight = [this](const QString &label, QWidget *field) {
        addRow(label, field)->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    };
    addAtRight(QStringLiteral("P"), m_gains[0]);
    addAtRight(QStringLiteral("I"), m_gains[1]);
    addAtRight(QStringLiteral("D"), m_gains[2]);
    addWide(m_sendGains);
    addAtRight(QStringLiteral("    目标值"), m_target);
    addAtRight(QStringLiteral("    周期"), m_period);
    addPair(m_sendTarget, m_sendPeriod);
    setTabOrder(m_gains[2], m_sendGains);
    setTabOrder(m_sendGains, m_target);
}

void PidPanel::connectFields()
{
    for (const PidField *gain : m_gains) {
        connect(gain, &PidField::escaped, this, [this] {
            for (PidField *field : m_gains)
                field->revert();
        });
        connect(gain, &PidField::incomplete, this,
                [this] { emit refused(QStringLiteral("P、I、D值为空或不完整，未发送！")); });
        connect(gain, &PidField::characterRefused, this,
                [this] { emit refused(QStringLiteral("P、I、D值只能是小数，例如：3.25")); });
    }
    for (PidField *field : {m_target, m_period}) {
        const QString name = field == m_target ? QStringLiteral("目标值") : QStringLiteral("周期");
        connect(field, &PidField::escaped, field, &PidField::revert);
        connect(field, &PidField::characterRefused, this,
                [this, name] { emit refused(name + QStringLiteral("只能是整数，例如：300")); });
    }
    connect(m_target, &PidField::incomplete, this,
            [this] { emit refused(QStringLiteral("目标值为空或不完整，未发送！")); });
}

int PidPanel::channel() const
{
    return m_channel->currentIndex();
}

bool PidPanel::areGainsTyped() const
{
    return std::any_of(m_gains.begin(), m_gains.end(), [](const PidField *gain) { return gain->isTyped(); });
}

void PidPanel::showChannel(const PidChannelParams &params)
{
    const Fields all = fields();
    std::optional<Draft> &left = m_drafts.at(m_shown);
    left.reset();
    if (std::any_of(all.begin(), all.end(), [](const PidField *field) { return field->isTyped(); })) {
        left.emplace();
        for (size_t k = 0; k < all.size(); ++k)
            (*left)[k] = all[k]->content();
    }
    m_shown = static_cast<size_t>(channel());
    const std::optional<Draft> draft = m_drafts.at(m_shown);
    if (draft)
        for (size_t k = 0; k < all.size(); ++k)
            all[k]->setContent((*draft)[k]);

    const std::array<float, 3> gains = arrayOf(params.gains);
    const bool keepGains = draft && areGainsTyped();
    for (size_t k = 0; k < gains.size(); ++k)
        m_gains[k]->setRecord(QStringLiteral("%1").arg(static_cast<double>(gains[k]), 0, 'f', 3), keepGains,
                              gains[k]);
    m_target->setRecord(QString::number(params.target), draft && m_target->isTyped());
    m_period->setRecord(QString::number(params.period), draft && m_period->isTyped());
}

void PidPanel::showReportedGains(const PidGains &gains)
{
    const std::array<float, 3> values = arrayOf(gains);
    const bool keep = areGainsTyped();
    for (size_t k = 0; k < values.size(); ++k)
        m_gains[k]->setRecord(QString::number(static_cast<double>(values[k]), 'g', 6), keep, values[k]);
}

void PidPanel::showReportedTarget(qint32 target)
{
    m_target->setRecord(QString::number(target), m_target->isTyped());
}

void PidPanel::showReportedPeriod(qint32 period)
{
    m_period->setRecord(QString::number(period), m_period->isTyped());
}

std::optional<PidGains> PidPanel::gains() const
{
    const auto p = m_gains[0]->gain();
    const auto i = m_gains[1]->gain();
    const auto d = m_gains[2]->gain();
    if (!p || !i || !d)
        return std::nullopt;
    return PidGains{*p, *i, *d};
}

void PidPanel::proposeGains(const PidGains &gains)
{
    const std::array<float, 3> values = arrayOf(gains);
    for (size_t k = 0; k < values.size(); ++k)
        m_gains[k]->setTyped(values[k]);
}

void PidPanel::setGainsSent()
{
    for (PidField *gain : m_gains)
        gain->setSent();
}
