#include "options.h"

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

template <class Value> struct Named
{
    const char *name;
    Value value;
};

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

// Without a value: a flag.
constexpr struct
{
    const char *name;
    const char *value;
    const char *help;
} descriptions[] = {
    {"folder", "path", "Folder of the port links (default: $KORVEX_VIRTUAL_PORTS)."},
    {"port", "COM<n>", "Name of the port (default: COM3)."},
    {"mode", "name",
     "log, echo, shell, flood, silent, burst, pid, ymodem, camera, tcp-server, tcp-client or udp "
     "(default: log)."},
    {"encoding", "name", "utf8, gb18030, ascii (payload only) or binary; of names, too (default: utf8)."},
    {"rate", "n", "log: lines, udp flood: datagrams per second (default: 20)."},
    {"bytes-per-second", "n", "burst: mean rate (default: 92000)."},
    {"burst-pause", "ms", "burst: silence between bursts (default: 12)."},
    {"report-rate", "n", "pid: actual values per second of each running loop (default: 100)."},
    {"noise", "units", "pid: noise of the measurement, either way (default: 2)."},
    {"pid-fault", "name", "pid: garbage, glued, cut, flood, silence or reset (default: none)."},
    {"total", "bytes", "flood, burst: how much to send to each host (default: without end)."},
    {"delay", "ms", "Begin so long after a host has opened the port (default: 200)."},
    {"start-on-byte", "", "Begin with the first byte from the host instead."},
    {"unplug-after", "ms", "Vanish so long after a host first opened the port."},
    {"replug-after", "ms", "Come back so long after vanishing."},
    {"record", "file", "Write every byte from the host to this file."},
    {"address", "ip", "Network: to listen on, to connect or to send to (default: 127.0.0.1)."},
    {"net-port", "n", "Network: own port (default: any); tcp-client: the server's."},
    {"to-port", "n", "udp flood: the receiver's port."},
    {"act", "name",
     "Network: echo, silent, flood, log, talk, drip, half-close, reset, vanish, deaf or camera "
     "(default: echo)."},
    {"peers", "n", "tcp-client: connections (default: 1)."},
    {"message-bytes", "n", "talk, udp flood: size of a message (default: 100)."},
    {"period", "ms", "talk, drip: pace; tcp-client: between attempts to connect (default: 100)."},
    {"duration", "ms", "Network flood: ends after this (default: never)."},
    {"seed", "n", "Of the payload, the log and noise (default: 1)."},
    {"receive-folder", "path", "ymodem: keep the files here (default: a folder \"received\")."},
    {"ask-interval", "ms", "ymodem: between two 'C' (default: 1000)."},
    {"packet-timeout", "ms", "ymodem: NAK after so long without a block (default: 10000)."},
    {"nak-first-eot", "", "ymodem: answer the first EOT of a file with NAK."},
    {"fault", "kind[=value][@place][*times]",
     "ymodem: lose, double, nak, can, a, silence[=ms], noise[=bytes], wild-noise[=bytes], "
     "late-c[=ms] or only-c, at a block's number, every<n>, start, eot or end. Repeatable."},
    {"format", "n", "camera: 1 jpg, 2 bmp, 3 png, 4 RGB565 or 5 RGB888 (default: 4)."},
    {"width", "pixels", "camera: of its pictures (default: 320)."},
    {"height", "pixels", "camera: of its pictures (default: 240)."},
    {"first-device", "n", "camera: number of its first picture, 0 or 1 (default: 0)."},
    {"devices", "n", "camera: pictures in turn, 1 or 2 (default: 1)."},
    {"fps", "n", "camera: frames per second of each; 0 as fast as the line takes them (default: 10)."},
    {"frames", "n", "camera: then it is over (default: never)."},
    {"picture-folder", "path", "camera: sends the JPEG files of this folder (default: colour bars)."},
    {"chunk", "bytes", "camera: writes in pieces of this size (default: whole packets)."},
    {"camera-fault", "name", "camera: crc, truncate or garbage, every fifth frame (default: none)."},
    {"address-length", "bytes", "camera: of register addresses (default: 2)."},
    {"value-length", "bytes", "camera: of register values (default: 1)."},
    {"test-pattern", "", "camera: the bars stand still."},
    {"big-endian", "", "camera: RGB565 high byte first."},
    {"raw-jpeg", "", "camera: files without packets."},
};

// What was given. What was not, stays as it was.
class CommandLine
{
public:
    explicit CommandLine(const QCoreApplication &application)
    {
        m_parser.setApplicationDescription(
            QStringLiteral("A simulated board on a virtual serial port or on the network."));
        m_parser.addHelpOption();
        for (const auto &option : descriptions)
            m_parser.addOption(
                {QLatin1String(option.name), QLatin1String(option.help), QLatin1String(option.value)});
        m_parser.process(application);
        if (!m_parser.positionalArguments().isEmpty())
            reject(
                QStringLiteral("unexpected argument '%1'").arg(m_parser.positionalArguments().constFirst()));
    }

    bool isSet(const char *name) const { return m_parser.isSet(QLatin1String(name)); }
    QStringList texts(const char *name) const { return m_parser.values(QLatin1String(name)); }

    void take(const char *name, QString *text) const
    {
        if (isSet(name))
            *text = m_parser.value(QLatin1String(name));
    }

    template <class Number> void take(const char *name, Number *number, qint64 lowest, qint64 highest) const
    {
        if (!isSet(name))
            return;
        bool ok = false;
        const qint64 value = m_parser.value(QLatin1String(name)).toLongLong(&ok);
        if (!ok || value < lowest || value > highest)
            reject(QStringLiteral("--%1 takes a number from %2 to %3")
                       .arg(QLatin1String(name))
                       .arg(lowest)
                       .arg(highest));
        *number = static_cast<Number>(value);
    }

    template <class Value, std::size_t count>
    void take(const char *name, Value *value, const Named<Value> (&known)[count], const char *what) const
    {
        if (!isSet(name))
            return;
        const QString wanted = m_parser.value(QLatin1String(name));
        for (const Named<Value> &entry : known) {
            if (wanted == QLatin1String(entry.name)) {
                *value = entry.value;
                return;
            }
        }
        reject(QStringLiteral("there is no %1 '%2'").arg(QLatin1String(what), wanted));
    }

private:
    QCommandLineParser m_parser;
};

constexpr int most = std::numeric_limits<int>::max();

void readPort(const CommandLine &line, Options *options)
{
    options->folder = qEnvironmentVariable("KORVEX_VIRTUAL_PORTS");
    line.take("folder", &options->folder);
    line.take("mode", &options->mode, modes, "mode");
    if (options->folder.isEmpty() && !options->isOnNetwork())
        reject(QStringLiteral("name a folder with --folder or in KORVEX_VIRTUAL_PORTS"));
    line.take("port", &options->port);
    static const QRegularExpression portName(QStringLiteral("\\ACOM[1-9][0-9]{0,3}\\z"));
    if (!options->port.contains(portName))
        reject(QStringLiteral("--port takes a name like COM3"));
}

void readSending(const CommandLine &line, Options *options)
{
    QString encoding;
    line.take("encoding", &encoding);
    if (line.isSet("encoding") && !encodingFromName(encoding, &options->encoding))
        reject(QStringLiteral("--encoding takes utf8, gb18030, ascii or binary"));
    line.take("rate", &options->linesPerSecond, 1, 100000);
    line.take("bytes-per-second", &options->bytesPerSecond, 1, 100000000);
    line.take("burst-pause", &options->burstPauseMs, 1, 60000);
    line.take("report-rate", &options->reportsPerSecond, 1, 100000);
    line.take("noise", &options->noise, 0, 1000);
    line.take("pid-fault", &options->fault, pidFaults, "fault");
    line.take("total", &options->totalBytes, 0, std::numeric_limits<qint64>::max());
    line.take("delay", &options->startDelayMs, 0, most);
    options->startOnByte = line.isSet("start-on-byte");
    line.take("unplug-after", &options->unplugAfterMs, 0, most);
    line.take("replug-after", &options->replugAfterMs, 0, most);
    line.take("record", &options->recordFile);
    line.take("seed", &options->seed, 0, std::numeric_limits<quint32>::max());
}

void readNetwork(const CommandLine &line, Options *options)
{
    line.take("address", &options->address);
    line.take("act", &options->act, acts, "act");
    line.take("net-port", &options->netPort, 0, 65535);
    line.take("to-port", &options->toPort, 0, 65535);
    line.take("peers", &options->peers, 1, 10000);
    line.take("message-bytes", &options->messageBytes, 0, 65507);
    line.take("period", &options->periodMs, 1, 60000);
    line.take("duration", &options->durationMs, 0, 3600000);
}

void readYmodem(const CommandLine &line, Options *options)
{
    options->receiveFolder = QStringLiteral("received");
    line.take("receive-folder", &options->receiveFolder);
    YmodemReceiver::Settings &ymodem = options->ymodem;
    ymodem.seed = options->seed;
    ymodem.encoding = options->encoding;
    line.take("ask-interval", &ymodem.askMs, 1, 600000);
    line.take("packet-timeout", &ymodem.packetMs, 1, 600000);
    ymodem.nakFirstEot = line.isSet("nak-first-eot");
    const QStringList faults = line.texts("fault");
    for (const QString &fault : faults) {
        if (!ymodem.faults.add(fault))
            reject(QStringLiteral("there is no fault '%1'").arg(fault));
    }
}

void readCamera(const CommandLine &line, CameraSettings *camera)
{
    line.take("format", &camera->format, 0, 255);
    line.take("width", &camera->width, 1, 65535);
    line.take("height", &camera->height, 1, 65535);
    line.take("first-device", &camera->firstDevice, 0, 255);
    line.take("devices", &camera->devices, 1, 2);
    line.take("fps", &camera->framesPerSecond, 0, 1000);
    line.take("chunk", &camera->chunkBytes, 0, 1 << 20);
    line.take("address-length", &camera->addressLength, 1, 4);
    line.take("value-length", &camera->valueLength, 1, 4);
    line.take("frames", &camera->frames, 1, most);
    line.take("picture-folder", &camera->folder);
    camera->bigEndian = line.isSet("big-endian");
    camera->rawJpeg = line.isSet("raw-jpeg");
    if (line.isSet("test-pattern"))
        camera->picture = CameraSettings::Picture::Pattern;
    line.take("camera-fault", &camera->fault, cameraFaults, "camera fault");
    if (camera->rawJpeg && camera->folder.isEmpty())
        reject(QStringLiteral("--raw-jpeg needs a --picture-folder"));
}

} // namespace

Options Options::fromCommandLine(const QCoreApplication &application)
{
    Options options;
    const CommandLine line(application);
    readPort(line, &options);
    readSending(line, &options);
    readNetwork(line, &options);
    readYmodem(line, &options);
    readCamera(line, &options.camera);
    return options;
}

} // namespace Boardsim
