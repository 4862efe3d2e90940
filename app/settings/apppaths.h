#pragma once

// The folders and files that the program keeps beside its executable.

#include <QString>

namespace AppPaths {

// The folder that holds "conf", "tmp" and "download": the executable's own, or
// the user's folder for the program's data where it is installed in a prefix; a
// test puts another one in its place. Without a trailing slash.
QString root();
void setRoot(const QString &folder);

QString configFile(); // conf/config.ini
QString confFolder(); // conf
QString tmpFolder();  // tmp: spool files of the running program

QString manual(); // whether it is there or not

// Makes "tmp", "download" and "conf" where they are missing. A folder that
// cannot be made is skipped; a later write there reports the failure.
void makeFolders();

} // namespace AppPaths
