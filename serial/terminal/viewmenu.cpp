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
    auto *menu = new QMenu(this);
    for (const QString &text :
         {QStringLiteral("不显示行时间"), QStringLiteral("行的到达时刻"),
          QStringLiteral("与上一行的间隔（秒）"), QStringLiteral("打开后的时间（秒）")}) {
        QAction *action = menu->addAction(text);
        action->setCheckable(true);
        action->setData(m_times->actions().size());
        m_times->addAction(action);
    }
    menu->addSeparator();
    m_copyTimes = menu->addAction(QStringLiteral("复制时带行时间"));
    m_copyTimes->setCheckable(true);
    menu->addSeparator();
    m_useRules = menu->addAction(QStringLiteral("使用着色规则"));
    m_useRules->setCheckable(true);
    QAction *rules = menu->addAction(QStringLiteral("着色规则…"));
    connect(rules, &QAction::triggered, this, &ViewMenu::editRules);
    setMenu(menu);
    load();
    connect(menu, &QMenu::triggered, this, &ViewMenu::store);
}

LogMargin::Time ViewMenu::time() const
{
    return static_cast<LogMargin::Time>(m_times->checkedAction()->data().toInt());
}

bool ViewMenu::copiesTimes() const
{
    return m_copyTimes->isChecked();
}

void ViewMenu::load()
{
    const Settings &settings = Settings::instance();
    m_times->actions().at(settings.view.lineTime)->setChecked(true);
    m_copyTimes->setChecked(settings.view.copiesLineTime);
    m_copyTimes->setEnabled(time() != LogMargin::Time::None);
    SharedRules::instance().load();
    m_useRules->setChecked(settings.view.usesColorRules);
    emit changed();
}

void ViewMenu::store()
{
    Settings &settings = Settings::instance();
    settings.view.lineTime.set(static_cast<int>(time()));
    settings.view.copiesLineTime.set(m_copyTimes->isChecked());
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
