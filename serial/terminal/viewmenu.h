#pragma once

// "视图" in the row above a receive display: what the display shows besides the
// text and how, whether rules color it, curves of its numbers, and saving parts
// of it. The settings own the choices; all displays share them.

#include "settings.h"
#include "viewoptions.h"

#include <QPushButton>

class QAction;
class QActionGroup;

class ViewMenu : public QPushButton
{
    Q_OBJECT

public:
    explicit ViewMenu(QWidget *parent = nullptr);

    ViewOptions options() const;
    // Shows what the settings hold.
    void load();
    // What there is to be saved.
    void setSavable(bool selected, bool filtered);

signals:
    void changed();
    void aboutToShow();
    void showAgainRequested();
    void saveSelectedRequested();
    void saveFilteredRequested();

private:
    struct Toggle
    {
        QAction *action;
        Setting<bool> *setting;
    };

    void setKey(QAction *action, int key);
    QAction *addToggle(const QString &text, int key, Setting<bool> *setting);
    void store();
    void showUse();
    void editRules();

    QActionGroup *m_times;
    QVector<Toggle> m_toggles;
    QAction *m_copyTimes;
    QAction *m_useRules;
    QAction *m_saveSelected;
    QAction *m_saveFiltered;
};
