#include "serial/serialports.h"

#include "serial/portname.h"

#include <QSerialPortInfo>

namespace SerialPorts {

QStringList entries()
{
    QStringList list;
    const QList<QSerialPortInfo> ports = QSerialPortInfo::availablePorts();
    for (const QSerialPortInfo &port : ports)
        list.append(PortName::entry(port.portName(), port.description()));
    const QStringList virtualPorts = PortName::virtualPorts();
    for (const QString &name : virtualPorts)
        list.append(PortName::entry(name, QStringLiteral("虚拟串口")));
    return list;
}

} // namespace SerialPorts
