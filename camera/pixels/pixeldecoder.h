#pragma once

// Decoders of the pixels that boards send, into rows of three bytes a pixel:
// R, G, B. Pixels that the source lacks are black. Beside each decoder stands which
// bytes of the source a pixel is made of. Allocates nothing: the caller checks the
// size first and owns the rows.

#include <QtGlobal>

#include <array>

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

// Where in the source a pixel of the picture comes from, in the order of the wire; of
// YUV422 the pixel's Y, and the U and V that it shares. -1: no such byte in the row.
struct PixelBytes
{
    std::array<qsizetype, 3> at{-1, -1, -1};
    int count = 0;
    bool isYuv = false;
};
// The pixel lies within the picture; the source may be shorter.
using BytesOf = PixelBytes (*)(const Source &source, int x, int y);

// The bytes of a decoded picture of that size; 0 where a side is 0 or there would
// be more than 64 MB.
quint32 imageBytes(int width, int height);

// Two bytes a pixel. With W x H pixels, output pixel W*y - x is source pixel
// W*y + x, for x from 1 to W and y from 1 to H: each row is mirrored and read from
// one row further down.
void rgb565(const Source &source, uchar *output, qsizetype stride);
PixelBytes bytesOfRgb565(const Source &source, int x, int y);

// Three bytes a pixel, R, G, B; their order does not depend on the byte order.
void rgb888(const Source &source, uchar *output, qsizetype stride);
PixelBytes bytesOfRgb888(const Source &source, int x, int y);

// Two pixels in four bytes, Y U Y V, or U Y V Y in big-endian order. ITU-R BT.601,
// full range.
void yuv422(const Source &source, uchar *output, qsizetype stride);
PixelBytes bytesOfYuv422(const Source &source, int x, int y);

// Those below read rows from the top and from the left, and their byte order is their
// own. A pixel of which the source has only a part is black.

// One byte a pixel: its luma.
void gray8(const Source &source, uchar *output, qsizetype stride);
PixelBytes bytesOfGray8(const Source &source, int x, int y);

// Two bytes a pixel, the low or the high one first. Five and six bits become eight by
// repeating the upper ones, so that white is white.
void rgb565Little(const Source &source, uchar *output, qsizetype stride);
void rgb565Big(const Source &source, uchar *output, qsizetype stride);
PixelBytes bytesOfRows565(const Source &source, int x, int y);

// Three bytes a pixel, B, G, R; its bytes lie as those of rgb888.
void bgr888(const Source &source, uchar *output, qsizetype stride);

// As yuv422.
void yuyv(const Source &source, uchar *output, qsizetype stride);
PixelBytes bytesOfYuyv(const Source &source, int x, int y);
void uyvy(const Source &source, uchar *output, qsizetype stride);
PixelBytes bytesOfUyvy(const Source &source, int x, int y);

} // namespace PixelDecoder
