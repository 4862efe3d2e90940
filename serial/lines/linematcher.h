#pragma once

// What the user looks for in a line: a text or a regular expression. Positions
// and lengths are UTF-16 units of the line.

#include <QRegularExpression>
#include <QString>
#include <QStringMatcher>
#include <QVector>

class LineMatcher
{
public:
    struct Pattern
    {
        QString text;
        bool caseSensitive = false;
        bool wholeWord = false;
        bool isExpression = false;

        bool operator==(const Pattern &other) const;
        bool operator!=(const Pattern &other) const { return !(*this == other); }
    };

    struct Range
    {
        int begin = 0;
        int length = 0; // at least 1
    };

    // Of an empty pattern: matches nothing.
    LineMatcher() = default;
    explicit LineMatcher(const Pattern &pattern);

    const Pattern &pattern() const { return m_pattern; }
    bool isEmpty() const { return m_pattern.text.isEmpty(); }
    // Why the expression can't be used, for the user. Empty where it can.
    QString fault() const;

    // Of a pattern without fault that is one; its steps are limited.
    const QRegularExpression &expression() const { return m_expression; }

    // Appends the matches in `text`, which may be several lines: none goes over a
    // line end. False where the expression took too many steps or too long, and the
    // remaining matches are unknown. Of a line of more than 4096 units, an expression
    // sees a part at a time; a match of up to 2048 is always found.
    bool find(const QString &text, QVector<Range> *matches) const;

private:
    class Budget;

    void findText(const QString &text, QVector<Range> *matches) const;
    bool findInLine(const QString &text, int begin, int end, Budget *budget, QVector<Range> *matches) const;

    Pattern m_pattern;
    QStringMatcher m_text;
    QRegularExpression m_expression;
};
