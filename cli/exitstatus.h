#pragma once

// What the program's exit status says to the script that started it.

enum class ExitStatus {
    Done = 0,
    Refused = 1,  // a port or file is not there, in use, or not accepted
    Usage = 2,    // the command line makes no sense
    TimedOut = 3, // what was waited for did not happen
    Lost = 4,     // the device or the connection went away
};
