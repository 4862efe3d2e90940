#include "picturehistogram.h"

#include <algorithm>
#include <numeric>

namespace {

using Counts = decltype(PictureHistogram::counts);

void countPixel(quint32 pixel, Counts *counts)
{
    const quint32 red = pixel >> 16 & 0xFF;
    const quint32 green = pixel >> 8 & 0xFF;
    const quint32 blue = pixel & 0xFF;
    ++(*counts)[PictureHistogram::Red][red];
    ++(*counts)[PictureHistogram::Green][green];
    ++(*counts)[PictureHistogram::Blue][blue];
    ++(*counts)[PictureHistogram::Luma][(77 * red + 150 * green + 29 * blue + 128) >> 8];
}

} // namespace

PictureHistogram PictureHistogram::of(const uchar *rows, qsizetype stride, int width, int height)
{
    PictureHistogram histogram;
    if (width <= 0 || height <= 0)
        return histogram;
    histogram.pixels = qint64(width) * height;
    histogram.rowStep = static_cast<int>(std::max<qint64>(1, (histogram.pixels + maxPixels - 1) / maxPixels));
    // Neighbors are often alike: counted in one place, each would wait for the one
    // before it.
    Counts others{};
    // From the middle of the first group of rows, so that a single row is counted too.
    for (int y = std::min(histogram.rowStep / 2, height - 1); y < height; y += histogram.rowStep) {
        const auto *const row = reinterpret_cast<const quint32 *>(rows + y * stride);
        int x = 0;
        for (; x + 1 < width; x += 2) {
            countPixel(row[x], &histogram.counts);
            countPixel(row[x + 1], &others);
        }
        if (x < width)
            countPixel(row[x], &others);
    }
    for (size_t channel = 0; channel < channels; ++channel) {
        for (size_t value = 0; value < values; ++value)
            histogram.counts[channel][value] += others[channel][value];
    }
    return histogram;
}

qint64 PictureHistogram::counted() const
{
    return std::accumulate(counts[Luma].begin(), counts[Luma].end(), qint64(0));
}

double PictureHistogram::mean(Channel channel) const
{
    const auto &bins = counts.at(channel);
    qint64 sum = 0;
    for (int value = 0; value < values; ++value)
        sum += qint64(value) * bins.at(static_cast<size_t>(value));
    const qint64 count = counted();
    return count > 0 ? static_cast<double>(sum) / static_cast<double>(count) : 0;
}

quint32 PictureHistogram::peak() const
{
    quint32 peak = 0;
    for (const auto &bins : counts)
        peak = std::max(peak, *std::max_element(bins.begin(), bins.end()));
    return peak;
}
