#pragma once

// What a register table offers beyond the buttons that are always there: the menu "更多"
// and the context menu of the view, which share their actions. The owner does what they
// say.

#include <QMenu>

#include <array>

class QActionGroup;

class RegisterMenu : public QMenu
{
    Q_OBJECT

public:
    enum Action {
        Find,
        Copy,
        Paste,
        Selected, // to read or write the selected rows only
        Compare,
        DifferencesOnly,
        CopyReadTable, // where the table is written
        BatchOptions,
        SaveReport,
        actions
    };

    // The view is where the shortcuts work, and gets the context menu.
    RegisterMenu(bool isRead, QWidget *view, QWidget *parent);

    QAction *action(Action action) const { return m_actions.at(action); }
    void setBase(int base);
    // While requests are made, the rows can't be changed.
    void setBusy(bool isBusy);

signals:
    void baseChosen(int base); // a RegisterCell::Base

private:
    void addBases();

    std::array<QAction *, actions> m_actions{};
    QActionGroup *m_bases;
};
