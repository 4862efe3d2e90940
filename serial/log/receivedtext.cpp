#include "receivedtext.h"

#include <limits>
#include <utility>

namespace {

constexpr qint64 kJournalBytes = 64LL * 1024; // pending, while the journal is read
constexpr qint64 kReadBytes = 256LL * 1024;   // of the record, at a time

} // namespace

ReceivedText::ReceivedText(const QString &folder)
    : m_journal(folder)
    , m_lines(folder)
    , m_styles(folder)
{
}

void ReceivedText::receive(const ReceiveQueue::Chunk &chunk)
{
    m_journal.add(chunk);
    if (!m_journal.isReading())
        m_queue.push(chunk);
}

bool ReceivedText::beginAgain()
{
    if (!m_journal.isComplete())
        return false;
    clearText();
    m_journal.beginReading();
    return true;
}

// Moves the next chunks of the journal to the queue, up to a limit.
void ReceivedText::readJournal()
{
    ReceiveQueue::Chunk chunk;
    while (m_queue.bytes() < kJournalBytes) {
        if (!m_journal.next(&chunk))
            return m_journal.endReading();
        m_queue.push(chunk);
    }
}

ReceivedText::Change ReceivedText::next(int characters, int codecIndex)
{
    if (m_queue.isEmpty() && m_journal.isReading())
        readJournal();
    if (m_isNewestDue && m_queue.frontBound() == Bound::None)
        return putOff(codecIndex);
    const ReceiveQueue::Slice slice = m_queue.pop(characters, codecIndex);
    record(slice);
    m_newest.append(slice.bytes);
    if (slice.bound == Bound::Newest) {
        m_isNewestDue = true;
        return {};
    }
    if (slice.text.isEmpty() && slice.removed.isEmpty())
        return {};
    Change change = shown(Change::Append, slice.text);
    change.removed = slice.removed.size();
    return change;
}

void ReceivedText::record(const ReceiveQueue::Slice &slice)
{
    if (!slice.removed.isEmpty()) {
        m_lines.chop(slice.removed);
        m_openLength -= slice.removed.size();
        m_styles.chop(m_lines.completeLines(), m_openLength);
    }
    const qint64 firstLine = m_lines.completeLines();
    int begin = 0;
    for (const ReceiveQueue::Part &part : slice.parts) {
        m_lines.append(slice.text.mid(begin, part.end - begin), part.ms, part.origin);
        begin = part.end;
    }
    recordStyles(slice, firstLine);
    const int lineEnd = slice.text.lastIndexOf(QLatin1Char('\n'));
    m_openLength = slice.text.size() - lineEnd - 1 + (lineEnd < 0 ? m_openLength : 0);
}

void ReceivedText::recordStyles(const ReceiveQueue::Slice &slice, qint64 firstLine)
{
    qint64 line = firstLine;
    int lineBegin = -m_openLength;
    int counted = 0;
    for (StyledRun run : slice.runs) {
        for (; counted < run.begin; ++counted) {
            if (slice.text.at(counted) != QLatin1Char('\n'))
                continue;
            ++line;
            lineBegin = counted + 1;
        }
        run.begin -= lineBegin;
        m_styles.add(line, run);
    }
}

ReceivedText::Change ReceivedText::putOff(int codecIndex)
{
    if (!std::exchange(m_isNewestDue, false))
        return {};
    if (m_queue.options().isOn()) // the text is not that of the bytes
        return shown(Change::Replace, m_lines.tail(ReceiveBuffer::limit, std::numeric_limits<int>::max()));
    const ReceiveBuffer::Edit edit = m_newest.update(codecIndex);
    if (std::exchange(m_showsNewest, true))
        return {Change::EditEnds, 0, QString(), edit};
    return {Change::Replace, 0, m_newest.text(), {}};
}

ReceivedText::Change ReceivedText::shown(Change::Kind kind, const QString &text)
{
    m_showsNewest = false;
    return {kind, 0, text, {}};
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
    m_journal.clear();
    clearText();
}

void ReceivedText::clearText()
{
    m_queue.clear();
    m_lines.clear();
    m_styles.clear();
    m_openLength = 0;
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
