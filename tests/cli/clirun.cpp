#include "clirun.h"

#include <QtTest>

#include <csignal>
#include <unistd.h>

CliRun::CliRun(const QStringList &arguments, int output)
{
    if (output >= 0)
        setStandardOutputFile(QString("/proc/%1/fd/%2").arg(getpid()).arg(output));
    start(CLI_PATH, arguments);
}

CliRun::~CliRun()
{
    kill();
    waitForFinished();
}

int CliRun::status()
{
    (void)QTest::qWaitFor([this] { return state() == NotRunning; }, 30000);
    return state() == NotRunning && exitStatus() == NormalExit ? exitCode() : -1;
}

QByteArray CliRun::output()
{
    return m_output += readAllStandardOutput();
}

bool CliRun::printed(const QByteArray &text)
{
    return QTest::qWaitFor([&] { return output().contains(text); }, 30000);
}

bool CliRun::told(const QString &text)
{
    return QTest::qWaitFor([&] { return (m_messages += readAllStandardError()).contains(text.toUtf8()); },
                           30000);
}

void CliRun::interrupt()
{
    waitForStarted();
    ::kill(static_cast<pid_t>(processId()), SIGINT);
}
