#include "apppaths.h"

#include <QCoreApplication>
#include <QDir>

namespace {
QString &rootOverride()
{
    static QString folder;
    return folder;
}
} // namespace

namespace AppPaths {

QString root()
{
    return rootOverride().isEmpty() ? QCoreApplication::applicationDirPath() : rootOverride();
}

void setRoot(const QString &folder)
{
    rootOverride() = folder;
}

QString configFile()
{
    return root() + QStringLiteral("/conf/config.ini");
}

QString confFolder()
{
    return root() + QStringLiteral("/conf");
}

QString tmpFolder()
{
    return root() + QStringLiteral("/tmp");
}

void makeFolders()
{
    for (const auto *name : {"tmp", "download", "conf"}) {
        const QString folder = root() + QLatin1Char('/') + QLatin1String(name);
        if (!QDir(folder).exists())
            QDir().mkpath(folder);
    }
}

} // namespace AppPaths
