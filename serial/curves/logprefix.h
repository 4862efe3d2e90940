#pragma once

// What loggers put before the text of a line: times, dates, levels, tags and
// names in brackets, as "[12:00:01.123] ", "I (1234) adc: " or "2026-01-31 INFO ".
// Numbers in them are no values.

#include <QString>

namespace LogPrefix {

// Characters of it; less than all of the line, unless that is blank.
int length(const QString &line);

// Without the sequences that set colors on a terminal.
QString withoutEscapes(const QString &line);

// A line that the display itself writes before a packet, as "[12:00:01.123] ASCII >".
bool isPacketHeader(const QString &line);
// Bytes that the display shows in hexadecimal: "61 3D 31 ".
bool isHexadecimal(const QString &line);

} // namespace LogPrefix
