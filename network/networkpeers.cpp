#include "networkpeers.h"

#include "clientlistpanel.h"
#include "linksession.h"
#include "networkconfigpanel.h"
#include "peersdialog.h"
#include "peerwatch.h"
#include "qtmessagebox.h"
#include "tcpserverlink.h"

NetworkPeers::NetworkPeers(LinkSession *session, NetworkConfigPanel *config, ClientListPanel *clients,
                           QWidget *page)
    : QObject(page)
    , m_session(session)
    , m_config(config)
    , m_clients(clients)
    , m_page(page)
    , m_watch(new PeerWatch(this))
{
    const QVector<Link *> links = session->links();
    for (Link *link : links)
        m_watch->watch(link);
    connect(links.at(NetworkConfigPanel::Udp), &Link::received, this,
            [this](const QByteArray &, qint64, const Peer &from) { m_lastSender = from; });
    connect(config, &NetworkConfigPanel::replyClicked, this, &NetworkPeers::replyToLast);
    connect(config, &NetworkConfigPanel::statisticsClicked, this, &NetworkPeers::showTable);
    connect(clients, &ClientListPanel::statisticsClicked, this, &NetworkPeers::showTable);
}

void NetworkPeers::showTable()
{
    if (!m_table) {
        m_table = new PeersDialog(&m_watch->statistics(), m_page);
        connect(m_table, &PeersDialog::replyRequested, this, &NetworkPeers::replyTo);
        connect(m_table, &PeersDialog::disconnectRequested, this, &NetworkPeers::disconnectPeer);
    }
    m_table->show();
    m_table->raise();
    m_table->activateWindow();
}

void NetworkPeers::replyTo(const Peer &peer, const QString &name)
{
    if (peer.id == 0)
        return setDestination(peer);
    // Another one may have got the name meanwhile.
    if (m_session->server()->peerNamed(name) != peer.id || !m_clients->choose(name))
        emit notify(Notice::error(QStringLiteral("客户端[%1]已断开连接！").arg(name)));
    else
        emit notify(Notice::information(QStringLiteral("发送对象已设为[%1]").arg(name)));
}

void NetworkPeers::replyToLast()
{
    if (m_lastSender.address.isNull())
        emit notify(Notice::information(QStringLiteral("尚未收到数据报，没有可回复的来源")));
    else
        setDestination(m_lastSender);
}

void NetworkPeers::setDestination(const Peer &peer)
{
    m_config->setDestination(peer);
    emit notify(Notice::information(QStringLiteral("UDP目的地址已设为%1").arg(peer.text())));
}

void NetworkPeers::disconnectPeer(const Peer &peer)
{
    TcpServerLink *const server = m_session->server();
    const QString name = server->peerName(peer);
    if (QtMessageBox::question(m_page, QStringLiteral("询问"),
                               QStringLiteral("是否确认断开客户端[%1]?").arg(name)) == 1)
        server->closePeer(peer.id);
}
