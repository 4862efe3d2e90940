#include "networkfields.h"

#include "buttonrole.h"
#include "clickonce.h"
#include "localaddressbox.h"
#include "peeraddress.h"
#include "qtmessagetip.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QStyle>

namespace {

const auto kLoopback = QStringLiteral("127.0.0.1");

struct Captions
{
    QString open;
    QString close;
    QString idle;
};

Captions captionsOf(int protocol)
{
    switch (protocol) {
    case NetworkFields::TcpServer:
        return {QStringLiteral("开始监听"), QStringLiteral("停止监听"), QStringLiteral("未监听")};
    case NetworkFields::TcpClient:
        return {QStringLiteral("建立连接"), QStringLiteral("断开连接"), QStringLiteral("未连接")};
    case NetworkFields::Udp:
        return {QStringLiteral("打开"), QStringLiteral("关闭"), QStringLiteral("未打开")};
    default:
        return {QStringLiteral("打开串口"), QStringLiteral("关闭串口"), QStringLiteral("未打开")};
    }
}

} // namespace

NetworkFields::NetworkFields(const QString &title, const QString &protocolLabel, const QString &mark,
                             QWidget *parent)
    : FormGroup(title, parent)
    , m_protocol(new QComboBox(this))
    , m_local(new LocalAddressBox(this))
    , m_server(new QLineEdit(kLoopback, this))
    , m_port(new QLineEdit(this))
    , m_destination(new QLineEdit(kLoopback, this))
    , m_destinationPort(new QLineEdit(this))
    , m_open(new QPushButton(this))
    , m_state(new QLabel(this))
{
    nameFields(mark);
    buildUi(protocolLabel);
    connect(m_protocol, QOverload<int>::of(&QComboBox::currentIndexChanged), this, [this](int index) {
        showProtocol();
        emit protocolChanged(index);
    });
    connect(m_open, &QPushButton::clicked, this, &NetworkFields::openClicked);
}

void NetworkFields::nameFields(const QString &mark)
{
    m_local->setObjectName(QStringLiteral("combo%1LocalAddress").arg(mark));
    m_server->setObjectName(QStringLiteral("edit%1ServerAddress").arg(mark));
    m_port->setObjectName(QStringLiteral("edit%1Port").arg(mark));
    m_destination->setObjectName(QStringLiteral("edit%1DestinationAddress").arg(mark));
    m_destinationPort->setObjectName(QStringLiteral("edit%1DestinationPort").arg(mark));
    m_open->setObjectName(QStringLiteral("btn%1Open").arg(mark));
    m_state->setObjectName(QStringLiteral("label%1LinkState").arg(mark));
}

void NetworkFields::buildUi(const QString &protocolLabel)
{
    m_open->setProperty("primary", true);
    ClickOnce::install(m_open);
    m_state->setWordWrap(true);
    m_protocol->addItems({QStringLiteral("TCP Server"), QStringLiteral("TCP Client"), QStringLiteral("UDP")});
    m_local->setToolTip(QStringLiteral("可选择或输入本机的一个地址，只在该地址上接收"));
    m_server->setToolTip(QStringLiteral("IP地址或主机名"));
    m_server->setPlaceholderText(QStringLiteral("IP地址或主机名"));
    m_destination->setToolTip(QStringLiteral("IPv4或IPv6地址，可以是广播地址"));
    for (QLineEdit *port : {m_port, m_destinationPort})
        port->setToolTip(QStringLiteral("1到65535"));

    addRow(protocolLabel, m_protocol);
    m_localLabel = addField(QStringLiteral("2.本地IP地址"), m_local, {TcpServer, Udp});
    addField(QStringLiteral("2.服务器IP地址"), m_server, {TcpClient});
    m_portLabel = addField(QStringLiteral("3.端口"), m_port, {TcpServer, TcpClient, Udp});
    addField(QStringLiteral("目的地址:"), m_destination, {Udp}, false);
    addField(QStringLiteral("目的端口:"), m_destinationPort, {Udp}, false);
}

QLabel *NetworkFields::addField(const QString &label, QWidget *field, const QList<int> &protocols,
                                bool isPartOfLink)
{
    m_rows.append({addRow(label, field), field, protocols, isPartOfLink});
    return m_rows.last().label;
}

void NetworkFields::showFor(const QList<int> &protocols, QWidget *widget)
{
    m_rows.append({nullptr, widget, protocols, false});
    widget->setVisible(protocols.contains(protocol()));
}

void NetworkFields::addButton(const QList<QWidget *> &beside, QWidget *besideState)
{
    QWidget *before = m_rows.last().field;
    const auto addBeside = [&](QWidget *first, const QList<QWidget *> &others) {
        if (others.isEmpty())
            return addWide(first);
        QHBoxLayout *line = addLine();
        line->addWidget(first, 1);
        for (QWidget *widget : others)
            line->addWidget(widget);
    };
    addBeside(m_open, beside);
    addBeside(m_state, besideState ? QList<QWidget *>{besideState} : QList<QWidget *>());
    for (QWidget *widget : QList<QWidget *>{m_open} + beside + QList<QWidget *>{besideState}) {
        if (widget)
            setTabOrder(before, widget);
        before = widget;
    }
    showProtocol();
    showState({});
}

void NetworkFields::showProtocol()
{
    for (const Row &row : qAsConst(m_rows)) {
        const bool needed = row.protocols.contains(protocol());
        if (row.label)
            row.label->setVisible(needed);
        row.field->setVisible(needed);
    }
    setOpenState(m_isOpen);
}

int NetworkFields::protocol() const
{
    return m_protocol->currentIndex();
}

QHostAddress NetworkFields::localAddress() const
{
    return m_local->address();
}

QString NetworkFields::serverAddress() const
{
    return PeerAddress::cleaned(m_server->text());
}

QString NetworkFields::portText() const
{
    return m_port->text().trimmed();
}

quint16 NetworkFields::port() const
{
    return PeerAddress::portFromText(m_port->text());
}

QHostAddress NetworkFields::destinationAddress() const
{
    return PeerAddress::fromText(m_destination->text());
}

quint16 NetworkFields::destinationPort() const
{
    return PeerAddress::portFromText(m_destinationPort->text());
}

QString NetworkFields::checkFields()
{
    if (protocol() == Serial)
        return {};
    const bool isClient = protocol() == TcpClient;
    if (port() == 0) {
        QtMessageTip::showBelow(m_port, QStringLiteral("端口范围为1到65535！"));
        return QStringLiteral("端口无效，范围为1到65535");
    }
    if (isClient ? !serverAddress().isEmpty() : !localAddress().isNull())
        return {};
    QtMessageTip::showBelow(isClient ? static_cast<QWidget *>(m_server) : m_local,
                            QStringLiteral("IP地址无效！"));
    return QStringLiteral("IP地址无效");
}

void NetworkFields::setOpenState(bool open)
{
    m_isOpen = open;
    m_protocol->setEnabled(!open);
    for (const Row &row : qAsConst(m_rows))
        row.field->setEnabled(!open || !row.isPartOfLink);
    const Captions captions = captionsOf(protocol());
    m_open->setText(open ? captions.close : captions.open);
    m_open->setToolTip(QStringLiteral("快捷键：F5"));
    ButtonRole::setPrimary(m_open, !open);
}

void NetworkFields::setWaiting()
{
    setOpenState(true);
    m_open->setText(QStringLiteral("停止等待"));
    m_open->setToolTip(QStringLiteral("不再重新连接（F5）"));
}

void NetworkFields::showState(const QString &text, bool isError)
{
    m_state->setText(text.isEmpty() ? captionsOf(protocol()).idle : text);
    m_state->setProperty("kind", isError ? QStringLiteral("error") : QStringLiteral("hint"));
    m_state->style()->unpolish(m_state);
    m_state->style()->polish(m_state);
}
