#pragma once

// Plays the maker's update service on the loopback interface, well or badly,
// for tests, benchmarks and the demonstration. One reply for each path's first
// part ("/cv/...", "/up/..."); each connection serves one request.

#include <QByteArray>
#include <QHash>
#include <QTcpServer>

class UpdateServer : public QTcpServer
{
    Q_OBJECT

public:
    struct Reply
    {
        QByteArray status = "200 OK";
        QByteArray headers; // further lines, each with its CR LF
        QByteArray body;
        qint64 announced = -1; // Content-Length; -1: the body's, -2: none
        qint64 cutAfter = -1;  // the connection ends after so many bytes of the body
        bool silent = false;   // accepts, and never answers
        bool stuck = false;    // answers, and does not end the connection
    };

    // At a free port, or at the given one.
    explicit UpdateServer(quint16 port = 0, QObject *parent = nullptr);

    void setReply(const QByteArray &first, const Reply &reply) { m_replies.insert(first, reply); }
    // What says that there is a version, with notes.
    static Reply version(const QByteArray &number, const QByteArray &notes);
    static Reply package(const QByteArray &name, const QByteArray &body);

    QByteArray address() const;                               // "127.0.0.1:port"
    QList<QByteArray> requests() const { return m_requests; } // heads, in order

private:
    void serve();
    void answer(QTcpSocket *socket, const QByteArray &head);

    QHash<QByteArray, Reply> m_replies;
    QList<QByteArray> m_requests;
};
