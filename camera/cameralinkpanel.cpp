#include "camera/cameralinkpanel.h"

#include "network/localaddressbox.h"
#include "network/peeraddress.h"
#include "shell/base/portcombobox.h"
#include "shell/base/qtmessagetip.h"

#include <QIntValidator>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QStyle>

namespace {

struct Captions
{
    QString open;
    QString close;
    QString idle;
};

Captions captionsOf(int protocol)
{
    switch (protocol) {
    case CameraLinkPanel::TcpServer:
        return {QStringLiteral("开始监听"), QStringLiteral("停止监听"), QStringLiteral("未监听")};
    case CameraLinkPanel::TcpClient:
        return {QStringLiteral("建立连接"), QStringLiteral("断开连接"), QStringLiteral("未连接")};
    case CameraLinkPanel::Udp:
        return {QStringLiteral("打开"), QStringLiteral("关闭"), QStringLiteral("未打开")};
    default:
        return {QStringLiteral("打开串口"), QStringLiteral("关闭串口"), QStringLiteral("未打开")};
    }
}

} // namespace

CameraLinkPanel::CameraLinkPanel(QWidget *parent)
    : FormGroup(QStringLiteral("连接配置"), parent)
    , m_protocol(new QComboBox(this))
    , m_local(new LocalAddressBox(this))
    , m_server(new QLineEdit(QStringLiteral("127.0.0.1"), this))
    , m_port(new QLineEdit(QStringLiteral("8000"), this))
    , m_destination(new QLineEdit(QStringLiteral("127.0.0.1"), this))
    , m_destinationPort(new QLineEdit(QStringLiteral("8000"), this))
    , m_serial(new PortComboBox(this))
    , m_baudRate(new QComboBox(this))
    , m_open(new QPushButton(this))
    , m_state(new QLabel(this))
{
    buildUi();
    connect(m_protocol, QOverload<int>::of(&QComboBox::currentIndexChanged), this, [this](int index) {
        showProtocol();
        emit protocolChanged(index);
    });
    connect(m_open, &QPushButton::clicked, this, &CameraLinkPanel::openClicked);
    showProtocol();
    showState({});
}

void CameraLinkPanel::buildUi()
{
    m_protocol->setObjectName(QStringLiteral("comboCameraProtocol"));
    m_local->setObjectName(QStringLiteral("comboCameraLocalAddress"));
    m_server->setObjectName(QStringLiteral("editCameraServerAddress"));
    m_port->setObjectName(QStringLiteral("editCameraPort"));
    m_destination->setObjectName(QStringLiteral("editCameraDestinationAddress"));
    m_destinationPort->setObjectName(QStringLiteral("editCameraDestinationPort"));
    m_serial->setObjectName(QStringLiteral("comboCameraSerialPort"));
    m_baudRate->setObjectName(QStringLiteral("comboCameraBaudRate"));
    m_open->setObjectName(QStringLiteral("btnCameraOpen"));
    m_open->setProperty("primary", true);
    m_state->setObjectName(QStringLiteral("labelCameraLinkState"));
    m_state->setWordWrap(true);

    m_protocol->addItems({QStringLiteral("TCP Server"), QStringLiteral("TCP Client"), QStringLiteral("UDP"),
                          QStringLiteral("串口")});
    m_baudRate->setEditable(true);
    m_baudRate->addItems(QStringLiteral("9600 115200 230400 460800 921600 1000000 1500000 2000000 3000000")
                             .split(QLatin1Char(' ')));
    m_baudRate->setValidator(new QIntValidator(1, 100000000, m_baudRate));
    m_baudRate->setCurrentText(QStringLiteral("921600"));
    m_baudRate->setToolTip(QStringLiteral("8位数据位，无校验，1位停止位；可输入其它波特率"));
    for (QComboBox *box : {static_cast<QComboBox *>(m_serial), m_baudRate}) {
        box->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
        box->setMinimumContentsLength(6);
    }
    m_server->setToolTip(QStringLiteral("IP地址或主机名"));
    for (QLineEdit *port : {m_port, m_destinationPort})
        port->setToolTip(QStringLiteral("1到65535"));

    addRow(QStringLiteral("1.协议类型"), m_protocol);
    const auto row = [this](const QString &label, QWidget *field, const QList<int> &protocols) {
        m_rows.append({addRow(label, field), field, protocols});
    };
    row(QStringLiteral("2.本地IP地址"), m_local, {TcpServer, Udp});
    row(QStringLiteral("2.服务器IP地址"), m_server, {TcpClient});
    row(QStringLiteral("3.端口"), m_port, {TcpServer, TcpClient, Udp});
    row(QStringLiteral("目的地址:"), m_destination, {Udp});
    row(QStringLiteral("目的端口:"), m_destinationPort, {Udp});
    row(QStringLiteral("2.串口"), m_serial, {Serial});
    row(QStringLiteral("3.波特率"), m_baudRate, {Serial});
    addWide(m_open);
    addWide(m_state);
}

void CameraLinkPanel::showProtocol()
{
    for (const Row &row : qAsConst(m_rows)) {
        const bool needed = row.protocols.contains(protocol());
        row.label->setVisible(needed);
        row.field->setVisible(needed);
    }
    setOpenState(m_isOpen);
}

int CameraLinkPanel::protocol() const
{
    return m_protocol->currentIndex();
}

QHostAddress CameraLinkPanel::localAddress() const
{
    return m_local->address();
}

QString CameraLinkPanel::serverAddress() const
{
    return m_server->text().trimmed();
}

quint16 CameraLinkPanel::port() const
{
    return PeerAddress::portFromText(m_port->text());
}

QHostAddress CameraLinkPanel::destinationAddress() const
{
    return PeerAddress::fromText(m_destination->text());
}

quint16 CameraLinkPanel::destinationPort() const
{
    return PeerAddress::portFromText(m_destinationPort->text());
}

QString CameraLinkPanel::serialPort() const
{
    return m_serial->currentText();
}

int CameraLinkPanel::baudRate() const
{
    return m_baudRate->currentText().toInt();
}

void CameraLinkPanel::setSerialPorts(const QStringList &entries)
{
    m_serial->setPorts(entries);
}

// Where datagrams go can be changed at any time.
void CameraLinkPanel::setOpenState(bool open)
{
    m_isOpen = open;
    for (QWidget *field :
         std::initializer_list<QWidget *>{m_protocol, m_local, m_server, m_port, m_serial, m_baudRate})
        field->setEnabled(!open);
    const Captions captions = captionsOf(protocol());
    m_open->setText(open ? captions.close : captions.open);
}

void CameraLinkPanel::showState(const QString &text, bool isError)
{
    m_state->setText(text.isEmpty() ? captionsOf(protocol()).idle : text);
    m_state->setProperty("kind", isError ? QStringLiteral("error") : QStringLiteral("hint"));
    m_state->style()->unpolish(m_state);
    m_state->style()->polish(m_state);
}

void CameraLinkPanel::hintPort()
{
    QtMessageTip::showBelow(m_port, QStringLiteral("端口范围为1到65535！"));
}

void CameraLinkPanel::hintAddress()
{
    QtMessageTip::showBelow(protocol() == TcpClient ? static_cast<QWidget *>(m_server) : m_local,
                            QStringLiteral("IP地址无效！"));
}
