#pragma once

// "视图" in the row above a receive display: what the display shows beside the
// text, and whether rules color it. The settings own the choices; all displays share
// them.

#include "logmargin.h"

#include <QPushButton>

class QAction;
class QActionGroup;

class ViewMenu : public QPushButton
{
    Q_OBJECT

public:
    explicit ViewMenu(QWidget *parent = nullptr);

    LogMargin::Time time() const;
    bool copiesTimes() const;
    // Shows what the settings hold.
    void load();

signals:
    void changed();

private:
    void store();
    void editRules();

    QActionGroup *m_times;
    QAction *m_copyTimes;
    QAction *m_useRules;
};
