#include "answerpanel.h"

#include "answerdialog.h"
#include "apppaths.h"

#include <QAction>
#include <QCheckBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QSpinBox>

namespace {
constexpr int kRefreshMs = 200;
} // namespace

AnswerPanel::AnswerPanel(Settings::AnswerChoices *choices, const QString &fileName, QWidget *parent)
    : QWidget(parent)
    , m_choices(choices)
    , m_store(AppPaths::confFolder() + QLatin1Char('/') + fileName)
    , m_refresh(this)
    , m_action(new QAction(QStringLiteral("自动应答"), this))
    , m_on(new QCheckBox(QStringLiteral("启用自动应答"), this))
    , m_rules(new QPushButton(QStringLiteral("规则"), this))
    , m_limit(new QSpinBox(this))
    , m_state(new QLabel(this))
{
    buildUi();
    hide();
    m_refresh.setSingleShot(true);
    m_refresh.setInterval(kRefreshMs);
    connect(m_action, &QAction::toggled, this, [this](bool isShown) {
        setVisible(isShown);
        m_choices->isShown.change(isShown);
    });
    connect(m_on, &QCheckBox::toggled, this, &AnswerPanel::handleToggled);
    connect(m_rules, &QPushButton::clicked, this, &AnswerPanel::editRules);
    connect(m_limit, QOverload<int>::of(&QSpinBox::valueChanged), this, [this](int perSecond) {
        m_choices->maxPerSecond.change(perSecond);
        m_answers.setLimit(perSecond);
    });
    connect(&m_answers, &LinkAnswers::notify, this, &AnswerPanel::notify);
    connect(&m_answers, &LinkAnswers::changed, this, [this] {
        if (!m_refresh.isActive())
            m_refresh.start();
    });
    connect(&m_refresh, &QTimer::timeout, this, &AnswerPanel::showState);
    load();
    m_answers.setLimit(m_limit->value());
    QTimer::singleShot(0, this, &AnswerPanel::loadRules); // to who is connected by then
}

void AnswerPanel::buildUi()
{
    setObjectName(QStringLiteral("answerPanel"));
    m_action->setObjectName(QStringLiteral("actionAutoAnswer"));
    m_action->setCheckable(true);
    m_on->setObjectName(QStringLiteral("checkAutoAnswer"));
    m_on->setToolTip(QStringLiteral("收到规则中的内容时自动发送应答，每次启动程序时关闭"));
    m_rules->setObjectName(QStringLiteral("btnAnswerRules"));
    m_rules->setToolTip(QStringLiteral("编辑自动应答规则"));
    m_limit->setObjectName(QStringLiteral("spinAnswerLimit"));
    m_limit->setRange(1, 1000);
    m_limit->setSuffix(QStringLiteral(" 次"));
    m_limit->setToolTip(QStringLiteral("超出的应答不发送"));
    m_state->setObjectName(QStringLiteral("labelAnswerState"));
    m_state->setProperty("kind", QStringLiteral("hint"));
    m_state->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    auto *limitLabel = new QLabel(QStringLiteral("每秒最多"), this);
    limitLabel->setBuddy(m_limit);
    m_limit->setAccessibleName(limitLabel->text());
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->addWidget(m_on);
    row->addWidget(m_rules);
    row->addWidget(limitLabel);
    row->addWidget(m_limit);
    row->addSpacing(8);
    row->addWidget(m_state, 1);
}

void AnswerPanel::load()
{
    m_action->setChecked(m_choices->isShown);
    m_limit->setValue(m_choices->maxPerSecond);
}

// Another copy of the program may have changed them.
void AnswerPanel::loadRules()
{
    const QString fault = m_store.load();
    if (!fault.isEmpty())
        emit notify(Notice::error(fault));
    m_answers.setRules(m_store.rules());
}

void AnswerPanel::handleToggled(bool isOn)
{
    if (isOn)
        loadRules();
    m_answers.setOn(isOn);
    showState();
}

void AnswerPanel::editRules()
{
    loadRules();
    AnswerDialog dialog(m_store.rules(), &m_answers, this);
    if (dialog.exec() != QDialog::Accepted)
        return;
    const QString reason = m_store.save(dialog.rules());
    if (!reason.isEmpty())
        emit notify(Notice::error(QStringLiteral("自动应答规则保存失败：%1").arg(reason)));
    else if (!m_store.keptAside().isEmpty())
        emit notify(Notice::error(m_store.keptAside()));
    m_answers.setRules(m_store.rules());
}

void AnswerPanel::showState()
{
    const LinkAnswers::Counts &counts = m_answers.counts();
    QStringList parts;
    if (m_answers.ruleCount() == 0)
        parts += QStringLiteral("没有可用的规则");
    else
        parts += QStringLiteral("%1条规则").arg(m_answers.ruleCount());
    if (m_answers.isPaused())
        parts += QStringLiteral("文件传输中，已暂停");
    if (counts.hits > 0)
        parts += QStringLiteral("命中%1 应答%2").arg(counts.hits).arg(counts.sent);
    if (counts.dropped > 0)
        parts += QStringLiteral("未发%1").arg(counts.dropped);
    if (counts.echoes > 0)
        parts += QStringLiteral("回显%1").arg(counts.echoes);
    m_state->setText(parts.join(QStringLiteral("，")));
    m_state->setToolTip(m_state->text());
    QString lamp;
    if (m_answers.isOn())
        lamp =
            m_answers.isPaused() ? QStringLiteral("应答 暂停") : QStringLiteral("应答 %1").arg(counts.sent);
    emit stateChanged(lamp, m_answers.isOn() && m_answers.hasGivenUp());
}
