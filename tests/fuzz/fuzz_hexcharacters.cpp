// Any bytes in the text column: each has its cell, and what it shows does not
// hang on the row where one begins to look. The first byte chooses the codec.

#include "hexcharacters.h"

#include <cstdlib>

namespace {

QString shown(const HexDocument &document, int rowLength, int codec)
{
    QString all;
    for (qint64 at = 0; at < document.size(); at += rowLength)
        for (const QString &cell : HexCharacters::cells(document, at, rowLength, codec))
            all += cell + '|';
    return all;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size < 2 || size > 512)
        return 0;
    HexDocument document;
    const int count = static_cast<int>(size) - 1;
    document.appendContent(QByteArray(reinterpret_cast<const char *>(data) + 1, count));
    const int codec = data[0] % 2;
    const QString rows = shown(document, 16, codec);
    if (rows.count('|') < count || rows != shown(document, 1, codec))
        abort();
    return 0;
}
