#pragma once

// The figures of runs: reads a run's samples from the record and measures them, and
// keeps what was measured until the run has more samples.

#include "stepfigures.h"

#include <QHash>

class PidRecorder;
struct PidRun;

class RunFigures
{
public:
    // Of a longer run each second, third, ... sample is measured.
    static constexpr int maxSamples = 100000;

    // The recorder outlives this.
    explicit RunFigures(const PidRecorder *recorder);

    void setBand(double band); // of the settling time, as a share of the movement
    double band() const { return m_band; }

    // The samples of a run as an analysis takes them, and up to a few before its step.
    // Without samples where the record has dropped them.
    Step stepOf(const PidRun &run) const;
    // Measures where the run has changed; a long one that goes on, now and then.
    const StepFigures &of(const PidRun &run);
    // What of() returns needs no measuring; what was measured last.
    bool isMeasured(const PidRun &run) const;
    StepFigures known(int run) const { return m_measured.value(run).figures; }
    void clear() { m_measured.clear(); }

private:
    struct Measured
    {
        qint64 end = -1; // number behind the last sample
        StepFigures figures;
    };

    const PidRecorder *m_recorder;
    double m_band = 0.02;
    QHash<int, Measured> m_measured; // by run
};
