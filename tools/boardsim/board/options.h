#pragma once

// What can be asked for on the command line.

#include "cameraboard.h"
#include "payload.h"
#include "ymodemreceiver.h"

#include <QString>

class QCoreApplication;

namespace Boardsim {

struct Options
{
    enum class Mode {
        Log,
        Echo,
        Shell,
        Flood,
        Silent,
        Burst,
        Pid,
        Ymodem,
        Camera,
        TcpServer,
        TcpClient,
        Udp
    };

    // What a board on the network does with each of its connections, or with
    // datagrams (of those: Echo, Flood, Silent, Camera).
    enum class Act {
        Echo,      // returns what comes
        Silent,    // reads and counts
        Flood,     // the first megabyte of the payload, over and over
        Log,       // the log's lines at a rate, and what comes returned
        Talk,      // messages of the payload at a pace
        Drip,      // the payload byte by byte, at a pace
        HalfClose, // sends the payload, ends sending, and reads on
        Reset,     // sends the payload and resets the connection
        Vanish,    // closes at once
        Deaf,      // never reads
        Camera     // sends pictures and answers register requests
    };
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
    qint64 totalBytes = -1;     // flood, burst: for each host; -1 without end
    int startDelayMs = 200;     // from the host's arrival
    bool startOnByte = false;   // instead of the delay
    int unplugAfterMs = -1;     // from the host's first arrival; -1 never
    int replugAfterMs = -1;     // from the unplugging; -1 never
    QString recordFile;

    QString address = QStringLiteral("127.0.0.1"); // to listen on, to connect or to send to
    int netPort = 0; // tcp-server, udp: own port, 0 for any; tcp-client: the server's
    int toPort = 0;  // udp: where the flood goes
    Act act = Act::Echo;
    int peers = 1;          // tcp-client: connections
    int messageBytes = 100; // talk, udp flood
    int periodMs = 100;     // talk, drip: pace; tcp-client: between attempts to connect
    int durationMs = -1;    // flood: ends after this; -1 never
    quint32 seed = 1;
    QString receiveFolder; // ymodem
    YmodemReceiver::Settings ymodem;
    CameraSettings camera;

    bool isOnNetwork() const { return mode >= Mode::TcpServer; }

    // Reads the command line; shows help and ends the program, or ends it with
    // an English message, where that is due.
    static Options fromCommandLine(const QCoreApplication &application);
};

} // namespace Boardsim
