#pragma once

// A serial line between the program and a transfer program (of lrzsz) in another
// process, on which single bytes can be flipped, lost or doubled.

#include "ptypeer.h"

#include <QEventLoop>
#include <QProcess>
#include <QTimer>

#include <functional>

// "flip@1500", "lose@3", "double@0": the byte with that number, in one direction.
struct LineFault
{
    explicit LineFault(const QString &text = {})
        : kind(text.section('@', 0, 0))
        , at(text.isEmpty() ? -1 : text.section('@', 1).toLongLong())
    {
    }
    QByteArray apply(QByteArray bytes)
    {
        const qint64 index = at - passed;
        passed += bytes.size();
        if (index < 0 || index >= bytes.size() || at < 0)
            return bytes;
        const int place = static_cast<int>(index);
        if (kind == "flip")
            bytes[place] = static_cast<char>(bytes.at(place) ^ 0x10);
        else if (kind == "lose")
            bytes.remove(place, 1);
        else
            bytes.insert(place, bytes.at(place));
        return bytes;
    }

    QString kind;
    qint64 at;
    qint64 passed = 0;
};

class PeerLine
{
public:
    // The port that the program opens.
    QString device() const { return m_line.device(); }

    LineFault toProgram, toPeer;

    bool start(const QString &folder, const QString &command)
    {
        m_peer.setWorkingDirectory(folder);
        // The shell opens it, or it would become the terminal of a test that leads a session.
        m_peer.start("sh", {"-c", "exec " + command + " <\"$1\"", "sh", m_terminal.device()});
        // Joins the line that the program opens to the terminal that the peer reads. What the
        // peer says comes through a pipe: on the terminal its last word would be lost when it
        // ends.
        QObject::connect(&m_cable, &QTimer::timeout, &m_peer, [this] {
            if (std::exchange(m_busy, true))
                return; // writing runs the event loop
            m_terminal.write(toPeer.apply(m_line.read(0)));
            m_line.write(toProgram.apply(m_peer.readAllStandardOutput()));
            m_busy = false;
        });
        m_cable.start(1);
        return m_peer.waitForStarted();
    }

    // An event loop of its own: the waits of the test library sleep in between.
    static bool waitUntil(const std::function<bool()> &isDone, int seconds = 110)
    {
        QEventLoop loop;
        QTimer check;
        QObject::connect(&check, &QTimer::timeout, &loop, [&] {
            if (isDone())
                loop.quit();
        });
        check.start(5);
        QTimer::singleShot(seconds * 1000, &loop, &QEventLoop::quit);
        if (!isDone())
            loop.exec();
        return isDone();
    }
    // Whether it ends by itself, and well.
    bool waitForPeer()
    {
        return waitUntil([this] { return m_peer.state() == QProcess::NotRunning; }, 60) &&
               m_peer.exitStatus() == QProcess::NormalExit && m_peer.exitCode() == 0;
    }
    QByteArray peerErrors() { return m_peer.readAllStandardError(); }
    void endPeer()
    {
        m_peer.kill();
        m_peer.waitForFinished();
    }
    PtyPeer &line() { return m_line; }

private:
    PtyPeer m_line;
    PtyPeer m_terminal;
    QProcess m_peer;
    QTimer m_cable;
    bool m_busy = false;
};
