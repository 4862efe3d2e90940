#include "networkconfigpanel.h"

#include "localaddressbox.h"
#include "settings.h"

#include <QLabel>
#include <QLineEdit>

NetworkConfigPanel::NetworkConfigPanel(QWidget *parent)
    : NetworkFields(QStringLiteral("网络配置"), QStringLiteral("1. 协议类型"), QString(), parent)
{
    m_protocol->setObjectName(QStringLiteral("comboNetType"));
    addButton();
    loadDefaults();
    m_destinationPort->setText(m_port->text());
    connect(this, &NetworkFields::protocolChanged, this, &NetworkConfigPanel::namePort);
}

// Stored are the protocol, address and port of the last link that was opened;
// the address belongs to that protocol. 127.0.0.1, which a first start writes,
// narrows no server.
void NetworkConfigPanel::loadDefaults()
{
    const auto loopback = QStringLiteral("127.0.0.1");
    const auto &defaults = Settings::instance().network;
    const bool isClient = defaults.type == TcpClient;
    m_local->setAddress(isClient || defaults.address == loopback ? QStringLiteral("0.0.0.0")
                                                                 : defaults.address);
    m_server->setText(isClient ? defaults.address : loopback);
    m_port->setText(QString::number(defaults.port));
    m_protocol->setCurrentIndex(defaults.type);
    namePort();
}

void NetworkConfigPanel::namePort()
{
    m_localLabel->setText(protocol() == Udp ? QStringLiteral("本地IP地址") : QStringLiteral("2.本地IP地址"));
    m_portLabel->setText(protocol() == Udp ? QStringLiteral("2.本地端口") : QStringLiteral("3.服务器端口"));
}

void NetworkConfigPanel::saveDefaults() const
{
    const QHostAddress local = localAddress();
    const QString address = protocol() == TcpClient      ? serverAddress()
                            : local == QHostAddress::Any ? QStringLiteral("0.0.0.0")
                                                         : local.toString();
    Settings::NetworkDefaults &kept = Settings::instance().network;
    kept.type.set(protocol());
    kept.address.set(address);
    kept.port.set(port());
}
