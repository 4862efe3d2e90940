// What an update server may send: a version text, and a header that names the
// package. The file stays in its folder under any name, on any system.

#include "packagename.h"
#include "versionnumber.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString text = QString::fromUtf8(reinterpret_cast<const char *>(data), static_cast<int>(size));
    VersionNumber::fromText(text);

    const QString name = PackageName::fromHeader(QStringLiteral("attachment; filename=") + text);
    if (name.isEmpty() || name == QLatin1String(".") || name == QLatin1String("..") || name.size() > 150)
        abort();
    for (const QChar c : name) {
        if (c < QLatin1Char(' ') || QStringLiteral("/\\:*?\"<>|").contains(c))
            abort();
    }
    return 0;
}
