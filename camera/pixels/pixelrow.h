#pragma once

// One mirrored row of RGB565 pixels as R, G, B: the inner loop of PixelDecoder,
// twice, for any processor and for those of PCs.

#include <QtGlobal>

namespace PixelRow {

// Reads width pixels backwards from the one at source, and writes three bytes
// for each from output on; touches nothing else.
using Decode = void (*)(const uchar *source, int width, bool bigEndian, uchar *output);

void portable(const uchar *source, int width, bool bigEndian, uchar *output);

// With AVX2; null where the program is built for other processors or runs on one
// without.
Decode vectorised();

} // namespace PixelRow
