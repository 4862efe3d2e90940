#pragma once

// Decoders of the pixels that boards send, into rows of three bytes a pixel:
// R, G, B. Pixels that the source lacks are black. Allocates nothing: the caller
// checks the size first and owns the rows.

#include <QtGlobal>

namespace PixelDecoder {

struct Source
{
    const uchar *bytes = nullptr;
    qsizetype size = 0;
    int width = 0; // pixels
    int height = 0;
    bool isBigEndian = false;
};

// stride: the bytes from one row of the output to the next.
using Decode = void (*)(const Source &source, uchar *output, qsizetype stride);

// The bytes of a decoded picture of that size; 0 where a side is 0 or there would
// be more than 64 MB.
quint32 imageBytes(int width, int height);

// Two bytes a pixel. With W x H pixels, output pixel W*y - x is source pixel
// W*y + x, for x from 1 to W and y from 1 to H: each row is mirrored and read from
// one row further down.
void rgb565(const Source &source, uchar *output, qsizetype stride);

// Three bytes a pixel, R, G, B; their order does not depend on the byte order.
void rgb888(const Source &source, uchar *output, qsizetype stride);

// Two pixels in four bytes, Y U Y V, or U Y V Y in big-endian order. ITU-R BT.601,
// full range.
void yuv422(const Source &source, uchar *output, qsizetype stride);

} // namespace PixelDecoder
