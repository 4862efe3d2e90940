#include "linksession.h"

#include "networkfields.h"
#include "readgate.h"
#include "stateindicator.h"
#include "tcpclientlink.h"
#include "tcpreconnector.h"
#include "tcpserverlink.h"
#include "udplink.h"

#include <algorithm>
#include <utility>

namespace {

// Unread datagrams are lost, so that more of them may wait to be shown.
constexpr qint64 kMaxStreamBacklog = 2LL * 1024 * 1024;
constexpr qint64 kMaxDatagramBacklog = 32LL * 1024 * 1024;

// Some texts name no subject.
QString withSubject(QString text, const QString &subject)
{
    return text.replace(QStringLiteral("%1"), subject);
}

// The beginning of a list.
QString shortened(const QStringList &texts, const QString &separator)
{
    constexpr int max = 3;
    const QString text = texts.mid(0, max).join(separator);
    return texts.size() <= max ? text : QStringLiteral("%1等%2项").arg(text).arg(texts.size());
}

} // namespace

LinkSession::LinkSession(NetworkFields *fields, StateIndicator *indicator, const QString &tool,
                         std::function<qint64()> backlog, QObject *parent)
    : QObject(parent)
    , m_fields(fields)
    , m_indicator(indicator)
    , m_tool(tool)
    , m_gate(new ReadGate(std::move(backlog), this))
    , m_server(new TcpServerLink(this))
    , m_client(new TcpClientLink(this))
    , m_reconnector(new TcpReconnector(m_client, this))
    , m_udp(new UdpLink(this))
{
    connect(m_reconnector, &TcpReconnector::reasonChanged, this, [this] {
        emit notify(
            Notice::error(QStringLiteral("[TCP Client]仍在等待服务器：%1").arg(m_reconnector->reason())));
    });
    addNetworkTransports();
}

// The links outlive this part, and report their end.
LinkSession::~LinkSession()
{
    for (const Entry &entry : m_entries)
        entry.transport.link->disconnect(this);
}

void LinkSession::addNetworkTransports()
{
    connect(m_client, &TcpClientLink::socketError, this, &LinkSession::socketError);
    connect(m_server, &TcpServerLink::acceptFailed, this, [this](const QString &reason) {
        emit notify(Notice::error(QStringLiteral("无法接受新的客户端：%1").arg(reason)));
    });
    const auto port = [this] { return m_fields->portText(); };

    addTransport({m_server,
                  [this] {
                      return m_server->open({m_fields->localAddress(), m_fields->port()});
                  },
                  port,
                  [this] {
                      return QStringLiteral("正在监听端口%1，已连接%2个客户端")
                          .arg(m_server->port())
                          .arg(m_server->peers().size());
                  },
                  QStringLiteral("TCP服务监听[端口:%1]已启动!!"),
                  QStringLiteral("TCP服务监听[端口:%1]失败，请确认该端口是否可用!!"),
                  QStringLiteral("断开时，有%1字节未能发送！"),
                  {}});
    addTransport(
        {m_client,
         [this] {
             return m_client->open({m_fields->serverAddress(), m_fields->port()});
         },
         port,
         [this] { return QStringLiteral("已连接到%1").arg(m_client->peerName(m_client->peers().value(0))); },
         QStringLiteral("[TCP Client]与服务器连接成功！！！"),
         {},
         QStringLiteral("断开时，有%1字节未能发送！"),
         Notice::information(QStringLiteral("[TCP Client]与服务器已断开连接~~~"))});
    addTransport({m_udp,
                  [this] {
                      return m_udp->open({m_fields->localAddress(), m_fields->port(), m_fields->multicast()});
                  },
                  port,
                  [this] { return udpState(); },
                  QStringLiteral("UDP服务监听[端口:%1]已启动!!"),
                  QStringLiteral("UDP服务监听[端口:%1]失败，请确认该端口是否可用!!"),
                  {},
                  {}});
}

QString LinkSession::udpState() const
{
    const QString text = QStringLiteral("正在接收端口%1的数据").arg(m_udp->port());
    if (m_udp->joined().groups.isEmpty())
        return text;
    return text +
           QStringLiteral("，已加入组播%1").arg(shortened(m_udp->joined().groups, QStringLiteral("、")));
}

void LinkSession::addTransport(const Transport &transport)
{
    const int protocol = int(m_entries.size());
    Link *const link = transport.link;
    m_entries.push_back({transport, {}, false, false});
    link->setTool(m_tool);
    m_gate->control(link);
    connect(link, &Link::stateChanged, this, [this, protocol] { handleState(protocol); });
    connect(link, &Link::received, this, [this, link](const QByteArray &bytes, qint64, const Peer &from) {
        emit received(link->peerName(from), bytes);
    });
    connect(link, &Link::handedOver, this, &LinkSession::handedOver);
    connect(link, &Link::dropped, this,
            [this](qint64 bytes, const Peer &peer) { m_dropped[peer.id] += bytes; });
    connect(link, &Link::peerJoined, this, [this, link](const Peer &peer) {
        refreshState();
        if (peer.id != 0)
            emit joined(link->peerName(peer));
    });
    connect(link, &Link::peerLeft, this, [this, protocol](const Peer &peer, const QString &reason) {
        handleLeft(m_entries[size_t(protocol)], peer, reason);
    });
    connect(link, &Link::blocked, this, [this, link](const Peer &peer, bool isBlocked) {
        if (peer.id == 0)
            return;
        const QString name = link->peerName(peer);
        emit notify(isBlocked ? Notice::error(
                                    QStringLiteral("客户端[%1]长时间未接收数据，已暂停向其发送！").arg(name))
                              : Notice::information(QStringLiteral("客户端[%1]已恢复接收数据。").arg(name)));
    });
}

QVector<Link *> LinkSession::links() const
{
    QVector<Link *> links;
    for (const Entry &entry : m_entries)
        links.append(entry.transport.link);
    return links;
}

Link *LinkSession::link() const
{
    return m_entries[size_t(m_protocol)].transport.link;
}

QString LinkSession::socketErrorString() const
{
    return m_client->socketErrorString();
}

bool LinkSession::isClosed() const
{
    return std::all_of(m_entries.begin(), m_entries.end(), [](const Entry &entry) {
        return entry.transport.link->state() == Link::State::Closed;
    });
}

QDateTime LinkSession::waitingSince() const
{
    return m_reconnector->isReconnecting() ? m_reconnector->since() : QDateTime();
}

void LinkSession::setReconnects(bool reconnects)
{
    if (!reconnects && m_reconnector->isWaiting())
        endWaiting();
    m_reconnector->setEnabled(reconnects);
}

qint64 LinkSession::send(const QByteArray &bytes, quint64 peer)
{
    m_udp->setDestination(m_fields->destinationAddress(), m_fields->destinationPort());
    return link()->send(bytes, peer);
}

qint64 LinkSession::answer(Link *link, const QByteArray &bytes, const Peer &to)
{
    if (link == m_udp)
        m_udp->setDestination(to.address, to.port);
    return link->send(bytes, to.id);
}

// ---- opening and closing

void LinkSession::toggle()
{
    if (m_reconnector->isWaiting())
        endWaiting();
    else if (link()->state() == Link::State::Closed)
        open();
    else
        link()->close();
}

void LinkSession::open()
{
    const Transport &transport = current().transport;
    const QString fault = m_fields->checkFields();
    if (fault.isEmpty() && transport.open())
        return; // its state says how it goes on
    const QString reason = fault.isEmpty() ? link()->reason() : fault;
    showFailed(reason);
    if (!transport.failed.isEmpty())
        emit notify(Notice::error(withSubject(transport.failed, transport.subject())));
    if (fault.isEmpty() && !reason.isEmpty())
        emit notify(Notice::error(reason));
}

// An attempt that took its time has failed.
void LinkSession::notifyFailed(const Entry &entry, const QString &reason)
{
    const Transport &transport = entry.transport;
    if (transport.link == m_client)
        return emit notify(Notice::error(QStringLiteral("[TCP Client]连接失败：%1").arg(reason)));
    emit notify(Notice::error(withSubject(transport.failed, transport.subject())));
    emit notify(Notice::error(reason));
}

void LinkSession::close()
{
    if (m_reconnector->isWaiting())
        endWaiting();
    for (const Entry &entry : m_entries) {
        if (entry.transport.link->state() != Link::State::Closing)
            entry.transport.link->close();
    }
}

void LinkSession::changeProtocol()
{
    m_protocol = m_fields->protocol();
    close();
    m_gate->setMaxBacklog(link() == m_udp ? kMaxDatagramBacklog : kMaxStreamBacklog);
    m_fields->setOpenState(false);
    showState();
}

void LinkSession::readPending()
{
    link()->readPending();
}

// ---- what links report

void LinkSession::handleState(int protocol)
{
    Entry &entry = m_entries[size_t(protocol)];
    switch (entry.transport.link->state()) {
    case Link::State::Opening:
        if (m_reconnector->isReconnecting())
            break; // it is shown as waiting all the time
        showState();
        emit opening();
        break;
    case Link::State::Open:
        handleOpened(entry);
        break;
    case Link::State::Closing:
        showState();
        emit closing();
        break;
    case Link::State::Closed:
        handleClosed(entry);
        break;
    }
}

void LinkSession::handleOpened(Entry &entry)
{
    entry.subject = entry.transport.subject();
    entry.wasOpen = true;
    entry.hasFailed = false;
    m_fields->setOpenState(true);
    showState();
    emit opened();
    emit notify(Notice::information(withSubject(entry.transport.opened, entry.subject)));
    if (entry.transport.link == m_udp && !m_udp->joined().faults.isEmpty())
        emit notify(Notice::error(
            QStringLiteral("未能加入组播：%1").arg(shortened(m_udp->joined().faults, QStringLiteral("；")))));
}

void LinkSession::handleClosed(Entry &entry)
{
    const Transport &transport = entry.transport;
    const QString reason = transport.link->reason();
    const bool isWaiting = transport.link == m_client && m_reconnector->isWaiting();
    if (isWaiting && m_reconnector->failedAttempts() > 0)
        return showState();
    const bool wasOpen = std::exchange(entry.wasOpen, false);
    const bool isShown = &entry == &current();
    if (isShown)
        m_fields->setOpenState(false);
    emit closed();
    if (isWaiting || (isShown && reason.isEmpty()))
        showState();
    else if (isShown && !wasOpen)
        showFailed(QStringLiteral("连接失败：%1").arg(reason));
    else if (isShown && entry.hasFailed)
        showFailed(reason);
    else if (isShown) {
        m_fields->showState(reason);
        m_indicator->setOn(false);
    }
    if (!wasOpen && !reason.isEmpty())
        notifyFailed(entry, reason);
    else if (wasOpen && !transport.ended.text.isEmpty() && (!reason.isEmpty() || !transport.ended.isError()))
        emit notify(transport.ended);
    if (isShown && reason.isEmpty())
        emit closedHere(entry.subject);
    notifyDropped(entry, {});
    if (isWaiting)
        emit notify(Notice::information(QStringLiteral("[TCP Client]正在等待服务器，将自动重新连接")));
}

void LinkSession::endWaiting()
{
    m_reconnector->cancel();
    const Entry &entry = m_entries[NetworkFields::TcpClient];
    const bool isShown = &entry == &current();
    if (isShown) {
        m_fields->setOpenState(false);
        showState();
    }
    emit closed();
    if (isShown)
        emit closedHere(entry.subject);
}

void LinkSession::handleLeft(Entry &entry, const Peer &peer, const QString &reason)
{
    const QString name = entry.transport.link->peerName(peer);
    emit left(name, reason);
    if (peer.id == 0) {
        entry.hasFailed = !reason.isEmpty();
        return; // the link ends with its only peer, and reports it then
    }
    refreshState();
    notifyDropped(entry, peer);
}

void LinkSession::notifyDropped(const Entry &entry, const Peer &peer)
{
    const qint64 bytes = m_dropped.take(peer.id);
    if (bytes == 0 || entry.transport.dropped.isEmpty())
        return;
    QString text = withSubject(entry.transport.dropped, QString::number(bytes));
    if (peer.id != 0)
        text.prepend(QStringLiteral("客户端[%1]").arg(entry.transport.link->peerName(peer)));
    emit notify(Notice::error(text));
}

void LinkSession::notifyJoined(const QString &name)
{
    emit notify(Notice::information(QStringLiteral("新客户端[%1]已连接:").arg(name)));
}

void LinkSession::notifyLeft(const QString &name)
{
    emit notify(Notice::information(QStringLiteral("客户端[%1]已断开连接:").arg(name)));
}

// ---- showing

void LinkSession::refreshState()
{
    if (isOpen())
        m_fields->showState(current().transport.stateText());
}

void LinkSession::showState()
{
    const auto busy = [this](const QString &text) {
        m_fields->showState(text);
        m_indicator->setState(StateIndicator::Busy, text);
    };
    if (link() == m_client && m_reconnector->isReconnecting()) {
        m_fields->setWaiting();
        m_fields->showState(QStringLiteral("%1，正在等待重新连接").arg(m_reconnector->reason()));
        return m_indicator->setState(
            StateIndicator::Busy,
            QStringLiteral("自%1起等待重新连接").arg(waitingSince().toString(QStringLiteral("hh:mm:ss"))));
    }
    switch (link()->state()) {
    case Link::State::Opening:
        return busy(QStringLiteral("正在连接，再次单击可取消"));
    case Link::State::Closing:
        return busy(QStringLiteral("正在发送剩余数据，再次单击可放弃"));
    case Link::State::Open:
        m_fields->showState(current().transport.stateText());
        break;
    case Link::State::Closed:
        m_fields->showState({});
        break;
    }
    m_indicator->setOn(link()->isOpen());
}

void LinkSession::showFailed(const QString &reason)
{
    m_fields->setOpenState(false);
    m_fields->showState(reason, true);
    m_indicator->setState(StateIndicator::Failed, QStringLiteral("上次错误：%1").arg(reason));
}
