#include "hexpanes.h"

#include <QAction>
#include <QMenu>
#include <QPushButton>
#include <QTabBar>

HexPanes::HexPanes(QWidget *parent)
    : QTabWidget(parent)
{
    setObjectName(QStringLiteral("hexPanes"));
    setDocumentMode(true);
    tabBar()->setDrawBase(false);
    auto *close = new QPushButton(QStringLiteral("关闭"), this);
    close->setObjectName(QStringLiteral("btnClosePane"));
    setCornerWidget(close);
    connect(close, &QPushButton::clicked, this, [this] {
        if (const Pane *pane = find(currentWidget()))
            pane->action->setChecked(false);
    });
    hide();
}

QAction *HexPanes::add(QWidget *pane, const QString &title, const char *actionName, QMenu *menu,
                       Setting<bool> *isOpen)
{
    QAction *const action = menu->addAction(title);
    action->setObjectName(QLatin1String(actionName));
    action->setCheckable(true);
    m_panes.append({pane, title, action, isOpen});
    pane->setParent(this);
    pane->hide();
    connect(action, &QAction::toggled, this, [this, pane](bool open) { setOpen(*find(pane), open); });
    if (isOpen && *isOpen)
        action->setChecked(true);
    return action;
}

void HexPanes::open(QWidget *pane)
{
    find(pane)->action->setChecked(true);
    setCurrentWidget(pane);
}

void HexPanes::setOpen(const Pane &pane, bool open)
{
    if (open) {
        addTab(pane.widget, pane.title);
        setCurrentWidget(pane.widget);
    } else {
        removeTab(indexOf(pane.widget));
        pane.widget->hide();
    }
    if (pane.isOpen)
        pane.isOpen->change(open);
    setVisible(count() > 0);
    emit openChanged();
}

const HexPanes::Pane *HexPanes::find(const QWidget *widget) const
{
    for (const Pane &pane : m_panes)
        if (pane.widget == widget)
            return &pane;
    return nullptr;
}
