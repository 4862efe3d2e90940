#include "sendcommand.h"

#include "filereason.h"

#include <QBuffer>

namespace {

constexpr qint64 kPieceBytes = 16 * 1024;

constexpr qint64 kDriverBytes = 4096;
constexpr int kBitsPerByte = 10;
constexpr qint64 kClosingMs = 8000; // closing waits longer for the line

} // namespace

SendCommand::SendCommand(const Options &options)
    : PortCommand(options)
    , m_checksum(FrameChecksum::named(options.checksum))
    , m_lineEnd(options.lineEnd.value_or(options.text ? "\r\n" : ""))
{
    m_silence.setSingleShot(true);
    m_silence.setInterval(options.timeoutMs);
    connect(&m_silence, &QTimer::timeout, this,
            [this] { finish(ExitStatus::TimedOut, QStringLiteral("超时：设备不接收数据")); });
    connect(link(), &Link::handedOver, this, &SendCommand::sendNext);
}

void SendCommand::prepare()
{
    if (options().files.isEmpty()) {
        auto buffer = std::make_unique<QBuffer>();
        buffer->setData(options().bytes ? *options().bytes
                                        : TextCodec::encode(*options().text, options().codecIndex));
        buffer->open(QIODevice::ReadOnly);
        m_source = std::move(buffer);
        return;
    }
    auto file = std::make_unique<QFile>(options().files.first());
    if (!file->open(QIODevice::ReadOnly))
        finish(ExitStatus::Refused,
               QStringLiteral("无法读取%1：%2").arg(file->fileName(), FileReason::of(*file)));
    m_source = std::move(file);
}

void SendCommand::handleOpened()
{
    stopTrying();
    sendNext();
}

// Empty when nothing is left, or when the command has ended.
QByteArray SendCommand::nextPiece()
{
    if (!m_source)
        return {};
    const QByteArray piece = m_source->read(kPieceBytes);
    if (m_checksum)
        m_checksum->add(piece);
    if (!piece.isEmpty())
        return piece;
    auto *file = qobject_cast<QFile *>(m_source.get());
    if (file && file->error() != QFile::NoError) {
        finish(ExitStatus::Refused,
               QStringLiteral("无法读取%1：%2").arg(file->fileName(), FileReason::of(*file)));
        return {};
    }
    m_source.reset();
    return (m_checksum ? m_checksum->bytes() : QByteArray()) + m_lineEnd;
}

void SendCommand::sendNext()
{
    m_silence.start();
    while (!isFinishing() && link()->pendingBytes() < kPieceBytes) {
        const QByteArray piece = nextPiece();
        if (!piece.isEmpty())
            m_sentBytes += link()->send(piece);
        else if (!m_source && link()->pendingBytes() == 0)
            finishWhenSent();
        if (piece.isEmpty())
            return;
    }
}

// A slow line needs longer for what the driver holds than closing waits for.
void SendCommand::finishWhenSent()
{
    m_silence.stop();
    const qint64 bits = qMin(m_sentBytes, kDriverBytes) * kBitsPerByte;
    const qint64 lineMs = options().port.isSerial() ? bits * 1000 / options().port.baudRate() : 0;
    if (lineMs > kClosingMs)
        QTimer::singleShot(static_cast<int>(lineMs - kClosingMs), this, [this] { finish(ExitStatus::Done); });
    else
        finish(ExitStatus::Done);
}
