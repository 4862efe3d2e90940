#include "boardprocess.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>

BoardProcess::BoardProcess(const QString &port, const QString &sharedFolder)
    : m_port(port)
    , m_folder(sharedFolder.isEmpty() ? m_ownFolder.path() : sharedFolder)
{
    QObject::connect(&m_process, &QProcess::readyReadStandardOutput, &m_process, [this] {
        while (m_process.canReadLine())
            m_events << QString::fromLocal8Bit(m_process.readLine()).trimmed();
    });
    QObject::connect(&m_process, &QProcess::readyReadStandardError, &m_process,
                     [this] { m_errors += m_process.readAllStandardError(); });
}

BoardProcess::~BoardProcess()
{
    if (m_process.state() != QProcess::NotRunning && !stop())
        m_process.kill();
    m_process.waitForFinished();
}

bool BoardProcess::start(const QStringList &options)
{
    m_events.clear();
    m_errors.clear();
    m_process.start(QStringLiteral(BOARDSIM_PATH),
                    QStringList{QStringLiteral("--folder"), folder(), QStringLiteral("--port"), m_port} +
                        options);
    return waitForEvent(QStringLiteral("plugged"));
}

bool BoardProcess::startOnNetwork(const QString &mode, const QStringList &options)
{
    m_events.clear();
    m_errors.clear();
    m_process.start(QStringLiteral(BOARDSIM_PATH), QStringList{QStringLiteral("--mode"), mode} + options);
    return mode == QLatin1String("tcp-client") ? m_process.waitForStarted()
                                               : waitForEvent(QStringLiteral("bound"));
}

quint16 BoardProcess::netPort() const
{
    return m_events.value(0).section(QLatin1Char(' '), -1).toUShort();
}

bool BoardProcess::stop()
{
    m_process.terminate();
    return m_process.waitForFinished(10000) && m_process.exitStatus() == QProcess::NormalExit &&
           m_process.exitCode() == 0;
}

bool BoardProcess::waitForEvent(const QString &text, int times, int timeoutMs)
{
    QElapsedTimer clock;
    clock.start();
    for (;;) {
        int found = 0;
        for (const QString &event : qAsConst(m_events))
            found += event.startsWith(text);
        if (found >= times)
            return true;
        if (m_process.state() == QProcess::NotRunning || clock.hasExpired(timeoutMs))
            return false;
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents | QEventLoop::AllEvents, 20);
        m_process.waitForReadyRead(10);
    }
}

QHash<QString, qint64> BoardProcess::statistics() const
{
    QHash<QString, qint64> result;
    for (const QString &field : errors().simplified().split(QLatin1Char(' '))) {
        const QStringList parts = field.split(QLatin1Char('='));
        if (parts.size() == 2)
            result.insert(parts.at(0), parts.at(1).toLongLong());
    }
    return result;
}
