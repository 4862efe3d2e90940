#pragma once

// The serial ports that are present: the system's and the virtual ones.

#include <QStringList>

namespace SerialPorts {

// One entry per port, name, space and description: the system's ports in its
// own order, then the virtual ports by number.
QStringList entries();

} // namespace SerialPorts
