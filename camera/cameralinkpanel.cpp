#include "cameralinkpanel.h"

#include "baudratebox.h"
#include "localaddressbox.h"
#include "portcombobox.h"
#include "portname.h"
#include "settings.h"

#include <QLineEdit>

CameraLinkPanel::CameraLinkPanel(QWidget *parent)
    : NetworkFields(QStringLiteral("连接配置"), QStringLiteral("1.协议类型"), QStringLiteral("Camera"),
                    parent)
    , m_serial(new PortComboBox(this))
    , m_baudRate(new BaudRateBox(
          QStringLiteral("9600 115200 230400 460800 921600 1000000 1500000 2000000 3000000"), this))
{
    m_protocol->setObjectName(QStringLiteral("comboCameraProtocol"));
    m_protocol->addItem(QStringLiteral("串口"));

    m_serial->setObjectName(QStringLiteral("comboCameraSerialPort"));
    m_baudRate->setObjectName(QStringLiteral("comboCameraBaudRate"));
    m_baudRate->setToolTip(QStringLiteral("8位数据位，无校验，1位停止位；可输入其他波特率"));
    for (QComboBox *box : {static_cast<QComboBox *>(m_serial), m_baudRate})
        letShrink(box);
    addField(QStringLiteral("2.串口"), m_serial, {Serial});
    addField(QStringLiteral("3.波特率"), m_baudRate, {Serial});
    addButton();
    loadDefaults();
    // A port that the user has chosen is not exchanged any more.
    connect(m_serial, QOverload<int>::of(&QComboBox::activated), this, [this] { m_wantedPort.clear(); });
}

void CameraLinkPanel::loadDefaults()
{
    const Settings::CameraDefaults &defaults = Settings::instance().camera;
    m_local->setAddress(defaults.localAddress);
    m_server->setText(defaults.serverAddress);
    m_port->setText(QString::number(defaults.port));
    m_destination->setText(defaults.destinationAddress);
    m_destinationPort->setText(QString::number(defaults.destinationPort));
    m_baudRate->setCurrentText(QString::number(defaults.baudRate));
    m_wantedPort = defaults.serialPort;
    m_protocol->setCurrentIndex(defaults.type);
}

void CameraLinkPanel::saveDefaults() const
{
    Settings::CameraDefaults &kept = Settings::instance().camera;
    kept.type.change(protocol());
    if (protocol() == Serial) {
        kept.serialPort.change(PortName::fromEntry(serialPort()));
        kept.baudRate.change(baudRate());
        return;
    }
    kept.port.change(int(port()));
    if (protocol() == TcpClient) {
        kept.serverAddress.change(serverAddress());
        return;
    }
    const QHostAddress local = localAddress();
    kept.localAddress.change(local == QHostAddress::Any ? QStringLiteral("0.0.0.0") : local.toString());
    if (protocol() == Udp && !destinationAddress().isNull() && destinationPort() != 0) {
        kept.destinationAddress.change(destinationAddress().toString());
        kept.destinationPort.change(int(destinationPort()));
    }
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
    for (const QString &entry : entries) {
        if (m_wantedPort.isEmpty() || PortName::fromEntry(entry) != m_wantedPort)
            continue;
        m_serial->selectEntry(entry);
        m_wantedPort.clear();
    }
}
