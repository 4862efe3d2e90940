#include "network/networkconfigpanel.h"

#include "app/settings.h"
#include "network/localaddressbox.h"
#include "network/peeraddress.h"
#include "shell/base/qtmessagetip.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QStyle>

namespace {

const auto kLoopback = QStringLiteral("127.0.0.1");
const auto kAllInterfaces = QStringLiteral("0.0.0.0");

QString openCaption(int type)
{
    switch (type) {
    case NetworkConfigPanel::TcpServer:
        return QStringLiteral("开始监听");
    case NetworkConfigPanel::TcpClient:
        return QStringLiteral("建立连接");
    default:
        return QStringLiteral("打开");
    }
}

QString closeCaption(int type)
{
    switch (type) {
    case NetworkConfigPanel::TcpServer:
        return QStringLiteral("停止监听");
    case NetworkConfigPanel::TcpClient:
        return QStringLiteral("断开连接");
    default:
        return QStringLiteral("关闭");
    }
}

QString idleText(int type)
{
    switch (type) {
    case NetworkConfigPanel::TcpServer:
        return QStringLiteral("未监听");
    case NetworkConfigPanel::TcpClient:
        return QStringLiteral("未连接");
    default:
        return QStringLiteral("未打开");
    }
}

} // namespace

void NetworkConfigPanel::Row::setVisible(bool visible)
{
    label->setVisible(visible);
    field->setVisible(visible);
}

NetworkConfigPanel::NetworkConfigPanel(QWidget *parent)
    : FormGroup(QStringLiteral("网络配置"), parent)
    , m_type(new QComboBox(this))
    , m_local(new LocalAddressBox(this))
    , m_server(new QLineEdit(this))
    , m_port(new QLineEdit(this))
    , m_destination(new QLineEdit(kLoopback, this))
    , m_destinationPort(new QLineEdit(this))
    , m_open(new QPushButton(this))
    , m_state(new QLabel(this))
{
    buildUi();
    loadDefaults();
    m_destinationPort->setText(m_port->text());
    connect(m_type, QOverload<int>::of(&QComboBox::currentIndexChanged), this, [this](int index) {
        showType();
        emit typeChanged(index);
    });
    connect(m_open, &QPushButton::clicked, this, &NetworkConfigPanel::openClicked);
}

void NetworkConfigPanel::buildUi()
{
    m_type->setObjectName(QStringLiteral("comboNetType"));
    m_local->setObjectName(QStringLiteral("comboLocalAddress"));
    m_server->setObjectName(QStringLiteral("editServerAddress"));
    m_port->setObjectName(QStringLiteral("editPort"));
    m_destination->setObjectName(QStringLiteral("editDestinationAddress"));
    m_destinationPort->setObjectName(QStringLiteral("editDestinationPort"));
    m_open->setObjectName(QStringLiteral("btnOpen"));
    m_open->setProperty("primary", true);
    m_state->setObjectName(QStringLiteral("labelLinkState"));
    m_state->setWordWrap(true);

    m_type->addItems({QStringLiteral("TCP Server"), QStringLiteral("TCP Client"), QStringLiteral("UDP")});
    m_local->setToolTip(QStringLiteral("可选择或输入本机的一个地址，只在该地址上接收"));
    m_server->setToolTip(QStringLiteral("IP地址或主机名"));
    m_server->setPlaceholderText(QStringLiteral("IP地址或主机名"));
    m_destination->setToolTip(QStringLiteral("IPv4或IPv6地址，可以是广播地址"));
    for (QLineEdit *port : {m_port, m_destinationPort})
        port->setToolTip(QStringLiteral("1到65535"));

    const auto row = [this](const QString &label, QWidget *field) {
        return Row{addRow(label, field), field};
    };
    row(QStringLiteral("1. 协议类型"), m_type);
    m_localRow = row(QStringLiteral("2.本地IP地址"), m_local);
    m_serverRow = row(QStringLiteral("2.服务器IP地址"), m_server);
    m_portRow = row(QString(), m_port);
    m_destinationRow = row(QStringLiteral("目的地址:"), m_destination);
    m_destinationPortRow = row(QStringLiteral("目的端口:"), m_destinationPort);
    addWide(m_open);
    addWide(m_state);
}

// Stored are the protocol, address and port of the last link that was opened;
// the address belongs to that protocol. 127.0.0.1, which a first start writes,
// narrows no server.
void NetworkConfigPanel::loadDefaults()
{
    const auto &defaults = Settings::instance().network;
    const bool isClient = defaults.type == TcpClient;
    m_local->setAddress(isClient || defaults.address == kLoopback ? kAllInterfaces : defaults.address);
    m_server->setText(isClient ? defaults.address : kLoopback);
    m_port->setText(QString::number(defaults.port));
    m_type->setCurrentIndex(defaults.type);
    showType();
}

// Labels, rows and caption follow the protocol.
void NetworkConfigPanel::showType()
{
    const bool isClient = type() == TcpClient;
    const bool isUdp = type() == Udp;
    m_localRow.setVisible(!isClient);
    m_serverRow.setVisible(isClient);
    m_portRow.label->setText(isUdp ? QStringLiteral("2.本地端口") : QStringLiteral("3.服务器端口"));
    m_destinationRow.setVisible(isUdp);
    m_destinationPortRow.setVisible(isUdp);
    setOpenState(m_isOpen);
}

int NetworkConfigPanel::type() const
{
    return m_type->currentIndex();
}

QHostAddress NetworkConfigPanel::localAddress() const
{
    return m_local->address();
}

QString NetworkConfigPanel::serverAddress() const
{
    return m_server->text().trimmed();
}

QString NetworkConfigPanel::portText() const
{
    return m_port->text().trimmed();
}

quint16 NetworkConfigPanel::port() const
{
    return PeerAddress::portFromText(m_port->text());
}

QHostAddress NetworkConfigPanel::destinationAddress() const
{
    return PeerAddress::fromText(m_destination->text());
}

quint16 NetworkConfigPanel::destinationPort() const
{
    return PeerAddress::portFromText(m_destinationPort->text());
}

void NetworkConfigPanel::setOpenState(bool open)
{
    m_isOpen = open;
    for (QWidget *field : {static_cast<QWidget *>(m_type), static_cast<QWidget *>(m_local),
                           static_cast<QWidget *>(m_server), static_cast<QWidget *>(m_port)})
        field->setEnabled(!open);
    m_open->setText(open ? closeCaption(type()) : openCaption(type()));
}

void NetworkConfigPanel::showState(const QString &text, bool isError)
{
    m_state->setText(text.isEmpty() ? idleText(type()) : text);
    m_state->setProperty("kind", isError ? QStringLiteral("error") : QStringLiteral("hint"));
    m_state->style()->unpolish(m_state);
    m_state->style()->polish(m_state);
}

void NetworkConfigPanel::hintPort()
{
    QtMessageTip::showBelow(m_port, QStringLiteral("端口范围为1到65535！"));
}

void NetworkConfigPanel::hintAddress()
{
    QtMessageTip::showBelow(type() == TcpClient ? static_cast<QWidget *>(m_server) : m_local,
                            QStringLiteral("IP地址无效！"));
}
