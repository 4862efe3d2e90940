#pragma once

// Tells files of a running program from those that a crash left behind. Several copies of
// the program may share a folder.

#include <QString>

namespace RunMark {

// Part of the names of this process's files: digits.
QString text();

// From now until its end, this process is seen to be running in the folder.
void hold(const QString &folder);

// Whether the process with this mark does not run any more; it held the folder before it
// made files there.
bool hasEnded(const QString &folder, const QString &mark);

} // namespace RunMark
