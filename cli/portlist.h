#pragma once

// "ports": the serial ports that are present, for people or as JSON.

#include <QByteArray>

namespace PortList {

// In UTF-8, a port in a line.
QByteArray text();
// An array of objects: name, description, device and, of a USB device,
// vendorId, productId and serialNumber.
QByteArray json();

} // namespace PortList
