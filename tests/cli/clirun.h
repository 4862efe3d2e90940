#pragma once

// A run of the program, with pipes for its standard streams or another output.

#include <QProcess>

class CliRun : public QProcess
{
public:
    explicit CliRun(const QStringList &arguments, int output = -1);
    ~CliRun() override;

    // -1 where it does not end.
    int status();
    // Whether that comes on the stream, in what has come so far.
    bool printed(const QByteArray &text);
    bool told(const QString &text);
    QByteArray output(); // all so far
    void interrupt();    // as Ctrl+C

private:
    QByteArray m_output;
    QByteArray m_messages;
};
