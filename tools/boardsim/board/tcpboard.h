#pragma once

// A board that listens, or that makes a number of connections; every connection
// does what the options say. A client retries until it is connected, and
// reconnects unless it closed the connection itself.

#include "boardbase.h"
#include "tcplink.h"

#include <QFile>
#include <QTcpServer>

namespace Boardsim {

class TcpBoard : public BoardBase
{
    Q_OBJECT

public:
    explicit TcpBoard(const TcpOptions &options, QObject *parent = nullptr);
    ~TcpBoard() override;

    bool begin(QString *error) override;
    QString statistics() const override; // also "peers=..": connections made in all

private:
    void connectOut();
    void connectLater();
    void add(QTcpSocket *socket);
    void closed(TcpLink *link);

    TcpOptions m_options;
    QFile m_record;
    QTcpServer m_server;
    QList<TcpLink *> m_links;
    qint64 m_written = 0; // on connections that are closed
    qint64 m_read = 0;
    int m_connected = 0;
    int m_all = 0;
    int m_finished = 0;
};

} // namespace Boardsim
