// Any file as a list of registers: only numbers as addresses and values, within the
// limit; what is written of them is read again.

#include "registerlist.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray content(reinterpret_cast<const char *>(data), static_cast<int>(size));
    RegisterList::isList(content);
    RegisterList::Reader reader(content, 20);
    while (reader.read(3)) {
    }
    if (reader.rows().size() > 20)
        abort();
    for (const RegisterRow &row : reader.rows()) {
        quint32 number = 0;
        if (!row.addressNumber(&number) || !row.valueNumber(&number) || row.address.size() < 2 ||
            row.description.contains(QLatin1Char(',')) || row.description.contains(QLatin1Char('\n')))
            abort();
    }
    const QByteArray text =
        RegisterList::write(reader.rows(), RegisterList::Header, QStringLiteral("a"), 2, 1).text;
    RegisterList::Reader again(text, 100);
    while (again.read(100)) {
    }
    if (again.rows().size() != reader.rows().size() || again.skipped() != (text.isEmpty() ? 0 : 5))
        abort();
    for (int i = 0; i < again.rows().size(); ++i) {
        quint32 numbers[4] = {};
        reader.rows().at(i).addressNumber(&numbers[0]);
        again.rows().at(i).addressNumber(&numbers[1]);
        reader.rows().at(i).valueNumber(&numbers[2]);
        again.rows().at(i).valueNumber(&numbers[3]);
        if (numbers[0] != numbers[1] || numbers[2] != numbers[3])
            abort();
    }
    return 0;
}
