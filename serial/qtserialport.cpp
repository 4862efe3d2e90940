#include "serial/qtserialport.h"

#include "serial/portname.h"

#include <QApplication>
#include <QDeadlineTimer>
#include <QDebug>
#include <QSerialPort>
#include <QThread>

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
    connect(m_port, &QSerialPort::errorOccurred, this, &QtSerialPort::handleError);
}

QtSerialPort::~QtSerialPort()
{
    m_port->disconnect(this);
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
    m_hungUp = false;
    m_name = portName;
    m_port->setPortName(PortName::device(portName));
    m_port->setBaudRate(baudRate, QSerialPort::AllDirections);
    m_port->setDataBits(static_cast<QSerialPort::DataBits>(dataBits));
    m_port->setStopBits(stopBitsOf(stopBits));
    m_port->setParity(static_cast<QSerialPort::Parity>(parity));
    if (m_port->open(QIODevice::ReadWrite))
        m_port->setDataTerminalReady(true); // see QextSerialPort
    else
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

void QtSerialPort::drain(int timeoutMs)
{
    const QDeadlineTimer deadline(timeoutMs);
    const qint64 waiting = m_port->bytesToWrite();
    while (m_port->bytesToWrite() > 0 && !deadline.hasExpired()) {
        if (!m_port->waitForBytesWritten(static_cast<int>(deadline.remainingTime())))
            return;
    }
    // The system has them; the line needs ten bit times for each, and closing
    // may cut it off.
    const qint64 lineMs = waiting * 10 * 1000 / qMax(1, m_port->baudRate()) + 1;
    QThread::msleep(static_cast<unsigned long>(qMin(lineMs, deadline.remainingTime())));
}

// A line that hung up stays readable with nothing to read, so that the error
// comes again and again.
void QtSerialPort::handleError()
{
    const QSerialPort::SerialPortError error = m_port->error();
    const bool gone = error == QSerialPort::ResourceError || error == QSerialPort::ReadError;
    if (!gone || m_hungUp || !m_port->isOpen())
        return;
    m_hungUp = true;
    emit hungUp();
}
