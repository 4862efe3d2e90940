#include "qextserialport.h"

namespace {

constexpr qint64 kReadBufferBytes = 1024 * 1024;

} // namespace

QextSerialPort::QextSerialPort(QueryMode mode, QObject *parent)
    : QObject(parent)
{
    Q_ASSERT(mode == EventDriven);
    Q_UNUSED(mode)
    connect(&m_line, &SerialLine::readyRead, this, &QextSerialPort::readyRead);
    connect(&m_line, &SerialLine::hungUp, this, &QextSerialPort::hungUp);
    connect(&m_line, &SerialLine::writeFailed, this, &QextSerialPort::writeFailed);
    connect(&m_line, &SerialLine::closed, this, &QextSerialPort::closed);
    connect(&m_line, &SerialLine::lent, this, &QextSerialPort::lent);
}

void QextSerialPort::setPortName(const QString &name)
{
    m_name = name;
}

bool QextSerialPort::open(QIODevice::OpenMode mode)
{
    QSerialPort &port = m_line.prepare(m_name);
    // Windows refuses 1.5 stop bits with more than five data bits, even for the
    // moment between setting the one and the other.
    port.setStopBits(QSerialPort::OneStop);
    port.setReadBufferSize(kReadBufferBytes);
    return m_line.open(mode);
}

bool QextSerialPort::setBaudRate(int baudRate)
{
    return m_line.port().setBaudRate(baudRate);
}

bool QextSerialPort::setDataBits(int bits)
{
    return bits >= 5 && bits <= 8 && m_line.port().setDataBits(static_cast<QSerialPort::DataBits>(bits));
}

bool QextSerialPort::setStopBits(int index)
{
    static const QSerialPort::StopBits values[] = {QSerialPort::OneStop, QSerialPort::OneAndHalfStop,
                                                   QSerialPort::TwoStop};
#ifndef Q_OS_WIN
    if (index == 1)
        return false; // no such thing there, and the library would not say so
#endif
    return index >= 0 && index < 3 && m_line.port().setStopBits(values[index]);
}

bool QextSerialPort::setParity(int index)
{
    static const QSerialPort::Parity values[] = {QSerialPort::NoParity, QSerialPort::OddParity,
                                                 QSerialPort::EvenParity, QSerialPort::MarkParity,
                                                 QSerialPort::SpaceParity};
    return index >= 0 && index < 5 && m_line.port().setParity(values[index]);
}

bool QextSerialPort::setFlowControlOff()
{
    return m_line.port().setFlowControl(QSerialPort::NoFlowControl);
}

int QextSerialPort::baudRate() const
{
    return m_line.port().baudRate();
}

qint64 QextSerialPort::bytesAvailable() const
{
    return m_line.port().bytesAvailable();
}

QByteArray QextSerialPort::readAll()
{
    return m_line.port().readAll();
}

qint64 QextSerialPort::write(const QByteArray &bytes)
{
    return m_line.write(bytes);
}

qint64 QextSerialPort::bytesToWrite() const
{
    return m_line.port().bytesToWrite();
}
