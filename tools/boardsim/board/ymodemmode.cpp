#include "ymodemmode.h"

#include <QDir>

namespace Boardsim {

static YmodemReceiver::Settings settingsOf(const YmodemMode::Options &options)
{
    YmodemReceiver::Settings settings = options.receiver;
    settings.seed = options.payload.seed;
    settings.encoding = options.payload.encoding;
    return settings;
}

void YmodemMode::Options::addTo(CommandLine &line)
{
    payload.addTo(line);
    line.addText("receive-folder", "path", QStringLiteral("Keeps the files here (default: received)."),
                 &receiveFolder);
    line.addNumber("ask-interval", "ms", QStringLiteral("Between two 'C'"), &receiver.askMs, 1, 600000);
    line.addNumber("packet-timeout", "ms", QStringLiteral("NAK after so long without a block"),
                   &receiver.packetMs, 1, 600000);
    line.addFlag("nak-first-eot", QStringLiteral("Answers the first EOT of a file with NAK."),
                 &receiver.nakFirstEot);
    line.addTexts(
        "fault", "kind[=value][@place][*times]",
        QStringLiteral("lose, double, nak, can, a, silence[=ms], noise[=bytes], wild-noise[=bytes], "
                       "late-c[=ms] or only-c, at a block's number, every<n>, start, eot or end. "
                       "Repeatable."),
        [this](const QString &text) { return receiver.faults.add(text); });
}

YmodemMode::YmodemMode(const Options &options, VirtualPort &port)
    : BoardMode(port)
    , m_folder(options.receiveFolder)
    , m_receiver(settingsOf(options), *this)
{
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, [this] { m_receiver.timeOut(); });
}

void YmodemMode::send(const QByteArray &bytes)
{
    port().write(bytes);
}

void YmodemMode::setTimer(int ms)
{
    if (ms >= 0)
        m_timer.start(ms);
    else
        m_timer.stop();
}

bool YmodemMode::beginFile(const QString &name)
{
    m_file.setFileName(QDir(m_folder).filePath(name));
    return QDir().mkpath(m_folder) && m_file.open(QIODevice::WriteOnly | QIODevice::Truncate);
}

bool YmodemMode::storeBytes(const QByteArray &bytes)
{
    return m_file.write(bytes) == bytes.size();
}

void YmodemMode::endFile(bool complete)
{
    m_file.close();
    if (!complete)
        m_file.remove();
}

} // namespace Boardsim
