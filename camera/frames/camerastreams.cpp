#include "camerastreams.h"

#include <utility>

CameraStreams::Stream &CameraStreams::of(const QString &sender, bool sendsDatagrams)
{
    if (sendsDatagrams && m_streams.size() >= maxDatagramSenders && !m_streams.contains(sender)) {
        auto oldest = m_streams.begin();
        for (auto stream = m_streams.begin(); stream != m_streams.end(); ++stream)
            if (stream->lastUse < oldest->lastUse)
                oldest = stream;
        countRest(oldest.key(), *oldest);
        m_streams.erase(oldest);
        m_hasForgotten = true;
    }
    Stream &stream = m_streams[sender];
    stream.lastUse = ++m_uses;
    return stream;
}

void CameraStreams::countRest(const QString &sender, Stream &stream)
{
    stream.packets.end();
    stream.bytewise.end();
    stream.jpeg.end();
    m_health->addLoss(sender, stream.packets.takeLoss());
    m_health->addLoss(sender, stream.bytewise.takeLoss());
    m_health->addLoss(sender, stream.jpeg.takeLoss());
}

void CameraStreams::end(const QString &sender)
{
    const auto stream = m_streams.find(sender);
    if (stream == m_streams.end())
        return;
    countRest(sender, *stream);
    m_streams.erase(stream);
}

void CameraStreams::restart()
{
    for (auto stream = m_streams.begin(); stream != m_streams.end(); ++stream)
        countRest(stream.key(), *stream);
}

void CameraStreams::clear()
{
    restart();
    m_streams.clear();
    m_hasForgotten = false;
    m_forgottenTold = false;
}

const CameraEvent *CameraStreams::announced(const QString &sender, int device) const
{
    const auto stream = m_streams.constFind(sender);
    if (stream == m_streams.constEnd())
        return nullptr;
    const CameraEvent &format = stream->announced.at(device == 1 ? 1 : 0);
    return format.kind == CameraEvent::Format ? &format : nullptr;
}

void CameraStreams::forgetAnnounced(int device)
{
    for (Stream &stream : m_streams)
        stream.announced.at(device == 1 ? 1 : 0) = CameraEvent();
}

bool CameraStreams::takeForgotten()
{
    return m_hasForgotten && !std::exchange(m_forgottenTold, true);
}

QString CameraStreams::countLoss(const QString &sender, Stream &stream)
{
    m_health->addLoss(sender, stream.jpeg.takeLoss());
    const CameraLoss bytewise = stream.bytewise.takeLoss();
    const CameraLoss loss = bytewise.bytes > 0 ? bytewise : stream.packets.takeLoss();
    m_health->addLoss(sender, loss);
    if (loss.bytes == 0 || std::exchange(stream.lossTold, true))
        return QString();
    return loss.frames > 0 ? QStringLiteral("图像数据不完整，已丢弃")
                           : QStringLiteral("无法识别的数据，已丢弃");
}
