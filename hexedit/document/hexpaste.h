#pragma once

// Turns pasted text into bytes, a slice at a time: exactly, or not at all.

#include "hexparse.h"

#include <QByteArray>
#include <QString>

class HexPaste
{
public:
    enum class As { Hex, Text };
    // The codec is an index of TextCodec; hexadecimal text needs none.
    HexPaste(const QString &text, As as, int codec);

    enum class State { Running, Done, Refused };
    State step(); // some milliseconds

    const QByteArray &bytes() const { return m_as == As::Hex ? m_hex.bytes() : m_bytes; }
    QString refusal() const; // for the user
    int permille() const;

private:
    State encodeSlice();

    QString m_text;
    As m_as;
    int m_codec;
    HexParse::Reader m_hex;
    QByteArray m_bytes;
    int m_place = 0;
};
