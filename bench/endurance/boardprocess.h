#pragma once

// A simulated board in a process of its own, and what it counted.

#include <QProcess>

class BoardProcess
{
public:
    ~BoardProcess() { end(); }

    // Options of boardsim. On a virtual port where `port` is given; then returns
    // when the port is there.
    void start(const QStringList &options, const QString &port = {});
    // Ends it and reads its statistics; once it has ended it does nothing.
    void end();
    // "written" and so on; only after the end.
    qint64 counted(const QString &name) const;

private:
    QProcess m_process;
    QByteArray m_statistics;
};
