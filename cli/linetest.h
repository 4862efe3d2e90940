#pragma once

// Whether a line contains what is looked for: a text or an expression, which may
// match at an empty place. Counts the lines on which an expression needed too many
// steps.

#include "linematcher.h"

class LineTest
{
public:
    explicit LineTest(const LineMatcher::Pattern &pattern)
        : m_matcher(pattern)
    {
    }

    bool matches(const QString &line);
    int unjudgedLines() const { return m_unjudged; }

private:
    LineMatcher m_matcher;
    int m_unjudged = 0;
};
