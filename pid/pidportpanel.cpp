#include "pidportpanel.h"

#include "buttonrole.h"
#include "clickonce.h"
#include "portcombobox.h"
#include "portname.h"
#include "settings.h"

#include <QPushButton>

PidPortPanel::PidPortPanel(QWidget *parent)
    : FormGroup(QStringLiteral("串口配置"), parent)
    , m_port(new PortComboBox(this))
    , m_baudRate(new QComboBox(this))
    , m_open(new QPushButton(QStringLiteral("打开串口"), this))
{
    m_port->setObjectName(QStringLiteral("comboPidPort"));
    m_baudRate->setObjectName(QStringLiteral("comboPidBaudRate"));
    m_open->setObjectName(QStringLiteral("btnPidOpen"));
    m_open->setProperty("primary", true);
    ClickOnce::install(m_open);

    m_baudRate->addItems(QStringLiteral("2400 4800 9600 19200 38400 57600 115200 128000 230400 256000 460800")
                             .split(QLatin1Char(' ')));
    m_baudRate->setCurrentText(QStringLiteral("115200"));
    // A long description must not widen the panel; the list shows it in full.
    for (QComboBox *box : {static_cast<QComboBox *>(m_port), m_baudRate})
        letShrink(box);
    addRow(QStringLiteral("端口"), m_port);
    addRow(QStringLiteral("波特率"), m_baudRate);
    addWide(m_open);
    connect(m_open, &QPushButton::clicked, this, &PidPortPanel::openClicked);
    connect(m_port, QOverload<int>::of(&QComboBox::activated), this, &PidPortPanel::remember);
    connect(m_baudRate, QOverload<int>::of(&QComboBox::activated), this,
            [this] { Settings::instance().pid.baudRate.change(baudRate()); });
}

QString PidPortPanel::portText() const
{
    return m_port->currentText();
}

int PidPortPanel::baudRate() const
{
    return m_baudRate->currentText().toInt();
}

void PidPortPanel::setPorts(const QStringList &entries)
{
    m_port->setPorts(entries);
    if (!m_isPortChosen)
        selectPort(Settings::instance().pid.port);
}

bool PidPortPanel::selectPort(const QString &name)
{
    for (int i = 0; i < m_port->count(); ++i) {
        if (PortName::fromEntry(m_port->itemText(i)) == name) {
            m_port->setCurrentIndex(i);
            return true;
        }
    }
    return false;
}

bool PidPortPanel::choosePort(const QString &name)
{
    m_isPortChosen = true;
    const bool isThere = selectPort(name);
    if (!isThere)
        m_port->setEditText(name);
    return isThere;
}

void PidPortPanel::remember()
{
    m_isPortChosen = true;
    Settings::instance().pid.port.change(PortName::fromEntry(portText()));
    Settings::instance().pid.baudRate.change(baudRate());
}

void PidPortPanel::load()
{
    const int index = m_baudRate->findText(QString::number(Settings::instance().pid.baudRate));
    if (index >= 0)
        m_baudRate->setCurrentIndex(index);
}

void PidPortPanel::setOpenState(bool open)
{
    m_port->setEnabled(!open);
    m_baudRate->setEnabled(!open);
    m_open->setText(open ? QStringLiteral("关闭串口") : QStringLiteral("打开串口"));
    ButtonRole::setPrimary(m_open, !open);
}

void PidPortPanel::setOpening()
{
    setOpenState(true);
    m_open->setText(QStringLiteral("取消打开"));
}
