#pragma once

// The serial ports that are present: the system's and the virtual ones.

#include <QStringList>

namespace SerialPorts {

// One entry per port, name, space and description: the virtual ports by number,
// then the system's ports in its own order.
QStringList entries();

} // namespace SerialPorts
