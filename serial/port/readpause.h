#pragma once

// Reads a fast serial line less often: while bytes flow, each wake-up costs more
// than what it brings, so reading pauses for some milliseconds, as long as the
// system's buffer surely holds what comes meanwhile. A line that is slow, or
// faster than its buffer allows, is read at once; so is one that answers.
//
// Only where the port waits by a socket notifier; elsewhere it does nothing.

#include <QObject>
#include <QPointer>
#include <QTimer>

class QSerialPort;
class QSocketNotifier;

class ReadPause : public QObject
{
    Q_OBJECT

public:
    explicit ReadPause(QObject *parent = nullptr);

    // An open port, which may be closed or deleted at any time.
    void setPort(const QSerialPort *port);
    // Pauses are at most so long; 0: there are none. 3 at first.
    void setMaxMs(int ms) { m_maxMs = ms; }
    // So many bytes were read; pauses where that is worth it.
    void handleRead(qint64 bytes, qint64 nowUs);
    // An answer may come: the port is read as soon as something is there.
    void end();

private:
    QPointer<QSocketNotifier> m_notifier;
    QTimer m_timer;
    int m_maxMs = 3;
    qint64 m_readAtUs = 0;
    int m_fastReads = 0;  // in a row
    int m_pausesLeft = 0; // until the size of a chunk is looked at again
    bool m_isPaused = false;
};
