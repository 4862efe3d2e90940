#pragma once

// A receive display and, where the user opened them, its curves below or beside
// it. Open or not, and where, are settings, which all displays share. The curves
// are made when they are opened and dropped when they are closed.

#include "notice.h"

#include <QSplitter>

class CurvePane;
class QtTerminalWidget;

class CurveSplit : public QSplitter
{
    Q_OBJECT

public:
    // The display includes the terminal.
    CurveSplit(QtTerminalWidget *terminal, QWidget *display, QWidget *parent = nullptr);

    // Shows what the settings hold.
    void load();
    // Does the rest of an export now; false where it failed.
    bool completeExport();

signals:
    void choiceChanged(); // of the settings
    void notify(const Notice &notice);

private:
    void open();
    void close();
    void place();

    QtTerminalWidget *m_terminal;
    CurvePane *m_pane = nullptr;
    QAction *m_beside = nullptr;
};
