#pragma once

// The characters that stand in a document's bytes, for the text column. Which
// byte belongs to which character depends on the bytes around it and never on
// where one begins to look.

#include "hexdocument.h"

#include <QString>

namespace HexCharacters {

// One for each byte.
struct Cell
{
    QString text;  // the character that begins with it, "." for what can't be shown, empty inside one
    int bytes = 1; // of the character that begins with it
};

constexpr int ascii = -1; // in the place of a codec: no longer characters

// Of at most `count` bytes, fewer at the end. The codec is an index of TextCodec.
std::vector<Cell> cells(const HexDocument &document, qint64 address, int count, int codec);

} // namespace HexCharacters
