#pragma once

// Listens and holds the peers that connect, each under a name: its address and
// the number of its socket. Hands on what they send and sends to one or to all.
// Owns the peers; knows no page and no setting.

#include "tcpclient.h"

#include <QMap>
#include <QTcpServer>
#include <QTimer>

class TcpServer : public QTcpServer
{
    Q_OBJECT

public:
    explicit TcpServer(QObject *parent = nullptr);
    ~TcpServer() override;

    // Hides the base class's, whose queue of 50 connections that wait to be
    // accepted is too short for boards that all start at once.
    bool listen(const QHostAddress &address = QHostAddress::Any, quint16 port = 0);

    // In the order of their names, those that are being closed or leaving included.
    QList<TcpClient *> clients() const { return m_clients.values(); }
    TcpClient *client(quint64 id) const; // null where there is none
    // Without a peer whose leaving is just being reported, or that is being closed.
    int clientCount() const;

    // Stops listening and closes every peer.
    void closeAll();
    // Closes the peer of that name, or every peer where the name is empty. What had
    // come from it is handed on first. A peer for which something is queued is
    // given that first and reported as disconnected then, unless this is called
    // again meanwhile.
    void closeClient(const QString &name);
    void closeClient(TcpClient *client);

    // While false, received bytes stay in the peers' sockets, and in the end with
    // the peers. When reading goes on, those that have waited longest come first.
    void setReading(bool reading);

signals:
    void signalReadMessage(QString name, QByteArray data);
    void signalClientConnected(QString name);
    void signalClientDisconnected(QString name);
    void joined(TcpClient *client);
    // It is connected no more, and has handed on everything that it received.
    void left(TcpClient *client);

public slots:
    // Each returns the bytes queued: the peers that were written to times the size.
    qint64 SltSendMsgToAllClient(QByteArray data);
    qint64 SltSendMsgToClient(QString name, QByteArray data);
    void SltClientDisconnected();

protected:
    void incomingConnection(qintptr descriptor) override;

private:
    void acceptMore();

    QMap<QString, TcpClient *> m_clients;
    QTimer m_acceptTimer;
    quint64 m_lastId = 0;
    int m_acceptedNow = 0; // in this turn of the event loop
    bool m_reading = true;
    QString m_lastResumed; // where the round of reading goes on
};
