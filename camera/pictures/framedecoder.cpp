#include "framedecoder.h"

#include "frameshow.h"

namespace {

QImage forScreen(const QImage &picture)
{
    return picture.isNull() ? picture
                            : picture.convertToFormat(picture.hasAlphaChannel()
                                                          ? QImage::Format_ARGB32_Premultiplied
                                                          : QImage::Format_RGB32);
}

} // namespace

FrameDecoder::FrameDecoder(QObject *parent)
    : QObject(parent)
{
    m_thread.setObjectName(QStringLiteral("pictures"));
    m_worker.moveToThread(&m_thread);
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
    QMetaObject::invokeMethod(
        &m_worker,
        [this, frame] {
            const QImage picture = forScreen(FrameShow::decode(frame));
            QMetaObject::invokeMethod(this, [this, picture] { report(picture); }, Qt::QueuedConnection);
        },
        Qt::QueuedConnection);
}

void FrameDecoder::report(const QImage &picture)
{
    m_isBusy = false;
    emit finished(picture);
}
