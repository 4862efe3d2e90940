#pragma once

// The sets of commands on disk, a CSV file each in conf/commands, shared by all pages
// and copies of the program.

#include "command.h"

#include <QMap>
#include <QStringList>
#include <QVector>

class CommandStore
{
public:
    static constexpr int maxNameLength = 24; // characters

    QStringList names() const; // sorted

    // A file that is no set is kept under another name, and told with it.
    QVector<Command> read(const QString &name, QString *fault);
    // Where the file has been changed since it was read here, the commands go into a set
    // of another name, which is returned. Empty, with a reason, where nothing was saved.
    QString save(const QString &name, const QVector<Command> &commands, QString *reason);
    // Another page or copy has written it since it was read here.
    bool isOutdated(const QString &name) const;
    bool remove(const QString &name);
    bool rename(const QString &name, const QString &to);

private:
    QMap<QString, QByteArray> m_contents; // of the files, as read or written last
};
