#pragma once

// A page's side of its links: opens what the fields describe, closes it, shows
// the state in the fields and the indicator, posts the notices, and pauses
// reading while the page has too much to show. Owns the links over the network; a
// page may add others. Does not know what the bytes mean.

#include "link.h"
#include "notice.h"

#include <QAbstractSocket>
#include <QDateTime>
#include <QHash>
#include <functional>
#include <vector>

class NetworkFields;
class ReadGate;
class StateIndicator;
class TcpClientLink;
class TcpReconnector;
class TcpServerLink;
class UdpLink;

class LinkSession : public QObject
{
    Q_OBJECT

public:
    // One entry of the protocol list. In the notices "%1" is the subject: the port,
    // or the name of the device.
    struct Transport
    {
        Link *link = nullptr;
        std::function<bool()> open; // with what the fields say
        std::function<QString()> subject;
        std::function<QString()> stateText; // below the button while it is open
        QString opened;
        QString failed;  // without the reason, which follows
        QString dropped; // "%1": the bytes that could not be sent
        Notice ended;    // an open link has ended; an error only where not closed here
    };

    // backlog: the bytes that wait to be shown. tool: the page, as the user knows it.
    LinkSession(NetworkFields *fields, StateIndicator *indicator, const QString &tool,
                std::function<qint64()> backlog, QObject *parent);
    ~LinkSession() override;

    // For the next entry of the protocol list.
    void addTransport(const Transport &transport);

    QVector<Link *> links() const; // in the protocol list's order
    // The chosen protocol's.
    Link *link() const;
    TcpServerLink *server() const { return m_server; }
    // The system's text for the last error of the connection to a server; for the log.
    QString socketErrorString() const;
    bool isOpen() const { return link()->isOpen(); }
    // Of the open one: what it does.
    QString stateText() const { return m_entries[size_t(m_protocol)].transport.stateText(); }
    // Since when a server that cannot be reached is waited for; null where none is.
    QDateTime waitingSince() const;
    // No link is open, being opened or still sending.
    bool isClosed() const;

    // Over the chosen protocol's link; see Link::send().
    qint64 send(const QByteArray &bytes, quint64 peer = Link::allPeers);

    // To where something came from over one of the links.
    qint64 answer(Link *link, const QByteArray &bytes, const Peer &to);

    // A connection to a server that fails is made again. Off at first.
    void setReconnects(bool reconnects);

    void showFailed(const QString &reason); // of opening
    // Posts the notice of a server's peer.
    void notifyJoined(const QString &name);
    void notifyLeft(const QString &name);

public slots:
    // The open button: opens, closes, ends waiting, or drops what a closing link has
    // not sent.
    void toggle();
    void close();
    // Another protocol was chosen.
    void changeProtocol();
    // Reports what has arrived, although reading may be paused.
    void readPending();

signals:
    void notify(const Notice &notice);
    void opening();
    void opened();
    void closing();
    // Also where an open link has ended without being closed here, and when the
    // waiting for a server ends.
    void closed();
    // After closed(), where this side has closed it, but not for another protocol.
    void closedHere(const QString &subject);
    void received(const QString &sender, const QByteArray &bytes);
    void joined(const QString &name);
    // A server's client, or the server; may come again under the same name.
    // reason: empty where it left in order, or was closed here.
    void left(const QString &name, const QString &reason);
    void handedOver(qint64 bytes);
    void socketError(QAbstractSocket::SocketError error);

private:
    struct Entry
    {
        Transport transport;
        QString subject;        // of the link that was opened last
        bool wasOpen = false;   // and not only being opened
        bool hasFailed = false; // its last end was not an orderly one
    };

    void addNetworkTransports();
    QString udpState() const;
    void open();
    void handleState(int protocol);
    void handleOpened(Entry &entry);
    void handleClosed(Entry &entry);
    void notifyFailed(const Entry &entry, const QString &reason);
    void endWaiting();
    void handleLeft(Entry &entry, const Peer &peer, const QString &reason);
    void notifyDropped(const Entry &entry, const Peer &peer);
    void refreshState(); // what an open link says of itself
    void showState();
    Entry &current() { return m_entries[size_t(m_protocol)]; }

    NetworkFields *m_fields;
    StateIndicator *m_indicator;
    QString m_tool;
    ReadGate *m_gate;
    TcpServerLink *m_server;
    TcpClientLink *m_client;
    TcpReconnector *m_reconnector;
    UdpLink *m_udp;
    std::vector<Entry> m_entries; // in the protocol list's order
    int m_protocol = 0;
    QHash<quint64, qint64> m_dropped; // bytes, by the peer's id; until it is reported
};
