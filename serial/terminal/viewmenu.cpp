#include "viewmenu.h"

#include "ruledialog.h"
#include "settings.h"
#include "sharedrules.h"

#include <QActionGroup>
#include <QMenu>
#include <QTimer>

ViewMenu::ViewMenu(QWidget *parent)
    : QPushButton(QStringLiteral("视图"), parent)
    , m_times(new QActionGroup(this))
{
    setObjectName(QStringLiteral("btnView"));
    setMenu(new QMenu(this));
    Settings::ViewSettings &view = Settings::instance().view;
    m_times->setExclusionPolicy(QActionGroup::ExclusionPolicy::ExclusiveOptional);
    for (const QString &text :
         {QStringLiteral("不显示行时间"), QStringLiteral("行的到达时刻"),
          QStringLiteral("与上一行的间隔（秒）"), QStringLiteral("打开后的时间（秒）")}) {
        QAction *action = menu()->addAction(text);
        action->setCheckable(true);
        action->setData(m_times->actions().size());
        m_times->addAction(action);
    }
    setKey(m_times->actions().at(1), Qt::Key_T);
    m_copyTimes = addToggle(QStringLiteral("复制时带行时间"), 0, &view.copiesLineTime);
    addToggle(QStringLiteral("保存文本时带行时间"), 0, &view.savesLineTime);
    menu()->addSeparator();
    addToggle(QStringLiteral("显示发送的数据"), Qt::Key_D, &view.showsSent);
    addToggle(QStringLiteral("解释ANSI转义序列"), Qt::Key_A, &view.interpretsSequences);
    addToggle(QStringLiteral("显示控制字符"), Qt::Key_K, &view.showsControls);
    setKey(menu()->addAction(QStringLiteral("按当前编码重新显示"), this, &ViewMenu::showAgainRequested),
           Qt::Key_R);
    menu()->addSeparator();
    m_useRules = menu()->addAction(QStringLiteral("使用着色规则"));
    m_useRules->setCheckable(true);
    setKey(m_useRules, Qt::Key_H);
    menu()->addAction(QStringLiteral("着色规则…"), this, &ViewMenu::editRules);
    addToggle(QStringLiteral("数值曲线"), Qt::Key_G, &view.curves);
    menu()->addSeparator();
    m_saveSelected =
        menu()->addAction(QStringLiteral("保存选中内容…"), this, &ViewMenu::saveSelectedRequested);
    m_saveFiltered =
        menu()->addAction(QStringLiteral("保存筛选结果…"), this, &ViewMenu::saveFilteredRequested);
    connect(menu(), &QMenu::aboutToShow, this, &ViewMenu::aboutToShow);
    connect(&SharedRules::instance(), &SharedRules::changed, this, &ViewMenu::showUse);
    load();
    for (QAction *action : menu()->actions())
        if (action->isCheckable())
            connect(action, &QAction::triggered, this, &ViewMenu::store);
}

// Ctrl+Shift and a letter, on all of the page that the actions are added to.
void ViewMenu::setKey(QAction *action, int key)
{
    action->setShortcut(int(Qt::CTRL) + int(Qt::SHIFT) + key);
    action->setShortcutContext(Qt::WidgetWithChildrenShortcut);
}

QAction *ViewMenu::addToggle(const QString &text, int key, Setting<bool> *setting)
{
    QAction *action = menu()->addAction(text);
    action->setCheckable(true);
    if (key != 0)
        setKey(action, key);
    m_toggles.append({action, setting});
    return action;
}

void ViewMenu::setSavable(bool selected, bool filtered)
{
    m_saveSelected->setEnabled(selected);
    m_saveFiltered->setEnabled(filtered);
}

ViewOptions ViewMenu::options() const
{
    const Settings::ViewSettings &view = Settings::instance().view;
    ViewOptions options;
    options.time = static_cast<LineStamp::Time>(int(view.lineTime));
    options.copiesStamps = view.copiesLineTime;
    options.savesStamps = view.savesLineTime;
    options.showsSent = view.showsSent;
    options.text.sequences = view.interpretsSequences;
    options.text.symbols = view.showsControls;
    return options;
}

void ViewMenu::load()
{
    const Settings &settings = Settings::instance();
    m_times->actions().at(settings.view.lineTime)->setChecked(true);
    for (const Toggle &toggle : qAsConst(m_toggles))
        toggle.action->setChecked(*toggle.setting);
    m_copyTimes->setEnabled(settings.view.lineTime != 0 || settings.view.showsSent);
    SharedRules::instance().load();
    showUse();
    emit changed();
}

void ViewMenu::showUse()
{
    m_useRules->setChecked(SharedRules::instance().areUsed());
}

void ViewMenu::store()
{
    Settings &settings = Settings::instance();
    const QAction *time = m_times->checkedAction();
    settings.view.lineTime.change(time ? time->data().toInt() : 0);
    for (const Toggle &toggle : qAsConst(m_toggles))
        toggle.setting->change(toggle.action->isChecked());
    const bool usesRules = m_useRules->isChecked();
    if (usesRules && SharedRules::instance().rules().isEmpty())
        editRules(); // there are none to use
    else
        settings.view.usesColorRules.change(usesRules);
    load();
}

// The button stays pressed until its menu has closed; a dialog that was opened before
// would keep it so.
void ViewMenu::editRules()
{
    if (isDown()) {
        QTimer::singleShot(1, this, &ViewMenu::editRules);
        return;
    }
    RuleDialog(window()).exec();
    load();
}
