#pragma once

// How often each value occurs in a picture or a region of it: red, green, blue and
// luma (ITU-R BT.601, full range, in 256ths), from 0 to 255. Above maxPixels only
// every n-th row is counted, so that a picture of any size needs less than a millisecond.

#include <QtGlobal>

#include <array>

struct PictureHistogram
{
    enum Channel { Red, Green, Blue, Luma };
    static constexpr int channels = 4;
    static constexpr int values = 256;
    static constexpr qint64 maxPixels = qint64(128) * 1024;

    std::array<std::array<quint32, values>, channels> counts{};
    qint64 pixels = 0; // of the region
    int rowStep = 1;   // every so many rows are counted

    qint64 counted() const;             // pixels
    double mean(Channel channel) const; // 0 where there are no pixels
    quint32 peak() const;               // the largest count

    // Rows of 32-bit words 0x..RRGGBB of this machine; stride in bytes.
    static PictureHistogram of(const uchar *rows, qsizetype stride, int width, int height);
};
