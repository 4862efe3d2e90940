#pragma once

// The way to a board over any transport: a serial port, a TCP server and
// its clients, a connection to a server, datagrams. Each implementation adds
// an open() with its own settings; everything else is the same for all.
//
// Closing takes time: a closing link first lets what it accepted for sending
// leave, for a limited time, and reports what did not. The window never waits
// for it.
//
// Knows no widget and no setting.

#include "peer.h"

#include <QByteArray>
#include <QObject>
#include <QVector>

class Link : public QObject
{
    Q_OBJECT

public:
    enum class State {
        Closed,
        Opening, // a connection is being made
        Open,
        Closing, // accepts nothing; what was accepted is leaving
    };
    Q_ENUM(State)

    static constexpr quint64 allPeers = 0;

    explicit Link(QObject *parent = nullptr);
    ~Link() override;

    State state() const { return m_state; }
    bool isOpen() const { return m_state == State::Open; }
    // Why it was not opened, or why an open link ended; for the user. Empty
    // while it is open and where its owner closed it.
    QString reason() const { return m_reason; }

    // Queues the bytes for one peer or for all. Returns the bytes that were
    // accepted, times the number of peers that they are for: 0 where there is
    // no such peer, or where too much is queued for it already.
    qint64 send(const QByteArray &bytes, quint64 peer = allPeers);
    // Why the last send() accepted nothing; for the user. Empty where it accepted
    // something and while the link is not open.
    QString refusal() const { return m_refusal; }
    virtual qint64 pendingBytes() const = 0; // accepted and not handed over yet

    // Bytes that have already arrived are reported before the link is closed. A
    // second call, while it is closing, drops what has not left yet.
    virtual void close() = 0;

    virtual QVector<Peer> peers() const { return {}; }
    // How notices name the peer; also while peerLeft() is emitted.
    virtual QString peerName(const Peer &peer) const { return peer.text(); }
    // As close(), for one of several peers.
    virtual void closePeer(quint64 peer);

    // Back-pressure: while false, nothing is read. Bytes stay with the system,
    // and a sender that can wait, waits. A closing link reads what is there
    // all the same.
    void setReading(bool reading);
    bool isReading() const { return m_reading; }
    // Reports what has arrived, although reading may be paused.
    void readPending();

    // The tool that uses the link, as the user knows it. A link that finds its
    // port or device in use says which tool of this program has it.
    void setTool(const QString &tool) { m_tool = tool; }

    // Microseconds since 1970 by a clock that only moves forward: the wall clock
    // when the program started and the time since then.
    static qint64 nowUs();

signals:
    void stateChanged(Link::State state);
    // arrivalUs: when they were read, see nowUs().
    void received(const QByteArray &bytes, qint64 arrivalUs, const Peer &from);
    // Accepted for one peer or for all.
    void sent(const QByteArray &bytes, qint64 timeUs, quint64 peer);
    void peerJoined(const Peer &peer);
    // reason: empty where it left in an orderly way or was closed here.
    void peerLeft(const Peer &peer, const QString &reason);
    // So many accepted bytes were handed over to the system for that peer.
    void handedOver(qint64 bytes, const Peer &to);
    // So many accepted bytes will not leave any more. Before peerLeft() and
    // before the state becomes Closed.
    void dropped(qint64 bytes, const Peer &peer);
    // The peer accepts no more at present; or does again.
    void blocked(const Peer &peer, bool isBlocked);

protected:
    // What send() does.
    virtual qint64 accept(const QByteArray &bytes, quint64 peer) = 0;
    // Emits stateChanged() if it changes.
    void setState(State state, const QString &reason = {});
    void setRefusal(const QString &refusal) { m_refusal = refusal; }
    // What the system gives to one program only, "TCP 8000" or a device; forgotten
    // when the link is closed.
    void setResource(const QString &resource) { m_resource = resource; }
    // The tool of the link that has the resource; empty where none has it.
    static QString toolUsing(const QString &resource);
    // isReading() has changed. When it becomes true, what has arrived meanwhile
    // is to be read.
    virtual void readingChanged() = 0;

private:
    State m_state = State::Closed;
    bool m_reading = true;
    QString m_reason;
    QString m_refusal;
    QString m_tool;
    QString m_resource;
};
