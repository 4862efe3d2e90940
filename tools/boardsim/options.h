#pragma once

// What can be asked for on the command line.

#include "tools/boardsim/payload.h"
#include "tools/boardsim/ymodemreceiver.h"

#include <QString>

class QCoreApplication;

namespace Boardsim {

struct Options
{
    enum class Mode { Log, Echo, Shell, Flood, Silent, Burst, Pid, Ymodem };
    enum class Fault { None, Garbage, Glued, Cut, Flood, Silence, Reset }; // of a pid board

    QString folder; // of the links
    QString port = QStringLiteral("COM3");
    Mode mode = Mode::Log;
    Encoding encoding = Encoding::Utf8;
    int linesPerSecond = 20;    // log
    int bytesPerSecond = 92000; // burst
    int burstPauseMs = 12;      // burst
    int reportsPerSecond = 100; // pid: of each running loop
    int noise = 2;              // pid: of the measurement, in units either way
    Fault fault = Fault::None;  // pid
    qint64 totalBytes = -1;     // flood, burst; -1 without end
    int startDelayMs = 200;     // from the host's arrival
    bool startOnByte = false;   // instead of the delay
    int unplugAfterMs = -1;     // from the host's first arrival; -1 never
    int replugAfterMs = -1;     // from the unplugging; -1 never
    QString recordFile;
    quint32 seed = 1;
    QString receiveFolder; // ymodem
    YmodemReceiver::Settings ymodem;

    // Reads the command line; shows help and ends the program, or ends it with
    // an English message, where that is due.
    static Options fromCommandLine(const QCoreApplication &application);
};

} // namespace Boardsim
