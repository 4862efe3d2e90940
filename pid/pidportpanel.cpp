#include "pidportpanel.h"

#include "buttonrole.h"
#include "clickonce.h"
#include "portcombobox.h"

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
}

void PidPortPanel::setOpenState(bool open)
{
    m_port->setEnabled(!open);
    m_baudRate->setEnabled(!open);
    m_open->setText(open ? QStringLiteral("关闭串口") : QStringLiteral("打开串口"));
    ButtonRole::setPrimary(m_open, !open);
}
