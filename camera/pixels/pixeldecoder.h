#pragma once

// Pixels of the camera link as rows of three bytes, R, G, B. Nothing is
// allocated here: the caller checks the size first and owns the rows.

#include <QtGlobal>

namespace PixelDecoder {

// The bytes of a picture of that size; 0 where a side is 0 or it is too large.
quint32 imageBytes(int width, int height);

// With W x H pixels, output pixel W*y - x takes source pixel W*y + x, for x from
// 1 to W and y from 1 to H: each row is mirrored and taken from one row further
// down. What would lie past the end of the source is black.
// stride: the bytes from one row of the output to the next.
void rgb565(const uchar *source, qsizetype sourceSize, int width, int height, bool bigEndian, uchar *output,
            qsizetype stride);

// Row by row as it is; what the source lacks is black.
void rgb888(const uchar *source, qsizetype sourceSize, int width, int height, uchar *output,
            qsizetype stride);

// Pairs of pixels in four bytes, Y U Y V, or U Y V Y where the high byte of each two
// comes first; row by row as it is. ITU-R BT.601, full range. What the source lacks
// is black.
void yuv422(const uchar *source, qsizetype sourceSize, int width, int height, bool bigEndian, uchar *output,
            qsizetype stride);

} // namespace PixelDecoder
