#include "tcpboard.h"

namespace Boardsim {

TcpBoard::TcpBoard(const TcpOptions &options, QObject *parent)
    : BoardBase(parent)
    , m_options(options)
    , m_record(options.recordFile)
{
    m_server.setMaxPendingConnections(options.peers + 1000);
    connect(&m_server, &QTcpServer::newConnection, this, [this] {
        while (QTcpSocket *socket = m_server.nextPendingConnection())
            add(socket);
    });
}

TcpBoard::~TcpBoard()
{
    for (TcpLink *link : qAsConst(m_links))
        link->disconnect(this);
}

bool TcpBoard::begin(QString *error)
{
    if (!m_options.recordFile.isEmpty() && !m_record.open(QIODevice::WriteOnly | QIODevice::Unbuffered)) {
        *error = QStringLiteral("cannot write %1").arg(m_options.recordFile);
        return false;
    }
    if (m_options.connects) {
        for (int i = 0; i < m_options.peers; ++i)
            connectOut();
        return true;
    }
    if (!m_server.listen(QHostAddress(m_options.address), quint16(m_options.port))) {
        *error = QStringLiteral("cannot listen: %1").arg(m_server.errorString());
        return false;
    }
    emit happened(QStringLiteral("bound %1 %2").arg(m_options.address).arg(m_server.serverPort()));
    return true;
}

void TcpBoard::connectOut()
{
    auto *socket = new QTcpSocket(this);
    connect(socket, &QAbstractSocket::errorOccurred, this, [this, socket] {
        if (socket->state() == QAbstractSocket::ConnectedState || socket->property("wasConnected").toBool())
            return; // the link hears of it
        socket->disconnect(this);
        socket->deleteLater();
        connectLater();
    });
    connect(socket, &QTcpSocket::connected, this, [this, socket] {
        socket->setProperty("wasConnected", true);
        add(socket);
    });
    socket->connectToHost(m_options.address, quint16(m_options.port));
}

void TcpBoard::connectLater()
{
    QTimer::singleShot(m_options.periodMs, this, &TcpBoard::connectOut);
}

void TcpBoard::add(QTcpSocket *socket)
{
    auto *link = new TcpLink(socket, m_options, &m_record, this);
    m_links.append(link);
    ++m_connected;
    ++m_all;
    emit happened(QStringLiteral("connected %1").arg(m_connected));
    connect(link, &TcpLink::closed, this, [this, link] { closed(link); });
    connect(link, &TcpLink::finished, this, [this] {
        if (++m_finished % m_options.peers == 0)
            emit happened(QStringLiteral("finished"));
    });
}

void TcpBoard::closed(TcpLink *link)
{
    m_written += link->written();
    m_read += link->read();
    m_links.removeOne(link);
    link->deleteLater();
    emit happened(QStringLiteral("disconnected %1").arg(--m_connected));
    const bool once = m_options.act == TcpOptions::Act::Vanish || m_options.act == TcpOptions::Act::Reset ||
                      m_options.act == TcpOptions::Act::HalfClose;
    if (m_options.connects && !once)
        connectLater();
}

QString TcpBoard::statistics() const
{
    qint64 written = m_written;
    qint64 read = m_read;
    for (const TcpLink *link : m_links) {
        written += link->written();
        read += link->read();
    }
    return QStringLiteral("written=%1 read=%2 peers=%3").arg(written).arg(read).arg(m_all);
}

} // namespace Boardsim
