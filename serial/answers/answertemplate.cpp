#include "answertemplate.h"

#include "framechecksum.h"

AnswerTemplate::AnswerTemplate(const AnswerRule &rule, int codecIndex, int groupCount)
    : m_parts(rule.isHexAnswer ? AnswerText::hexParts(rule.answer, &m_fault)
                               : AnswerText::textParts(rule.answer, codecIndex, true, &m_fault))
    , m_checksum(rule.checksum)
{
    static const char *const lineEnds[] = {"", "\r", "\n", "\r\n"};
    m_lineEnd = lineEnds[rule.lineEnd];
    if (!m_fault.isEmpty())
        m_fault.prepend(QStringLiteral("应答"));
    else
        checkGroups(groupCount);
}

void AnswerTemplate::checkGroups(int groupCount)
{
    int used = 0;
    for (const AnswerText::Part &part : qAsConst(m_parts)) {
        if (part.group < 0)
            continue;
        if (part.group > groupCount)
            m_fault = QStringLiteral("应答中的 $%1 没有对应的括号").arg(part.group);
        ++used;
    }
    if (used > maxGroups)
        m_fault = QStringLiteral("应答中的 $ 超过%1处").arg(maxGroups);
}

QByteArray AnswerTemplate::bytes(const QVector<QByteArray> &groups) const
{
    QByteArray bytes;
    for (const AnswerText::Part &part : m_parts)
        bytes += part.group < 0 ? part.bytes : groups.value(part.group);
    std::optional<FrameChecksum> checksum = FrameChecksum::named(m_checksum);
    if (checksum && !bytes.isEmpty()) {
        checksum->add(bytes);
        bytes += checksum->bytes();
    }
    return bytes + m_lineEnd;
}
