#include "pidrecorder.h"

void PidRecorder::addActual(int channel, qint32 actual, qint64 us)
{
    m_samples.at(static_cast<size_t>(channel)).append({us, params(channel).target, actual});
    ++m_recorded;
    emit sampleAdded(channel);
}

void PidRecorder::addEvent(const PidEvent &event)
{
    m_events.push_back(event);
    if (m_events.size() > maxEvents)
        m_events.pop_front();
}

void PidRecorder::clear()
{
    m_samples = {};
    m_held.reset();
    m_events.clear();
    emit cleared();
}

void PidRecorder::setHeld(bool held)
{
    if (held)
        m_held = m_samples;
    else
        m_held.reset();
}
