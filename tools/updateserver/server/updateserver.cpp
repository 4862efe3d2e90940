#include "updateserver.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QTcpSocket>

UpdateServer::UpdateServer(quint16 port, QObject *parent)
    : QTcpServer(parent)
{
    connect(this, &QTcpServer::newConnection, this, &UpdateServer::serve);
    if (!listen(QHostAddress::LocalHost, port))
        qFatal("cannot listen: %s", qPrintable(errorString()));
}

QByteArray UpdateServer::address() const
{
    return "127.0.0.1:" + QByteArray::number(serverPort());
}

UpdateServer::Reply UpdateServer::version(const QByteArray &number, const QByteArray &notes)
{
    Reply reply;
    const QJsonObject object{{QStringLiteral("verNum"), QString::fromUtf8(number)},
                             {QStringLiteral("verInfo"), QString::fromUtf8(notes)}};
    reply.headers = "Content-Type: application/json\r\n";
    reply.body = QJsonDocument(object).toJson();
    return reply;
}

UpdateServer::Reply UpdateServer::package(const QByteArray &name, const QByteArray &body)
{
    Reply reply;
    reply.headers = "Content-Disposition: attachment; filename=" + name + "\r\n";
    reply.body = body;
    return reply;
}

void UpdateServer::serve()
{
    while (QTcpSocket *socket = nextPendingConnection()) {
        connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
        connect(socket, &QTcpSocket::readyRead, this, [this, socket] {
            const QByteArray head = socket->peek(64 * 1024);
            const int end = head.indexOf("\r\n\r\n");
            if (end < 0)
                return;
            socket->readAll();
            answer(socket, head.left(end));
        });
    }
}

void UpdateServer::answer(QTcpSocket *socket, const QByteArray &head)
{
    m_requests.append(head);
    const QByteArray first = head.split(' ').value(1).split('/').value(1);
    Reply notFound;
    notFound.status = "404 Not Found";
    notFound.body = "<html><body>404</body></html>";
    const Reply reply = m_replies.value(first, notFound);
    if (reply.silent)
        return;
    QByteArray answer = "HTTP/1.1 " + reply.status + "\r\nConnection: close\r\n" + reply.headers;
    if (reply.announced != -2)
        answer += "Content-Length: " +
                  QByteArray::number(reply.announced >= 0 ? reply.announced : reply.body.size()) + "\r\n";
    socket->write(answer + "\r\n");
    socket->write(reply.cutAfter < 0 ? reply.body : reply.body.left(static_cast<int>(reply.cutAfter)));
    if (!reply.stuck)
        socket->disconnectFromHost(); // when all is written
}
