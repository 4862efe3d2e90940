#include "camera/pixeldecoder.h"

#include "camera/cameraframe.h"
#include "camera/pixelrow.h"

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

} // namespace PixelDecoder
