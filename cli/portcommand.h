#pragma once

// A command that works on an open port. Opens it, keeps the log, ends when it is
// told to and reports the exit status when the link is closed.

#include "exitstatus.h"
#include "linkkeeper.h"
#include "options.h"
#include "receivedlog.h"

class PortCommand : public QObject
{
    Q_OBJECT

public:
    explicit PortCommand(const Options &options);

    void start();
    // Ctrl+C: ends in an orderly way; a second time, what has not left is dropped.
    void interrupt();

signals:
    void ended(ExitStatus status); // once; from the event loop

protected:
    const Options &options() const { return m_options; }
    Link *link() const { return m_keeper.link(); }
    bool isFinishing() const { return m_isFinishing; }
    // From now on a port that is lost ends the command.
    void stopTrying() { m_keeper.setKeepsTrying(false); }

    virtual void prepare() {}        // before the port is opened; may finish()
    virtual void handleOpened() = 0; // each time
    virtual void handleReceived(const QByteArray &bytes, qint64 arrivalUs) = 0;
    virtual void handleLost() {} // it is tried again, or the command ends
    // Ctrl+C: what the command is for has not happened.
    virtual void handleInterrupt() { finish(ExitStatus::Refused, QStringLiteral("已中断")); }

    // Ends the command: closes the link, which delivers what was accepted.
    void finish(ExitStatus status);
    void finish(ExitStatus status, const QString &message);
    // Text as the device gets it.
    QByteArray encoded(const QString &text) const;

private:
    void handleBytes(const QByteArray &bytes, qint64 arrivalUs);
    void handleDropped(qint64 bytes);
    void end();

    Options m_options;
    LinkKeeper m_keeper;
    ReceivedLog m_log;
    ExitStatus m_status = ExitStatus::Done;
    bool m_isFinishing = false;
    bool m_isInterrupted = false;
    bool m_isEnded = false;
};
