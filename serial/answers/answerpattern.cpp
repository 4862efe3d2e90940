#include "answerpattern.h"

#include "linematcher.h"
#include "textcodec.h"

namespace {

// Of GB18030, in which a byte of ASCII may be the second one of a character: what goes
// before the place is complete where the bytes from 0x81 on right before it are even in
// number.
bool isInCharacter(const QByteArray &bytes, int at)
{
    int begin = at;
    while (begin > 0 && static_cast<quint8>(bytes.at(begin - 1)) >= 0x81)
        --begin;
    return (at - begin) % 2 != 0;
}

} // namespace

AnswerPattern::AnswerPattern(AnswerRule::Kind kind, const QString &text, int codecIndex)
    : m_isExpression(kind == AnswerRule::Expression)
{
    if (m_isExpression) {
        compileExpression(text);
    } else if (kind == AnswerRule::Hex) {
        m_wanted = AnswerText::maskedBytes(text, &m_fault);
    } else {
        const QVector<AnswerText::Part> parts = AnswerText::textParts(text, codecIndex, false, &m_fault);
        m_wanted.bytes = parts.isEmpty() ? QByteArray() : parts.first().bytes;
        m_wanted.mask.fill('\xFF', m_wanted.bytes.size());
        m_isMultiByteText = codecIndex != TextCodec::Utf8 && !text.contains(QLatin1String("\\x"));
    }
    if (text.isEmpty() || (!m_isExpression && m_fault.isEmpty() && m_wanted.bytes.isEmpty()))
        m_fault = QStringLiteral("请输入匹配内容");
    if (m_fault.isEmpty() && !m_isExpression)
        findAnchor();
}

void AnswerPattern::compileExpression(const QString &text)
{
    const LineMatcher matcher({text, true, false, true});
    m_fault = matcher.fault();
    if (!m_fault.isEmpty())
        return;
    m_expression = matcher.expression();
    m_expression.setPattern(QStringLiteral("(*ANYCRLF)(*NOTEMPTY)") + m_expression.pattern());
    m_expression.setPatternOptions(m_expression.patternOptions() | QRegularExpression::MultilineOption);
    m_expression.optimize();
}

void AnswerPattern::findAnchor()
{
    int size = 0;
    for (int begin = 0, end = 0; begin < m_wanted.mask.size(); begin = end + 1) {
        end = begin;
        while (end < m_wanted.mask.size() && m_wanted.mask.at(end) == '\xFF')
            ++end;
        if (end - begin > size) {
            size = end - begin;
            m_anchorAt = begin;
        }
    }
    m_anchor.setPattern(m_wanted.bytes.mid(m_anchorAt, size));
}

int AnswerPattern::groupCount() const
{
    return m_isExpression ? m_expression.captureCount() : m_wanted.groups.size();
}

bool AnswerPattern::isMatch(const QByteArray &bytes, int at) const
{
    for (int i = 0; i < m_wanted.bytes.size(); ++i)
        if ((bytes.at(at + i) & m_wanted.mask.at(i)) != m_wanted.bytes.at(i))
            return false;
    return !m_isMultiByteText || !isInCharacter(bytes, at);
}

int AnswerPattern::indexIn(const QByteArray &bytes, int from) const
{
    for (;; ++from) {
        const int anchor = m_anchor.indexIn(bytes, from + m_anchorAt);
        if (anchor < 0)
            return -1;
        from = anchor - m_anchorAt;
        if (from + size() > bytes.size())
            return -1;
        if (isMatch(bytes, from))
            return from;
    }
}

QVector<QByteArray> AnswerPattern::groups(const QByteArray &bytes, int at) const
{
    QVector<QByteArray> groups{bytes.mid(at, size())};
    for (const AnswerText::Masked::Range &group : m_wanted.groups)
        groups.append(bytes.mid(at + group.begin, group.size));
    return groups;
}
