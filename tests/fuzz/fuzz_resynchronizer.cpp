// Any bytes from a camera, searched byte by byte: the reader ends, hands out and drops
// no byte twice, keeps no more than twice what came and a little, and finds an
// undamaged frame behind anything, when enough bytes follow to end each wait.

#include "frameresynchronizer.h"

#include <cstdint>
#include <cstdlib>

namespace {

constexpr int kAlwaysThere = 8192;

void require(bool condition)
{
    if (!condition)
        std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size < 1)
        return 0;
    const QByteArray bytes(reinterpret_cast<const char *>(data + 1), static_cast<int>(size - 1));
    const int piece = 1 + data[0];
    FrameResynchronizer reader(data[0] % 2 == 0 ? 16 : 4096);
    reader.setRequiresChecksums(data[0] % 3 == 0);
    qint64 handedOut = 0;
    qint64 lost = 0;
    const auto read = [&](qint64 came) {
        for (CameraEvent event; reader.next(&event, 1 + data[0] % 4);) {
            require(event.device < 2 && event.offset >= 0 && event.offset <= came);
            if (event.kind == CameraEvent::Image)
                handedOut += event.data.size() + CameraFrame::overhead;
            if (event.kind == CameraEvent::Image && !event.checksumRight)
                require(!event.head.isEmpty());
        }
        const CameraLoss loss = reader.takeLoss();
        require(loss.bytes >= 0 && loss.offset + qMin<qint64>(loss.bytes, 1) <= came);
        require(loss.head.size() <= CameraLoss::headBytes && loss.frames >= 0);
        lost += loss.bytes;
        require(handedOut + lost + reader.size() <=
                came + CameraFrame::bodyAt * came / CameraFrame::overhead);
        require(lost <= came && reader.size() <= came);
        require(reader.capacity() <= 2 * came + kAlwaysThere);
    };
    for (int at = 0; at < bytes.size(); at += piece) {
        reader.append(bytes.mid(at, piece), at * 16); // a pause after each few bytes
        read(qMin(bytes.size(), at + piece));
    }
    reader.end();
    lost += reader.takeLoss().bytes;
    require(reader.size() == 0 && lost <= bytes.size());
    return 0;
}
