#pragma once

// The log of a page's session: what its links receive and send, and when they open and
// close, goes to a file as it happens, whatever is shown or cleared. It goes on when a
// link is opened again.

#include "link.h"
#include "logwriter.h"

#include <QTimer>

#include <functional>
#include <memory>

class SessionLog : public QObject
{
    Q_OBJECT

public:
    explicit SessionLog(QObject *parent = nullptr);
    ~SessionLog() override;

    // name: the open link for the reader, such as "COM3 115200".
    void watch(Link *link, const std::function<QString()> &name);

    // codecIndex: of the notes in the file, see TextCodec. opensNow: makes the file before
    // there is something to write.
    void start(LogForm::Kind form, const LogFiles::Target &target, int codecIndex, bool opensNow);
    // What was recorded is still written, unless the disk refuses it.
    void stop();
    bool isOn() const { return m_writer && !m_isStopping; }
    // Nothing is being written any more.
    bool isFinished() const { return !m_writer; }
    // As it was some time ago; see changed().
    const LogWriter::Status &status() const { return m_status; }

signals:
    void changed(); // isOn(), isFinished() or status()
    // For the user: the disk refuses, or accepts again, or bytes were lost.
    void failed(const QString &notice);
    void recovered(const QString &notice);

private:
    void add(LogForm::Direction direction, qint64 timeUs, const QByteArray &bytes, const QByteArray &peer);
    void note(const QString &text);
    void handleState(const Link *link, const std::function<QString()> &name);
    void poll();

    std::unique_ptr<LogWriter> m_writer;
    LogWriter::Status m_status;
    QTimer m_poll;
    int m_codec = 0;
    qint64 m_lost = 0; // bytes, not noted in the file yet
    bool m_isStopping = false;
};
