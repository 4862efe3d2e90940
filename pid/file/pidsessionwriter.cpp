#include "pidsessionwriter.h"

#include <QIODevice>

#include <algorithm>

PidSessionWriter::PidSessionWriter(const PidRecorder *recorder, const PidSessionInfo &info, QIODevice *device)
    : m_device(device)
    , m_info(info)
    , m_range(recorder)
    , m_runs(recorder->runs()->runs())
    , m_events(recorder->events())
{
    if (recorder->hasOrigin())
        m_info.originUs = recorder->origin();
    else
        m_info.originUs.reset();
    for (PidRun &run : m_runs) {
        const qint64 begin = m_range.begin(run.channel);
        const qint64 end = m_range.end(run.channel);
        run.end = std::clamp(run.isOpen() ? end : run.end, begin, end) - begin;
        // Without its step, the rest of a run would give false figures.
        run.first = run.first < begin ? run.end : std::min(run.first - begin, run.end);
    }
}

bool PidSessionWriter::advance(int maxSamples)
{
    switch (m_step) {
    case Step::Head:
        writeHead();
        writeRuns();
        m_step = Step::Events;
        break;
    case Step::Events:
        writeEvents();
        break;
    case Step::Samples:
        writeSamples(maxSamples);
        break;
    case Step::Complete:
        break;
    }
    return m_step == Step::Complete || !m_error.isEmpty();
}

int PidSessionWriter::percent() const
{
    if (m_step == Step::Complete || m_range.count() == 0)
        return 100;
    return int(100 - 100 * m_range.pending() / m_range.count());
}

// Before the samples, so that a file that was cut still has them.
void PidSessionWriter::writeHead()
{
    PidSessionFormat::Counts counts{};
    for (int channel = 0; channel < PidRecorder::channels; ++channel)
        counts.at(size_t(channel)) = m_range.count(channel);
    write(PidSessionFormat::head());
    writeChunk(PidSessionFormat::Chunk::Info, PidSessionFormat::infoPayload(m_info, counts));
}

void PidSessionWriter::writeRuns()
{
    for (int run = 0; run < m_runs.size(); run += PidSessionFormat::maxRuns)
        writeChunk(PidSessionFormat::Chunk::Runs,
                   PidSessionFormat::runsPayload(m_runs.mid(run, PidSessionFormat::maxRuns)));
}

void PidSessionWriter::writeEvents()
{
    QVector<PidEvent> events;
    for (; m_event < m_events.size() && events.size() < PidSessionFormat::maxEvents; ++m_event)
        events.append(m_events[m_event]);
    if (events.isEmpty())
        m_step = Step::Samples;
    else
        writeChunk(PidSessionFormat::Chunk::Events, PidSessionFormat::eventsPayload(events));
}

void PidSessionWriter::writeSamples(int maxSamples)
{
    while (maxSamples > 0 && m_error.isEmpty()) {
        PidSessionFormat::Samples samples;
        samples.channel = m_range.earliest();
        if (samples.channel < 0)
            break;
        samples.samples = m_range.takeBlock(samples.channel, &samples.first);
        samples.first -= m_range.begin(samples.channel);
        writeChunk(PidSessionFormat::Chunk::Samples, PidSessionFormat::samplesPayload(samples));
        maxSamples -= samples.samples.size();
        m_samples += samples.samples.size();
    }
    if (m_error.isEmpty())
        m_error = m_range.error();
    if (maxSamples > 0 && m_error.isEmpty()) {
        writeChunk(PidSessionFormat::Chunk::End, PidSessionFormat::endPayload(m_samples, m_range.leftOut()));
        m_step = Step::Complete;
    }
}

void PidSessionWriter::writeChunk(PidSessionFormat::Chunk type, const QByteArray &payload)
{
    write(PidSessionFormat::chunk(type, payload));
}

void PidSessionWriter::write(const QByteArray &bytes)
{
    if (m_error.isEmpty() && m_device->write(bytes) != bytes.size())
        m_error = QStringLiteral("文件无法写入");
}
