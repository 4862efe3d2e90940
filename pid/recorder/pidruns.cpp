#include "pidruns.h"

#include "pidrecorder.h"

#include <algorithm>

namespace {
// A report of a start belongs to the command before it.
constexpr qint64 kAnswerUs = 2000000;
} // namespace

PidRun *PidRuns::get(int id)
{
    const auto run = std::lower_bound(m_runs.begin(), m_runs.end(), id,
                                      [](const PidRun &r, int wanted) { return r.id < wanted; });
    return run == m_runs.end() || run->id != id ? nullptr : &*run;
}

const PidRun *PidRuns::find(int id) const
{
    return const_cast<PidRuns *>(this)->get(id);
}

const PidRun *PidRuns::newest(int channel) const
{
    const auto run = std::find_if(m_runs.crbegin(), m_runs.crend(),
                                  [channel](const PidRun &r) { return r.channel == channel; });
    return run == m_runs.crend() ? nullptr : &*run;
}

// ---- following

void PidRuns::setState(int channel, State state)
{
    Channel &own = m_channels.at(size_t(channel));
    const bool wasRunning = own.state == Running;
    own.state = state;
    if (wasRunning != (state == Running))
        emit runningChanged();
}

void PidRuns::begin(int channel, qint64 us, bool isStart, const PidChannelParams &params, qint64 next)
{
    close(channel, next);
    if (m_runs.size() >= maxRuns) {
        auto oldest = std::find_if(m_runs.begin(), m_runs.end(), [](const PidRun &run) {
            return run.name.isEmpty() && !run.isReference && !run.isOpen();
        });
        m_runs.erase(oldest == m_runs.end() ? m_runs.begin() : oldest);
    }
    Channel &own = m_channels.at(size_t(channel));
    PidRun run;
    run.id = own.open = ++m_lastId;
    run.channel = channel;
    run.first = next;
    run.beginUs = run.endUs = us;
    run.isStart = isStart;
    run.before = own.hasTarget ? own.target : params.target;
    run.target = params.target;
    run.gains = params.gains;
    run.period = params.period;
    m_runs.append(run);
    emit changed();
}

void PidRuns::close(int channel, qint64 next)
{
    Channel &own = m_channels.at(size_t(channel));
    PidRun *run = get(own.open);
    own.open = 0;
    if (!run)
        return;
    run->end = next;
    if (next - run->first < minSamples && run->name.isEmpty() && !run->isReference)
        m_runs.erase(m_runs.begin() + (run - m_runs.data()));
    emit changed();
}

void PidRuns::addEvent(const PidEvent &event, const PidChannelParams &params, qint64 next)
{
    Channel &own = m_channels.at(size_t(event.channel));
    switch (event.kind) {
    case PidEvent::Started: {
        const bool isAnswer = event.isReport && own.state == Running && own.startSentUs > 0 &&
                              event.us - own.startSentUs < kAnswerUs;
        own.startSentUs = event.isReport ? 0 : event.us;
        if (isAnswer)
            break;
        begin(event.channel, event.us, true, params, next);
        setState(event.channel, Running);
        break;
    }
    case PidEvent::Stopped:
        close(event.channel, next);
        own.startSentUs = 0;
        setState(event.channel, Stopped);
        break;
    case PidEvent::Target:
        if (own.hasTarget && event.value != own.target && own.state != Stopped)
            begin(event.channel, event.us, false, params, next);
        break;
    case PidEvent::Gains:
        if (PidRun *run = get(own.open)) {
            // A board answers the start with its gains.
            if (next == run->first)
                run->gains = params.gains;
            else if (run->gains != params.gains)
                run->gainsChanged = true;
        }
        break;
    case PidEvent::Period:
        if (PidRun *run = get(own.open))
            if (next == run->first)
                run->period = params.period;
        break;
    }
    own.target = params.target;
    own.hasTarget = true;
    own.next = next;
}

void PidRuns::addSample(int channel, const PidSample &sample, const PidChannelParams &params, qint64 number)
{
    Channel &own = m_channels.at(size_t(channel));
    // A target that no event reported, as before the connection was opened.
    if (own.hasTarget && sample.target != own.target && own.state != Stopped)
        begin(channel, sample.us, false, params, number);
    own.target = sample.target;
    own.hasTarget = true;
    own.next = number + 1;
    if (PidRun *run = get(own.open))
        run->endUs = sample.us;
}

void PidRuns::endAll()
{
    for (int channel = 0; channel < int(m_channels.size()); ++channel) {
        Channel &own = m_channels.at(size_t(channel));
        close(channel, own.next);
        own.startSentUs = 0;
        setState(channel, Unknown);
    }
}

void PidRuns::clear()
{
    m_runs.clear();
    for (Channel &channel : m_channels)
        channel.open = 0;
    m_isEdited = false;
    emit changed();
}

void PidRuns::replace(const QVector<PidRun> &runs)
{
    clear();
    m_runs = runs;
    for (PidRun &run : m_runs)
        run.id = ++m_lastId;
    emit changed();
}

// ---- what the user says

void PidRuns::rename(int id, const QString &name)
{
    PidRun *run = get(id);
    if (!run || run->name == name)
        return;
    run->name = name;
    m_isEdited = true;
    emit changed();
}

void PidRuns::setHidden(int id, bool hidden)
{
    if (PidRun *run = get(id)) {
        run->isHidden = hidden;
        emit changed();
    }
}

void PidRuns::setReference(int id, bool reference)
{
    if (PidRun *run = get(id)) {
        run->isReference = reference;
        emit changed();
    }
}

void PidRuns::remove(int id)
{
    PidRun *run = get(id);
    if (!run)
        return;
    for (Channel &channel : m_channels)
        if (channel.open == id)
            channel.open = 0;
    m_runs.erase(m_runs.begin() + (run - m_runs.data()));
    emit changed();
}
