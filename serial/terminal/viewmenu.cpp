#include "viewmenu.h"

#include "settings.h"

#include <QActionGroup>
#include <QMenu>

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
    emit changed();
}

void ViewMenu::store()
{
    Settings &settings = Settings::instance();
    settings.view.lineTime.set(static_cast<int>(time()));
    settings.view.copiesLineTime.set(m_copyTimes->isChecked());
    load();
}
