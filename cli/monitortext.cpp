#include "monitortext.h"

#include "hextext.h"
#include "linestamp.h"

#include <utility>

MonitorText::MonitorText(const Options &options)
    : m_options(options)
    , m_filter(options.filter.value_or(LineMatcher::Pattern()))
{
}

QByteArray MonitorText::add(const QByteArray &bytes, qint64 arrivalMs)
{
    m_arrivalMs = arrivalMs;
    if (m_options.isHex)
        return addHex(bytes);
    if (m_options.codecIndex == TextCodec::Utf8)
        return addText(bytes);
    return addText(m_decoder.decode(bytes.constData(), bytes.size(), m_options.codecIndex).toUtf8());
}

QByteArray MonitorText::addHex(const QByteArray &bytes)
{
    QByteArray out;
    for (int begin = 0; begin < bytes.size();) {
        const int count = qMin(maxPacketBytes - m_lineBytes, bytes.size() - begin);
        QByteArray digits = HexText::render(bytes.constData() + begin, count).toLatin1();
        digits.chop(1); // the space behind the last one
        if (m_lineBytes > 0)
            digits.prepend(' ');
        append(digits.constData(), digits.size(), &out);
        m_lineBytes += count;
        begin += count;
        if (m_lineBytes == maxPacketBytes)
            out += endLine();
    }
    return out;
}

QByteArray MonitorText::addText(const QByteArray &text)
{
    if (!m_options.hasStamps && !m_options.filter)
        return text;
    QByteArray out;
    for (int begin = 0; begin < text.size();) {
        const int newLine = text.indexOf('\n', begin);
        int end = newLine < 0 ? text.size() : newLine + 1;
        const bool isCut = m_options.filter && m_lineBytes + end - begin > maxLineBytes;
        if (isCut)
            end = begin + maxLineBytes - m_lineBytes;
        append(text.constData() + begin, end - begin, &out);
        m_lineBytes += end - begin;
        begin = end;
        if (isCut)
            out += endLine();
        else if (newLine >= 0)
            finishLine(&out);
    }
    return out;
}

void MonitorText::append(const char *bytes, int count, QByteArray *out)
{
    if (!std::exchange(m_isOpen, true) && m_options.hasStamps) {
        LineStamp stamp;
        stamp.time = LineStamp::Time::Clock;
        LineStore::Line line;
        line.arrivalMs = m_arrivalMs;
        m_prefix = stamp.prefix(line, 0).toUtf8();
        if (!m_options.filter)
            *out += m_prefix;
    }
    (m_options.filter ? m_line : *out).append(bytes, count);
}

void MonitorText::finishLine(QByteArray *out)
{
    m_isOpen = false;
    m_lineBytes = 0;
    if (!m_options.filter)
        return;
    const QByteArray line = std::exchange(m_line, {});
    int length = line.size(); // without the line end
    while (length > 0 && (line.at(length - 1) == '\n' || line.at(length - 1) == '\r'))
        --length;
    if (m_filter.matches(QString::fromUtf8(line.constData(), length)))
        *out += m_prefix + line;
}

QByteArray MonitorText::endLine()
{
    QByteArray out;
    if (!m_isOpen || (!m_options.isHex && !m_options.filter))
        return out; // text stays as it came
    append("\n", 1, &out);
    finishLine(&out);
    return out;
}
