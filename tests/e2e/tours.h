#pragma once

// The tours through the program. Each test function has a fresh stage.

#include "stage.h"

#include <memory>

class Tour : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

protected:
    Stage &stage() { return *m_stage; }
    template <class Widget = QWidget> Widget *find(const char *name) { return m_stage->find<Widget>(name); }
    bool click(const char *name);
    bool typeInto(const char *name, const QString &text);
    bool choose(const char *comboBox, const QString &entry);
    QString textOf(const char *label);
    // Does what opens a question, which has to be this one, and clicks a button.
    bool answer(const std::function<bool()> &opens, const QString &question, const char *button);

private:
    std::unique_ptr<Stage> m_stage;
};

class LinkTour : public Tour
{
    Q_OBJECT

private slots:
    void talksToABoard();
    void findsInARunningLog();
    void servesBoards();
    void showsTwoCameras();
};

class PidTour : public Tour
{
    Q_OBJECT

private slots:
    void tunesALoop();
    void holdsTheViewAndReturns();
    void stopsTheMotorWhenQuitting();
};

class HexTour : public Tour
{
    Q_OBJECT

private slots:
    void editsAndSaves();
    void asksBeforeEditsAreLost();
};

// The window around the tools, and the end.
class WindowTour : public Tour
{
    Q_OBJECT

private slots:
    void restoresTheSettings();
    void savesWhenClosing();
};
