#include "tools/boardsim/options.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QRegularExpression>

#include <cstdlib>
#include <limits>

namespace Boardsim {

namespace {

[[noreturn]] void reject(const QString &message)
{
    std::fprintf(stderr, "boardsim: %s\n", qPrintable(message));
    std::exit(2);
}

// The value of a numeric option, within limits; the default where not given.
qint64 number(const QCommandLineParser &parser, const QString &name, qint64 byDefault, qint64 lowest,
              qint64 highest)
{
    if (!parser.isSet(name))
        return byDefault;
    bool ok = false;
    const qint64 value = parser.value(name).toLongLong(&ok);
    if (!ok || value < lowest || value > highest)
        reject(QStringLiteral("--%1 takes a number from %2 to %3").arg(name).arg(lowest).arg(highest));
    return value;
}

template <class Value> struct Named
{
    const char *name;
    Value value;
};

template <class Value, std::size_t count>
Value fromName(const Named<Value> (&known)[count], const char *what, const QString &name)
{
    for (const Named<Value> &entry : known) {
        if (name == QLatin1String(entry.name))
            return entry.value;
    }
    reject(QStringLiteral("there is no %1 '%2'").arg(QLatin1String(what), name));
}

constexpr Named<Options::Mode> modes[] = {
    {"log", Options::Mode::Log},
    {"echo", Options::Mode::Echo},
    {"shell", Options::Mode::Shell},
    {"flood", Options::Mode::Flood},
    {"silent", Options::Mode::Silent},
    {"burst", Options::Mode::Burst},
    {"tcp-server", Options::Mode::TcpServer},
    {"tcp-client", Options::Mode::TcpClient},
    {"udp", Options::Mode::Udp},
    {"ymodem", Options::Mode::Ymodem},
    {"pid", Options::Mode::Pid},
    {"camera", Options::Mode::Camera},
};

constexpr Named<Options::Fault> pidFaults[] = {
    {"none", Options::Fault::None},   {"garbage", Options::Fault::Garbage},
    {"glued", Options::Fault::Glued}, {"cut", Options::Fault::Cut},
    {"flood", Options::Fault::Flood}, {"silence", Options::Fault::Silence},
    {"reset", Options::Fault::Reset},
};

constexpr Named<Options::Act> acts[] = {
    {"echo", Options::Act::Echo},
    {"silent", Options::Act::Silent},
    {"flood", Options::Act::Flood},
    {"log", Options::Act::Log},
    {"talk", Options::Act::Talk},
    {"drip", Options::Act::Drip},
    {"half-close", Options::Act::HalfClose},
    {"reset", Options::Act::Reset},
    {"vanish", Options::Act::Vanish},
    {"deaf", Options::Act::Deaf},
    {"camera", Options::Act::Camera},
};

constexpr Named<CameraSettings::Fault> cameraFaults[] = {
    {"none", CameraSettings::Fault::None},
    {"crc", CameraSettings::Fault::Crc},
    {"truncate", CameraSettings::Fault::Truncate},
    {"garbage", CameraSettings::Fault::Garbage},
};

void readYmodem(const QCommandLineParser &parser, Options *options)
{
    options->receiveFolder = parser.isSet(QStringLiteral("receive-folder"))
                                 ? parser.value(QStringLiteral("receive-folder"))
                                 : QStringLiteral("received");
    YmodemReceiver::Settings &ymodem = options->ymodem;
    ymodem.seed = options->seed;
    ymodem.encoding = options->encoding;
    ymodem.askMs = int(number(parser, QStringLiteral("ask-interval"), ymodem.askMs, 1, 600000));
    ymodem.packetMs = int(number(parser, QStringLiteral("packet-timeout"), ymodem.packetMs, 1, 600000));
    ymodem.nakFirstEot = parser.isSet(QStringLiteral("nak-first-eot"));
    const QStringList faults = parser.values(QStringLiteral("fault"));
    for (const QString &fault : faults) {
        if (!ymodem.faults.add(fault))
            reject(QStringLiteral("there is no fault '%1'").arg(fault));
    }
}

void readCamera(const QCommandLineParser &parser, CameraSettings *camera)
{
    const auto whole = [&parser](const char *name, int byDefault, qint64 lowest, qint64 highest) {
        return int(number(parser, QLatin1String(name), byDefault, lowest, highest));
    };
    camera->format = whole("format", camera->format, 0, 255);
    camera->width = whole("width", camera->width, 1, 65535);
    camera->height = whole("height", camera->height, 1, 65535);
    camera->firstDevice = whole("first-device", camera->firstDevice, 0, 255);
    camera->devices = whole("devices", camera->devices, 1, 2);
    camera->framesPerSecond = whole("fps", camera->framesPerSecond, 0, 1000);
    camera->chunkBytes = whole("chunk", camera->chunkBytes, 0, 1 << 20);
    camera->addressLength = whole("address-length", camera->addressLength, 1, 4);
    camera->valueLength = whole("value-length", camera->valueLength, 1, 4);
    camera->frames =
        number(parser, QStringLiteral("frames"), camera->frames, 1, std::numeric_limits<int>::max());
    camera->folder = parser.value(QStringLiteral("picture-folder"));
    camera->bigEndian = parser.isSet(QStringLiteral("big-endian"));
    camera->rawJpeg = parser.isSet(QStringLiteral("raw-jpeg"));
    if (parser.isSet(QStringLiteral("test-pattern")))
        camera->picture = CameraSettings::Picture::Pattern;
    if (parser.isSet(QStringLiteral("camera-fault")))
        camera->fault = fromName(cameraFaults, "camera fault", parser.value(QStringLiteral("camera-fault")));
    if (camera->rawJpeg && camera->folder.isEmpty())
        reject(QStringLiteral("--raw-jpeg needs a --picture-folder"));
}

void readNetwork(const QCommandLineParser &parser, Options *options)
{
    if (parser.isSet(QStringLiteral("address")))
        options->address = parser.value(QStringLiteral("address"));
    if (parser.isSet(QStringLiteral("act")))
        options->act = fromName(acts, "act", parser.value(QStringLiteral("act")));
    options->netPort = int(number(parser, QStringLiteral("net-port"), options->netPort, 0, 65535));
    options->toPort = int(number(parser, QStringLiteral("to-port"), options->toPort, 0, 65535));
    options->peers = int(number(parser, QStringLiteral("peers"), options->peers, 1, 10000));
    options->messageBytes =
        int(number(parser, QStringLiteral("message-bytes"), options->messageBytes, 0, 65507));
    options->periodMs = int(number(parser, QStringLiteral("period"), options->periodMs, 1, 60000));
    options->durationMs = int(number(parser, QStringLiteral("duration"), options->durationMs, 0, 3600000));
}

} // namespace

Options Options::fromCommandLine(const QCoreApplication &application)
{
    Options options;
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("A simulated board on a virtual serial port or on the network."));
    parser.addHelpOption();
    const auto option = [&parser](const char *name, const char *value, const char *help) {
        parser.addOption({QLatin1String(name), QLatin1String(help), QLatin1String(value)});
    };
    option("folder", "path", "Folder of the port links (default: $KORVEX_VIRTUAL_PORTS).");
    option("port", "COM<n>", "Name of the port (default: COM3).");
    option("mode", "name",
           "log, echo, shell, flood, silent, burst, pid, ymodem, camera, tcp-server, tcp-client or udp "
           "(default: log).");
    option("encoding", "name",
           "utf8, gb18030, ascii (payload only) or binary; of names, too (default: utf8).");
    option("rate", "n", "log: lines, udp flood: datagrams per second (default: 20).");
    option("bytes-per-second", "n", "burst: mean rate (default: 92000).");
    option("burst-pause", "ms", "burst: silence between bursts (default: 12).");
    option("report-rate", "n", "pid: actual values per second of each running loop (default: 100).");
    option("noise", "units", "pid: noise of the measurement, either way (default: 2).");
    option("pid-fault", "name", "pid: garbage, glued, cut, flood, silence or reset (default: none).");
    option("total", "bytes", "flood, burst: how much to send to each host (default: without end).");
    option("delay", "ms", "Begin so long after a host has opened the port (default: 200).");
    parser.addOption({QStringLiteral("start-on-byte"),
                      QStringLiteral("Begin with the first byte from the host instead.")});
    option("unplug-after", "ms", "Vanish so long after a host first opened the port.");
    option("replug-after", "ms", "Come back so long after vanishing.");
    option("record", "file", "Write every byte from the host to this file.");
    option("address", "ip", "Network: to listen on, to connect or to send to (default: 127.0.0.1).");
    option("net-port", "n", "Network: own port (default: any); tcp-client: the server's.");
    option("to-port", "n", "udp flood: the receiver's port.");
    option("act", "name",
           "Network: echo, silent, flood, log, talk, drip, half-close, reset, vanish, deaf or camera "
           "(default: echo).");
    option("peers", "n", "tcp-client: connections (default: 1).");
    option("message-bytes", "n", "talk, udp flood: size of a message (default: 100).");
    option("period", "ms", "talk, drip: pace; tcp-client: between attempts to connect (default: 100).");
    option("duration", "ms", "Network flood: ends after this (default: never).");
    option("seed", "n", "Of the payload, the log and noise (default: 1).");
    option("receive-folder", "path", "ymodem: keep the files here (default: a folder \"received\").");
    option("ask-interval", "ms", "ymodem: between two 'C' (default: 1000).");
    option("packet-timeout", "ms", "ymodem: NAK after so long without a block (default: 10000).");
    parser.addOption({QStringLiteral("nak-first-eot"),
                      QStringLiteral("ymodem: answer the first EOT of a file with NAK.")});
    option("fault", "kind[=value][@place][*times]",
           "ymodem: lose, double, nak, can, a, silence[=ms], noise[=bytes], wild-noise[=bytes], "
           "late-c[=ms] or only-c, at a block's number, every<n>, start, eot or end. Repeatable.");
    option("format", "n", "camera: 1 jpg, 2 bmp, 3 png, 4 RGB565 or 5 RGB888 (default: 4).");
    option("width", "pixels", "camera: of its pictures (default: 320).");
    option("height", "pixels", "camera: of its pictures (default: 240).");
    option("first-device", "n", "camera: number of its first picture, 0 or 1 (default: 0).");
    option("devices", "n", "camera: pictures in turn, 1 or 2 (default: 1).");
    option("fps", "n", "camera: frames per second of each; 0 as fast as the line takes them (default: 10).");
    option("frames", "n", "camera: then it is over (default: never).");
    option("picture-folder", "path", "camera: sends the JPEG files of this folder (default: colour bars).");
    option("chunk", "bytes", "camera: writes in pieces of this size (default: whole packets).");
    option("camera-fault", "name", "camera: crc, truncate or garbage, every fifth frame (default: none).");
    option("address-length", "bytes", "camera: of register addresses (default: 2).");
    option("value-length", "bytes", "camera: of register values (default: 1).");
    parser.addOption({QStringLiteral("test-pattern"), QStringLiteral("camera: the bars stand still.")});
    parser.addOption({QStringLiteral("big-endian"), QStringLiteral("camera: RGB565 high byte first.")});
    parser.addOption({QStringLiteral("raw-jpeg"), QStringLiteral("camera: files without packets.")});
    parser.process(application);
    if (!parser.positionalArguments().isEmpty())
        reject(QStringLiteral("unexpected argument '%1'").arg(parser.positionalArguments().constFirst()));

    const int most = std::numeric_limits<int>::max();
    options.folder = parser.isSet(QStringLiteral("folder")) ? parser.value(QStringLiteral("folder"))
                                                            : qEnvironmentVariable("KORVEX_VIRTUAL_PORTS");
    if (parser.isSet(QStringLiteral("mode")))
        options.mode = fromName(modes, "mode", parser.value(QStringLiteral("mode")));
    if (options.folder.isEmpty() && !options.isOnNetwork())
        reject(QStringLiteral("name a folder with --folder or in KORVEX_VIRTUAL_PORTS"));
    if (parser.isSet(QStringLiteral("port")))
        options.port = parser.value(QStringLiteral("port"));
    static const QRegularExpression portName(QStringLiteral("\\ACOM[1-9][0-9]{0,3}\\z"));
    if (!options.port.contains(portName))
        reject(QStringLiteral("--port takes a name like COM3"));
    if (parser.isSet(QStringLiteral("encoding")) &&
        !encodingFromName(parser.value(QStringLiteral("encoding")), &options.encoding))
        reject(QStringLiteral("--encoding takes utf8, gb18030, ascii or binary"));

    options.linesPerSecond = int(number(parser, QStringLiteral("rate"), options.linesPerSecond, 1, 100000));
    options.bytesPerSecond =
        int(number(parser, QStringLiteral("bytes-per-second"), options.bytesPerSecond, 1, 100000000));
    options.burstPauseMs = int(number(parser, QStringLiteral("burst-pause"), options.burstPauseMs, 1, 60000));
    options.reportsPerSecond =
        int(number(parser, QStringLiteral("report-rate"), options.reportsPerSecond, 1, 100000));
    options.noise = int(number(parser, QStringLiteral("noise"), options.noise, 0, 1000));
    if (parser.isSet(QStringLiteral("pid-fault")))
        options.fault = fromName(pidFaults, "fault", parser.value(QStringLiteral("pid-fault")));
    options.totalBytes =
        number(parser, QStringLiteral("total"), options.totalBytes, 0, std::numeric_limits<qint64>::max());
    options.startDelayMs = int(number(parser, QStringLiteral("delay"), options.startDelayMs, 0, most));
    options.startOnByte = parser.isSet(QStringLiteral("start-on-byte"));
    options.unplugAfterMs =
        int(number(parser, QStringLiteral("unplug-after"), options.unplugAfterMs, 0, most));
    options.replugAfterMs =
        int(number(parser, QStringLiteral("replug-after"), options.replugAfterMs, 0, most));
    options.recordFile = parser.value(QStringLiteral("record"));
    options.seed =
        quint32(number(parser, QStringLiteral("seed"), options.seed, 0, std::numeric_limits<quint32>::max()));
    readNetwork(parser, &options);
    readYmodem(parser, &options);
    readCamera(parser, &options.camera);
    return options;
}

} // namespace Boardsim
