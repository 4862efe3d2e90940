#include "framedecoder.h"

#include "frameshow.h"

namespace {

QImage forScreen(const QImage &picture)
{
    return picture.isNull()
               ? picture
               : picture.convertToFormat(picture.hasAlphaChannel() ? QImage::Format_ARGB32_Premultiplied
                                                                   : QImage::Format_RGB32);
}

} // namespace

FrameDecoder::FrameDecoder(QObject *parent)
    : QObject(parent)
{
    m_thread.setObjectName(QStringLiteral("pictures"));
    m_worker.moveToThread(&m_thread);
    connect(
        this, &FrameDecoder::begun, &m_worker,
        [this] { emit decoded(forScreen(FrameShow::decode(m_frame))); }, Qt::QueuedConnection);
    connect(this, &FrameDecoder::decoded, this, &FrameDecoder::report, Qt::QueuedConnection);
}

FrameDecoder::~FrameDecoder()
{
    m_thread.quit();
    m_thread.wait();
}

void FrameDecoder::start(const CameraFrameData &frame)
{
    m_isBusy = true;
    if (!m_thread.isRunning())
        m_thread.start();
    m_frame = frame;
    emit begun();
}

void FrameDecoder::report(const QImage &picture)
{
    m_isBusy = false;
    m_frame = {};
    emit finished(picture);
}
