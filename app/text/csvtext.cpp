#include "csvtext.h"

#include <algorithm>

namespace CsvText {

QByteArray field(const QString &text)
{
    QByteArray bytes = text.toUtf8();
    const bool isPlain = std::none_of(bytes.begin(), bytes.end(),
                                      [](char c) { return c == ',' || c == '"' || c == '\r' || c == '\n'; });
    return isPlain ? bytes : '"' + bytes.replace('"', "\"\"") + '"';
}

QByteArray line(const QStringList &fields)
{
    QByteArray text;
    for (const QString &cell : fields)
        text += field(cell) + ',';
    text.chop(1);
    return text + "\r\n";
}

Reader::Reader(const QByteArray &content, char separator, int at)
    : m_content(content)
    , m_separator(separator)
    , m_at(at)
{
}

QVector<QByteArray> Reader::next(int maxFields)
{
    QVector<QByteArray> fields;
    m_line = m_nextLine;
    m_fieldCount = 0;
    for (bool isLast = false; !isLast;) {
        QByteArray field;
        if (!readQuoted(&field)) {
            const int begin = m_at;
            while (m_at < m_content.size() && m_content.at(m_at) != m_separator && m_content.at(m_at) != '\n')
                ++m_at;
            field = m_content.mid(begin, m_at - begin);
        }
        isLast = m_at >= m_content.size() || m_content.at(m_at) != m_separator;
        if (!isLast)
            ++m_at;
        else if (field.endsWith('\r'))
            field.chop(1);
        if (m_fieldCount++ < maxFields)
            fields.append(field);
    }
    endLine();
    return fields;
}

// Behind a quoted field blanks may stand.
bool Reader::isFieldEnd(int at) const
{
    return at >= m_content.size() || m_content.at(at) == m_separator || m_content.at(at) == '\n' ||
           (m_content.at(at) == '\r' && (at + 1 == m_content.size() || m_content.at(at + 1) == '\n'));
}

bool Reader::readQuoted(QByteArray *field)
{
    int at = m_at;
    while (at < m_content.size() && m_content.at(at) == ' ')
        ++at;
    if (at >= m_content.size() || m_content.at(at) != '"')
        return false;
    const int end = qMin(m_content.size(), ++at + maxQuotedBytes);
    int breaks = 0;
    QByteArray text;
    for (; at < end && breaks <= maxBreaks; ++at) {
        const char c = m_content.at(at);
        breaks += c == '\n' ? 1 : 0;
        if (c != '"') {
            text += c;
        } else if (at + 1 < m_content.size() && m_content.at(at + 1) == '"') {
            text += c;
            ++at;
        } else {
            do {
                ++at;
            } while (at < m_content.size() && m_content.at(at) == ' ');
            if (!isFieldEnd(at))
                return false;
            m_at = at < m_content.size() && m_content.at(at) == '\r' ? at + 1 : at;
            m_nextLine += breaks;
            *field = text;
            return true;
        }
    }
    return false;
}

void Reader::endLine()
{
    if (m_at < m_content.size())
        ++m_at;
    ++m_nextLine;
}

} // namespace CsvText
