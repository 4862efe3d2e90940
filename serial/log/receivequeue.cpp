#include "receivequeue.h"

#include "hextext.h"
#include "receivebuffer.h"

namespace {

using Origin = LineStore::Origin;

} // namespace

void ReceiveQueue::push(const Chunk &chunk)
{
    m_chunks.push_back({});
    static_cast<Chunk &>(m_chunks.back()) = chunk;
    if (chunk.hex)
        m_chunks.back().bound = Bound::None;
    m_bytes += chunk.bytes.size() + chunk.header.size();
}

void ReceiveQueue::setOptions(TerminalText::Options options)
{
    if (options == m_options)
        return;
    m_options = options;
    m_stream.terminal.reset();
    for (Stream &stream : m_sources)
        stream.terminal.reset();
}

void ReceiveQueue::Stream::reset()
{
    decoder.reset();
    terminal.reset();
    afterCarriageReturn = false;
}

bool ReceiveQueue::isAtLineStart(const Slice &slice) const
{
    return slice.text.isEmpty() ? m_atLineStart : slice.text.endsWith(QLatin1Char('\n'));
}

void ReceiveQueue::addText(const QString &text, Slice *slice)
{
    if (!text.isEmpty())
        m_onLine = nullptr;
    slice->text += text;
}

void ReceiveQueue::add(const TerminalText::Output &output, Slice *slice)
{
    const int kept = qMax(0, slice->text.size() - output.removed.size());
    const int removedBefore = output.removed.size() - (slice->text.size() - kept);
    slice->removed.prepend(output.removed.leftRef(removedBefore).toString());
    if (kept < slice->text.size()) {
        slice->text.truncate(kept);
        for (Part &part : slice->parts)
            part.end = qMin(part.end, kept);
        while (!slice->runs.isEmpty() && slice->runs.last().begin >= kept)
            slice->runs.removeLast();
        if (!slice->runs.isEmpty())
            slice->runs.last().length = qMin(slice->runs.last().length, kept - slice->runs.last().begin);
    }
    for (StyledRun run : output.runs) {
        run.begin += kept;
        slice->runs.append(run);
    }
    slice->text += output.text;
}

void ReceiveQueue::addPart(qint64 ms, Origin origin, Slice *slice)
{
    if (!slice->parts.isEmpty() && slice->parts.last().ms == ms && slice->parts.last().origin == origin)
        slice->parts.last().end = slice->text.size();
    else
        slice->parts.append({slice->text.size(), ms, origin});
}

// Adds what stands before a chunk's bytes.
void ReceiveQueue::begin(const Chunk &chunk, Slice *slice)
{
    m_bytes -= chunk.header.size();
    if (chunk.kind == Kind::Message) {
        const bool ownLine = !chunk.header.isEmpty() || chunk.hex != m_lastWasHex;
        m_lastWasHex = chunk.hex;
        if (ownLine && !isAtLineStart(*slice))
            addText(QStringLiteral("\n"), slice);
    } else if (chunk.bound == Bound::Newest && !m_streamAtLineStart) {
        return;
    }
    addText(chunk.header, slice);
    if (!chunk.hex && chunk.kind == Kind::Stream)
        slice->bytes += chunk.header.toLatin1();
}

QString ReceiveQueue::decode(Stream *stream, const char *bytes, int count, int codecIndex)
{
    QString text = stream->decoder.decode(bytes, count, codecIndex);
    if (!m_options.sequences && !m_hasSeenSequences)
        m_hasSeenSequences = text.contains(QLatin1String("\x1b["));
    if (m_options.isOn())
        return text;
    if (stream->afterCarriageReturn && text.startsWith(QLatin1Char('\n')))
        text.remove(0, 1);
    if (count > 0)
        stream->afterCarriageReturn = bytes[count - 1] == '\r';
    return ReceiveBuffer::withPlainLineEnds(text);
}

void ReceiveQueue::popText(const Pending &chunk, int count, int codecIndex, Slice *slice)
{
    // A message without a source is complete: nothing follows that could end a
    // character.
    const bool isComplete = chunk.kind == Kind::Message && chunk.source.isEmpty();
    if (isComplete && !m_options.isOn())
        return addText(ReceiveBuffer::withPlainLineEnds(TextCodec::decode(chunk.bytes, codecIndex)), slice);
    if (isComplete)
        m_sources.remove(chunk.source);
    Stream *stream = chunk.kind == Kind::Message ? &m_sources[chunk.source] : &m_stream;
    const QString text = isComplete
                             ? TextCodec::decode(chunk.bytes, codecIndex)
                             : decode(stream, chunk.bytes.constData() + chunk.popped, count, codecIndex);
    if (!m_options.isOn())
        return addText(text, slice);
    if (m_onLine != stream || isComplete)
        stream->terminal.breakLine();
    add(stream->terminal.feed(text, m_options), slice);
    m_onLine = stream;
}

// Behind the end of the line before, which is not part of what was sent.
void ReceiveQueue::popSent(const Chunk &chunk, int codecIndex, Slice *slice)
{
    if (!isAtLineStart(*slice)) {
        addText(QStringLiteral("\n"), slice);
        addPart(chunk.arrivalMs, Origin::Received, slice);
    }
    if (chunk.hex) {
        addText(HexText::render(chunk.bytes.constData(), chunk.bytes.size()), slice);
        m_stream.reset();
    } else {
        const QString text = TextCodec::decode(chunk.bytes, codecIndex);
        TerminalText terminal;
        const QString shown = m_options.symbols ? terminal.feed(text, {false, true}).text
                                                : ReceiveBuffer::withPlainLineEnds(text);
        addText(shown, slice);
        slice->bytes += (m_streamAtLineStart ? "" : "\n") + chunk.bytes;
        if (!chunk.bytes.endsWith('\n'))
            slice->bytes += '\n';
    }
    if (!slice->text.endsWith(QLatin1Char('\n')))
        addText(QStringLiteral("\n"), slice);
}

void ReceiveQueue::popBytes(const Pending &chunk, int count, int codecIndex, Slice *slice)
{
    const char *bytes = chunk.bytes.constData() + chunk.popped;
    if (chunk.kind == Kind::SourceEnd) {
        if (m_sources.remove(chunk.source) > 0)
            m_onLine = nullptr;
    } else if (chunk.kind == Kind::Sent) {
        popSent(chunk, codecIndex, slice);
    } else if (chunk.hex) {
        addText(HexText::render(bytes, count), slice);
        if (chunk.kind == Kind::Message)
            m_sources.remove(chunk.source);
        else
            m_stream.reset();
    } else {
        popText(chunk, count, codecIndex, slice);
        if (chunk.kind != Kind::Message)
            slice->bytes.append(bytes, count);
    }
}

ReceiveQueue::Slice ReceiveQueue::pop(int characters, int codecIndex)
{
    Slice slice;
    slice.bound = frontBound();
    while (!m_chunks.empty() && slice.text.size() < characters) {
        Pending &chunk = m_chunks.front();
        if (chunk.bound != slice.bound)
            break;
        if (chunk.popped == 0)
            begin(chunk, &slice);
        const bool isComplete =
            chunk.kind == Kind::Sent || (chunk.kind == Kind::Message && chunk.source.isEmpty());
        const int pending = chunk.bytes.size() - chunk.popped;
        const int count = isComplete ? pending : qMin(characters, pending);
        popBytes(chunk, count, codecIndex, &slice);
        if (!slice.bytes.isEmpty())
            m_streamAtLineStart = slice.bytes.endsWith('\n');
        addPart(chunk.arrivalMs, chunk.kind == Kind::Sent ? Origin::Sent : Origin::Received, &slice);
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
    m_onLine = nullptr;
    m_hasSeenSequences = false;
    m_atLineStart = true;
    m_streamAtLineStart = true;
    m_lastWasHex = false;
}
