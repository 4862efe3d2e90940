#include "frameshow.h"

#include "pixeldecoder.h"

#include <QBuffer>
#include <QImageReader>

namespace {

constexpr qint64 kShortestPauseMs = 15; // about sixty pictures a second
constexpr int kMostScans = 32;          // encoders make about ten, or one of a plain picture

const uchar *bytesOf(const QByteArray &data)
{
    return reinterpret_cast<const uchar *>(data.constData());
}

// Each scan of a progressive JPEG goes over the whole picture, and a file of a few
// kilobytes may have thousands.
bool hasFewScans(const QByteArray &data)
{
    int at = -2;
    for (int scans = 0; scans <= kMostScans; ++scans) {
        at = data.indexOf("\xFF\xDA", at + 2);
        if (at < 0)
            return true;
    }
    return false;
}

// What a file would cost is looked at before it is decoded. Drawings, which may
// take any time, are no pictures of a camera.
QImage decodeFile(const QByteArray &data)
{
    QBuffer buffer;
    buffer.setData(data);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer);
    const QByteArray format = reader.format();
    if (format.startsWith("svg") || (format == "jpeg" && !hasFewScans(data)))
        return {};
    const QSize size = reader.size();
    return PixelDecoder::imageBytes(size.width(), size.height()) > 0 ? reader.read() : QImage();
}

} // namespace

QString ImageRecord::formatName(int format)
{
    switch (format) {
    case Bmp:
        return QStringLiteral("*.bmp");
    case Png:
        return QStringLiteral("*.png");
    case Rgb565:
        return QStringLiteral("RGB565");
    case Rgb888:
        return QStringLiteral("RGB888");
    case Yuv422:
        return QStringLiteral("YUV422");
    default:
        return QStringLiteral("*.jpg");
    }
}

FrameShow::FrameShow(QObject *parent)
    : QObject(parent)
    , m_timer(this)
{
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, &FrameShow::showNewest);
}

void FrameShow::add(int device, const CameraFrameData &frame)
{
    auto &waiting = m_waiting.at(device == 1 ? 1 : 0);
    if (waiting)
        ++m_skipped;
    waiting = frame;
    if (m_timer.isActive())
        return;
    const qint64 since = m_sinceShown.isValid() ? m_sinceShown.elapsed() : m_pauseMs;
    m_timer.start(static_cast<int>(qMax<qint64>(0, m_pauseMs - since)));
}

void FrameShow::clearCounts()
{
    m_shown = 0;
    m_skipped = 0;
    m_unusable = 0;
}

// Decoding a large picture takes long; then as much time is left to the rest,
// the other device's picture included: one in a turn of the event loop.
void FrameShow::showNewest()
{
    m_device = m_waiting.at(1 - m_device) ? 1 - m_device : m_device;
    std::optional<CameraFrameData> frame;
    frame.swap(m_waiting.at(m_device));
    if (!frame)
        return;
    QElapsedTimer cost;
    cost.start();
    const int device = static_cast<int>(m_device);
    const QImage picture = decode(*frame);
    if (picture.isNull()) {
        ++m_unusable;
        emit undecodable(device);
    } else {
        ++m_shown;
        emit pictureReady(device, picture);
    }
    m_pauseMs = qMax(kShortestPauseMs, cost.elapsed());
    m_sinceShown.start();
    if (m_waiting.at(1 - m_device))
        m_timer.start(m_pauseMs > kShortestPauseMs ? static_cast<int>(m_pauseMs) : 0);
}

QImage FrameShow::decode(const CameraFrameData &frame)
{
    if (!frame.record)
        return decodeFile(frame.data);
    const ImageRecord &record = *frame.record;
    const quint32 bytes = PixelDecoder::imageBytes(record.width, record.height);
    const bool is565 = record.format == ImageRecord::Rgb565 || record.format == ImageRecord::Bmp;
    const bool mayBeFile = record.format == ImageRecord::Jpg || record.format == ImageRecord::Png;
    if (mayBeFile && (bytes == 0 || frame.data.size() < static_cast<qint64>(bytes)))
        return decodeFile(frame.data);
    const bool isYuv = record.format == ImageRecord::Yuv422;
    if (bytes == 0 || !(is565 || isYuv || mayBeFile || record.format == ImageRecord::Rgb888))
        return {};
    QImage picture(record.width, record.height, QImage::Format_RGB888);
    if (picture.isNull())
        return {};
    if (is565)
        PixelDecoder::rgb565(bytesOf(frame.data), frame.data.size(), record.width, record.height,
                             frame.bigEndian, picture.bits(), picture.bytesPerLine());
    else if (isYuv)
        PixelDecoder::yuv422(bytesOf(frame.data), frame.data.size(), record.width, record.height,
                             frame.bigEndian, picture.bits(), picture.bytesPerLine());
    else
        PixelDecoder::rgb888(bytesOf(frame.data), frame.data.size(), record.width, record.height,
                             picture.bits(), picture.bytesPerLine());
    return picture;
}
