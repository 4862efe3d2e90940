#include "settingsfile.h"

#include "apppaths.h"

#include <QDebug>
#include <QFileInfo>
#include <QSettings>
#include <QStorageInfo>

namespace {

struct FailureNotice
{
    std::function<void(const QString &)> handler;
    bool isGiven = false; // since the last value that could be written
};

FailureNotice &failureNotice()
{
    static FailureNotice notice;
    return notice;
}

// QSettings puts an empty or cut file in the old one's place, and reports no
// error, when the disk becomes full while it writes. The file is some kilobytes
// long.
bool diskHasRoom()
{
    constexpr qint64 enough = 64 * 1024;
    const QStorageInfo disk(AppPaths::confFolder());
    return !disk.isValid() || disk.bytesAvailable() >= enough;
}

// Why the file could not be written. QSettings knows no reason.
QString failureReason()
{
    if (!diskHasRoom())
        return QStringLiteral("磁盘空间不足");
    if (!QFileInfo(AppPaths::confFolder()).isDir())
        return QStringLiteral("程序目录下无法建立文件夹conf");
    return QStringLiteral("程序目录下的文件夹conf没有写入权限");
}

} // namespace

namespace SettingsFile {

bool change(const std::function<void(QSettings &)> &change)
{
    if (!diskHasRoom())
        return false;
    QSettings file(AppPaths::configFile(), QSettings::IniFormat);
    change(file);
    file.sync();
    return file.status() == QSettings::NoError;
}

bool write(const QString &path, const QVariant &value)
{
    if (change([&](QSettings &file) { file.setValue(path, value); })) {
        failureNotice().isGiven = false;
        return true;
    }
    qWarning() << "cannot write" << path << "to" << AppPaths::configFile();
    FailureNotice &notice = failureNotice();
    if (notice.handler && !notice.isGiven) {
        notice.isGiven = true;
        notice.handler(failureReason());
    }
    return false;
}

void setFailureHandler(std::function<void(const QString &reason)> handler)
{
    failureNotice() = {std::move(handler), false};
}

} // namespace SettingsFile
