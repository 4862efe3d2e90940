#include "qtserialport.h"

#include <QApplication>
#include <QDebug>

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
{
    connect(&m_line, &SerialLine::readyRead, this, &QtSerialPort::SltReadFromSerialport);
    connect(&m_line, &SerialLine::hungUp, this, &QtSerialPort::hungUp);
    connect(&m_line, &SerialLine::writeFailed, this,
            [this](qint64 bytes) { emit failed(m_line.writeFailedText(bytes)); });
    connect(&m_line, &SerialLine::closed, this, [this](qint64 unsentBytes) {
        if (unsentBytes > 0)
            emit failed(m_line.unsentText(unsentBytes));
    });
}

void QtSerialPort::open(QString portName, int baudRate, int dataBits, int stopBits, int parity)
{
    QSerialPort &port = m_line.prepare(portName);
    port.setBaudRate(baudRate, QSerialPort::AllDirections);
    port.setDataBits(static_cast<QSerialPort::DataBits>(dataBits));
    port.setStopBits(stopBitsOf(stopBits));
    port.setParity(static_cast<QSerialPort::Parity>(parity));
    if (!m_line.open(QIODevice::ReadWrite))
        QApplication::beep();
}

void QtSerialPort::close()
{
    m_line.close();
}

void QtSerialPort::writeBytes(QByteArray data)
{
    if (m_line.write(data) == -1)
        qWarning().noquote() << "Write data failed:" << m_line.port().errorString();
}

void QtSerialPort::SltReadFromSerialport()
{
    emit bytesRead(m_line.port().readAll());
}
