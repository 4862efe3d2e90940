#pragma once

// The answer of a rule: bytes with groups of the match in them, a checksum and a line
// end.

#include "answerrules.h"
#include "answertext.h"

class AnswerTemplate
{
public:
    static constexpr int maxGroups = 32; // in one answer; each may be as long as a match

    // groupCount: of the rule's pattern.
    AnswerTemplate(const AnswerRule &rule, int codecIndex, int groupCount);

    // Why there is no answer, for the user.
    QString fault() const { return m_fault; }
    // With the groups of a match, the complete one first; a missing one is empty. Empty
    // where nothing is to be sent.
    QByteArray bytes(const QVector<QByteArray> &groups) const;

private:
    void checkGroups(int groupCount);

    QString m_fault;
    QVector<AnswerText::Part> m_parts;
    QString m_checksum;
    QByteArray m_lineEnd;
};
