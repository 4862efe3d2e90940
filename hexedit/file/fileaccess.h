#pragma once

// The owner and the access rights of a file, to be applied to the file that
// replaces it: owner, group and mode with set-user-ID on POSIX systems, the
// attributes that Qt knows elsewhere. Access lists are not among them.

#include <QFile>
#include <QString>

class FileAccess
{
public:
    static FileAccess of(const QString &fileName);

    // Applies all of it to another file, without the set-user-ID bit where the
    // owner can't be kept. Returns what was lost, for the user; empty if nothing.
    QString applyTo(const QString &fileName) const;

private:
#ifdef Q_OS_UNIX
    unsigned m_owner = 0;
    unsigned m_group = 0;
    unsigned m_mode = 0;
#else
    QFile::Permissions m_permissions;
#endif
};
