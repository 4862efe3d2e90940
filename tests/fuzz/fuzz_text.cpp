// Hexadecimal text and the stream decoder: rendered bytes parse to the same
// bytes, and a stream decodes alike however it is cut.

#include "hextext.h"
#include "textcodec.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char *>(data), static_cast<int>(size));
    const HexText::Parsed back = HexText::parse(HexText::render(bytes));
    if (back.bytes != bytes || back.ignored != 0)
        abort();

    const QString text = TextCodec::decodeFile(bytes);
    const HexText::Parsed parsed = HexText::parse(text);
    if (parsed.bytes.size() * 2 + parsed.ignored > text.size())
        abort();

    for (int codec = 0; codec < 2; ++codec) {
        StreamDecoder whole;
        StreamDecoder cut;
        const QString expected = whole.decode(bytes.constData(), bytes.size(), codec);
        const int middle = size > 0 ? data[0] % static_cast<int>(size) : 0;
        QString got = cut.decode(bytes.constData(), middle, codec);
        got += cut.decode(bytes.constData() + middle, bytes.size() - middle, codec);
        if (got != expected)
            abort();
    }
    return 0;
}
