#include "serialports.h"

#include "devicelisting.h"
#include "portname.h"

#include <QSerialPortInfo>

#include <algorithm>

namespace {

constexpr int kAsksAfterChange = 3;

// Asking the system takes several milliseconds, and the port watch asks once a
// second: it is asked again only when a device has come or gone, and a few
// times after that, because descriptions come later than devices.
QStringList systemEntries()
{
    static QByteArray known;
    static QStringList list;
    static int asksLeft = 0;
    const QByteArray listing = deviceListing();
    if (listing != known)
        asksLeft = kAsksAfterChange;
    if (!listing.isEmpty() && asksLeft == 0)
        return list;
    asksLeft = qMax(0, asksLeft - 1);
    known = listing;
    list.clear();
    QList<QSerialPortInfo> ports = QSerialPortInfo::availablePorts();
    std::sort(ports.begin(), ports.end(), [](const QSerialPortInfo &a, const QSerialPortInfo &b) {
        return PortName::isBefore(a.portName(), b.portName());
    });
    for (const QSerialPortInfo &port : ports)
        list.append(PortName::entry(port.portName(), port.description()));
    return list;
}

} // namespace

namespace SerialPorts {

QStringList entries()
{
    QStringList list;
    const QStringList virtualPorts = PortName::virtualPorts();
    for (const QString &name : virtualPorts)
        list.append(PortName::entry(name, QStringLiteral("虚拟串口")));
    return list + systemEntries();
}

} // namespace SerialPorts
