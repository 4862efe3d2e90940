#pragma once

// The board's end of a serial line made of a pseudo-terminal: what the program
// opens is device(). Never blocks; the caller's event loop runs in the waits.

#include <QByteArray>
#include <QString>

class PtyPeer
{
public:
    PtyPeer();
    ~PtyPeer();
    Q_DISABLE_COPY_MOVE(PtyPeer)

    QString device() const { return m_device; }
    int descriptor() const { return m_master; } // the board's end

    bool write(const QByteArray &bytes); // all of them, with the event loop running
    // Until the line takes no more for half a second; returns how many it took.
    int writeSome(const QByteArray &bytes);
    // What has arrived once it is as long as that, or whatever is there after
    // the time.
    QByteArray read(int count, int timeoutMs = 20000);
    void hangUp(); // the adapter is pulled out

private:
    int writeFor(const QByteArray &bytes, int timeoutMs); // without progress

    int m_master = -1;
    int m_slave = -1; // keeps the line up while the program has it closed
    QString m_device;
    QByteArray m_received;
};
