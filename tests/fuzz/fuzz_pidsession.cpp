// Any file as a PID session, and the same with its checksums put right: the record stays
// within its limits, and what was read can be written and read again.

#include "pidsessionreader.h"
#include "pidsessionwriter.h"
#include "pidtimetable.h"

#include <QBuffer>

#include <cmath>
#include <cstdint>
#include <cstdlib>

namespace {

constexpr qint64 kLimit = 20000;

void require(bool isTrue)
{
    if (!isTrue)
        abort();
}

// Of every chunk whose length is possible.
QByteArray withChecksums(QByteArray file)
{
    using namespace PidSessionFormat;
    for (qint64 at = headBytes; at + chunkHeadBytes <= file.size();) {
        const qint64 length = lengthOf(file.mid(int(at), chunkHeadBytes));
        const qint64 end = at + chunkHeadBytes + length + chunkTailBytes;
        if (length > maxPayload || end > file.size())
            break;
        const Chunk type = chunkOf(file.mid(int(at), 4));
        if (type != Chunk::Unknown)
            file.replace(int(at), int(end - at),
                         chunk(type, file.mid(int(at) + chunkHeadBytes, int(length))));
        at = end;
    }
    return file;
}

bool read(QByteArray *file, PidRecorder *recorder, PidSessionInfo *info)
{
    QBuffer buffer(file);
    buffer.open(QIODevice::ReadOnly);
    recorder->setLimit(kLimit);
    PidSessionReader reader(&buffer, recorder);
    while (!reader.advance(1000))
        require(reader.percent() >= 0 && reader.percent() <= 100);
    *info = reader.info();
    require(recorder->held() <= kLimit + 5 * SampleStore::blockSamples);
    for (const PidRun &run : recorder->runs()->runs())
        require(run.channel >= 0 && run.channel < 5 && run.first >= 0 && run.first <= run.end &&
                run.end <= recorder->record(run.channel).end() && run.name.size() <= 200 &&
                std::isfinite(run.gains.p + double(run.gains.i) + run.gains.d));
    for (const PidEvent &event : recorder->events())
        require(event.channel >= 0 && event.channel < 5 && event.kind <= PidEvent::Period && event.us >= 0);
    if (!reader.error().isEmpty())
        return false;
    reader.notes();
    return true;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray raw(reinterpret_cast<const char *>(data), static_cast<int>(size));
    for (QByteArray file : {raw, withChecksums(raw)}) {
        PidRecorder recorder, again;
        PidSessionInfo info, infoAgain;
        if (!read(&file, &recorder, &info))
            continue;
        QByteArray written, table;
        QBuffer buffer(&written), tableBuffer(&table);
        buffer.open(QIODevice::WriteOnly);
        tableBuffer.open(QIODevice::WriteOnly);
        PidSessionWriter writer(&recorder, info, &buffer);
        while (!writer.advance(1000)) {
        }
        require(writer.error().isEmpty() && read(&written, &again, &infoAgain));
        require(again.held() == recorder.held() && again.events().size() == recorder.events().size() &&
                again.runs()->runs().size() == recorder.runs()->runs().size() &&
                infoAgain.names == info.names && infoAgain.units == info.units);
        PidTimeTable rows(&recorder, info, &tableBuffer);
        while (!rows.advance(1000)) {
        }
        require(table.count("\r\n") == 1 + recorder.held() + int(recorder.events().size()));
    }
    return 0;
}
