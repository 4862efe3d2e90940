#pragma once

// The lists below the bytes, as tabs: each is opened and closed by an item of the menu
// "视图". Hidden while none is open. Owns no list's content.

#include "setting.h"

#include <QTabWidget>

class QAction;
class QMenu;

class HexPanes : public QTabWidget
{
    Q_OBJECT

public:
    explicit HexPanes(QWidget *parent = nullptr);

    // Adds the item to the menu. isOpen: remembered, where it is given.
    QAction *add(QWidget *pane, const QString &title, const char *actionName, QMenu *menu,
                 Setting<bool> *isOpen);
    void open(QWidget *pane); // and brings it to the front

signals:
    void openChanged();

private:
    struct Pane
    {
        QWidget *widget;
        QString title;
        QAction *action;
        Setting<bool> *isOpen;
    };

    void setOpen(const Pane &pane, bool open);
    const Pane *find(const QWidget *widget) const;

    QVector<Pane> m_panes;
};
