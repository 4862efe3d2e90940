#pragma once

// The command line as Options, or what is wrong with it.

#include "options.h"

struct CommandLine
{
    Options options;
    QString fault; // for the user; empty where there is none

    // Without the program's name.
    static CommandLine parse(const QStringList &arguments);
    static QString help();
};
