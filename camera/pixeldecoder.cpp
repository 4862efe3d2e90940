#include "camera/pixeldecoder.h"

#include "camera/cameraframe.h"

#include <QtEndian>

#include <algorithm>
#include <cstring>

namespace PixelDecoder {

namespace {

void putPixel(quint32 word, uchar *to)
{
    to[0] = static_cast<uchar>(word >> 8 & 0xF8);
    to[1] = static_cast<uchar>(word >> 3 & 0xFC);
    to[2] = static_cast<uchar>(word << 3 & 0xF8);
}

template <bool bigEndian> quint32 wordAt(const uchar *at)
{
    return bigEndian ? static_cast<quint32>(at[0] << 8 | at[1]) : static_cast<quint32>(at[1] << 8 | at[0]);
}

// Two pixels, each in the lower half of 32 bits, become R, G and B in the lower
// three bytes.
quint64 expanded(quint64 pixels)
{
    return (pixels >> 8 & 0x000000F8000000F8) | (pixels << 5 & 0x0000FC000000FC00) |
           (pixels << 19 & 0x00F8000000F80000);
}

// A row whose source runs backwards. Four pixels at a time: one load, and no
// byte is touched by itself.
template <bool bigEndian> void wholeRow(const uchar *source, int width, uchar *output)
{
    constexpr quint64 lowBytes = 0x00FF00FF00FF00FF;
    constexpr quint64 lowHalves = 0x0000FFFF0000FFFF;
    int i = 0;
    for (; i + 4 <= width; i += 4, source -= 8, output += 12) {
        quint64 pixels = qFromLittleEndian<quint64>(source - 6);
        if (bigEndian)
            pixels = (pixels & lowBytes) << 8 | (pixels >> 8 & lowBytes);
        const quint64 fourthAndSecond = expanded(pixels & lowHalves);
        const quint64 thirdAndFirst = expanded(pixels >> 16 & lowHalves);
        qToLittleEndian<quint64>(thirdAndFirst >> 32 | fourthAndSecond >> 32 << 24 | thirdAndFirst << 48,
                                 output);
        qToLittleEndian<quint32>(static_cast<quint32>((thirdAndFirst >> 16 & 0xFF) | fourthAndSecond << 8),
                                 output + 8);
    }
    for (; i < width; ++i, source -= 2, output += 3)
        putPixel(wordAt<bigEndian>(source), output);
}

template <bool bigEndian>
void decode(const uchar *source, qsizetype pixels, bool hasHalfPixel, int width, int height, uchar *output,
            qsizetype stride)
{
    for (int y = 1; y <= height; ++y, output += stride) {
        const qsizetype last = static_cast<qsizetype>(width) * (y + 1); // what the row's first pixel takes
        if (last < pixels) {
            wholeRow<bigEndian>(source + 2 * last, width, output);
            continue;
        }
        for (int i = 0; i < width; ++i) {
            const qsizetype at = last - i;
            quint32 word = 0;
            if (at < pixels)
                word = wordAt<bigEndian>(source + 2 * at);
            else if (at == pixels && hasHalfPixel)
                word = bigEndian ? static_cast<quint32>(source[2 * at] << 8) : source[2 * at];
            putPixel(word, output + static_cast<qsizetype>(3) * i);
        }
    }
}

} // namespace

quint32 imageBytes(int width, int height)
{
    if (width <= 0 || height <= 0)
        return 0;
    const quint64 bytes = static_cast<quint64>(width) * static_cast<quint64>(height) * 3;
    return bytes > CameraFrame::mostBytes ? 0 : static_cast<quint32>(bytes);
}

void rgb565(const uchar *source, qsizetype sourceSize, int width, int height, bool bigEndian, uchar *output,
            qsizetype stride)
{
    const bool hasHalfPixel = sourceSize % 2 != 0;
    if (bigEndian)
        decode<true>(source, sourceSize / 2, hasHalfPixel, width, height, output, stride);
    else
        decode<false>(source, sourceSize / 2, hasHalfPixel, width, height, output, stride);
}

void rgb888(const uchar *source, qsizetype sourceSize, int width, int height, uchar *output, qsizetype stride)
{
    const qsizetype row = static_cast<qsizetype>(width) * 3;
    for (int y = 0; y < height; ++y, output += stride) {
        const qsizetype there = std::clamp<qsizetype>(sourceSize - row * y, 0, row);
        if (there > 0)
            std::memcpy(output, source + row * y, static_cast<size_t>(there));
        std::memset(output + there, 0, static_cast<size_t>(row - there));
    }
}

} // namespace PixelDecoder
