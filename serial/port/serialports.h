#pragma once

// The serial ports that are present: the system's and the virtual ones.

#include <QStringList>

namespace SerialPorts {

// One entry per port, name, space and description: the virtual ports, then the
// system's, each in the order of their numbers.
QStringList entries();

} // namespace SerialPorts
