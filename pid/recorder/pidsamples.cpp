#include "pidsamples.h"

void PidSamples::append(const PidSample &sample)
{
    m_samples.append(sample);
    const int before = m_at;
    while (m_samples.at(m_at).us < sample.us - windowUs)
        ++m_at;
    m_at = qMax(m_at, m_samples.size() - maxSamples);
    m_dropped += m_at - before;
    // Once they are the greater part, so that no sample is moved twice.
    if (m_at > m_samples.size() / 2) {
        m_samples.remove(0, m_at);
        m_at = 0;
    }
}
