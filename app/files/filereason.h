#pragma once

// Why a file could not be opened, read or written, in the user's language. Qt
// keeps the system's own text for it, English on one system and translated on
// another.

#include <QString>

class QFileDevice;

namespace FileReason {

// A few Chinese words for the file's last error, such as "没有权限"; empty
// where it has none.
QString of(const QFileDevice &file);

} // namespace FileReason
