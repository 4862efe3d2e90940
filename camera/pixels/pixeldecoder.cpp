#include "pixeldecoder.h"

#include <algorithm>
#include <cstring>

namespace PixelDecoder {

namespace {

constexpr quint64 kMaxImageBytes = 64ULL * 1024 * 1024;
constexpr qsizetype kOutputBytes = 3; // of a pixel
constexpr int kNoChroma = 128;

void putRgb565(int high, int low, uchar *output)
{
    output[0] = static_cast<uchar>(high & 0xF8);
    output[1] = static_cast<uchar>((high << 8 | low) >> 3 & 0xFC);
    output[2] = static_cast<uchar>(low << 3);
}

// What the two pixels of a pair add to their luma.
struct Chroma
{
    // Factors in 65536ths, rounded.
    Chroma(int u, int v)
        : red((91881 * (v - kNoChroma) + 32768) >> 16)
        , green((-22554 * (u - kNoChroma) - 46802 * (v - kNoChroma) + 32768) >> 16)
        , blue((116130 * (u - kNoChroma) + 32768) >> 16)
    {
    }

    void put(int luma, uchar *output) const
    {
        output[0] = static_cast<uchar>(std::clamp(luma + red, 0, 255));
        output[1] = static_cast<uchar>(std::clamp(luma + green, 0, 255));
        output[2] = static_cast<uchar>(std::clamp(luma + blue, 0, 255));
    }

    int red;
    int green;
    int blue;
};

// Rows of pixels of the same number of bytes, each put by itself.
template <int PixelSize, typename Put>
void decodeRows(const Source &source, uchar *output, qsizetype stride, Put put)
{
    const qsizetype rowBytes = static_cast<qsizetype>(source.width) * PixelSize;
    for (int y = 0; y < source.height; ++y, output += stride) {
        const qsizetype begin = qMin(rowBytes * y, source.size);
        const qsizetype pixels = qMin(rowBytes, source.size - begin) / PixelSize;
        const uchar *from = source.bytes + begin;
        uchar *to = output;
        for (qsizetype x = 0; x < pixels; ++x, from += PixelSize, to += kOutputBytes)
            put(from, to);
        std::memset(to, 0, static_cast<size_t>(kOutputBytes * (source.width - pixels)));
    }
}

void putFull565(int high, int low, uchar *output)
{
    const int green = (high & 7) << 3 | low >> 5;
    output[0] = static_cast<uchar>((high & 0xF8) | high >> 5);
    output[1] = static_cast<uchar>(green << 2 | green >> 4);
    output[2] = static_cast<uchar>((low & 0x1F) << 3 | (low & 0x1F) >> 2);
}

PixelBytes bytesOfRows(const Source &source, int x, int y, int pixelSize)
{
    PixelBytes bytes;
    const qsizetype first = (static_cast<qsizetype>(source.width) * y + x) * pixelSize;
    for (; bytes.count < pixelSize; ++bytes.count)
        bytes.at.at(static_cast<size_t>(bytes.count)) = first + bytes.count;
    return bytes;
}

// The bytes that a cut pair still has are used: at the end of an odd row, Y and U.
void decodePairs(const Source &source, uchar *output, qsizetype stride, int lumaAt)
{
    const int chromaAt = 1 - lumaAt;
    const qsizetype rowBytes = static_cast<qsizetype>(source.width) * 2;
    for (int y = 0; y < source.height; ++y, output += stride) {
        const qsizetype begin = qMin(rowBytes * y, source.size);
        const uchar *pair = source.bytes + begin;
        const uchar *const end = pair + qMin(rowBytes, source.size - begin);
        uchar *pixel = output;
        for (; end - pair >= 4; pair += 4, pixel += 2 * kOutputBytes) {
            const Chroma chroma(pair[chromaAt], pair[2 + chromaAt]);
            chroma.put(pair[lumaAt], pixel);
            chroma.put(pair[2 + lumaAt], pixel + kOutputBytes);
        }
        const auto chromaOf = [pair, end](qsizetype at) { return at < end - pair ? pair[at] : kNoChroma; };
        const Chroma chroma(chromaOf(chromaAt), chromaOf(2 + chromaAt));
        for (qsizetype at = lumaAt; at < end - pair; at += 2, pixel += kOutputBytes)
            chroma.put(pair[at], pixel);
        std::memset(pixel, 0, static_cast<size_t>(output + kOutputBytes * source.width - pixel));
    }
}

PixelBytes bytesOfPairs(const Source &source, int x, int y, int lumaAt)
{
    const qsizetype row = static_cast<qsizetype>(source.width) * 2 * y;
    const qsizetype pair = row + qsizetype(x / 2) * 4;
    const qsizetype v = pair + 2 + 1 - lumaAt;
    const bool hasV = v < row + static_cast<qsizetype>(source.width) * 2; // an odd row ends before it
    return {{pair + qsizetype(x % 2) * 2 + lumaAt, pair + 1 - lumaAt, hasV ? v : -1}, 3, true};
}

} // namespace

quint32 imageBytes(int width, int height)
{
    if (width <= 0 || height <= 0)
        return 0;
    const quint64 bytes = static_cast<quint64>(width) * static_cast<quint64>(height) * kOutputBytes;
    return bytes > kMaxImageBytes ? 0 : static_cast<quint32>(bytes);
}

void rgb565(const Source &source, uchar *output, qsizetype stride)
{
    const int highAt = source.isBigEndian ? 0 : 1;
    const qsizetype pixels = source.size / 2;
    for (int y = 1; y <= source.height; ++y, output += stride) {
        const qsizetype last = static_cast<qsizetype>(source.width) * (y + 1); // of the row's first pixel
        const qsizetype missing = last + 1 - pixels;
        const qsizetype black = std::clamp<qsizetype>(missing, 0, source.width);
        std::memset(output, 0, static_cast<size_t>(kOutputBytes * black));
        for (qsizetype x = black; x < source.width; ++x) {
            const uchar *const pixel = source.bytes + 2 * (last - x);
            putRgb565(pixel[highAt], pixel[1 - highAt], output + kOutputBytes * x);
        }
        if (source.size % 2 != 0 && black > 0 && black == missing) { // half a pixel ends the source
            const int half = source.bytes[source.size - 1];
            putRgb565(highAt == 0 ? half : 0, highAt == 0 ? 0 : half, output + kOutputBytes * (black - 1));
        }
    }
}

PixelBytes bytesOfRgb565(const Source &source, int x, int y)
{
    const qsizetype at = 2 * (static_cast<qsizetype>(source.width) * (y + 2) - x);
    return {{at, at + 1, -1}, 2, false};
}

void rgb888(const Source &source, uchar *output, qsizetype stride)
{
    const qsizetype row = source.width * kOutputBytes;
    for (int y = 0; y < source.height; ++y, output += stride) {
        const qsizetype available = std::clamp<qsizetype>(source.size - row * y, 0, row);
        if (available > 0)
            std::memcpy(output, source.bytes + row * y, static_cast<size_t>(available));
        std::memset(output + available, 0, static_cast<size_t>(row - available));
    }
}

PixelBytes bytesOfRgb888(const Source &source, int x, int y)
{
    return bytesOfRows(source, x, y, 3);
}

void yuv422(const Source &source, uchar *output, qsizetype stride)
{
    decodePairs(source, output, stride, source.isBigEndian ? 1 : 0);
}

PixelBytes bytesOfYuv422(const Source &source, int x, int y)
{
    return bytesOfPairs(source, x, y, source.isBigEndian ? 1 : 0);
}

void yuyv(const Source &source, uchar *output, qsizetype stride)
{
    decodePairs(source, output, stride, 0);
}

PixelBytes bytesOfYuyv(const Source &source, int x, int y)
{
    return bytesOfPairs(source, x, y, 0);
}

void uyvy(const Source &source, uchar *output, qsizetype stride)
{
    decodePairs(source, output, stride, 1);
}

PixelBytes bytesOfUyvy(const Source &source, int x, int y)
{
    return bytesOfPairs(source, x, y, 1);
}

void gray8(const Source &source, uchar *output, qsizetype stride)
{
    decodeRows<1>(source, output, stride,
                  [](const uchar *from, uchar *to) { to[0] = to[1] = to[2] = from[0]; });
}

PixelBytes bytesOfGray8(const Source &source, int x, int y)
{
    return bytesOfRows(source, x, y, 1);
}

void rgb565Little(const Source &source, uchar *output, qsizetype stride)
{
    decodeRows<2>(source, output, stride,
                  [](const uchar *from, uchar *to) { putFull565(from[1], from[0], to); });
}

void rgb565Big(const Source &source, uchar *output, qsizetype stride)
{
    decodeRows<2>(source, output, stride,
                  [](const uchar *from, uchar *to) { putFull565(from[0], from[1], to); });
}

PixelBytes bytesOfRows565(const Source &source, int x, int y)
{
    return bytesOfRows(source, x, y, 2);
}

void bgr888(const Source &source, uchar *output, qsizetype stride)
{
    decodeRows<3>(source, output, stride, [](const uchar *from, uchar *to) {
        to[0] = from[2];
        to[1] = from[1];
        to[2] = from[0];
    });
}

} // namespace PixelDecoder
