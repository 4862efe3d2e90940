#include "pidsessionformat.h"

#include "checksum.h"
#include "varint.h"

#include <algorithm>
#include <cmath>

namespace {

using namespace PidSessionFormat;

// The first byte is none of a text; the line end shows a transfer that changed line ends.
constexpr char kMagic[] = "\x89KVPID\r\n";
constexpr int kMagicBytes = sizeof kMagic - 1;

constexpr const char *kTypes[] = {"INFO", "RUNS", "EVNT", "SMPL", "END "};

enum RunFlag { IsStart = 1, GainsChanged = 2, IsHidden = 4, IsReference = 8 };
constexpr int kIsReport = 0x80; // beside the kind of an event

QByteArray littleEndian(quint32 value)
{
    value = qToLittleEndian(value);
    return QByteArray(reinterpret_cast<const char *>(&value), sizeof value);
}

quint32 checksum(const char *bytes, int count)
{
    static const Crc none(CrcModels::crc32);
    Crc crc = none; // its table is made once
    crc.add(bytes, count);
    return crc.value();
}

void addGains(VarintWriter *bytes, const PidGains &gains)
{
    for (const float value : {gains.p, gains.i, gains.d})
        bytes->addFloat(value);
}

PidGains readGains(VarintReader *bytes)
{
    PidGains gains;
    for (float *value : {&gains.p, &gains.i, &gains.d})
        *value = bytes->floatNumber();
    return gains;
}

bool isFinite(const PidGains &gains)
{
    return std::isfinite(gains.p) && std::isfinite(gains.i) && std::isfinite(gains.d);
}

bool isTime(qint64 us)
{
    return us >= 0 && us <= maxUs;
}

// Direction marks would turn the text around them.
bool isVisible(QChar c)
{
    const ushort code = c.unicode();
    return c.category() != QChar::Other_Control && c.category() != QChar::Separator_Line &&
           c.category() != QChar::Separator_Paragraph && code != 0x061C && code != 0x200E && code != 0x200F &&
           !(code >= 0x202A && code <= 0x202E) && !(code >= 0x2066 && code <= 0x2069) && code != 0xFEFF;
}

// A target or an actual value of one sample, from its difference to the one before.
bool addDifference(qint32 *value, qint64 difference)
{
    constexpr qint64 farthest = qint64(1) << 32;
    if (difference < -farthest || difference > farthest)
        return false;
    const qint64 sum = *value + difference;
    *value = static_cast<qint32>(sum);
    return sum == *value;
}

bool readTimes(VarintReader *bytes, QVector<PidSample> *samples)
{
    qint64 us = bytes->signedNumber();
    for (int i = 0; i < samples->size() && isTime(us); ++i) {
        if (i > 0)
            us += bytes->number(maxUs);
        (*samples)[i].us = us;
    }
    return bytes->isOk() && isTime(us);
}

bool readTargets(VarintReader *bytes, QVector<PidSample> *samples)
{
    qint32 target = 0;
    for (int i = 0; i < samples->size();) {
        const qint64 equal = bytes->number(samples->size() - i);
        if (!addDifference(&target, bytes->signedNumber()) || equal == 0)
            return false;
        for (const int end = i + static_cast<int>(equal); i < end; ++i)
            (*samples)[i].target = target;
    }
    return bytes->isOk();
}

bool readActuals(VarintReader *bytes, QVector<PidSample> *samples)
{
    qint32 actual = 0;
    for (PidSample &sample : *samples) {
        if (!addDifference(&actual, bytes->signedNumber()))
            return false;
        sample.actual = actual;
    }
    return bytes->isOk() && bytes->remaining() == 0;
}

PidRun readRun(VarintReader *bytes)
{
    PidRun run;
    run.channel = bytes->byte();
    const int flags = bytes->byte();
    run.isStart = flags & IsStart;
    run.gainsChanged = flags & GainsChanged;
    run.isHidden = flags & IsHidden;
    run.isReference = flags & IsReference;
    run.first = bytes->number(maxNumber);
    run.end = run.first + bytes->number(maxNumber);
    run.beginUs = bytes->number(maxUs);
    run.endUs = qMin(maxUs, run.beginUs + bytes->number(maxUs));
    run.before = bytes->int32();
    run.target = bytes->int32();
    run.period = bytes->int32();
    run.gains = readGains(bytes);
    if (!isFinite(run.gains))
        run.gains = {};
    run.name = cleaned(bytes->text());
    return run;
}

} // namespace

namespace PidSessionFormat {

QByteArray typeOf(Chunk chunk)
{
    return kTypes[static_cast<int>(chunk)];
}

Chunk chunkOf(const QByteArray &type)
{
    const auto known = std::find(std::begin(kTypes), std::end(kTypes), type);
    return static_cast<Chunk>(known - std::begin(kTypes)); // behind the last: Unknown
}

QByteArray head()
{
    return QByteArray(kMagic, kMagicBytes) + littleEndian(version);
}

int versionOf(const QByteArray &head)
{
    if (head.size() != headBytes || !head.startsWith(QByteArray::fromRawData(kMagic, kMagicBytes)))
        return 0;
    return qFromLittleEndian<quint16>(head.constData() + kMagicBytes);
}

QByteArray chunk(Chunk type, const QByteArray &payload)
{
    const QByteArray bytes = typeOf(type) + littleEndian(static_cast<quint32>(payload.size())) + payload;
    return bytes + littleEndian(checksum(bytes.constData(), bytes.size()));
}

quint32 lengthOf(const QByteArray &chunkHead)
{
    return qFromLittleEndian<quint32>(chunkHead.constData() + 4);
}

bool isIntact(const QByteArray &chunk)
{
    const int size = chunk.size() - chunkTailBytes;
    return checksum(chunk.constData(), size) == qFromLittleEndian<quint32>(chunk.constData() + size);
}

QString cleaned(const QString &text)
{
    QString result;
    for (const QChar c : text)
        if (isVisible(c) && result.size() <= maxText)
            result += c;
    if (result.size() > maxText)
        result.truncate(result.at(maxText - 1).isHighSurrogate() ? maxText - 1 : maxText);
    return result.trimmed();
}

// ---- payloads

QByteArray infoPayload(const PidSessionInfo &info, const Counts &samples)
{
    VarintWriter bytes;
    bytes.addSigned(info.madeUs);
    bytes.addByte(info.originUs.has_value());
    bytes.addSigned(info.originUs.value_or(0));
    bytes.addText(info.program);
    bytes.addByte(PidFrame::channels);
    for (size_t i = 0; i < samples.size(); ++i) {
        bytes.addText(cleaned(info.names.at(i)));
        bytes.addText(cleaned(info.units.at(i)));
        bytes.addUnsigned(static_cast<quint64>(samples.at(i)));
    }
    return bytes.bytes();
}

bool readInfo(const QByteArray &payload, PidSessionInfo *info, Counts *samples)
{
    VarintReader bytes(payload);
    info->madeUs = bytes.signedNumber();
    const bool hasOrigin = bytes.byte();
    const qint64 origin = bytes.signedNumber();
    info->program = cleaned(bytes.text());
    if (!isTime(info->madeUs) || bytes.byte() != PidFrame::channels)
        return false;
    if (hasOrigin && isTime(origin))
        info->originUs = origin;
    for (size_t i = 0; i < samples->size(); ++i) {
        info->names.at(i) = cleaned(bytes.text());
        info->units.at(i) = cleaned(bytes.text());
        samples->at(i) = bytes.number(maxNumber / PidFrame::channels);
    }
    return bytes.isOk();
}

QByteArray samplesPayload(const Samples &samples)
{
    const QVector<PidSample> &all = samples.samples;
    VarintWriter bytes;
    bytes.reserve(4 * all.size() + 32);
    bytes.addByte(samples.channel);
    bytes.addUnsigned(static_cast<quint64>(samples.first));
    bytes.addUnsigned(static_cast<quint64>(all.size()));
    bytes.addSigned(all.first().us);
    for (int i = 1; i < all.size(); ++i)
        bytes.addUnsigned(static_cast<quint64>(all.at(i).us - all.at(i - 1).us));
    qint64 target = 0;
    for (int i = 0; i < all.size();) {
        const qint64 own = all.at(i).target;
        const int first = i;
        while (i < all.size() && all.at(i).target == own)
            ++i;
        bytes.addUnsigned(static_cast<quint64>(i - first));
        bytes.addSigned(own - target);
        target = own;
    }
    qint64 actual = 0;
    for (const PidSample &sample : all) {
        bytes.addSigned(sample.actual - actual);
        actual = sample.actual;
    }
    return bytes.bytes();
}

bool readSamples(const QByteArray &payload, Samples *samples)
{
    VarintReader bytes(payload);
    samples->channel = bytes.byte();
    samples->first = bytes.number(maxNumber);
    const qint64 count = bytes.number(maxSamples);
    if (samples->channel >= PidFrame::channels || count == 0 || count > bytes.remaining())
        return false;
    samples->samples.resize(static_cast<int>(count));
    return readTimes(&bytes, &samples->samples) && readTargets(&bytes, &samples->samples) &&
           readActuals(&bytes, &samples->samples);
}

QByteArray eventsPayload(const QVector<PidEvent> &events)
{
    VarintWriter bytes;
    bytes.addUnsigned(static_cast<quint64>(events.size()));
    qint64 us = 0;
    for (const PidEvent &event : events) {
        bytes.addByte(event.kind | (event.isReport ? kIsReport : 0));
        bytes.addByte(event.channel);
        bytes.addSigned(event.us - us);
        us = event.us;
        if (event.kind == PidEvent::Gains)
            addGains(&bytes, event.gains);
        else if (event.kind == PidEvent::Target || event.kind == PidEvent::Period)
            bytes.addSigned(event.value);
    }
    return bytes.bytes();
}

bool readEvents(const QByteArray &payload, QVector<PidEvent> *events, int *leftOut)
{
    VarintReader bytes(payload);
    const qint64 count = bytes.number(maxEvents);
    qint64 us = 0;
    for (qint64 i = 0; i < count; ++i) {
        const int kind = bytes.byte();
        PidEvent event{static_cast<PidEvent::Kind>(kind & ~kIsReport), bytes.byte(), 0,
                       (kind & kIsReport) != 0};
        const qint64 difference = bytes.signedNumber();
        if ((kind & ~kIsReport) > PidEvent::Period || qAbs(difference / 2) > maxUs / 2)
            return false;
        us += difference;
        event.us = us;
        if (event.kind == PidEvent::Gains)
            event.gains = readGains(&bytes);
        else if (event.kind == PidEvent::Target || event.kind == PidEvent::Period)
            event.value = bytes.int32();
        if (!bytes.isOk() || !isTime(us))
            return false;
        if (event.channel < PidFrame::channels && isFinite(event.gains))
            events->append(event);
        else
            ++*leftOut;
    }
    return bytes.isOk();
}

QByteArray runsPayload(const QVector<PidRun> &runs)
{
    VarintWriter bytes;
    bytes.addUnsigned(static_cast<quint64>(runs.size()));
    for (const PidRun &run : runs) {
        bytes.addByte(run.channel);
        bytes.addByte((run.isStart ? IsStart : 0) | (run.gainsChanged ? GainsChanged : 0) |
                      (run.isHidden ? IsHidden : 0) | (run.isReference ? IsReference : 0));
        bytes.addUnsigned(static_cast<quint64>(run.first));
        bytes.addUnsigned(static_cast<quint64>(run.end - run.first));
        bytes.addUnsigned(static_cast<quint64>(run.beginUs));
        bytes.addUnsigned(static_cast<quint64>(qMax<qint64>(0, run.endUs - run.beginUs)));
        for (const qint32 value : {run.before, run.target, run.period})
            bytes.addSigned(value);
        addGains(&bytes, run.gains);
        bytes.addText(cleaned(run.name));
    }
    return bytes.bytes();
}

bool readRuns(const QByteArray &payload, QVector<PidRun> *runs, int *leftOut)
{
    VarintReader bytes(payload);
    const qint64 count = bytes.number(maxRuns);
    for (qint64 i = 0; i < count; ++i) {
        const PidRun run = readRun(&bytes);
        if (!bytes.isOk())
            return false;
        if (run.channel < PidFrame::channels)
            runs->append(run);
        else
            ++*leftOut;
    }
    return bytes.isOk();
}

QByteArray endPayload(qint64 samples, qint64 leftOut)
{
    VarintWriter bytes;
    bytes.addUnsigned(static_cast<quint64>(samples));
    bytes.addUnsigned(static_cast<quint64>(leftOut));
    return bytes.bytes();
}

bool readEnd(const QByteArray &payload, qint64 *samples, qint64 *leftOut)
{
    VarintReader bytes(payload);
    *samples = bytes.number(maxNumber);
    *leftOut = bytes.number(maxNumber);
    return bytes.isOk();
}

} // namespace PidSessionFormat
