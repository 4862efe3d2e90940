#include "camerastream.h"

namespace Boardsim {

namespace {

constexpr qint64 maxQueued = 256 * 1024; // a frame begins only when less is pending
constexpr int readyFrames = 8;           // made beforehand at full speed

} // namespace

void CameraOptions::addTo(CommandLine &line)
{
    const auto number = [&line](const char *name, const char *valueName, const char *help, int *value,
                                qint64 min, qint64 max) {
        line.addNumber(name, valueName, QString::fromLatin1(help), value, min, max);
    };
    number("format", "n", "1 jpg, 2 bmp, 3 png, 4 RGB565, 5 RGB888", &format, 0, 255);
    number("width", "pixels", "Width of its pictures", &width, 1, 65535);
    number("height", "pixels", "Height of its pictures", &height, 1, 65535);
    number("first-device", "n", "Number of its first picture, 0 or 1", &firstDevice, 0, 255);
    number("devices", "n", "Pictures in turn, 1 or 2", &devices, 1, 2);
    number("fps", "n", "Frames per second of each; 0 as fast as possible", &framesPerSecond, 0, 1000);
    number("chunk", "bytes", "Writes in pieces of this size; 0 complete packets", &chunkBytes, 0, 1 << 20);
    number("address-length", "bytes", "Of register addresses", &addressLength, 1, 4);
    number("value-length", "bytes", "Of register values", &valueLength, 1, 4);
    line.addNumber("frames", "n", QStringLiteral("Frames until it is over; -1 never"), &frames, -1,
                   std::numeric_limits<int>::max());
    line.addText("picture-folder", "path", QStringLiteral("Sends the JPEG files of this folder."), &folder);
    line.addFlag("big-endian", QStringLiteral("RGB565 high byte first."), &bigEndian);
    line.addFlag("raw-jpeg", QStringLiteral("Files without packets."), &rawJpeg);
    line.addFlag("test-pattern", QStringLiteral("The bars stand still."), &isStill);
    line.addChoice("camera-fault", QStringLiteral("Every fifth frame"), &fault,
                   {{"none", Fault::None},
                    {"crc", Fault::Crc},
                    {"truncate", Fault::Truncate},
                    {"garbage", Fault::Garbage}});
    line.addCheck([this] {
        picture = isStill ? Picture::Pattern : Picture::Bars;
        if (rawJpeg && folder.isEmpty())
            CommandLine::reject(QStringLiteral("--raw-jpeg needs a --picture-folder"));
    });
}

CameraStream::CameraStream(const CameraSettings &settings, Line line, QObject *parent)
    : QObject(parent)
    , m_settings(settings)
    , m_board(settings)
    , m_line(std::move(line))
    , m_tick(this)
{
    m_tick.setTimerType(Qt::PreciseTimer);
    m_tick.setInterval(1);
    connect(&m_tick, &QTimer::timeout, this, &CameraStream::sendDue);
}

void CameraStream::start()
{
    if (m_settings.framesPerSecond == 0 && m_settings.fault == CameraSettings::Fault::None)
        for (int k = 0; k < readyFrames * m_settings.devices; ++k)
            m_ready.append(
                m_board.frame(m_settings.firstDevice + k % m_settings.devices, k / m_settings.devices));
    m_due = 0;
    m_clock.start();
    send(m_board.greeting());
    m_tick.start();
}

void CameraStream::stop()
{
    m_tick.stop();
}

void CameraStream::receive(const QByteArray &bytes)
{
    send(m_board.receive(bytes));
}

// A frame that the line has no room for in time is dropped.
void CameraStream::sendDue()
{
    if (!m_tick.isActive() || m_inPieces)
        return;
    const qint64 due = m_clock.elapsed() * m_settings.framesPerSecond * m_settings.devices / 1000;
    for (;;) {
        const bool wanted = m_settings.framesPerSecond == 0 || m_due < due;
        if (!wanted || m_over || m_line.queued() > maxQueued)
            break;
        const int device = m_settings.firstDevice + int(m_sent % m_settings.devices);
        const qint64 number = m_sent++;
        ++m_due; // before sending, within which the line may ask for more
        const bool isLast = m_sent == m_settings.frames;
        m_over = m_over || isLast;
        send(m_ready.isEmpty() ? m_board.frame(device, number / m_settings.devices)
                               : m_ready.at(int(number % m_ready.size())));
        if (isLast)
            emit finished();
        if (m_settings.framesPerSecond == 0 && m_line.queued() == 0)
            break; // let the event loop turn
    }
    if (m_settings.framesPerSecond > 0)
        m_due = due;
}

void CameraStream::send(const QByteArray &bytes)
{
    if (bytes.isEmpty())
        return;
    if (m_settings.chunkBytes == 0) {
        m_line.write(bytes);
        return;
    }
    m_inPieces = true;
    for (int at = 0; at < bytes.size(); at += m_settings.chunkBytes)
        m_line.write(bytes.mid(at, m_settings.chunkBytes));
    m_inPieces = false;
}

} // namespace Boardsim
