#include "runmark.h"

#include <QCoreApplication>
#include <QLockFile>

#include <memory>

namespace {

QString fileOf(const QString &folder, const QString &mark)
{
    return folder + QStringLiteral("/run_") + mark + QStringLiteral(".lock");
}

} // namespace

namespace RunMark {

QString text()
{
    return QString::number(QCoreApplication::applicationPid());
}

void hold(const QString &folder)
{
    static std::unique_ptr<QLockFile> lock;
    lock = std::make_unique<QLockFile>(fileOf(folder, text()));
    lock->setStaleLockTime(0);
    lock->tryLock(0); // where that fails, a crash is not noticed
}

bool hasEnded(const QString &folder, const QString &mark)
{
    if (mark == text())
        return false;
    QLockFile lock(fileOf(folder, mark)); // removed again, since it is had for a moment only
    lock.setStaleLockTime(0);             // a program may run for weeks
    return lock.tryLock(0);
}

} // namespace RunMark
