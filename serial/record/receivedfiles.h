#pragma once

// Writes received data to files: the text that was shown, or the bytes as they
// came. Large amounts are written piece by piece; timers and sockets run in
// between.

#include <QString>

class ByteSpool;
class LineSet;
class LineStore;
class ReceivedText;
struct LineStamp;

namespace ReceivedFiles {

// Replaces the file when all was written; false, with the reason, leaves it as
// it was. Data that arrives meanwhile is not part of it.
// With a stamp, each line stands behind its own.
bool saveText(const ReceivedText &received, const LineStamp *stamp, const QString &fileName, int codecIndex,
              QString *error);
// Some of the lines, each up to LineStore::maxExtractedLine.
bool saveLines(const LineStore &store, const LineSet &lines, const LineStamp *stamp, const QString &fileName,
               int codecIndex, QString *error);
bool saveText(const QString &text, const QString &fileName, int codecIndex, QString *error);
bool saveBytes(const ByteSpool &spool, const QString &fileName, QString *error);

// A name for files made now in a folder, without suffix, such as
// "recv_20260131_235959"; a number is added where one of the suffixes exists.
// Makes an empty file of the first suffix, so that no other copy of the program
// writes to the same name.
QString reserveDatedName(const QString &folder, const QStringList &suffixes);

} // namespace ReceivedFiles
