#pragma once

// One TCP connection, of a TcpServer's peer or to a server. Accounts for its
// bytes: it queues up to a limit, delivers what is queued before it closes, and
// knows what was dropped at the end. Reads no more from the system than its owner
// allows, so that TCP throttles a peer that sends without end. Shows nothing.

#include "peer.h"

#include <QTcpSocket>
#include <QTimer>

class TcpClient : public QTcpSocket
{
    Q_OBJECT

public:
    static constexpr qint64 readBufferBytes = 64 * 1024;
    // A peer that reads nothing gets no more than this queued.
    static constexpr qint64 maxQueuedBytes = 16LL * 1024 * 1024;

    explicit TcpClient(QObject *parent = nullptr);
    ~TcpClient() override;

    // Takes over an accepted connection; id: of its peer.
    bool adopt(qintptr descriptor, quint64 id);
    // The other end; also after disconnected().
    const Peer &peer() const { return m_peer; }

    // The server's key for this peer, set once.
    void setName(const QString &name) { m_name = name; }
    QString name() const { return m_name; }

    // While false, received bytes stay in the socket.
    void setReading(bool reading) { m_reading = reading; }
    // Hands out what has arrived, what the system holds included; limited, because
    // a peer may send without end.
    void readRest();

    // Returns the bytes that were queued: 0 where it is not connected or is being
    // closed, and from the moment when too many are queued until half of the limit
    // is free again. bytesWritten() reports what was handed over to the system.
    qint64 send(const QByteArray &bytes);
    bool isBlocked() const { return m_blocked; }

    // Closes the connection when what is queued has been delivered, with
    // disconnected() at the end; at once where nothing is queued. A peer that reads
    // nothing for three seconds, or is not done after fifteen, gets no more. What
    // the system has accepted and the peer has not acknowledged is waited for as well:
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
    void SltReadMessage();
    void checkProgress(); // at every tick while finishing

signals:
    void signalReadMessage(QString name, QByteArray data);
    void blockedChanged(bool blocked);

private:
    void prepare();
    void setBlocked(bool blocked);
    void handleWritten(qint64 bytes);
    void endSendingWhenDelivered();

    QString m_name;
    Peer m_peer;
    QTimer m_timer;
    qint64 m_undelivered = 0; // while connected: queued
    bool m_reading = true;
    bool m_blocked = false;
    bool m_finishing = false;
    bool m_sendingEnded = false; // the peer knows that nothing more comes
    qint64 m_unacknowledged = 0; // above 0 while nothing else is waited for
    qint64 m_held = 0;           // by the system, after sending has ended
    int m_ticks = 0;             // of the timer, since finish()
    int m_idleTicks = 0;         // since the peer has read or sent anything
};
