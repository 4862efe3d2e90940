#pragma once

// Version texts such as "1.0.2.7" as numbers that can be compared.

#include "appversion.h"

#include <QString>

namespace VersionNumber {

// The first version that is newer than this program's own.
constexpr quint64 firstNewer = AppVersion::number + 1;

// Part i of n (from 0) shifted left by (n - 1 - i) * 8 bits, all OR-ed: 1.0.2.7
// is 0x01000207. Fewer than three parts are 0; a part that is no number, or
// below zero, counts as 0. A part above 255 reaches into the one before it, and
// of more than eight parts the last eight count. Only texts of four parts
// compare with firstNewer as their sender meant: 1.0.3 is 0x010003.
quint64 fromText(const QString &text);

} // namespace VersionNumber
