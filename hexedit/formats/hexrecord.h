#pragma once

// One record of text: an Intel HEX record (":", count, address of 16 bits, type,
// bytes, sum) or a Motorola S-record ("S", type, count, address of 16 to 32
// bits, bytes, sum), all numbers hexadecimal and in big-endian order. The sum of
// an Intel record makes the sum of all bytes 0, that of an S-record 255.
// Source: Intel, "Hexadecimal Object File Format Specification", Rev. A, 1988;
// Motorola, "M68000 Family Programmer's Reference Manual", appendix C, 1992.

#include "hexform.h"

struct HexRecord
{
    static constexpr int maxLine = 521; // characters of the longest Intel record

    enum IntelType { Data, End, Segment, SegmentStart, Linear, LinearStart };
    enum class Problem {
        None,
        NoRecord,  // something else than a record of a known type
        Truncated, // the beginning of one
        Trailing,  // a complete record with a right sum, and more behind it
    };

    int type = 0; // of an S-record its digit
    quint32 address = 0;
    int length = 0;
    quint8 bytes[255] = {};
    bool isSumRight = false;

    // Where there is a problem other than Trailing, the record has no meaning.
    static Problem parse(HexForm form, const char *line, int length, HexRecord *record);

    // Bytes of the address of an S-record, 0 where there is no such type.
    static int addressBytesOf(int type);
    // The longest number of bytes in a record with an address of so many bytes.
    static int maxLength(HexForm form, int addressBytes);

    // Without an end of line.
    static void append(HexForm form, int type, quint32 address, const QByteArray &bytes, QByteArray *text);
};
