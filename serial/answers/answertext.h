#pragma once

// What the user types in a rule, as bytes: text with escapes, and hexadecimal digits.
// Faults are for the user, in Chinese.

#include <QByteArray>
#include <QString>
#include <QVector>

namespace AnswerText {

// Literal bytes, or a group of the match in their place.
struct Part
{
    QByteArray bytes;
    int group = -1;
};

// Text in the codec with \r \n \t \0 \xHH \\. `fault` is left empty where it is valid.
// With groups: $0 to $9 stand for one, $$ for a dollar sign.
QVector<Part> textParts(const QString &text, int codecIndex, bool hasGroups, QString *fault);

// Pairs of digits with or without spaces, and groups as above.
QVector<Part> hexParts(const QString &text, QString *fault);

// Pairs of digits of which each may be "?", for any; round brackets around a group.
struct Masked
{
    QByteArray bytes; // masked
    QByteArray mask;
    struct Range
    {
        int begin = 0;
        int size = 0;
    };
    QVector<Range> groups;
};
Masked maskedBytes(const QString &text, QString *fault);

} // namespace AnswerText
