#include "pixeldecoder.h"

#include "cameraframe.h"
#include "pixelrow.h"

#include <algorithm>
#include <cstring>

namespace PixelDecoder {

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
    const PixelRow::Decode vectorised = PixelRow::vectorised();
    const PixelRow::Decode decodeRow = vectorised ? vectorised : PixelRow::portable;
    const qsizetype pixels = sourceSize / 2;
    for (int y = 1; y <= height; ++y, output += stride) {
        const qsizetype last = static_cast<qsizetype>(width) * (y + 1); // what the row's first pixel takes
        const qsizetype lacking = last + 1 - pixels;
        const qsizetype black = std::clamp<qsizetype>(lacking, 0, width);
        uchar *const seen = output + 3 * black;
        std::memset(output, 0, static_cast<size_t>(3 * black));
        if (black < width)
            decodeRow(source + 2 * (last - black), width - static_cast<int>(black), bigEndian, seen);
        if (sourceSize % 2 != 0 && black > 0 && black == lacking) { // of that one the first byte is there
            const uchar half[] = {source[sourceSize - 1], 0};
            PixelRow::portable(half, 1, bigEndian, seen - 3);
        }
    }
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

namespace {

constexpr int kNoChroma = 128;

// From Y, U and V in 65536ths.
void putRgb(int luma, int u, int v, uchar *output)
{
    const auto rounded = [luma](int chroma) {
        return static_cast<uchar>(std::clamp(luma + ((chroma + 32768) >> 16), 0, 255));
    };
    u -= kNoChroma;
    v -= kNoChroma;
    output[0] = rounded(91881 * v);
    output[1] = rounded(-22554 * u - 46802 * v);
    output[2] = rounded(116130 * u);
}

} // namespace

void yuv422(const uchar *source, qsizetype sourceSize, int width, int height, bool bigEndian, uchar *output,
            qsizetype stride)
{
    const int lumaAt = bigEndian ? 1 : 0;
    const int chromaAt = 1 - lumaAt;
    for (int y = 0; y < height; ++y, output += stride) {
        const qsizetype row = static_cast<qsizetype>(width) * y * 2;
        for (qsizetype x = 0; x < width; ++x) {
            const qsizetype pair = row + x / 2 * 4;
            const qsizetype luma = row + 2 * x + lumaAt;
            const qsizetype v = pair + 2 + chromaAt;
            if (luma >= sourceSize) {
                std::memset(output + 3 * x, 0, static_cast<size_t>(width - x) * 3);
                break;
            }
            const bool hasPair = (x | 1) < width && v < sourceSize;
            putRgb(source[luma], pair + chromaAt < sourceSize ? source[pair + chromaAt] : kNoChroma,
                   hasPair ? source[v] : kNoChroma, output + 3 * x);
        }
    }
}

} // namespace PixelDecoder
