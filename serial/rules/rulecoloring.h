#pragma once

// Colors text by rules. Of several rules that color a place, the first one in
// their order wins.

#include "colorrules.h"

#include <QStringList>

class RuleColoring
{
public:
    // Faulty rules and those that are off color nothing.
    void setRules(const ColorRules &rules);
    bool isEmpty() const { return m_rules.isEmpty(); }

    // The number of the first rule for lines that the line matches; -1 where
    // there is none.
    int lineRuleOf(const QString &line);

    // A piece of one line.
    struct Piece
    {
        QString text;
        bool isBegin = true; // of the line
        bool isEnd = true;
    };
    struct Span
    {
        int begin = 0; // UTF-16 units of the piece
        int length = 0;
        quint32 color = 0; // 0xRRGGBB

        bool operator==(const Span &other) const;
    };
    // The colors in a piece of a line whose rule is known, in the order of the text.
    QVector<Span> spans(const Piece &piece, int lineRule);

    // A rule that took too many steps on several texts stays off; setRules() does not
    // bring its pattern back.
    bool hasGivenUp(const LineMatcher::Pattern &pattern) const { return m_givenUp.contains(pattern); }
    // Those that gave up since the last call.
    QStringList takeGivenUp();

    static constexpr int maxHardTexts = 3;

private:
    struct Rule
    {
        LineMatcher matcher;
        quint32 color;
        bool isForLine;
        int hardTexts = 0;
    };

    QVector<LineMatcher::Range> find(Rule *rule, const QString &text);

    QVector<Rule> m_rules;
    QVector<LineMatcher::Pattern> m_givenUp;
    QStringList m_newlyGivenUp;
};
