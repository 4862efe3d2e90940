#pragma once

// The characters that stand in a document's bytes, for the text column. Which
// byte belongs to which character depends on the bytes around it and never on
// where one begins to look.

#include "hexdocument.h"

#include <QString>

namespace HexCharacters {

constexpr int ascii = -1; // in the place of a codec: no longer characters

// For each of at most `count` bytes, fewer at the end: the character that begins with
// it, "." for what can't be shown, empty inside one. The codec is an index of TextCodec.
std::vector<QString> cells(const HexDocument &document, qint64 address, int count, int codec);

} // namespace HexCharacters
