#pragma once

// What a rule looks for: bytes of a fixed number, of which some may be any, or a regular
// expression in decoded text.

#include "answerrules.h"
#include "answertext.h"

#include <QByteArrayMatcher>
#include <QRegularExpression>

class AnswerPattern
{
public:
    AnswerPattern(AnswerRule::Kind kind, const QString &text, int codecIndex);

    // Why nothing can match, for the user. Empty where something can.
    QString fault() const { return m_fault; }
    int groupCount() const; // without the complete match, which is group 0

    bool isExpression() const { return m_isExpression; }
    // Its steps are limited, lines end at CR, LF or both, "^" and "$" match at each, and
    // an empty match is none.
    const QRegularExpression &expression() const { return m_expression; }

    // Of bytes: of a match.
    int size() const { return m_wanted.bytes.size(); }
    // The first match in the bytes that begins at `from` or later; -1 where there is none.
    int indexIn(const QByteArray &bytes, int from) const;
    // Of a match at the place; the complete one first.
    QVector<QByteArray> groups(const QByteArray &bytes, int at) const;

private:
    void compileExpression(const QString &text);
    void findAnchor();
    bool isMatch(const QByteArray &bytes, int at) const;

    QString m_fault;
    bool m_isExpression;
    bool m_isMultiByteText = false; // a match may not begin in the middle of a character
    AnswerText::Masked m_wanted;
    int m_anchorAt = 0; // the longest run of bytes that are certain
    QByteArrayMatcher m_anchor;
    QRegularExpression m_expression;
};
