#include "serialconfigpanel.h"

#include "baudratebox.h"
#include "buttonrole.h"
#include "clickonce.h"
#include "portcombobox.h"
#include "portname.h"
#include "settings.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QPushButton>

namespace {

const QString kBaudRates = QStringLiteral(
    "1200 2400 4800 9600 14400 19200 38400 57600 76800 115200 128000 230400 256000 460800 500000 "
    "576000 921600 1000000 1152000 1500000 2000000 2500000 3000000 3500000 4000000");

} // namespace

SerialConfigPanel::SerialConfigPanel(QWidget *parent)
    : FormGroup(QStringLiteral("串口配置"), parent)
    , m_port(new PortComboBox(this))
    , m_baudRate(new BaudRateBox(kBaudRates, this))
    , m_parity(new QComboBox(this))
    , m_dataBits(new QComboBox(this))
    , m_stopBits(new QComboBox(this))
    , m_open(new QPushButton(QStringLiteral("打开串口"), this))
    , m_reconnect(new QCheckBox(QStringLiteral("断线自动重连"), this))
{
    buildUi();
    loadDefaults();
    connect(m_open, &QPushButton::clicked, this, &SerialConfigPanel::openClicked);
    connect(m_reconnect, &QCheckBox::toggled, this, [this](bool reconnects) {
        Settings::instance().serialPage.reconnects.change(reconnects);
        emit reconnectChanged(reconnects);
    });
    connect(m_port, QOverload<int>::of(&QComboBox::activated), this, &SerialConfigPanel::rememberPort);
}

void SerialConfigPanel::buildUi()
{
    m_port->setObjectName(QStringLiteral("comboPort"));
    m_baudRate->setObjectName(QStringLiteral("comboBaudRate"));
    m_parity->setObjectName(QStringLiteral("comboParity"));
    m_dataBits->setObjectName(QStringLiteral("comboDataBits"));
    m_stopBits->setObjectName(QStringLiteral("comboStopBits"));
    m_open->setObjectName(QStringLiteral("btnOpen"));
    m_open->setProperty("primary", true);
    m_reconnect->setObjectName(QStringLiteral("checkReconnect"));
    m_reconnect->setToolTip(QStringLiteral("设备断开后等待同一设备，恢复后按相同参数自动打开"));
    ClickOnce::install(m_open);

    m_dataBits->addItems(
        {QStringLiteral("5"), QStringLiteral("6"), QStringLiteral("7"), QStringLiteral("8")});
    m_stopBits->addItems({QStringLiteral("1"), QStringLiteral("1.5"), QStringLiteral("2")});
    m_parity->addItems({QStringLiteral("无校验"), QStringLiteral("奇校验"), QStringLiteral("偶校验"),
                        QStringLiteral("标志(1)"), QStringLiteral("空格(0)")});
    // A long description must not widen the panel; the list shows all of it.
    for (QComboBox *box :
         std::initializer_list<QComboBox *>{m_port, m_baudRate, m_parity, m_dataBits, m_stopBits})
        FormGroup::letShrink(box);

    addRow(QStringLiteral("端口"), m_port);
    addRow(QStringLiteral("波特率"), m_baudRate);
    addRow(QStringLiteral("校验位"), m_parity);
    addRow(QStringLiteral("数据位"), m_dataBits, QStringLiteral("停止位"), m_stopBits);
    QHBoxLayout *link = addLine();
    link->addWidget(m_open, 1);
    link->addWidget(m_reconnect);
}

void SerialConfigPanel::loadDefaults()
{
    const Settings::SerialDefaults &defaults = Settings::instance().serial;
    m_baudRate->setBaudRate(defaults.baudRate);
    // Stored numbers mean the entries with these texts; an unknown one leaves
    // the list's usual choice.
    const auto choose = [](QComboBox *box, int number, const QString &usual) {
        const int index = box->findText(QString::number(number));
        box->setCurrentIndex(index >= 0 ? index : box->findText(usual));
    };
    choose(m_dataBits, defaults.dataBits, QStringLiteral("8"));
    choose(m_stopBits, defaults.stopBits, QStringLiteral("1"));
    m_parity->setCurrentIndex(defaults.parity);
    m_reconnect->setChecked(Settings::instance().serialPage.reconnects);
}

void SerialConfigPanel::rememberDefaults()
{
    Settings::SerialDefaults &defaults = Settings::instance().serial;
    defaults.baudRate.set(m_baudRate->baudRate());
    defaults.dataBits.set(m_dataBits->currentText().toInt());
    defaults.openedStopBits.set(m_stopBits->currentIndex());
    defaults.parity.set(m_parity->currentIndex());
    rememberPort();
}

void SerialConfigPanel::storeChosen()
{
    Settings::SerialDefaults &defaults = Settings::instance().serial;
    defaults.baudRate.setForThisRun(m_baudRate->baudRate());
    defaults.dataBits.setForThisRun(m_dataBits->currentText().toInt());
    defaults.stopBits.setForThisRun(m_stopBits->currentText().toInt());
    defaults.parity.setForThisRun(m_parity->currentIndex());
    rememberPort();
}

bool SerialConfigPanel::choosePort(const QString &name)
{
    m_isPortChosen = true;
    const bool isThere = selectPort(name);
    if (!isThere)
        m_port->setEditText(name);
    return isThere;
}

void SerialConfigPanel::chooseBaudRate(int baudRate)
{
    m_baudRate->setBaudRate(baudRate);
}

void SerialConfigPanel::rememberPort()
{
    m_isPortChosen = true;
    Settings::instance().serialPage.port.change(PortName::fromEntry(portText()));
}

QString SerialConfigPanel::portText() const
{
    return m_port->currentText();
}

SerialSettings SerialConfigPanel::chosen() const
{
    static const QSerialPort::StopBits stopBits[] = {QSerialPort::OneStop, QSerialPort::OneAndHalfStop,
                                                     QSerialPort::TwoStop};
    static const QSerialPort::Parity parities[] = {QSerialPort::NoParity, QSerialPort::OddParity,
                                                   QSerialPort::EvenParity, QSerialPort::MarkParity,
                                                   QSerialPort::SpaceParity};
    SerialSettings settings;
    settings.name = PortName::fromEntry(portText());
    settings.baudRate = m_baudRate->baudRate();
    settings.dataBits = static_cast<QSerialPort::DataBits>(m_dataBits->currentText().toInt());
    settings.stopBits = stopBits[m_stopBits->currentIndex()];
    settings.parity = parities[m_parity->currentIndex()];
    return settings;
}

void SerialConfigPanel::setPorts(const QStringList &entries)
{
    m_port->setPorts(entries);
    if (!m_isPortChosen)
        selectPort(Settings::instance().serialPage.port);
}

bool SerialConfigPanel::selectEntry(const QString &entry)
{
    return m_port->selectEntry(entry);
}

void SerialConfigPanel::setOpenState(bool open)
{
    for (QComboBox *box :
         std::initializer_list<QComboBox *>{m_port, m_baudRate, m_parity, m_dataBits, m_stopBits})
        box->setEnabled(!open);
    m_open->setText(open ? QStringLiteral("关闭串口") : QStringLiteral("打开串口"));
    ButtonRole::setPrimary(m_open, !open);
    m_open->setEnabled(true);
    m_open->setToolTip(QStringLiteral("快捷键：F5"));
}

void SerialConfigPanel::setOpening()
{
    setOpenState(true);
    m_open->setText(QStringLiteral("取消打开"));
    m_open->setToolTip(QStringLiteral("设备（如蓝牙串口）正在连接，单击不再等待（F5）"));
}

void SerialConfigPanel::setClosing()
{
    m_open->setText(QStringLiteral("正在关闭…"));
    m_open->setEnabled(false);
    m_open->setToolTip(QStringLiteral("正在等待已写入的数据发出，最长10秒"));
}

void SerialConfigPanel::setWaiting()
{
    setOpenState(true);
    m_open->setText(QStringLiteral("停止等待"));
    m_open->setToolTip(QStringLiteral("不再等待设备重新连接（F5）"));
}

bool SerialConfigPanel::reconnects() const
{
    return m_reconnect->isChecked();
}

bool SerialConfigPanel::selectPort(const QString &name)
{
    for (int i = 0; i < m_port->count(); ++i) {
        if (PortName::fromEntry(m_port->itemText(i)) == name) {
            m_port->setCurrentIndex(i);
            return true;
        }
    }
    return false;
}

void SerialConfigPanel::showPort(const QString &name)
{
    if (!selectPort(name))
        m_port->setEditText(name);
}

void SerialConfigPanel::setHandedOver()
{
    m_open->setEnabled(false);
    m_open->setToolTip(QStringLiteral("正在传输文件，停止发送后才能关闭串口"));
}
