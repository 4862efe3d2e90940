#pragma once

// Writing conf/config.ini. Each access opens the file of its own, since several
// copies of the program share it.

#include <QString>
#include <QVariant>

#include <functional>

class QSettings;

namespace SettingsFile {

// Lets the function change the file, whose folder is made again where it is
// gone. False where the file cannot be written.
bool change(const std::function<void(QSettings &)> &change);

// Writes one value. A failure is logged and notified.
bool write(const QString &path, const QVariant &value);

// Called with the reason, in Chinese, when writing a value fails: once, and
// again only after a value could be written.
void setFailureHandler(std::function<void(const QString &reason)> handler);

} // namespace SettingsFile
