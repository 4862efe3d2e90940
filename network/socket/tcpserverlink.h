#pragma once

// A TCP server as a link: listens on a port, with every connection as a peer.
// Closing stops listening at once and lasts until each peer has got what was
// queued for it.

#include "link.h"

#include <QHostAddress>

class TcpClient;
class TcpServer;

class TcpServerLink : public Link
{
    Q_OBJECT

public:
    struct Settings
    {
        QHostAddress address; // Any for all interfaces
        quint16 port = 0;     // 0: one of the system's choice
    };

    explicit TcpServerLink(QObject *parent = nullptr);
    ~TcpServerLink() override;

    bool open(const Settings &settings);
    quint16 port() const; // that it listens on

    qint64 pendingBytes() const override;
    void close() override;

    QVector<Peer> peers() const override;
    // allPeers: every peer; the server goes on listening.
    void closePeer(quint64 peer) override;
    // As the server names it: address and number of the socket.
    QString peerName(const Peer &peer) const override;
    quint64 peerNamed(const QString &name) const; // its id; 0 where there is none

signals:
    // A connection could not be accepted; the next ones are tried.
    void acceptFailed(const QString &reason);

protected:
    qint64 accept(const QByteArray &bytes, quint64 peer) override;
    void readingChanged() override;

private:
    void addClient(TcpClient *client);
    void removeClient(TcpClient *client);
    void closeIfDone();

    TcpServer *m_server;
};
