#include "hexbytes.h"

#include <algorithm>

QByteArray HexBytes::read(qint64 address, int count) const
{
    QByteArray bytes;
    const qint64 end = std::min(address + count, size());
    while (address < end) {
        qint64 inRow = 0;
        const char *const from = span(address, &inRow);
        if (!from)
            break;
        inRow = std::min(inRow, end - address);
        bytes.append(from, static_cast<int>(inRow));
        address += inRow;
    }
    return bytes;
}
