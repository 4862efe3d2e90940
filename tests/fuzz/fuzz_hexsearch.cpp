// The search beside a search that anybody can check. The first bytes say how
// long the pattern is and where to begin; the document comes in small blocks
// and has an edit in its middle.

#include "hexsearch.h"

#include <cstdint>
#include <cstdlib>

namespace {

qint64 found(const HexDocument &document, const QByteArray &pattern, int from, HexSearch::Direction direction)
{
    HexSearch search(document, pattern, from, direction);
    HexSearch::State state = HexSearch::State::Running;
    while (state == HexSearch::State::Running)
        state = search.step();
    return state == HexSearch::State::Found ? search.position() : -1;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size < 3 || size > 4096)
        return 0;
    QByteArray bytes(reinterpret_cast<const char *>(data) + 2, static_cast<int>(size) - 2);
    const QByteArray pattern = bytes.left(1 + data[0] % 16);
    HexDocument document;
    for (int at = 0; at < bytes.size(); at += 7)
        document.appendContent(bytes.mid(at, 7));
    document.replace(bytes.size() / 2, 1, "ab");
    bytes.replace(bytes.size() / 2, 1, "ab");
    const int from = data[1] % (bytes.size() + 1);

    int next = bytes.indexOf(pattern, from);
    if (next < 0)
        next = bytes.indexOf(pattern);
    if (found(document, pattern, from, HexSearch::Forward) != next)
        abort();
    int previous = from > 0 ? bytes.lastIndexOf(pattern, from - 1) : -1;
    if (previous < 0)
        previous = bytes.lastIndexOf(pattern);
    if (found(document, pattern, from, HexSearch::Backward) != previous)
        abort();
    return 0;
}
