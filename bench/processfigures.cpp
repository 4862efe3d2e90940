#include "processfigures.h"

#include <QFile>

#include <ctime>
#include <unistd.h>

namespace ProcessFigures {

double cpuSeconds()
{
    timespec used{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &used);
    return static_cast<double>(used.tv_sec) + static_cast<double>(used.tv_nsec) * 1e-9;
}

double residentMegabytes()
{
    QFile file(QStringLiteral("/proc/self/statm"));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    const double pages = file.readAll().split(' ').value(1).toDouble();
    return pages * static_cast<double>(sysconf(_SC_PAGESIZE)) / (1024 * 1024);
}

double anonymousMegabytes()
{
    QFile file(QStringLiteral("/proc/self/status"));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray &line : file.readAll().split('\n'))
        if (line.startsWith("RssAnon:"))
            return line.mid(8).trimmed().split(' ').first().toDouble() / 1024;
    return 0;
}

} // namespace ProcessFigures
