// Any file as the notes of a file: what was read is written and read again the same, and
// rules stay inside the bytes.

#include "hexnotes.h"

#include <cstdint>
#include <cstdlib>

// Qt 5.15 loses some bytes where an object of JSON has a key twice.
extern "C" const char *__asan_default_options()
{
    return "detect_leaks=0";
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    HexNotes notes, again;
    if (!notes.fromJson(QByteArray(reinterpret_cast<const char *>(data), static_cast<int>(size))))
        return 0;
    for (const HexBookmark &mark : notes.bookmarks)
        if (mark.address < 0 || mark.length <= 0 || mark.color < 0 || mark.color >= HexBookmark::colorCount)
            abort();
    const HexAddressMap image(HexRuns{{0x100, 0, 64}, {0x1000, 64, 64}});
    for (const HexRule &rule : notes.rules) {
        for (const auto &places : {rule.places(HexAddressMap(), 100), rule.places(image, 128)}) {
            if (places && (places->begin < 0 || places->begin >= places->end || places->end > 128 ||
                           places->at < 0 || places->at + places->bytes > 128))
                abort();
        }
    }
    if (!again.fromJson(notes.toJson()) || again.toJson() != notes.toJson())
        abort();
    return 0;
}
