#pragma once

// The bytes that a simulated board streams: a function of encoding and seed
// alone, so that the receiver can compute what must have arrived.

#include <QByteArray>
#include <QString>

namespace Boardsim {

enum class Encoding { Utf8, Gb18030, Ascii, Binary };

// "utf8", "gb18030", "ascii" or "binary"; false for anything else.
bool encodingFromName(const QString &name, Encoding *encoding);

// Text in the encoding; Ascii and Binary count as UTF-8.
QByteArray encoded(const QString &text, Encoding encoding);

// One step of Marsaglia's xorshift32 (shifts 13, 17, 5). Zero stays zero.
quint32 xorshift32(quint32 state);

// A number that depends on seed and index only: two steps of xorshift32 from
// seed ^ (index + 1) * 2654435761 (modulo 2^32; 1 instead of 0).
quint32 scrambled(quint32 seed, quint32 index);

// Binary: byte i is the top byte of the state after i + 1 steps of xorshift32
// from the seed (1 instead of 0).
//
// Text: lines without end, line n (from 0) being
//     "<n as 8 decimal digits> <word> <value>\r\n"
// with value = scrambled(seed, n), written in 8 lower-case hexadecimal digits,
// and word = entry (value mod 4) of: 温度, 电压, 转速, speed; in ASCII:
// degree, supply, actual, speed.
class Payload
{
public:
    Payload(Encoding encoding, quint32 seed);

    // The next count bytes; a line, and even a character, may be cut anywhere.
    QByteArray take(int count);

    static QString line(quint32 number, quint32 seed, Encoding encoding);

private:
    Encoding m_encoding;
    quint32 m_seed;
    quint32 m_state; // of the binary generator
    quint32 m_nextLine = 0;
    QByteArray m_rest; // of the line that was cut
};

} // namespace Boardsim
