// Any file as a recorded stream of a camera: what is read is written again as it was.

#include "streamfile.h"

#include <QBuffer>

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    QByteArray file(reinterpret_cast<const char *>(data), static_cast<int>(size));
    QBuffer buffer(&file);
    buffer.open(QIODevice::ReadOnly);
    StreamReader reader;
    if (!reader.open(&buffer))
        return 0;
    StreamRecord record;
    while (reader.next(&record) == StreamReader::Record) {
        QByteArray bytes = record.toBytes();
        QBuffer again;
        again.setData(StreamHead().bytes() + bytes);
        again.open(QIODevice::ReadOnly);
        StreamReader second;
        StreamRecord other;
        if (!second.open(&again) || second.next(&other) != StreamReader::Record ||
            other.bytes != record.bytes || other.kind != record.kind || other.timeUs != record.timeUs)
            abort();
    }
    return 0;
}
