#include "logform.h"

#include <QDateTime>

#include <utility>

namespace {

constexpr int kRowBytes = 16;
constexpr qint64 kMaxGapUs = 10LL * 1000; // between two bytes of a row

const char kDigits[] = "0123456789ABCDEF";

QByteArray offsetText(quint64 offset)
{
    QByteArray text(8, '0');
    for (int i = 7; i >= 0; --i, offset >>= 4)
        text[i] = kDigits[offset & 0xF];
    return text;
}

} // namespace

QByteArray LogForm::timeText(qint64 timeUs)
{
    const qint64 ms = timeUs / 1000;
    if (ms != m_textMs) {
        m_textMs = ms;
        m_timeText =
            QDateTime::fromMSecsSinceEpoch(ms).toString(QStringLiteral("yyyy-MM-dd hh:mm:ss.zzz")).toLatin1();
    }
    return m_timeText;
}

QByteArray LogForm::prefix(const Record &record)
{
    QByteArray text = timeText(record.timeUs) + (record.direction == In ? " RX " : " TX ");
    if (!record.peer.isEmpty())
        text += record.peer + ' ';
    return text;
}

bool LogForm::continues(const Record &record) const
{
    return record.direction == m_last.direction && record.peer == m_last.peer;
}

QByteArray LogForm::add(const Record &record)
{
    if (m_kind == Received)
        return record.direction == In ? record.bytes : QByteArray();
    QByteArray bytes;
    if (record.direction == Event)
        bytes = endRow() + "# " + timeText(record.timeUs) + ' ' + record.bytes + '\n';
    else
        bytes = m_kind == Text ? addText(record) : addRows(record);
    m_last = record;
    m_last.bytes.clear();
    return bytes;
}

QByteArray LogForm::addText(const Record &record)
{
    QByteArray text;
    if (!continues(record))
        text = endRow();
    for (int begin = 0; begin < record.bytes.size();) {
        const int newLine = record.bytes.indexOf('\n', begin);
        const int end = newLine < 0 ? record.bytes.size() : newLine + 1;
        if (!std::exchange(m_isLineOpen, newLine < 0))
            text += prefix(record);
        text.append(record.bytes.constData() + begin, end - begin);
        begin = end;
    }
    return text;
}

QByteArray LogForm::addRows(const Record &record)
{
    QByteArray rows;
    if (!continues(record) || record.timeUs - m_last.timeUs > kMaxGapUs)
        rows = endRow();
    for (int begin = 0; begin < record.bytes.size();) {
        if (m_row.isEmpty())
            m_rowPrefix = prefix(record) + offsetText(m_offsets[record.direction]);
        const int count = qMin(kRowBytes - m_row.size(), record.bytes.size() - begin);
        m_row.append(record.bytes.constData() + begin, count);
        m_offsets[record.direction] += quint64(count);
        begin += count;
        if (m_row.size() == kRowBytes)
            rows += endRow();
    }
    return rows;
}

QByteArray LogForm::endRow()
{
    if (std::exchange(m_isLineOpen, false))
        return "\n";
    if (m_row.isEmpty())
        return {};
    QByteArray line = m_rowPrefix + ' ';
    for (int i = 0; i < kRowBytes; ++i) {
        const auto byte = i < m_row.size() ? uchar(m_row.at(i)) : uchar(0);
        line += i % 8 == 0 ? "  " : " ";
        line += i < m_row.size() ? kDigits[byte >> 4] : ' ';
        line += i < m_row.size() ? kDigits[byte & 0xF] : ' ';
    }
    line += "  |";
    for (const char byte : qAsConst(m_row))
        line += byte >= 0x20 && byte < 0x7F ? byte : '.';
    m_row.clear();
    return line + "|\n";
}
