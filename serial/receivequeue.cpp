#include "serial/receivequeue.h"

#include "app/hextext.h"
#include "serial/receivebuffer.h"

void ReceiveQueue::push(const QByteArray &bytes, const QString &header, bool hex)
{
    m_chunks.push_back({bytes, header, QString(), Kind::Stream, hex, 0});
    m_bytes += bytes.size() + header.size();
}

void ReceiveQueue::pushMessage(const QByteArray &bytes, const QString &header, bool hex,
                               const QString &source)
{
    m_chunks.push_back({bytes, header, source, Kind::Message, hex, 0});
    m_bytes += bytes.size() + header.size();
}

void ReceiveQueue::endSource(const QString &source)
{
    m_chunks.push_back({QByteArray(), QString(), source, Kind::SourceEnd, false, 0});
}

QString ReceiveQueue::Stream::take(const char *bytes, int count, int codecIndex)
{
    QString text = decoder.decode(bytes, count, codecIndex);
    if (afterCarriageReturn && text.startsWith(QLatin1Char('\n')))
        text.remove(0, 1);
    if (count > 0)
        afterCarriageReturn = bytes[count - 1] == '\r';
    return ReceiveBuffer::withPlainLineEnds(text);
}

void ReceiveQueue::Stream::reset()
{
    decoder.reset();
    afterCarriageReturn = false;
}

QString ReceiveQueue::beginning(const Chunk &chunk, bool atLineStart)
{
    if (chunk.kind != Kind::Message)
        return chunk.header;
    const bool ownLine = !chunk.header.isEmpty() || chunk.hex != m_lastWasHex;
    m_lastWasHex = chunk.hex;
    return ownLine && !atLineStart ? QLatin1Char('\n') + chunk.header : chunk.header;
}

QString ReceiveQueue::textOf(const Chunk &chunk, int count, int codecIndex)
{
    const char *bytes = chunk.bytes.constData() + chunk.taken;
    if (chunk.kind == Kind::Stream)
        return m_stream.take(bytes, count, codecIndex);
    // A message by itself is decoded whole: nothing follows that could
    // complete a character.
    if (chunk.source.isEmpty())
        return ReceiveBuffer::withPlainLineEnds(TextCodec::decode(chunk.bytes, codecIndex));
    std::shared_ptr<Stream> &stream = m_sources[chunk.source];
    if (!stream)
        stream = std::make_shared<Stream>();
    return stream->take(bytes, count, codecIndex);
}

QString ReceiveQueue::take(int characters, int codecIndex)
{
    QString text;
    while (!m_chunks.empty() && text.size() < characters) {
        Chunk &chunk = m_chunks.front();
        if (chunk.taken == 0) {
            text += beginning(chunk, text.isEmpty() ? m_atLineStart : text.endsWith(QLatin1Char('\n')));
            m_bytes -= chunk.header.size();
        }
        const bool whole = chunk.kind == Kind::Message && chunk.source.isEmpty();
        const int left = chunk.bytes.size() - chunk.taken;
        const int count = whole ? left : qMin(characters, left);
        if (chunk.kind == Kind::SourceEnd) {
            m_sources.remove(chunk.source);
        } else if (chunk.hex) {
            text += HexText::render(chunk.bytes.constData() + chunk.taken, count);
            if (chunk.kind == Kind::Stream)
                m_stream.reset();
            else
                m_sources.remove(chunk.source);
        } else {
            text += textOf(chunk, count, codecIndex);
        }
        chunk.taken += count;
        m_bytes -= count;
        if (chunk.taken == chunk.bytes.size())
            m_chunks.pop_front();
    }
    if (!text.isEmpty())
        m_atLineStart = text.endsWith(QLatin1Char('\n'));
    return text;
}

void ReceiveQueue::clear()
{
    m_chunks.clear();
    m_bytes = 0;
    m_stream.reset();
    m_sources.clear();
    m_atLineStart = true;
    m_lastWasHex = false;
}
