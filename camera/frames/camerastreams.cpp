#include "camerastreams.h"

#include <utility>

CameraStreams::Stream &CameraStreams::of(const QString &sender, bool sendsDatagrams)
{
    if (sendsDatagrams && m_streams.size() >= maxDatagramSenders && !m_streams.contains(sender)) {
        auto oldest = m_streams.begin();
        for (auto stream = m_streams.begin(); stream != m_streams.end(); ++stream)
            if (stream->lastUse < oldest->lastUse)
                oldest = stream;
        m_streams.erase(oldest);
        m_hasForgotten = true;
    }
    Stream &stream = m_streams[sender];
    stream.lastUse = ++m_uses;
    return stream;
}

void CameraStreams::end(const QString &sender)
{
    const Stream stream = m_streams.take(sender);
    if (stream.packets.isReceiving() || stream.jpeg.hasStart())
        ++m_partialFrames;
}

void CameraStreams::clear()
{
    m_streams.clear();
    m_hasForgotten = false;
    m_forgottenTold = false;
}

bool CameraStreams::takeForgotten()
{
    return m_hasForgotten && !std::exchange(m_forgottenTold, true);
}

QString CameraStreams::countLoss(Stream &stream)
{
    m_lostBytes += stream.jpeg.takeLost();
    const FrameAssembler::Loss loss = stream.packets.takeLoss();
    m_lostBytes += loss.bytes;
    m_partialFrames += loss.frames;
    if (loss.bytes == 0 || std::exchange(stream.lossTold, true))
        return QString();
    return loss.frames > 0 ? QStringLiteral("图像数据不完整，已丢弃")
                           : QStringLiteral("无法识别的数据，已丢弃");
}

void CameraStreams::clearCounts()
{
    m_partialFrames = 0;
    m_lostBytes = 0;
}
