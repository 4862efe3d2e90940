#pragma once

// A simulated board (tools/boardsim) as a child process, with its link in a
// temporary folder of its own or in one that several boards share. Every wait has a limit, runs the caller's
// event loop and says whether what was waited for came.

#include <QHash>
#include <QProcess>
#include <QStringList>
#include <QTemporaryDir>

class BoardProcess
{
public:
    explicit BoardProcess(const QString &port = QStringLiteral("COM3"), const QString &sharedFolder = {});
    ~BoardProcess();

    // Starts it with "--folder .. --port .." and the given options and waits
    // until its port is there.
    bool start(const QStringList &options);
    // A board on the network; one that is reached there is waited for.
    bool startOnNetwork(const QString &mode, const QStringList &options);
    quint16 netPort() const; // its own, where it has one
    // Ends it by SIGTERM and waits; true if it ended with code 0.
    bool stop();

    // Waits until a line that begins with the text is among its messages the
    // given number of times since the start.
    bool waitForEvent(const QString &text, int times = 1, int timeoutMs = 10000);

    QString folder() const { return m_folder; }
    QString port() const { return m_port; }
    QString link() const { return m_folder + QLatin1Char('/') + m_port; }
    QStringList events() const { return m_events; }
    // After stop(): "written", "read", "dropped" (bytes), "blocked_ms".
    QHash<QString, qint64> statistics() const;
    QString errors() const { return QString::fromLocal8Bit(m_errors); }
    QProcess &process() { return m_process; }

private:
    QString m_port;
    QTemporaryDir m_ownFolder;
    QString m_folder;
    QProcess m_process;
    QStringList m_events;
    QByteArray m_errors;
};
