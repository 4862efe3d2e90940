#pragma once

// Received bytes that a crashed program left in its folder for spool files.

#include <QDateTime>
#include <QString>
#include <QVector>

namespace Leftovers {

struct File
{
    QString fileName;
    QString stem; // of the page's spool, "serial"
    qint64 size = 0;
    QDateTime time; // of the last byte
};

// Those with one of the stems, oldest first. Other spool files of programs that do not run
// any more, and empty ones, are removed: they hold nothing that is not in these.
QVector<File> find(const QString &folder, const QStringList &stems);

} // namespace Leftovers
