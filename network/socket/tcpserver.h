#pragma once

// Listens and holds the peers that connect, each under a name: its address and
// the number of its socket. Hands on what they send and sends to one or to all.
// Owns the peers; knows no page and no setting.

#include "linksocket.h"

#include <QMap>
#include <QTcpServer>
#include <QTimer>

class TcpClient;

class TcpServer : public QTcpServer
{
    Q_OBJECT

public:
    // A peer that takes nothing gets no more than this queued.
    static constexpr qint64 mostQueued = LinkSocket::maxQueued;

    explicit TcpServer(QObject *parent = nullptr);
    ~TcpServer() override;

    // Hides the base class's, whose queue of 50 connections that wait to be
    // accepted is too short for boards that all start at once.
    bool listen(const QHostAddress &address = QHostAddress::Any, quint16 port = 0);

    // Without a peer whose leaving is just being reported, or that is being closed.
    int clientCount() const;

    // Stops listening and closes every peer.
    void closeAll();
    // Closes the peer of that name, or every peer where the name is empty. What had
    // come from it is handed on first. A peer for which something is queued is
    // given that first and reported as disconnected then, unless this is called
    // again meanwhile.
    void closeClient(const QString &name);
    // Still delivering to peers that are being closed.
    bool isFinishing() const;
    // A number that no other connection has had, 0 where the name is unknown:
    // names are used again.
    quint64 connectionOf(const QString &name) const;

    // While false, what peers send stays in their sockets, and in the end with
    // the peers. When reading goes on, those that wait longest come first.
    void setReading(bool reading);

signals:
    void signalReadMessage(QString name, QByteArray data);
    void signalClientConnected(QString name);
    void signalClientDisconnected(QString name);
    // The peer has taken nothing for so long that it is sent no more, or takes
    // again what it is sent.
    void clientBlocked(QString name, bool blocked);
    void bytesHandedOver(qint64 bytes); // to the system, of all peers
    // After its disconnection: so many bytes that were queued for it are lost.
    void clientUndelivered(QString name, qint64 bytes);

public slots:
    // Each returns the bytes queued: the peers that were written to times the size.
    qint64 SltSendMsgToAllClient(QByteArray data);
    qint64 SltSendMsgToClient(QString name, QByteArray data);
    void SltClientDisconnected();

protected:
    void incomingConnection(qintptr descriptor) override;

private:
    qint64 send(TcpClient *client, const QByteArray &data);
    void noticeTaken(TcpClient *client);
    void acceptMore();
    void takeRest(TcpClient *client);
    void closeAny(TcpClient *client);

    QMap<QString, TcpClient *> m_clients;
    QTimer m_acceptTimer;
    QHash<QString, quint64> m_connections;
    quint64 m_lastConnection = 0;
    int m_acceptedNow = 0; // in this turn of the event loop
    bool m_reading = true;
    QString m_lastResumed; // where the round of reading goes on
};
