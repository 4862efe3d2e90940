#pragma once

// Why a serial port cannot be opened or used, in the user's words.

#include <QSerialPort>
#include <QString>

namespace PortFault {

// device: as it was opened. Empty where nothing is wrong.
QString text(QSerialPort::SerialPortError error, const QString &device);

} // namespace PortFault
