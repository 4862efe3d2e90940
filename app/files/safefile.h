#pragma once

// Files that are replaced completely or not at all.

#include <QByteArray>
#include <QString>

class QSaveFile;

namespace SafeFile {

// Puts the file written in the old one's place. False when any of it did not
// reach the disk; the old file then stays, and `error` (if given) holds the
// reason, see FileReason. (QSaveFile::commit() alone misses an error of its last
// flush and would put a cut file in place.)
bool commit(QSaveFile &file, QString *error = nullptr);

// Replaces a file's content and makes its folder where that is missing. On
// failure `error` (if given) holds the reason.
bool write(const QString &fileName, const QByteArray &content, QString *error = nullptr);

// Reads a file of up to maxBytes. True without touching the content where there
// is no such file; on failure, also of a longer one, `error` holds the reason.
bool read(const QString &fileName, qint64 maxBytes, QByteArray *content, QString *error);

} // namespace SafeFile
