#include "frameshow.h"

#include <QBuffer>
#include <QImageReader>

namespace {

constexpr qint64 kPaceMs = 15; // timers are late: about sixty pictures a second of each device
constexpr int kMaxScans = 32;  // encoders make about ten, or one of a plain picture

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
    connect(&m_timer, &QTimer::timeout, this, &FrameShow::decodeNewest);
    connect(&m_decoder, &FrameDecoder::finished, this, &FrameShow::showDecoded);
}

void FrameShow::add(int device, const CameraFrameData &frame)
{
    auto &pending = m_pending.at(device == 1 ? 1 : 0);
    if (pending) {
        ++m_skipped;
        emit skipping(device == 1 ? 1 : 0, pending->sender);
    }
    pending = frame;
    if (m_timer.isActive() || m_decoder.isBusy())
        return;
    m_timer.start(waitMs());
}

// What shows a picture may need long for it: then the event loop has as much time for
// the rest.
int FrameShow::waitMs() const
{
    const qint64 pace = m_sinceBegun.isValid() ? kPaceMs - m_sinceBegun.elapsed() : 0;
    const qint64 rest = m_sinceShown.isValid() ? m_costMs - m_sinceShown.elapsed() : 0;
    return static_cast<int>(qMax<qint64>(0, qMax(pace, rest)));
}

void FrameShow::clearCounts()
{
    m_shown = 0;
    m_skipped = 0;
    m_unusable = 0;
}

// One picture at a time, the devices in turn.
void FrameShow::decodeNewest()
{
    m_device = m_pending.at(1 - m_device) ? 1 - m_device : m_device;
    auto &pending = m_pending.at(m_device);
    if (!pending)
        return;
    if (!m_isSecond)
        m_sinceBegun.start();
    m_frame = *pending;
    pending.reset();
    m_decoder.start(m_frame);
}

// The other device follows at once, and then both wait.
void FrameShow::showDecoded(const QImage &picture)
{
    QElapsedTimer cost;
    cost.start();
    CameraFrameData frame;
    std::swap(frame, m_frame);
    const int device = static_cast<int>(m_device);
    if (picture.isNull()) {
        ++m_unusable;
        emit undecodable(device, frame);
    } else {
        ++m_shown;
        emit pictureReady(device, picture, frame);
    }
    m_costMs = cost.elapsed();
    m_sinceShown.start();
    const bool hasOther = m_pending.at(1 - m_device).has_value();
    m_isSecond = hasOther && !m_isSecond;
    if (m_isSecond)
        m_timer.start(m_costMs > kPaceMs ? static_cast<int>(m_costMs) : 0);
    else if (hasOther || m_pending.at(m_device))
        m_timer.start(waitMs());
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

QString FrameShow::rawText(const CameraFrameData &frame, const QPoint &pixel)
{
    const PixelFormat *const format = frame.record ? PixelFormat::find(frame.record->format) : nullptr;
    if (!format || format->isFile(frame.data.size(), frame.record->width, frame.record->height))
        return {};
    return format->rawText(sourceOf(frame), pixel.x(), pixel.y());
}
