#include "filereason.h"

#include <QFileDevice>
#include <QFileInfo>

#include <cerrno>

#ifdef Q_OS_WIN
#include <qt_windows.h>
#endif

namespace {

struct Reason
{
    int code; // of the system
    const char *text;
};

#ifdef Q_OS_WIN
constexpr Reason kReasons[] = {
    {ERROR_ACCESS_DENIED, "没有权限"},
    {ERROR_WRITE_PROTECT, "磁盘是只读的"},
    {ERROR_DISK_FULL, "磁盘空间不足"},
    {ERROR_HANDLE_DISK_FULL, "磁盘空间不足"},
    {1295, "磁盘空间不足"}, // ERROR_DISK_QUOTA_EXCEEDED, which not every header has
    {ERROR_SHARING_VIOLATION, "文件正被其他程序使用"},
    {ERROR_LOCK_VIOLATION, "文件正被其他程序使用"},
    {ERROR_USER_MAPPED_FILE, "文件正被其他程序使用"},
    {ERROR_INVALID_NAME, "文件名无效"},
    {ERROR_FILENAME_EXCED_RANGE, "文件名太长"},
    {ERROR_TOO_MANY_OPEN_FILES, "打开的文件太多"},
    {ERROR_NOT_READY, "磁盘未就绪"},
    {ERROR_BAD_NETPATH, "网络路径不可用"},
    {ERROR_NETNAME_DELETED, "网络路径不可用"},
    {ERROR_BAD_NET_NAME, "网络路径不可用"},
    {225, "被安全软件阻止"}, // ERROR_VIRUS_INFECTED
    {ERROR_CRC, "磁盘读写错误"},
    {ERROR_IO_DEVICE, "磁盘读写错误"},
};
#else
constexpr Reason kReasons[] = {
    {EACCES, "没有权限"},
    {EPERM, "没有权限"},
    {EROFS, "磁盘是只读的"},
    {ENOSPC, "磁盘空间不足"},
    {EDQUOT, "磁盘空间不足"},
    {EFBIG, "磁盘空间不足或文件过大"},
    {ETXTBSY, "文件正被其他程序使用"},
    {EBUSY, "文件正被其他程序使用"},
    {ENAMETOOLONG, "文件名太长"},
    {EMFILE, "打开的文件太多"},
    {ENFILE, "打开的文件太多"},
    {EIO, "磁盘读写错误"},
};
#endif

// What the file itself shows, where the system's error is none of the above.
QString fromState(const QFileDevice &file)
{
    const QFileInfo info(file.fileName());
    if (info.isDir())
        return QStringLiteral("这是一个文件夹");
    if (!QFileInfo(info.path()).isDir())
        return QStringLiteral("文件夹不存在");
    const bool reads = file.error() == QFileDevice::ReadError;
    if (info.exists() && !(reads ? info.isReadable() : info.isWritable()))
        return QStringLiteral("没有权限");
    switch (file.error()) {
    case QFileDevice::ReadError:
        return QStringLiteral("文件无法读取");
    case QFileDevice::WriteError:
        return QStringLiteral("磁盘空间不足或无法写入"); // the system gives no reason for a cut write
    case QFileDevice::OpenError:
        return info.exists() ? QStringLiteral("文件无法打开") : QStringLiteral("文件不存在");
    case QFileDevice::ResourceError:
        return QStringLiteral("系统资源不足");
    case QFileDevice::PermissionsError:
        return QStringLiteral("没有权限");
    default:
        return QStringLiteral("文件无法访问");
    }
}

} // namespace

namespace FileReason {

QString of(const QFileDevice &file)
{
    if (file.error() == QFileDevice::NoError)
        return QString();
    // The code itself is lost; Qt has made its text by this function.
    const QString text = file.errorString();
    for (const Reason &reason : kReasons)
        if (text == qt_error_string(reason.code))
            return QString::fromUtf8(reason.text);
    return fromState(file);
}

} // namespace FileReason
