#include "linetest.h"

bool LineTest::matches(const QString &line)
{
    const LineMatcher::Pattern &pattern = m_matcher.pattern();
    if (!pattern.isExpression)
        return line.contains(pattern.text, pattern.caseSensitive ? Qt::CaseSensitive : Qt::CaseInsensitive);
    const QRegularExpressionMatch match = m_matcher.expression().match(line);
    m_unjudged += match.isValid() ? 0 : 1;
    return match.hasMatch();
}
