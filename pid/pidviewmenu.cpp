#include "pidviewmenu.h"

#include "settings.h"

#include <QActionGroup>
#include <QMenu>

namespace {

struct Span
{
    int seconds;
    const char *text;
};

constexpr Span kSpans[] = {{1, "1秒"},    {2, "2秒"},     {5, "5秒"},     {10, "10秒"},    {30, "30秒"},
                           {60, "1分钟"}, {120, "2分钟"}, {300, "5分钟"}, {600, "10分钟"}, {0, "全部"}};

} // namespace

PidViewMenu::PidViewMenu(QWidget *parent)
    : QPushButton(QStringLiteral("视图"), parent)
    , m_windows(new QActionGroup(this))
    , m_record(new QMenu(QStringLiteral("会话"), this))
{
    setObjectName(QStringLiteral("btnPidView"));
    setToolTip(QStringLiteral("显示的时间长度、数值轴、运行记录与整定建议，会话的保存和打开"));
    auto *menu = new QMenu(this);
    QMenu *spans = menu->addMenu(QStringLiteral("时间窗口"));
    for (const Span &span : kSpans) {
        QAction *action = spans->addAction(QString::fromUtf8(span.text));
        action->setCheckable(true);
        action->setData(span.seconds);
        m_windows->addAction(action);
    }
    setMenu(menu);
    m_axesByUnit = addToggle(QStringLiteral("按单位分轴"), "actionPidAxesByUnit");
    m_largeValues = addToggle(QStringLiteral("大号当前值"), "actionPidLargeValues");
    menu->addAction(QStringLiteral("通道名称和单位…"), this, &PidViewMenu::namesRequested);
    menu->addSeparator();
    m_analysis = addToggle(QStringLiteral("运行记录与整定建议"), "actionPidAnalysis");
    menu->addSeparator();
    menu->addMenu(m_record);
    connect(m_windows, &QActionGroup::triggered, this, [this](const QAction *action) {
        Settings::instance().pid.windowSeconds.change(action->data().toInt());
        emit changed();
    });
    const auto store = [this] {
        auto &choices = Settings::instance().pid;
        choices.axesByUnit.change(m_axesByUnit->isChecked());
        choices.largeValues.change(m_largeValues->isChecked());
        choices.analysis.change(m_analysis->isChecked());
        emit changed();
    };
    for (const QAction *action : {m_axesByUnit, m_largeValues, m_analysis})
        connect(action, &QAction::triggered, this, store);
    load();
}

QAction *PidViewMenu::addToggle(const QString &text, const char *name)
{
    QAction *action = menu()->addAction(text);
    action->setObjectName(QLatin1String(name));
    action->setCheckable(true);
    return action;
}

void PidViewMenu::load()
{
    const auto &choices = Settings::instance().pid;
    const QList<QAction *> spans = m_windows->actions();
    for (QAction *span : spans)
        span->setChecked(span->data().toInt() == choices.windowSeconds);
    m_axesByUnit->setChecked(choices.axesByUnit);
    m_largeValues->setChecked(choices.largeValues);
    m_analysis->setChecked(choices.analysis);
}
