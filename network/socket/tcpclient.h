#pragma once

// One peer of a TcpServer: a connection that knows its name and hands on what it
// reads.

#include "linksocket.h"

class TcpClient : public LinkSocket
{
    Q_OBJECT

public:
    explicit TcpClient(QObject *parent = nullptr);
    ~TcpClient() override;

    // Takes over an accepted connection.
    bool adopt(qintptr descriptor);

    // The server's key for this peer, set once.
    void setName(const QString &name) { m_name = name; }
    QString name() const { return m_name; }

    // While false, what comes stays in the socket.
    void setReading(bool reading) { m_reading = reading; }

    // The peer reads nothing: its owner sends it no more until it does.
    void setBlocked(bool blocked) { m_blocked = blocked; }
    bool isBlocked() const { return m_blocked; }

public slots:
    void SltReadMessage();

signals:
    void signalReadMessage(QString name, QByteArray data);

private:
    QString m_name;
    bool m_reading = true;
    bool m_blocked = false;
};
