#pragma once

// What the system says about this process.

namespace ProcessFigures {

double cpuSeconds();         // user and system time used so far
double residentMegabytes();  // resident set size now
double anonymousMegabytes(); // of it, not mapped from files

} // namespace ProcessFigures
