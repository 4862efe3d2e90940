#pragma once

// "视图" in the row above the PID chart: how much time it shows and how, and what can
// be done with the record. Choices are settings; the rest is asked for by signals.

#include <QPushButton>

class QAction;
class QActionGroup;

class PidViewMenu : public QPushButton
{
    Q_OBJECT

public:
    explicit PidViewMenu(QWidget *parent = nullptr);

    void load(); // shows what the settings hold
    // Commands of the record that belong to others, below the choices.
    QMenu *recordMenu() const { return m_record; }

signals:
    void changed(); // one of the settings
    void namesRequested();

private:
    QAction *addToggle(const QString &text, const char *name);

    QActionGroup *m_windows;
    QAction *m_axesByUnit;
    QAction *m_largeValues;
    QAction *m_analysis;
    QMenu *m_record;
};
