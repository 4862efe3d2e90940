#pragma once

// The serial ports that are present: the system's and the virtual ones.

#include <QStringList>
#include <QVector>

namespace SerialPorts {

// What the system says of the device behind a port. Null where it says nothing,
// as for a virtual port.
struct Identity
{
    quint16 vendor = 0;
    quint16 product = 0;
    QString serialNumber;

    bool isNull() const { return vendor == 0 && product == 0 && serialNumber.isEmpty(); }
    // Two adapters of one model may have no number, and the same.
    bool isUnique() const { return !serialNumber.isEmpty(); }
    bool operator==(const Identity &other) const
    {
        return vendor == other.vendor && product == other.product && serialNumber == other.serialNumber;
    }
};

struct Port
{
    QString name;
    QString description;
    Identity identity;
};

// The virtual ports, then the system's, each in the order of their numbers.
QVector<Port> ports();

// One entry per port: name, space and description.
QStringList entries();

// The port of a device that was found as `name`: of that name where it is the same
// device or the system can't tell, or one of another name with the same number.
// Empty where there is none.
QString find(const QString &name, const Identity &identity, const QVector<Port> &ports);

// There is such a port, or a device file of the name.
bool isPresent(const QString &name);

// Whether opening the port may take seconds, as over Bluetooth.
bool mayBlock(const QString &name);

Identity identityOf(const QString &name);

// Asks the system again at the next call, although no device has come or gone.
void refresh();

} // namespace SerialPorts
