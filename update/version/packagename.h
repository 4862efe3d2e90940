#pragma once

// The name under which a downloaded package is stored, taken from a header that
// anybody may have written.

#include <QString>

namespace PackageName {

// What a package without a usable name is called; no update is started from it.
QString fallback();

// The plain file name in a Content-Disposition header, after "filename=":
// without quotes and without any folder. Characters that some system gives a
// meaning to become '_'. The fallback where nothing usable is left: no name,
// "." or "..", a device name of Windows, more than 150 characters.
QString fromHeader(const QString &contentDisposition);

} // namespace PackageName
