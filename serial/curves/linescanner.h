#pragma once

// Reads a line from the left as words, numbers and what is between them. Brackets,
// quotes and spaces only separate.

#include "numbertext.h"

#include <QString>

class LineScanner
{
public:
    enum Kind { End, Word, Number, Assignment, Other };

    static constexpr int maxName = 32; // characters

    // The text outlives the scanner.
    explicit LineScanner(const QString &text)
        : m_text(text)
    {
    }

    Kind next();
    // Of what next() found.
    int begin() const { return m_begin; }
    int end() const { return m_at; }
    const NumberText::Number &number() const { return m_number; }

    static bool isNameStart(QChar character);
    static bool isNamePart(QChar character);
    static bool isIgnored(QChar character);
    static bool isComma(QChar character);

private:
    void skipName();
    Kind scanMixed();

    const QString &m_text;
    int m_begin = 0;
    int m_at = 0;
    NumberText::Number m_number;
};
