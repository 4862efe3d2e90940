#include "apppaths.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

namespace {
QString &rootOverride()
{
    static QString folder;
    return folder;
}
// "cmake --install" leaves the file; the portable folder has none.
bool isInPrefix()
{
    static const bool isThere = QFileInfo::exists(QCoreApplication::applicationDirPath() +
                                                  QStringLiteral("/../share/korvex/prefix-install"));
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
