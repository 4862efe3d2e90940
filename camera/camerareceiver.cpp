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
    m_streams.restart();
}

void CameraReceiver::setResynchronizes(bool resynchronizes)
{
    m_resynchronizes = resynchronizes;
    m_streams.restart();
}

void CameraReceiver::forget()
{
    m_health.setNow(m_clock.elapsed());
    m_streams.clear();
    m_health.pause();
}

void CameraReceiver::forget(const QString &sender)
{
    m_health.setNow(m_clock.elapsed());
    m_streams.end(sender);
}

void CameraReceiver::finish(const QString &sender)
{
    QByteArray file;
    if (m_isRawJpeg && m_streams.contains(sender)) {
        CameraStreams::Stream &stream = m_streams.of(sender, false);
        const qint64 offset = stream.jpeg.offset();
        if (stream.jpeg.takeLast(&file))
            reportJpeg(sender, file, offset);
    }
    forget(sender);
}

void CameraReceiver::receive(const QString &sender, const QByteArray &bytes, bool isDatagram, int valueLength)
{
    m_health.setNow(m_clock.elapsed());
    CameraStreams::Stream &stream = m_streams.of(sender, isDatagram);
    if (m_streams.takeForgotten())
        emit notify(Notice::error(
            QStringLiteral("UDP发送方超过%1个，图像可能不完整！").arg(CameraStreams::maxDatagramSenders)));
    if (m_isRawJpeg) {
        stream.jpeg.append(bytes);
        readJpegs(sender, stream);
    } else {
        if (m_resynchronizes)
            stream.bytewise.append(bytes, m_health.now());
        else
            stream.packets.append(bytes, m_health.now());
        reportLoss(sender, stream);
        readPackets(sender, stream, valueLength);
    }
}

bool CameraReceiver::nextEvent(CameraStreams::Stream &stream, CameraEvent *event, int valueLength) const
{
    return m_resynchronizes ? stream.bytewise.next(event, valueLength)
                            : stream.packets.next(event, valueLength);
}

void CameraReceiver::readPackets(const QString &sender, CameraStreams::Stream &stream, int valueLength)
{
    CameraEvent event;
    stream.bytewise.setRequiresChecksums(m_dropBadChecksums);
    while (nextEvent(stream, &event, valueLength)) {
        if (event.kind == CameraEvent::ImpossibleLength)
            emit faulty(QStringLiteral("数据包长度异常，已丢弃"));
        stream.lossTold = stream.lossTold || event.kind == CameraEvent::ImpossibleLength;
        reportLoss(sender, stream);
        if (event.kind == CameraEvent::Format)
            stream.announced.at(event.device) = event;
        readPacket(sender, event);
        stream.lossTold = stream.lossTold && !isPacket(event.kind);
    }
    reportLoss(sender, stream);
}

void CameraReceiver::readPacket(const QString &sender, const CameraEvent &event)
{
    switch (event.kind) {
    case CameraEvent::ImageBegins:
        beginFrame();
        break;
    case CameraEvent::Image:
        m_health.addFrame(sender, event);
        if (!event.checksumRight) {
            emit faulty(QStringLiteral("设备[%1]的图像数据校验错误").arg(event.device + 1));
            if (m_dropBadChecksums)
                break;
        }
        emit image(sender, event);
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

void CameraReceiver::readJpegs(const QString &sender, CameraStreams::Stream &stream)
{
    QByteArray file;
    bool more = true;
    while (more) {
        more = stream.jpeg.next(&file);
        const qint64 offset = stream.jpeg.offset() - file.size();
        reportLoss(sender, stream);
        if (stream.jpeg.takeOverflow())
            emit faulty(QStringLiteral("JPEG图像没有结束标记，已丢弃"));
        if (more || stream.jpeg.hasStart())
            beginFrame();
        if (!more)
            break;
        reportJpeg(sender, file, offset);
    }
}

void CameraReceiver::reportJpeg(const QString &sender, const QByteArray &file, qint64 offset)
{
    CameraEvent complete;
    complete.kind = CameraEvent::Image;
    m_health.addFrame(sender, complete);
    emit jpeg(sender, file, offset);
    ++m_frames;
}

void CameraReceiver::reportLoss(const QString &sender, CameraStreams::Stream &stream)
{
    const QString reason = m_streams.countLoss(sender, stream);
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
    m_health.clear();
    m_sinceFirst.invalidate();
}

// ---- health

void CameraReceiver::countShown(const QString &sender, int device)
{
    m_health.addShown(sender, device);
}

void CameraReceiver::countSkipped(const QString &sender, int device)
{
    m_health.addSkipped(sender, device);
}

void CameraReceiver::countUndecodable(const QString &sender, int device, qint64 offset,
                                      const QByteArray &data)
{
    m_health.setNow(m_clock.elapsed());
    m_health.addUndecodable(sender, device, offset, data);
}

void CameraReceiver::tickHealth()
{
    m_health.setNow(m_clock.elapsed());
    m_health.tick();
}
