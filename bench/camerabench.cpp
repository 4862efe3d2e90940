// The camera page's engines beside memcpy: decoding, and taking frames apart in
// chunks of several sizes.

#include "frameassembler.h"
#include "frameresynchronizer.h"
#include "jpegscanner.h"
#include "pixelformat.h"

#include <QList>

#include <benchmark/benchmark.h>

#include <cstring>
#include <vector>

namespace {

constexpr int kFrameBytes = 2 * 1024 * 1024;

QByteArray noise(int size)
{
    QByteArray bytes(size, Qt::Uninitialized);
    quint32 state = 1;
    for (char &byte : bytes) {
        state = state * 1664525 + 1013904223;
        byte = static_cast<char>(state >> 24);
    }
    return bytes;
}

void copyPixels(benchmark::State &state)
{
    const qsizetype size = state.range(0) * state.range(1) * 3;
    const QByteArray source = noise(static_cast<int>(size));
    std::vector<uchar> output(static_cast<size_t>(size));
    for (auto _ : state) {
        std::memcpy(output.data(), source.constData(), output.size());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * size);
}

// The format with the code in the first argument.
void decode(benchmark::State &state)
{
    const PixelFormat *const format = PixelFormat::find(static_cast<int>(state.range(0)));
    const int width = static_cast<int>(state.range(1));
    const int height = static_cast<int>(state.range(2));
    const QByteArray bytes = noise(width * height * format->bytesPerPixel);
    const PixelDecoder::Source source{reinterpret_cast<const uchar *>(bytes.constData()), bytes.size(), width,
                                      height, state.range(3) != 0};
    std::vector<uchar> output(PixelDecoder::imageBytes(width, height));
    state.SetLabel(QString(format->name).toStdString());
    for (auto _ : state) {
        format->decode(source, output.data(), width * 3);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<qint64>(output.size()));
}

QList<QByteArray> inChunks(const QByteArray &bytes, int chunk)
{
    QList<QByteArray> chunks;
    for (int at = 0; at < bytes.size(); at += chunk)
        chunks.append(bytes.mid(at, chunk));
    return chunks;
}

// By the reader that drops chunks, or the one that searches bytes.
template <typename Reader> void assemble(benchmark::State &state)
{
    const QByteArray packet = CameraFrame::build(0, CameraFrame::ImageData, noise(kFrameBytes));
    const QList<QByteArray> chunks = inChunks(packet, static_cast<int>(state.range(0)));
    Reader assembler;
    CameraEvent event;
    qint64 images = 0;
    for (auto _ : state) {
        for (const QByteArray &chunk : chunks) {
            assembler.append(chunk, 0);
            while (assembler.next(&event, 1))
                images += event.kind == CameraEvent::Image && event.checksumRight;
        }
    }
    if (images != state.iterations())
        state.SkipWithError("frames were lost");
    state.SetBytesProcessed(state.iterations() * packet.size());
}

void scanJpeg(benchmark::State &state)
{
    QByteArray picture = noise(kFrameBytes);
    for (int i = 0; i + 1 < picture.size(); ++i) // as in a picture, where 0 follows FF
        if (picture.at(i) == '\xFF')
            picture[i + 1] = '\0';
    picture = "\xFF\xD8" + picture + "\xFF\xD9";
    const QList<QByteArray> chunks = inChunks(picture, static_cast<int>(state.range(0)));
    JpegScanner scanner;
    QByteArray found;
    qint64 pictures = 0;
    for (auto _ : state) {
        for (const QByteArray &chunk : chunks) {
            scanner.append(chunk);
            while (scanner.next(&found))
                ++pictures;
        }
    }
    if (pictures != state.iterations())
        state.SkipWithError("pictures were lost");
    state.SetBytesProcessed(state.iterations() * picture.size());
}

BENCHMARK(copyPixels)->Args({640, 480})->Args({1920, 1080});
BENCHMARK(decode)->ArgNames({"code", "w", "h", "big"})->ArgsProduct({{4, 5, 7}, {640}, {480}, {0, 1}});
BENCHMARK(decode) // what the user may choose
    ->ArgNames({"code", "w", "h", "big"})
    ->ArgsProduct({{257, 258, 259, 260, 261, 262, 263}, {640}, {480}, {0}});
BENCHMARK(decode)->ArgNames({"code", "w", "h", "big"})->Args({4, 1920, 1080, 0});
BENCHMARK_TEMPLATE(assemble, FrameAssembler)->Arg(1)->Arg(64)->Arg(1460)->Arg(65536);
BENCHMARK_TEMPLATE(assemble, FrameResynchronizer)->Arg(1)->Arg(64)->Arg(1460)->Arg(65536);
BENCHMARK(scanJpeg)->Arg(1)->Arg(64)->Arg(1460)->Arg(65536);

} // namespace

BENCHMARK_MAIN();
