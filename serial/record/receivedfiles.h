#pragma once

// Writing received data to files: the text that the display has shown, or the
// bytes as they came. Large amounts are written piece by piece, with received
// data still being taken in between.

#include <QString>

class ByteSpool;
class QtTerminalWidget;

namespace ReceivedFiles {

// Replaces the file only when all was written; false, with the reason, leaves
// it as it was.
bool saveText(QtTerminalWidget &terminal, const QString &fileName, int codecIndex, QString *error);
bool saveBytes(const ByteSpool &spool, const QString &fileName, QString *error);

// A name for files made now in a folder, without suffix, such as
// "recv_20260131_235959"; a number is added where one of the suffixes exists.
// The file of the first suffix is made, empty, so that no other copy of the
// program takes the name while it is written.
QString reserveDatedName(const QString &folder, const QStringList &suffixes);

} // namespace ReceivedFiles
