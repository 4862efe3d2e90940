#pragma once

// What the command line asks for, or what is wrong with it.

#include <QString>
#include <QStringList>

struct LaunchOptions
{
    enum class Action { Run, ShowHelp, ShowVersion };

    Action action = Action::Run;
    QString fault; // for the user; empty where there is none

    bool isDemo = false;
    QString notice;     // shown after the start, the unpacker's where an update failed
    int tool = -1;      // index of its tab; -1: the one shown last
    QString profile;    // a name
    QString port;       // of a serial port; empty: as remembered
    int baudRate = 0;   // 0: as remembered
    bool opens = false; // the link
    QString logFile;    // absolute; empty: none
    QString file;       // for the binary editor, absolute

    // Without the program's name.
    static LaunchOptions parse(const QStringList &arguments);
    static QString help();
    static QString nameOf(int tool); // on the command line
};
