#pragma once

// Which serial devices the system knows, as cheaply as it can tell.

#include <QByteArray>

// Something that changes whenever a device comes or goes; empty where there is
// no cheap way to tell.
QByteArray deviceListing();
