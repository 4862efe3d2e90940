#pragma once

// One peer of a TcpServer: a socket that knows its name and hands on what it
// reads. Takes no more from the system than its owner allows, so that a peer
// that sends without end is held up by TCP instead of filling the memory.

#include <QTcpSocket>

class TcpClient : public QTcpSocket
{
    Q_OBJECT

public:
    static constexpr qint64 readBufferBytes = 64 * 1024;

    explicit TcpClient(QObject *parent = nullptr);
    ~TcpClient() override;

    // The server's key for this peer, set once.
    void setName(const QString &name) { m_name = name; }
    QString name() const { return m_name; }

    // While false, what comes stays in the socket.
    void setReading(bool reading) { m_reading = reading; }

    // The peer takes nothing: its owner sends it no more until it does.
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
