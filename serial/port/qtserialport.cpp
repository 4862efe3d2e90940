#include "qtserialport.h"

#include <QDebug>

#include <utility>

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
    : SerialLink(parent)
{
    connect(this, &Link::received, this, [this](const QByteArray &bytes) { emit bytesRead(bytes); });
    connect(this, &Link::stateChanged, this, [this](State state) {
        const State former = std::exchange(m_former, state);
        if (state != State::Closed || reason().isEmpty())
            return;
        if (former == State::Opening)
            emit openFailed();
        else
            emit hungUp();
    });
}

void QtSerialPort::open(QString portName, int baudRate, int dataBits, int stopBits, int parity)
{
    SerialSettings settings;
    settings.name = portName;
    settings.baudRate = baudRate;
    settings.dataBits = static_cast<QSerialPort::DataBits>(dataBits);
    settings.stopBits = stopBitsOf(stopBits);
    settings.parity = static_cast<QSerialPort::Parity>(parity);
    if (!SerialLink::open(settings))
        emit openFailed();
}

void QtSerialPort::close()
{
    if (state() != State::Closing)
        SerialLink::close();
}

void QtSerialPort::writeBytes(QByteArray data)
{
    if (send(data) < data.size())
        qWarning().noquote() << "Write data failed:" << errorText();
}

void QtSerialPort::SltReadFromSerialport()
{
    readNow();
}
