// A multi-send list of any bytes: what was read can be written, read and merged
// again without a change, and stays within the pages.

#include "sendlist.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    SendList list;
    list.read(QByteArray(reinterpret_cast<const char *>(data), static_cast<int>(size)));
    if (list.pageCount() < SendList::minPages || list.pageCount() > SendList::maxPages)
        abort();
    SendList again;
    const QByteArray written = list.write();
    again.read(written);
    if (again.write() != written)
        abort();
    list.removePage(1 + (size > 0 ? data[0] % SendList::maxPages : 0));
    for (int page = 1; page <= SendList::maxPages; ++page)
        list.clearPage(page);
    again.read(list.write()); // lines that are no rows
    if (again.lastFilledPage() != 0)
        abort();
    again.read(written);
    list.read(QByteArray());
    list.merge(written);
    if (list.write() != written)
        abort();
    return 0;
}
