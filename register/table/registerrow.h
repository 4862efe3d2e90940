#pragma once

// One row of a register table: four cells of text. Its form in a file and on a page
// is the concern of others.

#include <QString>

struct RegisterRow
{
    QString number;
    QString address; // hexadecimal
    QString value;   // hexadecimal
    QString description;

    bool isEmpty() const;
    // The address or value as a number; false where it is not hexadecimal.
    bool addressNumber(quint32 *result) const { return parse(address, result); }
    bool valueNumber(quint32 *result) const { return parse(value, result); }

    // Hexadecimal with blanks and "0x" before the digits, as in tables of other
    // programs: 1 to 8 digits.
    static bool parse(const QString &text, quint32 *result);
    // What no cell can hold, since it separates cells of the file: a comma becomes a
    // full-width one, a line break a blank.
    static QString fitted(const QString &text);
};
