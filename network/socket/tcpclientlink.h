#pragma once

// A connection to a TCP server as a link. Opening ends with the connection or
// with a reason(); closing when the server has got what was queued for it.

#include "link.h"

#include <QAbstractSocket>

class TcpClient;

class TcpClientLink : public Link
{
    Q_OBJECT

public:
    struct Settings
    {
        QString host; // an address or a name
        quint16 port = 0;
    };

    explicit TcpClientLink(QObject *parent = nullptr);
    ~TcpClientLink() override;

    // Begins to connect.
    bool open(const Settings &settings);
    const Settings &settings() const { return m_settings; } // of the last open()
    // Ends an opening that is still under way, as one that has failed.
    void timeOut();

    qint64 pendingBytes() const override;
    void close() override;

    // The system's text for the last error, for the log.
    QString socketErrorString() const;

    // The server, while it is connected.
    QVector<Peer> peers() const override;

signals:
    // Each error of the socket, for the log.
    void socketError(QAbstractSocket::SocketError error);

protected:
    qint64 accept(const QByteArray &bytes, quint64 peer) override;
    void readingChanged() override;

private:
    void handleConnected();
    void handleDisconnected();
    void handleFailure();

    TcpClient *m_socket;
    Settings m_settings;
    bool m_closedHere = false;
};
