#include "receivedtext.h"

#include <utility>

namespace {

constexpr qint64 kReadBytes = 256LL * 1024; // of the record, at a time

} // namespace

ReceivedText::ReceivedText(const QString &folder)
    : m_record(folder, QStringLiteral("text"))
{
}

void ReceivedText::receive(const QByteArray &bytes, const QString &header, bool hex, Bound bound)
{
    m_queue.push(bytes, header, hex, bound);
}

void ReceivedText::receiveMessage(const QByteArray &bytes, const QString &header, bool hex,
                                  const QString &source)
{
    m_queue.pushMessage(bytes, header, hex, source);
}

void ReceivedText::endSource(const QString &source)
{
    m_queue.endSource(source);
}

void ReceivedText::record(const QString &text)
{
    const QByteArray bytes = text.toUtf8();
    if (!bytes.isEmpty())
        m_record.append(bytes.constData(), bytes.size());
}

ReceivedText::Change ReceivedText::next(int characters, int codecIndex)
{
    if (m_isNewestDue && m_queue.frontBound() == Bound::None)
        return putOff(codecIndex);
    const ReceiveQueue::Slice slice = m_queue.pop(characters, codecIndex);
    record(slice.text);
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
    record(plain);
    return shown(Change::Replace, plain);
}

ReceivedText::Change ReceivedText::appendText(const QString &text)
{
    const QString plain = ReceiveBuffer::withPlainLineEnds(text);
    record(plain);
    return shown(Change::Append, plain);
}

ReceivedText::Change ReceivedText::appendLines(const QString &text)
{
    m_lines += text;
    QStringList lines = m_lines.split(QStringLiteral("\r\n"));
    for (QString &line : lines)
        line = line.mid(line.lastIndexOf(QLatin1Char('\r')) + 1);
    const QString plain = ReceiveBuffer::withPlainLineEnds(lines.join(QLatin1Char('\n')));
    m_record.clear(); // lines that were shown before may have changed
    record(plain);
    return shown(Change::Replace, plain);
}

void ReceivedText::clear()
{
    m_queue.clear();
    m_record.clear();
    m_newest.clear();
    m_isNewestDue = false;
    m_showsNewest = false;
    m_lines.clear();
}

ReceivedText::Reader::Reader(const ReceivedText &text)
    : m_record(text.m_record)
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
