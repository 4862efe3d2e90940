#include "serial/qextserialport.h"

#include "serial/portname.h"

QextSerialPort::QextSerialPort(QueryMode mode, QObject *parent)
    : QObject(parent)
{
    Q_ASSERT(mode == EventDriven);
    Q_UNUSED(mode)
    connect(&m_port, &QSerialPort::readyRead, this, &QextSerialPort::readyRead);
    connect(&m_port, &QSerialPort::errorOccurred, this, &QextSerialPort::handleError);
}

QextSerialPort::~QextSerialPort()
{
    m_port.disconnect(this);
    close();
}

void QextSerialPort::setPortName(const QString &name)
{
    m_name = name;
}

bool QextSerialPort::open(QIODevice::OpenMode mode)
{
    m_hungUp = false;
    m_port.setPortName(PortName::device(m_name));
    // Windows refuses 1.5 stop bits with more than five data bits, even for the
    // moment between setting the one and the other.
    m_port.setStopBits(QSerialPort::OneStop);
    if (!m_port.open(mode))
        return false;
    // Boards that are USB devices themselves keep silent until they see it. Where
    // Windows leaves it down, other systems raise it at opening; a port without
    // modem lines refuses, which is no failure.
    m_port.setDataTerminalReady(true);
    return true;
}

void QextSerialPort::close()
{
    if (!m_port.isOpen())
        return;
    if (!m_hungUp)
        m_port.flush();
    m_port.close();
}

bool QextSerialPort::isOpen() const
{
    return m_port.isOpen();
}

QString QextSerialPort::errorString() const
{
    return m_port.errorString();
}

bool QextSerialPort::setBaudRate(int baudRate)
{
    return m_port.setBaudRate(baudRate);
}

bool QextSerialPort::setDataBits(int bits)
{
    return bits >= 5 && bits <= 8 && m_port.setDataBits(static_cast<QSerialPort::DataBits>(bits));
}

bool QextSerialPort::setStopBits(int index)
{
    static const QSerialPort::StopBits values[] = {QSerialPort::OneStop, QSerialPort::OneAndHalfStop,
                                                   QSerialPort::TwoStop};
#ifndef Q_OS_WIN
    if (index == 1)
        return false; // no such thing there, and the library would not say so
#endif
    return index >= 0 && index < 3 && m_port.setStopBits(values[index]);
}

bool QextSerialPort::setParity(int index)
{
    static const QSerialPort::Parity values[] = {QSerialPort::NoParity, QSerialPort::OddParity,
                                                 QSerialPort::EvenParity, QSerialPort::MarkParity,
                                                 QSerialPort::SpaceParity};
    return index >= 0 && index < 5 && m_port.setParity(values[index]);
}

bool QextSerialPort::setFlowControlOff()
{
    return m_port.setFlowControl(QSerialPort::NoFlowControl);
}

int QextSerialPort::baudRate() const
{
    return m_port.baudRate();
}

qint64 QextSerialPort::bytesAvailable() const
{
    return m_port.bytesAvailable();
}

QByteArray QextSerialPort::readAll()
{
    return m_port.readAll();
}

qint64 QextSerialPort::write(const QByteArray &bytes)
{
    return m_port.write(bytes);
}

qint64 QextSerialPort::bytesToWrite() const
{
    return m_port.bytesToWrite();
}

void QextSerialPort::handleError(QSerialPort::SerialPortError error)
{
    // A hung-up line stays readable with nothing to read, so that the error
    // comes again and again; one report is enough.
    const bool gone = error == QSerialPort::ResourceError || error == QSerialPort::ReadError;
    if (!gone || m_hungUp || !m_port.isOpen())
        return;
    m_hungUp = true;
    emit hungUp();
}
