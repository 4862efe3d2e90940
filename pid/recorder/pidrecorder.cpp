#include "pidrecorder.h"

#include <algorithm>
#include <utility>

PidRecorder::PidRecorder(QObject *parent)
    : QObject(parent)
    , m_file(std::make_unique<SampleFile>())
    , m_runs(new PidRuns(this))
{
}

void PidRecorder::addActual(int channel, qint32 actual, qint64 us, bool isShown)
{
    const PidSample sample{us, params(channel).target, actual};
    SampleStore &record = m_record.at(static_cast<size_t>(channel));
    const qint64 number = record.end();
    append(channel, sample);
    m_runs->addSample(channel, record.last(), params(channel), number);
    if (!isShown)
        return;
    m_samples.at(static_cast<size_t>(channel)).append(sample);
    ++m_recorded;
    emit sampleAdded(channel);
}

void PidRecorder::addEvent(const PidEvent &event)
{
    std::optional<PidEvent> &known =
        m_reported.at(static_cast<size_t>(event.channel)).at(static_cast<size_t>(event.kind));
    const bool isState = event.kind == PidEvent::Started || event.kind == PidEvent::Stopped;
    const bool isRepeated =
        event.isReport && !isState && known && known->value == event.value && known->gains == event.gains;
    if (event.isReport)
        known = event;
    else
        known.reset();
    if (!isRepeated)
        restoreEvent(event);
    m_runs->addEvent(event, params(event.channel), record(event.channel).end());
}

void PidRecorder::clear()
{
    m_samples = {};
    m_held.reset();
    emit cleared();
}

void PidRecorder::clearRecord()
{
    for (SampleStore &record : m_record)
        record.clear(m_file.get());
    m_events.clear();
    m_reported = {};
    m_runs->clear();
    m_dropped = 0;
    m_hasDisk = true;
    emit recordCleared();
    clear();
}

qint64 PidRecorder::usOf(double seconds) const
{
    constexpr double farthest = 4e12; // seconds; zooming out has no end
    return qRound64(qBound(-farthest, seconds, farthest) * 1e6) + m_originUs.value_or(0);
}

void PidRecorder::setHeld(bool held)
{
    if (held)
        m_held = m_samples;
    else
        m_held.reset();
}

// ---- the record

void PidRecorder::restoreSample(int channel, const PidSample &sample)
{
    append(channel, sample);
}

void PidRecorder::restoreEvent(const PidEvent &event)
{
    m_events.push_back(event);
    if (m_events.size() > maxEvents)
        m_events.pop_front();
}

void PidRecorder::takeOver(PidRecorder *other)
{
    m_file = std::exchange(other->m_file, std::make_unique<SampleFile>());
    m_record = std::exchange(other->m_record, {});
    m_events = std::exchange(other->m_events, {});
    m_dropped = other->m_dropped;
    m_hasDisk = other->m_hasDisk;
    m_originUs = other->m_originUs;
    m_reported = {};
    m_runs->replace(other->m_runs->runs());
    other->clearRecord();
    makeRoom();
    emit recordCleared();
    clear();
}

qint64 PidRecorder::held() const
{
    qint64 samples = 0;
    for (const SampleStore &record : m_record)
        samples += record.end() - record.begin();
    return samples;
}

void PidRecorder::setLimit(qint64 samples)
{
    m_limit = samples;
    makeRoom();
}

// Room is made once for a block, not once for a sample.
bool PidRecorder::append(int channel, const PidSample &sample)
{
    const bool isFull = m_record.at(static_cast<size_t>(channel)).append(sample);
    if (isFull)
        makeRoom();
    return isFull;
}

bool PidRecorder::dropOldest()
{
    SampleStore *oldest = nullptr;
    for (SampleStore &record : m_record)
        if (record.end() - record.begin() > SampleStore::blockSamples &&
            (!oldest || record.firstUs() < oldest->firstUs()))
            oldest = &record;
    if (!oldest)
        return false;
    if (m_dropped == 0)
        emit recordTrimmed();
    m_dropped += oldest->dropOldest(m_file.get());
    return true;
}

void PidRecorder::makeRoom()
{
    while (held() > m_limit && dropOldest()) {
    }
    qint64 inMemory = 0;
    for (const SampleStore &record : m_record)
        inMemory += record.inMemory();
    while (inMemory > maxInMemory) {
        SampleStore &largest = *std::max_element(
            m_record.begin(), m_record.end(),
            [](const SampleStore &a, const SampleStore &b) { return a.inMemory() < b.inMemory(); });
        if (largest.moveOldest(m_file.get())) {
            inMemory -= SampleStore::blockSamples;
            continue;
        }
        if (m_hasDisk && !m_file->error().isEmpty()) {
            m_hasDisk = false;
            emit diskRefused(m_file->error());
        }
        // Without a disk the record ends where the memory does.
        if (inMemory < 2 * maxInMemory || !dropOldest())
            return;
        inMemory -= SampleStore::blockSamples;
    }
}
