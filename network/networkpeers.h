#pragma once

// What the network page does with single peers: counts what each sends and gets,
// shows the table of them, chooses whom sending goes to, and disconnects.

#include "notice.h"
#include "peer.h"

#include <QObject>
#include <QPointer>

class ClientListPanel;
class LinkSession;
class NetworkConfigPanel;
class PeerWatch;
class PeersDialog;
class QWidget;

class NetworkPeers : public QObject
{
    Q_OBJECT

public:
    // All of them outlive this, except for the page's windows.
    NetworkPeers(LinkSession *session, NetworkConfigPanel *config, ClientListPanel *clients, QWidget *page);

public slots:
    void showTable();
    // What is sent next goes to this peer alone.
    void replyTo(const Peer &peer, const QString &name);
    // To the sender of the last datagram.
    void replyToLast();
    // Asks first.
    void disconnectPeer(const Peer &peer);

signals:
    void notify(const Notice &notice);

private:
    void setDestination(const Peer &peer);

    LinkSession *m_session;
    NetworkConfigPanel *m_config;
    ClientListPanel *m_clients;
    QWidget *m_page;
    PeerWatch *m_watch;
    Peer m_lastSender; // its address is null before the first datagram
    QPointer<PeersDialog> m_table;
};
