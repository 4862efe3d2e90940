#include "qserialporcheck.h"

#include "serialports.h"

QSerialPorCheck::QSerialPorCheck(QObject *parent)
    : QObject(parent)
    , m_timer(this)
{
    m_timer.setInterval(1000);
    connect(&m_timer, &QTimer::timeout, this, &QSerialPorCheck::SltCheckSerialport);
}

QSerialPorCheck::~QSerialPorCheck()
{
    m_timer.stop();
}

void QSerialPorCheck::start()
{
    m_timer.start();
}

void QSerialPorCheck::SltCheckSerialport()
{
    const QStringList present = SerialPorts::entries();
    if (present.size() == m_known.size())
        return;
    m_known = present;
    emit signalSerialChanged(m_known);
}
