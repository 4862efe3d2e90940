#pragma once

// A page's connection to a server: what it reads it hands out when its owner
// says so, and it tells apart how an attempt or a connection has ended. Shows
// nothing.

#include "linksocket.h"

class ClientSocket : public LinkSocket
{
    Q_OBJECT

public:
    explicit ClientSocket(QObject *parent = nullptr);

    QString peerText() const; // "address:port" while connected

    // For use when disconnected() comes. True where it was not closed here:
    // what was held back is handed out, and it is closed. error: why, where it
    // was not the server's orderly end.
    bool takeEnd(QString *error);
    // Hands out what has come, what the system holds included, before closing.
    void takeRest();

public slots:
    void takeAll(); // hands out everything that has come

signals:
    void received(QByteArray bytes);
    void failed(QString why); // the attempt to connect; it is closed again

private:
    void checkFailed();
};
