// Pasted hexadecimal text and typed addresses: what is rendered parses to the
// same bytes, bytes never come from nothing, addresses stay inside.

#include "hexparse.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char *>(data), static_cast<int>(size));
    const auto back = HexParse::bytes(HexParse::text(bytes));
    if (!back || *back != bytes)
        abort();

    const QString text = QString::fromUtf8(bytes);
    const auto parsed = HexParse::bytes(text);
    if (parsed && parsed->size() * 2 > text.size())
        abort();
    HexParse::Reader reader(text); // in slices
    auto state = HexParse::Reader::State::Running;
    while (state == HexParse::Reader::State::Running)
        state = reader.read(3);
    if ((state == HexParse::Reader::State::Done) != parsed.has_value() ||
        (parsed && *parsed != reader.bytes()))
        abort();
    const auto address = HexParse::address(text, size % 2 ? 10 : 16, 1000, 5000);
    if (address && (*address < 0 || *address > 5000))
        abort();
    return 0;
}
