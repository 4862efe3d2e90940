#pragma once

// A board that listens, or that connects as often as asked for; every
// connection does what the options say. A client tries again until it gets
// through, and comes back when it was disconnected unless that was its own doing.

#include "boardbase.h"
#include "options.h"

#include <QFile>
#include <QTcpServer>

namespace Boardsim {

class TcpLink;

class TcpBoard : public BoardBase
{
    Q_OBJECT

public:
    explicit TcpBoard(const Options &options, QObject *parent = nullptr);
    ~TcpBoard() override;

    bool begin(QString *error) override;
    QString statistics() const override; // also "peers=..": connections made in all

private:
    void connectOut();
    void connectLater();
    void add(QTcpSocket *socket);
    void closed(TcpLink *link);

    Options m_options;
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
