#include "receivequeue.h"

#include "hextext.h"
#include "receivebuffer.h"

void ReceiveQueue::push(const QByteArray &bytes, const QString &header, bool hex, Bound bound,
                        qint64 arrivalMs)
{
    m_chunks.push_back(
        {bytes, header, QString(), Kind::Stream, hex, hex ? Bound::None : bound, arrivalMs, 0});
    m_bytes += bytes.size() + header.size();
}

void ReceiveQueue::pushMessage(const QByteArray &bytes, const QString &header, bool hex,
                               const QString &source, qint64 arrivalMs)
{
    m_chunks.push_back({bytes, header, source, Kind::Message, hex, Bound::None, arrivalMs, 0});
    m_bytes += bytes.size() + header.size();
}

void ReceiveQueue::endSource(const QString &source)
{
    m_chunks.push_back({QByteArray(), QString(), source, Kind::SourceEnd, false, Bound::None, 0, 0});
}

QString ReceiveQueue::Stream::decode(const char *bytes, int count, int codecIndex)
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

// Adds what stands before a chunk's bytes.
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
    } else if (chunk.bound == Bound::Newest && !m_streamAtLineStart) {
        return;
    }
    slice->text += chunk.header;
    if (!chunk.hex && chunk.kind == Kind::Stream)
        slice->bytes += chunk.header.toLatin1();
}

QString ReceiveQueue::textOf(const Chunk &chunk, int count, int codecIndex)
{
    const char *bytes = chunk.bytes.constData() + chunk.popped;
    if (chunk.kind != Kind::Message)
        return m_stream.decode(bytes, count, codecIndex);
    // A message without a source is complete: nothing follows that could end a
    // character.
    if (chunk.source.isEmpty())
        return ReceiveBuffer::withPlainLineEnds(TextCodec::decode(chunk.bytes, codecIndex));
    return m_sources[chunk.source].decode(bytes, count, codecIndex);
}

void ReceiveQueue::popBytes(const Chunk &chunk, int count, int codecIndex, Slice *slice)
{
    const char *bytes = chunk.bytes.constData() + chunk.popped;
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

ReceiveQueue::Slice ReceiveQueue::pop(int characters, int codecIndex)
{
    Slice slice;
    slice.bound = frontBound();
    while (!m_chunks.empty() && slice.text.size() < characters) {
        Chunk &chunk = m_chunks.front();
        if (chunk.bound != slice.bound)
            break;
        if (chunk.popped == 0)
            begin(chunk, &slice);
        const bool isComplete = chunk.kind == Kind::Message && chunk.source.isEmpty();
        const int pending = chunk.bytes.size() - chunk.popped;
        const int count = isComplete ? pending : qMin(characters, pending);
        popBytes(chunk, count, codecIndex, &slice);
        if (!slice.bytes.isEmpty())
            m_streamAtLineStart = slice.bytes.endsWith('\n');
        if (!slice.arrivals.isEmpty() && slice.arrivals.last().ms == chunk.arrivalMs)
            slice.arrivals.last().end = slice.text.size();
        else
            slice.arrivals.append({slice.text.size(), chunk.arrivalMs});
        chunk.popped += count;
        m_bytes -= count;
        if (chunk.popped == chunk.bytes.size())
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
