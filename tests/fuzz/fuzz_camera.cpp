// Any bytes from a camera, in pieces of any size: assembler and scanner end,
// hand out no more than came, and never hold more memory than twice what came
// and a little, nor a wrong address of what it gave back. What is announced is decoded into a picture of its
// size.

#include "frameassembler.h"
#include "jpegscanner.h"
#include "pixelformat.h"

#include <cstdint>
#include <cstdlib>
#include <vector>

namespace {

constexpr int kAlwaysThere = 8192;

void require(bool condition)
{
    if (!condition)
        std::abort();
}

void decode(const CameraEvent &image, quint16 width, quint16 height)
{
    const quint32 bytes = PixelDecoder::imageBytes(width, height);
    require(bytes <= 64u * 1024 * 1024);
    if (bytes == 0 || bytes > 100000)
        return;
    std::vector<uchar> output(bytes);
    const PixelDecoder::Source source{reinterpret_cast<const uchar *>(image.data.constData()),
                                      image.data.size(), width, height, image.device != 0};
    for (const PixelFormat &format : PixelFormat::all()) {
        if (!format.decode)
            continue;
        format.decode(source, output.data(), width * 3);
        require(format.rawText(source, width - 1, height - 1).size() <= 14 &&
                format.rawText(source, width / 2, 0).size() <= 14);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size < 1)
        return 0;
    const QByteArray bytes(reinterpret_cast<const char *>(data + 1), static_cast<int>(size - 1));
    const int piece = 1 + data[0];
    const int idle = data[0] % 2 == 0 ? 16 : 4096; // bytes that an empty queue keeps
    FrameAssembler assembler(idle);
    JpegScanner scanner(idle);
    qint64 handedOut = 0;
    qint64 scanned = 0;
    quint16 width = 7;
    quint16 height = 5;
    for (int at = 0; at < bytes.size(); at += piece) {
        const QByteArray chunk = bytes.mid(at, piece);
        assembler.append(chunk, at * 16); // a second after 64 bytes or so
        CameraEvent event;
        while (assembler.next(&event, 1 + data[0] % 4)) {
            require(event.device < 2);
            if (event.kind == CameraEvent::Format) {
                width = event.width;
                height = event.height;
            } else if (event.kind == CameraEvent::Image) {
                handedOut += event.data.size();
                decode(event, width, height);
            }
        }
        scanner.append(chunk);
        QByteArray picture;
        while (scanner.next(&picture))
            scanned += picture.size();
        const int came = at + chunk.size();
        require(handedOut <= came && scanned <= came);
        require(assembler.size() <= came && scanner.size() <= came);
        require(assembler.capacity() <= 2 * came + kAlwaysThere &&
                scanner.capacity() <= 2 * came + kAlwaysThere);
    }
    return 0;
}
