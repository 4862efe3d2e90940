#include "receivequeue.h"

#include "hextext.h"
#include "receivebuffer.h"

void ReceiveQueue::push(const QByteArray &bytes, const QString &header, bool hex)
{
    m_chunks.push_back({bytes, header, QString(), Kind::Stream, hex, 0});
    m_bytes += bytes.size() + header.size();
}

void ReceiveQueue::pushLog(const QByteArray &bytes, const QString &header)
{
    m_chunks.push_back({bytes, header, QString(), Kind::Log, false, 0});
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

// What stands before a chunk's bytes.
void ReceiveQueue::begin(const Chunk &chunk, Slice *slice)
{
    m_bytes -= chunk.header.size();
    if (chunk.kind == Kind::Message) {
        const bool atLineStart =
            slice->text.isEmpty() ? m_atLineStart : slice->text.endsWith(QLatin1Char('\n'));
        const bool ownLine = !chunk.header.isEmpty() || chunk.hex != m_lastWasHex;
        m_lastWasHex = chunk.hex;
        if (ownLine && !atLineStart)
            slice->text += QLatin1Char('\n');
    } else if (chunk.kind == Kind::Log && !m_streamAtLineStart) {
        return;
    }
    slice->text += chunk.header;
    if (!chunk.hex && (chunk.kind == Kind::Stream || chunk.kind == Kind::Log))
        slice->bytes += chunk.header.toLatin1();
}

QString ReceiveQueue::textOf(const Chunk &chunk, int count, int codecIndex)
{
    const char *bytes = chunk.bytes.constData() + chunk.taken;
    if (chunk.kind != Kind::Message)
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

void ReceiveQueue::takeBytes(const Chunk &chunk, int count, int codecIndex, Slice *slice)
{
    const char *bytes = chunk.bytes.constData() + chunk.taken;
    if (chunk.kind == Kind::SourceEnd) {
        m_sources.remove(chunk.source);
    } else if (chunk.hex) {
        slice->text += HexText::render(bytes, count);
        if (chunk.kind == Kind::Message)
            m_sources.remove(chunk.source);
        else
            m_stream.reset();
    } else {
        slice->text += textOf(chunk, count, codecIndex);
        if (chunk.kind != Kind::Message)
            slice->bytes.append(bytes, count);
    }
}

ReceiveQueue::Slice ReceiveQueue::take(int characters, int codecIndex)
{
    Slice slice;
    slice.log = !m_chunks.empty() && m_chunks.front().kind == Kind::Log;
    while (!m_chunks.empty() && slice.text.size() < characters) {
        Chunk &chunk = m_chunks.front();
        if ((chunk.kind == Kind::Log) != slice.log)
            break;
        if (chunk.taken == 0)
            begin(chunk, &slice);
        const bool complete = chunk.kind == Kind::Message && chunk.source.isEmpty();
        const int pending = chunk.bytes.size() - chunk.taken;
        const int count = complete ? pending : qMin(characters, pending);
        takeBytes(chunk, count, codecIndex, &slice);
        if (!slice.bytes.isEmpty())
            m_streamAtLineStart = slice.bytes.endsWith('\n');
        chunk.taken += count;
        m_bytes -= count;
        if (chunk.taken == chunk.bytes.size())
            m_chunks.pop_front();
    }
    if (!slice.text.isEmpty())
        m_atLineStart = slice.text.endsWith(QLatin1Char('\n'));
    return slice;
}

void ReceiveQueue::clear()
{
    m_chunks.clear();
    m_bytes = 0;
    m_stream.reset();
    m_sources.clear();
    m_atLineStart = true;
    m_streamAtLineStart = true;
    m_lastWasHex = false;
}
