#include "networkconfigpanel.h"

#include "fieldmemory.h"
#include "localaddressbox.h"
#include "multicastgroup.h"
#include "peer.h"
#include "peeraddress.h"
#include "settings.h"

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTimer>

namespace {

const auto kLoopback = QStringLiteral("127.0.0.1");
const auto kAll = QStringLiteral("0.0.0.0");

// Keeps a text that the field accepts, and an empty one where it tells nothing new.
void keep(Setting<QString> *setting, const QString &shown, const QString &opened, bool isValid)
{
    if (isValid)
        setting->change(shown == opened ? QString() : shown);
}

QString kept(const Setting<QString> &setting, const QString &opened)
{
    return setting->isEmpty() ? opened : setting.value();
}

} // namespace

NetworkConfigPanel::NetworkConfigPanel(QWidget *parent)
    : NetworkFields(QStringLiteral("网络配置"), QStringLiteral("1. 协议类型"), QString(), parent)
    , m_reconnect(new QCheckBox(QStringLiteral("断线自动重连"), this))
    , m_unfoldMulticast(new QPushButton(QStringLiteral("组播"), this))
{
    m_protocol->setObjectName(QStringLiteral("comboNetType"));
    addButtons();
    loadDefaults();
    connect(this, &NetworkFields::protocolChanged, this, &NetworkConfigPanel::namePort);
    connect(this, &NetworkFields::protocolChanged, this, &NetworkConfigPanel::keepTexts);
    connect(m_local, QOverload<int>::of(&QComboBox::activated), this, &NetworkConfigPanel::keepTexts);
    for (const QLineEdit *edit : {m_local->lineEdit(), m_server, m_port, m_destination, m_destinationPort})
        connect(edit, &QLineEdit::editingFinished, this, &NetworkConfigPanel::keepTexts);
}

void NetworkConfigPanel::addButtons()
{
    m_reconnect->setObjectName(QStringLiteral("checkReconnect"));
    m_reconnect->setToolTip(QStringLiteral("连接断开、被拒绝或超时后，按相同的地址自动重新连接"));
    auto *reply = new QPushButton(QStringLiteral("回复最近来源"), this);
    reply->setObjectName(QStringLiteral("btnReplyToLast"));
    reply->setToolTip(QStringLiteral("把目的地址和目的端口设为最近一个数据报的来源"));
    auto *statistics = new QPushButton(QStringLiteral("统计"), this);
    statistics->setObjectName(QStringLiteral("btnLinkStatistics"));
    statistics->setToolTip(QStringLiteral("打开对端统计：收发字节数和最近的消息"));
    m_unfoldMulticast->setObjectName(QStringLiteral("btnUnfoldMulticast"));
    m_unfoldMulticast->setToolTip(QStringLiteral("显示或隐藏组播设置"));
    m_unfoldMulticast->setCheckable(true);
    addButton({m_reconnect, reply, statistics}, m_unfoldMulticast);
    showFor({Udp}, m_unfoldMulticast);
    showFor({TcpClient}, m_reconnect);
    showFor({Udp}, reply);
    showFor({TcpClient, Udp}, statistics);
    connect(m_reconnect, &QCheckBox::toggled, this, &NetworkConfigPanel::reconnectChanged);
    connect(reply, &QPushButton::clicked, this, &NetworkConfigPanel::replyClicked);
    connect(statistics, &QPushButton::clicked, this, &NetworkConfigPanel::statisticsClicked);
}

void NetworkConfigPanel::setMulticastGroup(MulticastGroup *group)
{
    m_multicast = group;
    connect(m_unfoldMulticast, &QPushButton::toggled, this, &NetworkConfigPanel::showMulticast);
    connect(this, &NetworkFields::protocolChanged, this, &NetworkConfigPanel::showMulticast);
    // The panel shows what gets the keyboard, once that has its place.
    connect(m_unfoldMulticast, &QPushButton::clicked, group, [group](bool isUnfolded) {
        if (isUnfolded)
            QTimer::singleShot(0, group, [group] { group->lastField()->setFocus(); });
    });
    showMulticast();
}

void NetworkConfigPanel::showMulticast()
{
    m_multicast->setVisible(protocol() == Udp && m_unfoldMulticast->isChecked());
}

MulticastSettings NetworkConfigPanel::multicast() const
{
    return m_multicast ? m_multicast->settings() : MulticastSettings();
}

void NetworkConfigPanel::setDestination(const Peer &peer)
{
    m_destination->setText(PeerAddress::text(peer.address));
    m_destinationPort->setText(QString::number(peer.port));
    keepTexts();
}

// Stored are the protocol, address and port of the last link that was opened;
// the address belongs to that protocol. 127.0.0.1, which a first start writes,
// narrows no server.
NetworkConfigPanel::Texts NetworkConfigPanel::opened()
{
    const Settings::NetworkDefaults &defaults = Settings::instance().network;
    const bool isClient = defaults.type == TcpClient;
    const QString port = QString::number(defaults.port);
    return {defaults.type,
            isClient || defaults.address == kLoopback ? kAll : defaults.address.value(),
            isClient ? defaults.address.value() : kLoopback,
            port,
            kLoopback,
            port};
}

NetworkConfigPanel::Texts NetworkConfigPanel::shown() const
{
    const QHostAddress local = localAddress();
    return {protocol(),
            local == QHostAddress::Any ? kAll : local.toString(),
            serverAddress(),
            portText(),
            PeerAddress::cleaned(m_destination->text()),
            m_destinationPort->text().trimmed()};
}

void NetworkConfigPanel::loadDefaults()
{
    m_isLoading = true;
    const Texts last = opened();
    const Settings::NetworkPage &own = Settings::instance().networkPage;
    m_local->setAddress(kept(own.localAddress, last.local));
    m_server->setText(kept(own.serverAddress, last.server));
    m_port->setText(kept(own.port, last.port));
    m_destination->setText(kept(own.destinationAddress, last.destination));
    m_destinationPort->setText(kept(own.destinationPort, last.destinationPort));
    m_protocol->setCurrentIndex(own.type >= 0 ? own.type.value() : last.protocol);
    m_isLoading = false;
    namePort();
}

void NetworkConfigPanel::namePort()
{
    m_localLabel->setText(protocol() == Udp ? QStringLiteral("本地IP地址") : QStringLiteral("2.本地IP地址"));
    m_portLabel->setText(protocol() == Udp ? QStringLiteral("2.本地端口") : QStringLiteral("3.服务器端口"));
}

void NetworkConfigPanel::saveDefaults()
{
    const Texts now = shown();
    Settings::NetworkDefaults &kept = Settings::instance().network;
    kept.type.set(now.protocol);
    kept.address.set(now.protocol == TcpClient ? now.server : now.local);
    kept.port.set(port());
    keepTexts();
}

void NetworkConfigPanel::keepTexts()
{
    if (m_isLoading)
        return;
    const Texts now = shown();
    const Texts last = opened();
    Settings::NetworkPage &own = Settings::instance().networkPage;
    own.type.change(now.protocol == last.protocol ? -1 : now.protocol);
    keep(&own.localAddress, now.local, last.local, !localAddress().isNull());
    keep(&own.serverAddress, now.server, last.server, !now.server.isEmpty());
    keep(&own.port, now.port, last.port, port() != 0);
    keep(&own.destinationAddress, now.destination, last.destination, !destinationAddress().isNull());
    keep(&own.destinationPort, now.destinationPort, last.destinationPort, destinationPort() != 0);
}

void NetworkConfigPanel::remember(FieldMemory *memory)
{
    memory->add(m_reconnect, &Settings::instance().networkPage.reconnects);
    memory->add(m_unfoldMulticast, &Settings::instance().networkPage.showsMulticast);
}

bool NetworkConfigPanel::reconnects() const
{
    return m_reconnect->isChecked();
}
