#pragma once

// A TCP connection that accounts for its bytes: it queues up to a limit, delivers
// what is queued before it is closed, and knows what was dropped at the end. Reads
// no more from the system than its owner allows, so that a peer that sends without
// end is throttled by TCP instead of filling the memory.

#include <QTcpSocket>
#include <QTimer>

class LinkSocket : public QTcpSocket
{
    Q_OBJECT

public:
    static constexpr qint64 readBufferBytes = 64 * 1024;
    // A peer that reads nothing gets no more than this queued.
    static constexpr qint64 maxQueued = 16LL * 1024 * 1024;

    explicit LinkSocket(QObject *parent = nullptr);
    ~LinkSocket() override;

    // The bytes that were queued; 0 where it is not connected or being closed, -1
    // where too many are queued already. bytesWritten() reports what was handed over
    // to the system.
    qint64 send(const QByteArray &bytes);

    // Closes the connection when what is queued has been delivered, with
    // disconnected() at the end; at once where nothing is queued. A peer that reads
    // nothing for three seconds, or is not done after fifteen, gets no more. What
    // the system has taken and the peer has not acknowledged is waited for as well:
    // the system drops it when a peer sends to a closed connection.
    void finish();
    // From finish() until disconnected(); also while that is emitted.
    bool isFinishing() const { return m_finishing; }
    // Closes it at once.
    void drop();

    // After disconnected(): the bytes that had been queued and were not handed over,
    // or not acknowledged while that was waited for.
    qint64 undelivered() const { return m_undelivered; }

public slots:
    void checkProgress(); // at every tick while finishing

protected:
    void prepare(); // connected

private:
    void handleWritten(qint64 bytes);
    void endSendingWhenDelivered();

    QTimer m_timer;
    qint64 m_undelivered = 0; // while connected: queued
    bool m_finishing = false;
    bool m_sendingEnded = false; // the peer knows that nothing more comes
    qint64 m_unacknowledged = 0; // above 0 while nothing else is waited for
    int m_ticks = 0;             // of the timer, since finish()
    int m_idleTicks = 0;         // since the peer has read or sent anything
};
