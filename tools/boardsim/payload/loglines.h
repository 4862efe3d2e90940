#pragma once

// The log of an imaginary motor controller, line by line.

#include <QString>

namespace Boardsim {

// Line number (from 0) of the log with the given seed, without line end. It
// begins with the time since the start in seconds: timeMs is in milliseconds.
QString logLine(quint32 number, qint64 timeMs, quint32 seed);

} // namespace Boardsim
