#include "boardprocess.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QRegularExpression>
#include <QThread>

void BoardProcess::start(const QStringList &options, const QString &port)
{
    m_process.setStandardOutputFile(QProcess::nullDevice());
    QStringList all = options;
    if (!port.isEmpty())
        all += {QStringLiteral("--port"), port};
    m_process.start(QCoreApplication::applicationDirPath() + QStringLiteral("/boardsim"), all);
    if (!m_process.waitForStarted())
        qFatal("boardsim does not start");
    const QString link = qEnvironmentVariable("KORVEX_VIRTUAL_PORTS") + QLatin1Char('/') + port;
    QElapsedTimer clock;
    clock.start();
    while (!port.isEmpty() && !QFileInfo(link).isSymLink()) {
        if (clock.hasExpired(5000))
            qFatal("boardsim makes no port");
        QThread::msleep(5);
    }
}

void BoardProcess::end()
{
    if (m_process.state() == QProcess::NotRunning)
        return;
    m_process.terminate();
    m_process.waitForFinished(5000);
    m_statistics = m_process.readAllStandardError();
}

qint64 BoardProcess::counted(const QString &name) const
{
    const QRegularExpression number(QStringLiteral("\\b%1=(\\d+)").arg(name));
    return number.match(QString::fromLocal8Bit(m_statistics)).captured(1).toLongLong();
}
