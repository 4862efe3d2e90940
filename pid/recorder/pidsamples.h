#pragma once

// The samples of one channel that the live view shows, in the order of their
// arrival: those of the last ten seconds before the newest, at most maxSamples.
// Copies share their memory until one of them changes.

#include "pidsample.h"

#include <QVector>

class PidSamples
{
public:
    static constexpr qint64 windowUs = 10000000;
    static constexpr int maxSamples = 200000; // ten seconds of 20,000 a second

    void append(const PidSample &sample);

    int size() const { return m_samples.size() - m_at; }
    bool isEmpty() const { return size() == 0; }
    const PidSample &at(int index) const { return m_samples.at(m_at + index); }
    const PidSample &last() const { return m_samples.last(); }

    // Samples are numbered from 0 for as long as this lives: the first that is
    // still held, and the one after the last.
    qint64 begin() const { return m_dropped; }
    qint64 end() const { return m_dropped + size(); }

private:
    QVector<PidSample> m_samples;
    int m_at = 0; // the first that is still held
    qint64 m_dropped = 0;
};
