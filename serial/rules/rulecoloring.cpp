#include "rulecoloring.h"

#include <utility>

bool RuleColoring::Span::operator==(const Span &other) const
{
    return begin == other.begin && length == other.length && color == other.color;
}

void RuleColoring::setRules(const ColorRules &rules)
{
    m_rules.clear();
    for (const ColorRule &rule : rules) {
        if (!rule.isOn || rule.pattern.text.isEmpty() || hasGivenUp(rule.pattern))
            continue;
        const LineMatcher matcher(rule.pattern);
        if (matcher.fault().isEmpty())
            m_rules.append({matcher, rule.color, rule.isForLine});
    }
}

QVector<LineMatcher::Range> RuleColoring::find(Rule *rule, const QString &text)
{
    QVector<LineMatcher::Range> found;
    if (rule->hardTexts >= maxHardTexts || rule->matcher.find(text, &found))
        return found;
    if (++rule->hardTexts == maxHardTexts) {
        m_givenUp.append(rule->matcher.pattern());
        m_newlyGivenUp.append(rule->matcher.pattern().text);
    }
    return found;
}

int RuleColoring::lineRuleOf(const QString &line)
{
    for (int i = 0; i < m_rules.size(); ++i)
        if (m_rules.at(i).isForLine && !find(&m_rules[i], line).isEmpty())
            return i;
    return -1;
}

QVector<RuleColoring::Span> RuleColoring::spans(const Piece &piece, int lineRule)
{
    const int size = piece.text.size();
    QVector<int> ruleAt; // of each character; made when it is needed
    const auto color = [&](int rule, int begin, int end) {
        if (ruleAt.isEmpty())
            ruleAt.fill(-1, size);
        for (int i = begin; i < end; ++i)
            if (ruleAt.at(i) < 0)
                ruleAt[i] = rule;
    };
    for (int i = 0; i < m_rules.size() && i != lineRule; ++i) {
        if (m_rules.at(i).isForLine)
            continue;
        const QVector<LineMatcher::Range> found = find(&m_rules[i], piece.text);
        for (const LineMatcher::Range &range : found) {
            const int end = range.begin + range.length;
            // Where the piece is cut, "^" and "$" match what is no edge of the line.
            if ((range.begin > 0 || piece.isBegin) && (end < size || piece.isEnd))
                color(i, range.begin, end);
        }
    }
    if (lineRule >= 0)
        color(lineRule, 0, size);
    QVector<Span> spans;
    for (int begin = 0, end = 0; begin < ruleAt.size(); begin = end) {
        while (end < ruleAt.size() && ruleAt.at(end) == ruleAt.at(begin))
            ++end;
        if (ruleAt.at(begin) >= 0)
            spans.append({begin, end - begin, m_rules.at(ruleAt.at(begin)).color});
    }
    return spans;
}

QStringList RuleColoring::takeGivenUp()
{
    return std::exchange(m_newlyGivenUp, {});
}
