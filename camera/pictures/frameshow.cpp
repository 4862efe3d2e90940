#include "frameshow.h"

#include <QBuffer>
#include <QImageReader>

namespace {

constexpr qint64 kMinPauseMs = 15; // about sixty pictures a second
constexpr int kMaxScans = 32;      // encoders make about ten, or one of a plain picture

// Each scan of a progressive JPEG goes over the whole picture, and a file of a few
// kilobytes may have thousands.
bool hasFewScans(const QByteArray &data)
{
    int at = -2;
    for (int scans = 0; scans <= kMaxScans; ++scans) {
        at = data.indexOf("\xFF\xDA", at + 2);
        if (at < 0)
            return true;
    }
    return false;
}

// Checks what decoding the file would cost first. No camera sends drawings, which
// may take any time. type: of the file; null for any.
QImage decodeFile(const QByteArray &data, const char *type)
{
    QBuffer buffer;
    buffer.setData(data);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer, type);
    const QByteArray format = reader.format();
    if (format.startsWith("svg") || (format == "jpeg" && !hasFewScans(data)))
        return {};
    const QSize size = reader.size();
    return PixelDecoder::imageBytes(size.width(), size.height()) > 0 ? reader.read() : QImage();
}

// The frame has a record.
PixelDecoder::Source sourceOf(const CameraFrameData &frame)
{
    return {reinterpret_cast<const uchar *>(frame.data.constData()), frame.data.size(), frame.record->width,
            frame.record->height, frame.bigEndian};
}

} // namespace

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
    auto &pending = m_pending.at(device == 1 ? 1 : 0);
    if (pending) {
        ++m_skipped;
        emit skipping(device == 1 ? 1 : 0, pending->sender);
    }
    pending = frame;
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

// One picture in a turn of the event loop, the devices in turn. After a large
// picture, which takes long to decode, the event loop has as much time for the rest.
void FrameShow::showNewest()
{
    m_device = m_pending.at(1 - m_device) ? 1 - m_device : m_device;
    std::optional<CameraFrameData> frame;
    frame.swap(m_pending.at(m_device));
    if (!frame)
        return;
    QElapsedTimer cost;
    cost.start();
    const int device = static_cast<int>(m_device);
    const QImage picture = decode(*frame);
    if (picture.isNull()) {
        ++m_unusable;
        emit undecodable(device, *frame);
    } else {
        ++m_shown;
        emit pictureReady(device, picture, frame->sender);
    }
    m_pauseMs = qMax(kMinPauseMs, cost.elapsed());
    m_sinceShown.start();
    if (m_pending.at(1 - m_device))
        m_timer.start(m_pauseMs > kMinPauseMs ? static_cast<int>(m_pauseMs) : 0);
}

QImage FrameShow::decode(const CameraFrameData &frame)
{
    if (!frame.record)
        return decodeFile(frame.data, nullptr);
    const ImageRecord &record = *frame.record;
    const PixelFormat *const format = PixelFormat::find(record.format);
    if (!format)
        return {};
    if (format->isFile(frame.data.size(), record.width, record.height))
        return decodeFile(frame.data, format->fileType);
    if (PixelDecoder::imageBytes(record.width, record.height) == 0)
        return {};
    QImage picture(record.width, record.height, QImage::Format_RGB888);
    if (picture.isNull())
        return {};
    format->decode(sourceOf(frame), picture.bits(), picture.bytesPerLine());
    return picture;
}
