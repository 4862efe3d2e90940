#include "fileaccess.h"

#include <QStringList>

#ifdef Q_OS_UNIX
#include <sys/stat.h>
#include <unistd.h>
#endif

#ifdef Q_OS_UNIX

FileAccess FileAccess::of(const QString &fileName)
{
    FileAccess access;
    struct stat state = {};
    if (::stat(QFile::encodeName(fileName).constData(), &state) == 0) {
        access.m_owner = state.st_uid;
        access.m_group = state.st_gid;
        access.m_mode = state.st_mode & 07777;
    }
    return access;
}

QString FileAccess::applyTo(const QString &fileName) const
{
    const QByteArray name = QFile::encodeName(fileName);
    FileAccess now = of(fileName);
    if ((now.m_owner != m_owner || now.m_group != m_group) &&
        ::chown(name.constData(), m_owner, m_group) != 0 && // the user may be in the group
        ::chown(name.constData(), static_cast<uid_t>(-1), m_group) != 0)
        qWarning("can't keep the owner of a saved file");
    now = of(fileName);
    const unsigned mode =
        m_mode & ~(now.m_owner != m_owner ? S_ISUID : 0u) & ~(now.m_group != m_group ? S_ISGID : 0u);
    const bool modeSet = ::chmod(name.constData(), static_cast<mode_t>(mode)) == 0;
    QStringList lost;
    if (now.m_owner != m_owner)
        lost += QStringLiteral("所有者");
    if (now.m_group != m_group)
        lost += QStringLiteral("用户组");
    if (!modeSet || of(fileName).m_mode != m_mode)
        lost += (m_mode & ~mode) != 0 ? QStringLiteral("setuid/setgid标志") : QStringLiteral("权限");
    return lost.join(QStringLiteral("、"));
}

#else

FileAccess FileAccess::of(const QString &fileName)
{
    FileAccess access;
    access.m_permissions = QFile::permissions(fileName);
    return access;
}

QString FileAccess::applyTo(const QString &fileName) const
{
    return QFile::setPermissions(fileName, m_permissions) ? QString() : QStringLiteral("权限");
}

#endif
