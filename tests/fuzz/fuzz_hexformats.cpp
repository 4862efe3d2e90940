// Any text as a firmware image: runs in order without overlap, the same however
// the text is cut, and nothing lost when it is written and read again in either
// form. The first byte chooses the form, the second one the length of the parts.

#include "hexdocument.h"
#include "hexrecordoutput.h"
#include "hexrecordreader.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>

namespace {

struct Loaded
{
    HexImage image;
    HexDocument document;
};

Loaded load(HexForm form, const QByteArray &text, int part)
{
    HexRecordReader reader(form);
    for (int at = 0; at < text.size(); at += part)
        reader.add(text.constData() + at, std::min(part, text.size() - at));
    while (reader.finish() != HexRecordReader::State::Done) {
    }
    Loaded loaded{reader.image(), {}};
    for (const QByteArray &block : reader.blocks())
        loaded.document.appendContent(block);
    return loaded;
}

bool isSame(const Loaded &one, const Loaded &other)
{
    return one.image.runs == other.image.runs && one.document.size() == other.document.size() &&
           one.document.read(0, 1 << 20) == other.document.read(0, 1 << 20);
}

void check(const Loaded &loaded)
{
    qint64 offset = 0;
    qint64 end = -1;
    for (const HexRun &run : loaded.image.runs) {
        if (run.length <= 0 || run.offset != offset || run.address <= end)
            abort();
        offset += run.length;
        end = run.address + run.length; // a run that goes on there would be the same one
    }
    if (offset != loaded.document.size() || end > qint64(1) << 32)
        abort();
    for (const HexFault &fault : loaded.image.faults.first())
        if (fault.text().isEmpty())
            abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size < 2)
        return 0;
    const HexForm form = data[0] % 2 ? HexForm::SRecord : HexForm::IntelHex;
    const QByteArray text(reinterpret_cast<const char *>(data) + 2, static_cast<int>(size) - 2);
    const Loaded loaded = load(form, text, text.size() + 1);
    check(loaded);
    const Loaded inParts = load(form, text, data[1] + 1);
    if (!isSame(loaded, inParts) || loaded.image.faults.count() != inParts.image.faults.count())
        abort();

    for (const HexForm target : {HexForm::IntelHex, HexForm::SRecord}) {
        HexImage image = loaded.image;
        image.form = target;
        HexRecordOutput output(loaded.document, image.runs, image, data[1]);
        QByteArray written;
        for (QByteArray slice = output.next(); !slice.isEmpty(); slice = output.next())
            written += slice;
        const Loaded again = load(target, written, 4096);
        if (!isSame(loaded, again) || again.image.faults.count() != 0 || written.size() > output.size())
            abort();
        if (target == form &&
            (again.image.headers != image.headers || again.image.segmentStart != image.segmentStart))
            abort();
    }
    return 0;
}
