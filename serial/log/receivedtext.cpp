#include "receivedtext.h"

#include <utility>

namespace {

constexpr qint64 kReadBytes = 256LL * 1024; // of the record, at a time

} // namespace

ReceivedText::ReceivedText(const QString &folder)
    : m_lines(folder)
{
}

void ReceivedText::receive(const QByteArray &bytes, const QString &header, bool hex, Bound bound,
                           qint64 arrivalMs)
{
    m_queue.push(bytes, header, hex, bound, arrivalMs);
}

void ReceivedText::receiveMessage(const QByteArray &bytes, const QString &header, bool hex,
                                  const QString &source, qint64 arrivalMs)
{
    m_queue.pushMessage(bytes, header, hex, source, arrivalMs);
}

void ReceivedText::endSource(const QString &source)
{
    m_queue.endSource(source);
}

ReceivedText::Change ReceivedText::next(int characters, int codecIndex)
{
    if (m_isNewestDue && m_queue.frontBound() == Bound::None)
        return putOff(codecIndex);
    const ReceiveQueue::Slice slice = m_queue.pop(characters, codecIndex);
    int begin = 0;
    for (const ReceiveQueue::Arrival &arrival : slice.arrivals) {
        m_lines.append(slice.text.mid(begin, arrival.end - begin), arrival.ms);
        begin = arrival.end;
    }
    m_newest.append(slice.bytes);
    if (slice.bound == Bound::Newest) {
        m_isNewestDue = true;
        return {};
    }
    return slice.text.isEmpty() ? Change() : shown(Change::Append, slice.text);
}

ReceivedText::Change ReceivedText::putOff(int codecIndex)
{
    if (!std::exchange(m_isNewestDue, false))
        return {};
    const ReceiveBuffer::Edit edit = m_newest.update(codecIndex);
    if (std::exchange(m_showsNewest, true))
        return {Change::EditEnds, QString(), edit};
    return {Change::Replace, m_newest.text(), {}};
}

ReceivedText::Change ReceivedText::shown(Change::Kind kind, const QString &text)
{
    m_showsNewest = false;
    return {kind, text, {}};
}

ReceivedText::Change ReceivedText::setText(const QString &text)
{
    clear();
    const QString plain = ReceiveBuffer::withPlainLineEnds(text);
    m_lines.append(plain, 0);
    return shown(Change::Replace, plain);
}

ReceivedText::Change ReceivedText::appendText(const QString &text)
{
    const QString plain = ReceiveBuffer::withPlainLineEnds(text);
    m_lines.append(plain, 0);
    return shown(Change::Append, plain);
}

ReceivedText::Change ReceivedText::appendLines(const QString &text)
{
    m_terminalLines += text;
    QStringList lines = m_terminalLines.split(QStringLiteral("\r\n"));
    for (QString &line : lines)
        line = line.mid(line.lastIndexOf(QLatin1Char('\r')) + 1);
    const QString plain = ReceiveBuffer::withPlainLineEnds(lines.join(QLatin1Char('\n')));
    m_lines.clear(); // lines that were shown before may have changed
    m_lines.append(plain, 0);
    return shown(Change::Replace, plain);
}

void ReceivedText::clear()
{
    m_queue.clear();
    m_lines.clear();
    m_newest.clear();
    m_isNewestDue = false;
    m_showsNewest = false;
    m_terminalLines.clear();
}

ReceivedText::Reader::Reader(const ReceivedText &text)
    : m_record(text.m_lines.text())
    , m_end(m_record.size())
{
}

QString ReceivedText::Reader::next()
{
    QString text;
    while (text.isEmpty() && m_offset < m_end && !m_failed) {
        const QByteArray bytes = m_record.read(m_offset, qMin(kReadBytes, m_end - m_offset), &m_failed);
        if (bytes.isEmpty())
            break; // cleared meanwhile
        m_offset += bytes.size();
        text = m_decoder.decode(bytes.constData(), bytes.size(), TextCodec::Utf8);
    }
    return text;
}
