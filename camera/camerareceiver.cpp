#include "camerareceiver.h"

#include "peeraddress.h"

#include <QDebug>

namespace {

bool isPacket(CameraEvent::Kind kind)
{
    return kind == CameraEvent::Image || kind == CameraEvent::Format || kind == CameraEvent::Register;
}

} // namespace

CameraReceiver::CameraReceiver(QObject *parent)
    : QObject(parent)
{
    m_clock.start();
}

void CameraReceiver::setRawJpeg(bool raw)
{
    m_isRawJpeg = raw;
    forget();
}

void CameraReceiver::receive(const QString &sender, const QByteArray &bytes, bool isDatagram, int valueLength)
{
    CameraStreams::Stream &stream = m_streams.of(sender, isDatagram);
    if (m_streams.takeForgotten())
        emit notify(Notice::error(
            QStringLiteral("UDP发送方超过%1个，图像可能不完整！").arg(CameraStreams::maxDatagramSenders)));
    if (m_isRawJpeg) {
        stream.jpeg.append(bytes);
        readJpegs(stream);
    } else {
        stream.packets.append(bytes, m_clock.elapsed());
        reportLoss(stream);
        readPackets(sender, stream, valueLength);
    }
}

void CameraReceiver::readPackets(const QString &sender, CameraStreams::Stream &stream, int valueLength)
{
    CameraEvent event;
    while (stream.packets.next(&event, valueLength)) {
        if (event.kind == CameraEvent::ImpossibleLength)
            emit faulty(QStringLiteral("数据包长度异常，已丢弃"));
        stream.lossTold = stream.lossTold || event.kind == CameraEvent::ImpossibleLength;
        reportLoss(stream);
        readPacket(sender, event);
        stream.lossTold = stream.lossTold && !isPacket(event.kind);
    }
    reportLoss(stream);
}

void CameraReceiver::readPacket(const QString &sender, const CameraEvent &event)
{
    switch (event.kind) {
    case CameraEvent::ImageBegins:
        beginFrame();
        break;
    case CameraEvent::Image:
        if (!event.checksumRight) {
            emit faulty(QStringLiteral("设备[%1]的图像数据校验错误").arg(event.device + 1));
            if (m_dropBadChecksums)
                break;
        }
        emit image(event);
        ++m_frames;
        break;
    case CameraEvent::Format:
        emit format(event);
        break;
    case CameraEvent::Register:
        emit registerReply(sender, event);
        break;
    case CameraEvent::WrongLength:
        emit wrongReplyLength();
        break;
    case CameraEvent::NoHeader:
        qDebug().noquote() << "head" << QByteArray(CameraFrame::magic, CameraFrame::magicSize).toHex()
                           << event.data.toHex();
        break;
    case CameraEvent::ImpossibleLength:
        break;
    case CameraEvent::Resynchronized:
        emit notify(Notice::information(QStringLiteral("图像数据失步，已重新同步")));
        break;
    }
}

void CameraReceiver::readJpegs(CameraStreams::Stream &stream)
{
    QByteArray file;
    bool more = true;
    while (more) {
        more = stream.jpeg.next(&file);
        reportLoss(stream);
        if (stream.jpeg.takeOverflow())
            emit faulty(QStringLiteral("JPEG图像没有结束标记，已丢弃"));
        if (more || stream.jpeg.hasStart())
            beginFrame();
        if (!more)
            break;
        emit jpeg(file);
        ++m_frames;
    }
}

void CameraReceiver::reportLoss(CameraStreams::Stream &stream)
{
    const QString reason = m_streams.countLoss(stream);
    if (!reason.isEmpty())
        emit faulty(reason);
}

bool CameraReceiver::mayAnswer(const QString &sender, const QHostAddress &address, quint16 port) const
{
    const QString host = PeerAddress::text(address) + QLatin1Char(':');
    const QString asked = host + QString::number(port);
    if (m_streams.contains(asked))
        return sender == asked;
    const bool isOne =
        !address.isMulticast() && !(address.protocol() == QAbstractSocket::IPv4Protocol &&
                                    (address.toIPv4Address() & 0xFF) == 0xFF); // a broadcast address
    return !isOne || sender.startsWith(host);
}

void CameraReceiver::beginFrame()
{
    if (!m_sinceFirst.isValid())
        m_sinceFirst.start();
}

qint64 CameraReceiver::sinceFirstMs() const
{
    return m_sinceFirst.isValid() ? m_sinceFirst.elapsed() : 0;
}

void CameraReceiver::clearCounts()
{
    m_frames = 0;
    m_streams.clearCounts();
    m_sinceFirst.invalidate();
}
