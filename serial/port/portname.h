#pragma once

// How an entry of the port list becomes a device. An entry is the port's name,
// one space and its description; what a user typed is treated the same way.

#include <QString>
#include <QStringList>

namespace PortName {

// The port named by an entry: the first "COM" followed by digits. On systems
// that name their devices otherwise, an entry without such a match is also
// accepted when it begins with a device name of that system ("ttyUSB0", an
// absolute path); the name then ends at the first space. Empty when the entry
// names no port.
QString fromEntry(const QString &entry);

// The folder of virtual ports (environment variable KORVEX_VIRTUAL_PORTS),
// empty when there is none.
QString virtualFolder();

// The virtual ports present: links named COM<n> whose target exists, ordered
// by number.
QStringList virtualPorts();

// The order in which people count: COM2 before COM10, ttyUSB1 before ttyUSB12.
bool isBefore(const QString &a, const QString &b);

// What to open for a port name: the link of a virtual port of that name, the
// name itself otherwise.
QString device(const QString &portName);

// The device's file, on systems that have one; its path where it is a virtual port's.
QString deviceFile(const QString &portName);

// An entry of the port list.
QString entry(const QString &portName, const QString &description);

} // namespace PortName
