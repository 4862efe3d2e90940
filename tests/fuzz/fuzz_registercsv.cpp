// Any file as a register table: rows within the limit, cells without commas.

#include "registercsv.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    RegisterCsv::Reader reader(QByteArray(reinterpret_cast<const char *>(data), static_cast<int>(size)), 20);
    while (reader.read(3)) {
    }
    if (reader.rows().size() > 20 || size_t(reader.rows().size()) * 4 > size + 4)
        abort();
    quint32 number = 0;
    for (const RegisterRow &row : reader.rows())
        if (row.address.contains(QLatin1Char(',')) ||
            (row.addressNumber(&number) && row.address.trimmed().size() > 10))
            abort();
    return 0;
}
