#include "serial/qtserialport.h"

#include "serial/portname.h"

#include <QApplication>
#include <QDebug>
#include <QSerialPort>

namespace {

QSerialPort::StopBits stopBitsOf(int index)
{
    switch (index) {
    case 0:
        return QSerialPort::OneStop;
    case 1:
        return QSerialPort::OneAndHalfStop;
    case 2:
        return QSerialPort::TwoStop;
    default:
        return static_cast<QSerialPort::StopBits>(index);
    }
}

} // namespace

QtSerialPort::QtSerialPort(QObject *parent)
    : QObject(parent)
    , m_port(new QSerialPort(this))
{
    connect(m_port, &QSerialPort::readyRead, this, &QtSerialPort::SltReadFromSerialport);
}

QtSerialPort::~QtSerialPort()
{
    close();
}

bool QtSerialPort::isOpen() const
{
    return m_port->isOpen();
}

QString QtSerialPort::portName() const
{
    return m_name;
}

void QtSerialPort::open(QString portName, int baudRate, int dataBits, int stopBits, int parity)
{
    close();
    m_name = portName;
    m_port->setPortName(PortName::device(portName));
    m_port->setBaudRate(baudRate, QSerialPort::AllDirections);
    m_port->setDataBits(static_cast<QSerialPort::DataBits>(dataBits));
    m_port->setStopBits(stopBitsOf(stopBits));
    m_port->setParity(static_cast<QSerialPort::Parity>(parity));
    if (!m_port->open(QIODevice::ReadWrite))
        QApplication::beep();
}

void QtSerialPort::close()
{
    if (m_port->isOpen())
        m_port->close();
}

void QtSerialPort::writeBytes(QByteArray data)
{
    if (m_port->write(data) == -1)
        qWarning().noquote() << "Write data failed:" << m_port->errorString();
}

void QtSerialPort::SltReadFromSerialport()
{
    emit bytesRead(m_port->readAll());
}
