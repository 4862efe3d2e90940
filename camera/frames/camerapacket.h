#pragma once

// What the bytes of received packets of the camera link say.

#include "cameraevent.h"
#include "cameraframe.h"

namespace CameraPacket {

constexpr int formatSize = 15; // of an announcement, without its checksum
constexpr int checksumSize = 2;

// Whether the bytes can be the header of a packet that a board sends, or its
// beginning.
bool mayBeHeader(const char *bytes, qsizetype size);

// Of complete packets. An image needs at least the size of one without data.
CameraEvent image(const char *packet, int length, bool checksumRight);
// For data that need not be copied.
CameraEvent imageWithoutData(const char *packet, int length, bool checksumRight);
CameraEvent format(const char *packet);
CameraEvent reply(const char *packet, int valueLength);

} // namespace CameraPacket
