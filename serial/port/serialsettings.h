#pragma once

// All that a serial port is opened with.

#include <QSerialPort>
#include <QString>

#include <optional>

struct SerialSettings
{
    QString name; // as PortName gives it
    int baudRate = QSerialPort::Baud9600;
    QSerialPort::DataBits dataBits = QSerialPort::Data8;
    QSerialPort::StopBits stopBits = QSerialPort::OneStop;
    QSerialPort::Parity parity = QSerialPort::NoParity;
    QSerialPort::FlowControl flowControl = QSerialPort::NoFlowControl;
    // Boards that are USB devices themselves keep silent until they see DTR.
    // Where Windows leaves it down, other systems raise it at opening.
    bool dtr = true;
    std::optional<bool> rts; // none: as the system leaves it
};
