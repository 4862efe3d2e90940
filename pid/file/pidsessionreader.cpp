#include "pidsessionreader.h"

#include <QIODevice>

#include <algorithm>
#include <numeric>

namespace {

using PidSessionFormat::Chunk;

constexpr int kChunkWork = 32; // of any chunk, in samples

qint64 sum(const PidSessionFormat::Counts &counts)
{
    return std::accumulate(counts.begin(), counts.end(), qint64(0));
}

} // namespace

PidSessionReader::PidSessionReader(QIODevice *device, PidRecorder *recorder)
    : m_device(device)
    , m_recorder(recorder)
{
}

bool PidSessionReader::advance(int maxSamples)
{
    if (m_step == Step::Head)
        readHead();
    while (m_step == Step::Chunks && maxSamples > 0)
        maxSamples -= readChunk();
    return m_step == Step::Complete;
}

int PidSessionReader::percent() const
{
    return m_step == Step::Complete || m_device->size() == 0
               ? 100
               : int(qBound(0.0, 100 * double(m_device->pos()) / double(m_device->size()), 100.0));
}

void PidSessionReader::readHead()
{
    const int version = PidSessionFormat::versionOf(m_device->read(PidSessionFormat::headBytes));
    m_step = version == PidSessionFormat::version ? Step::Chunks : Step::Complete;
    if (version == 0)
        m_error = QStringLiteral("不是 PID 会话文件");
    else if (version != PidSessionFormat::version)
        m_error = QStringLiteral("文件的格式版本是 %1，本程序只能打开版本 %2")
                      .arg(version)
                      .arg(PidSessionFormat::version);
}

int PidSessionReader::readChunk()
{
    using namespace PidSessionFormat;
    QByteArray chunk = m_device->read(chunkHeadBytes);
    const qint64 rest = chunk.size() < chunkHeadBytes ? -1 : qint64(lengthOf(chunk)) + chunkTailBytes;
    if (rest > 0 && rest <= maxPayload + chunkTailBytes)
        chunk += m_device->read(rest);
    if (rest < 0 || chunk.size() < chunkHeadBytes + rest) {
        m_losses.isCut = true;
        complete();
        return 0;
    }
    if (isIntact(chunk)) {
        const QByteArray payload = chunk.mid(chunkHeadBytes, int(rest) - chunkTailBytes);
        return kChunkWork + readPayload(chunkOf(chunk.left(4)), payload);
    }
    ++m_losses.damagedChunks;
    return kChunkWork + int(rest / 4);
}

int PidSessionReader::readPayload(Chunk type, const QByteArray &payload)
{
    bool isIntact = true;
    int count = 0;
    qint64 written = 0;
    switch (type) {
    case Chunk::Info: {
        PidSessionInfo info;
        PidSessionFormat::Counts planned{};
        isIntact = PidSessionFormat::readInfo(payload, &info, &planned);
        if (isIntact) {
            m_info = info;
            m_planned = planned;
        }
        break;
    }
    case Chunk::Runs:
        isIntact = addRuns(payload);
        break;
    case Chunk::Events:
        isIntact = addEvents(payload);
        count = payload.size() / 4;
        break;
    case Chunk::Samples:
        isIntact = addSamples(payload, &count);
        break;
    case Chunk::End:
        isIntact = PidSessionFormat::readEnd(payload, &written, &m_losses.atSaving);
        if (isIntact)
            m_written = written;
        complete();
        break;
    case Chunk::Unknown:
        ++m_losses.unknownChunks;
        break;
    }
    if (!isIntact)
        ++m_losses.damagedChunks;
    return count;
}

bool PidSessionReader::addSamples(const QByteArray &payload, int *count)
{
    PidSessionFormat::Samples read;
    if (!PidSessionFormat::readSamples(payload, &read))
        return false;
    const auto channel = size_t(read.channel);
    if (read.first < m_next.at(channel))
        return false; // they are there already
    closeGap(read.channel, read.first - m_next.at(channel));
    const SampleStore &record = m_recorder->record(read.channel);
    if (!record.isEmpty()) {
        const qint64 us = record.last().us;
        m_losses.times += std::count_if(read.samples.cbegin(), read.samples.cend(),
                                        [us](const PidSample &sample) { return sample.us < us; });
    }
    for (const PidSample &sample : qAsConst(read.samples))
        m_recorder->restoreSample(read.channel, sample);
    *count = read.samples.size();
    m_next.at(channel) = read.first + *count;
    m_restored.at(channel) += *count;
    return true;
}

bool PidSessionReader::addEvents(const QByteArray &payload)
{
    QVector<PidEvent> events;
    int leftOut = 0;
    if (!PidSessionFormat::readEvents(payload, &events, &leftOut))
        return false;
    for (const PidEvent &event : qAsConst(events))
        m_recorder->restoreEvent(event);
    m_losses.events += leftOut;
    return true;
}

// Behind samples, gaps in their numbers would be known no more.
bool PidSessionReader::addRuns(const QByteArray &payload)
{
    QVector<PidRun> runs;
    int leftOut = 0;
    if (sum(m_restored) > 0 || !PidSessionFormat::readRuns(payload, &runs, &leftOut))
        return false;
    const int room = PidRuns::maxRuns - m_runs.size();
    if (runs.size() > room) {
        leftOut += runs.size() - room;
        runs.resize(room);
    }
    m_runs += runs;
    m_losses.runs += leftOut;
    return true;
}

// The record numbers its samples without gaps; the runs follow.
void PidSessionReader::closeGap(int channel, qint64 missing)
{
    if (missing == 0)
        return;
    const qint64 next = m_restored.at(size_t(channel));
    for (PidRun &run : m_runs) {
        if (run.channel != channel)
            continue;
        for (qint64 *number : {&run.first, &run.end})
            *number -= std::clamp(*number - next, qint64(0), missing);
    }
}

void PidSessionReader::complete()
{
    m_step = Step::Complete;
    for (PidRun &run : m_runs)
        for (qint64 *number : {&run.first, &run.end})
            *number = qMin(*number, m_restored.at(size_t(run.channel)));
    const bool isEmpty = sum(m_restored) == 0 && m_runs.isEmpty() && m_recorder->events().empty();
    if (isEmpty && !notes().isEmpty()) {
        m_error = QStringLiteral("文件已损坏，没有可以读出的数据");
        return;
    }
    m_recorder->runs()->replace(m_runs);
    m_recorder->setOrigin(m_info.originUs);
}

QStringList PidSessionReader::notes() const
{
    QStringList notes;
    const auto add = [&notes](qint64 count, const char *text) {
        if (count > 0)
            notes += QString::fromUtf8(text).arg(count);
    };
    const qint64 restored = sum(m_restored);
    if (m_losses.isCut)
        notes +=
            sum(m_planned) > 0
                ? QStringLiteral("文件不完整：应有 %1 个样本，读出 %2 个").arg(sum(m_planned)).arg(restored)
                : QStringLiteral("文件不完整：读出 %1 个样本").arg(restored);
    else if (m_written)
        add(*m_written - restored, "缺少 %1 个样本");
    add(m_losses.damagedChunks, "%1 个数据块已损坏，已跳过");
    add(m_losses.unknownChunks, "%1 个数据块由更新的程序写入，已跳过");
    add(m_losses.atSaving, "保存时有 %1 个样本已超出记录上限，未写入文件");
    add(m_losses.events, "%1 个事件无效，已去掉");
    add(m_losses.runs, "%1 次运行无效或超出上限，已去掉");
    add(m_losses.times, "%1 个样本的时间倒退，已改为前一个样本的时间");
    add(m_recorder->dropped(), "超出记录上限，最早的 %1 个样本未保留");
    return notes;
}
