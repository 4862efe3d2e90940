#pragma once

// Who a file belongs to and who may do what with it, for the file that takes
// its place: owner, group and mode with set-user-ID on POSIX systems, the
// attributes that Qt knows elsewhere. Access lists are not among them.

#include <QFile>
#include <QString>

class FileAccess
{
public:
    static FileAccess of(const QString &fileName);

    // Gives all of it to another file. The set-user-ID bit goes where the owner
    // can't be kept. Returns what was lost, for the user; empty where nothing was.
    QString giveTo(const QString &fileName) const;

private:
#ifdef Q_OS_UNIX
    unsigned m_owner = 0;
    unsigned m_group = 0;
    unsigned m_mode = 0;
#else
    QFile::Permissions m_permissions;
#endif
};
