#pragma once

// The name under which a downloaded package is stored, read from a header that is
// not trusted.

#include <QString>

namespace PackageName {

// The name of a package without a usable one; no update is started from it.
QString fallback();

// The plain file name in a Content-Disposition header, after "filename=":
// without quotes and without any folder. Characters with a meaning on some
// system become '_'. The fallback where nothing usable is left: no name,
// "." or "..", a device name of Windows, more than 150 characters.
QString fromHeader(const QString &contentDisposition);

} // namespace PackageName
