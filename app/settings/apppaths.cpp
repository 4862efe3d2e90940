#include "apppaths.h"

#include <QCoreApplication>
#include <QDir>
#include <QStandardPaths>

namespace {
QString &rootOverride()
{
    static QString folder;
    return folder;
}
// "cmake --install" leaves the one file beside the programs' folder, the portable
// folder has the other in itself: it may stand in a prefix, too.
bool isInPrefix()
{
    static const bool isThere = [] {
        const QDir folder(QCoreApplication::applicationDirPath());
        return folder.exists(QStringLiteral("../share/korvex/prefix-install")) &&
               !folder.exists(QStringLiteral("install-launcher.sh"));
    }();
    return isThere;
}

} // namespace

namespace AppPaths {

QString root()
{
    if (!rootOverride().isEmpty())
        return rootOverride();
    return isInPrefix() ? QStandardPaths::writableLocation(QStandardPaths::AppDataLocation)
                        : QCoreApplication::applicationDirPath();
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

QString manual()
{
    const QString folder =
        rootOverride().isEmpty() && isInPrefix()
            ? QCoreApplication::applicationDirPath() + QStringLiteral("/../share/doc/Korvex")
            : root() + QStringLiteral("/docs");
    return QDir::cleanPath(folder + QStringLiteral("/manual/zh_CN.md"));
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
