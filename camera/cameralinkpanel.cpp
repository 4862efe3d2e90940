#include "camera/cameralinkpanel.h"

#include "shell/base/baudratebox.h"
#include "shell/base/portcombobox.h"

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
    m_port->setText(QStringLiteral("8000"));
    m_destinationPort->setText(QStringLiteral("8000"));

    m_serial->setObjectName(QStringLiteral("comboCameraSerialPort"));
    m_baudRate->setObjectName(QStringLiteral("comboCameraBaudRate"));
    m_baudRate->setCurrentText(QStringLiteral("921600"));
    m_baudRate->setToolTip(QStringLiteral("8位数据位，无校验，1位停止位；可输入其它波特率"));
    for (QComboBox *box : {static_cast<QComboBox *>(m_serial), m_baudRate}) {
        box->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
        box->setMinimumContentsLength(6);
    }
    addField(QStringLiteral("2.串口"), m_serial, {Serial});
    addField(QStringLiteral("3.波特率"), m_baudRate, {Serial});
    addButton();
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
