#pragma once

// Numbers as boards print them: sign, decimals, exponent, hexadecimal with 0x, and
// a unit behind ("23.4C", "12mV", "40%"). Nothing that only begins like one:
// addresses, versions, times and dates are not numbers. "nan" and "inf" are
// numbers without a value.

#include <QChar>

namespace NumberText {

struct Number
{
    int length = 0; // characters, the unit included; 0: there is none
    double value = 0;
    bool isFinite = true;
};

// At the beginning of some text. What is before it is the caller's business.
Number read(const QChar *begin, const QChar *end);
// The text is a number and, perhaps behind spaces, its unit. No length otherwise.
Number readAll(const QChar *begin, const QChar *end);

// Where a name, a number or a unit ends: space, comma, closing bracket and the like.
bool isDelimiter(QChar character);

} // namespace NumberText
