#pragma once

// The curve of one response, as stepfigures.h describes it: samples with times that
// never fall, the value before them, how noisy they are, and the smoothed values
// from which crossings, turns and the steady state are read. Linear in the number of
// samples.

#include "stepfigures.h"

#include <limits>
#include <vector>

class ResponseShape
{
public:
    explicit ResponseShape(const Step &step);

    // Since the step. Where none is at 0 the first is made of before().
    const std::vector<StepSample> &samples() const { return m_samples; }
    double before() const { return m_before; }
    // How many samples before() is the mean of; 0: it is the first since the step.
    size_t countBefore() const { return m_countBefore; }
    bool isFirstMade() const { return m_isFirstMade; }
    double noise() const { return m_noise; } // RMS of one sample

    bool hasMoved() const { return m_hasMoved; } // out of the noise
    bool isSteady() const { return m_isSteady; }
    double steady() const { return m_steady; }
    double direction() const { return m_direction; } // 1 or -1
    double range() const { return m_range; }         // of the smoothed values and the one before
    double smoothedNoise() const { return m_smoothedNoise; }
    double noiseOfLastFifth() const { return m_lastFifth.rms; }

    // The first time at which the smoothed value is this far from before(), in the
    // direction of the response.
    std::optional<double> firstBeyond(double distance) const;
    // The last time at which it is farther than this from steady().
    double lastOutside(double distance) const;
    // The largest value in the direction of the response.
    StepSample peak() const;
    bool peakIsTurn() const; // as in turns()
    // Values at which it turns by more than noise and 0.5 % of the range.
    std::vector<StepSample> turns() const;

private:
    struct Line // through the samples of a part of the time
    {
        double mean = 0;
        double rise = 0; // over that part
        double rms = 0;  // about it
        size_t count = 0;
    };

    void copySamples(const Step &step);
    double differenceNoise() const;
    void findDirection(const Step &step);
    void smooth();
    void findSteady(double band);
    size_t indexAt(double seconds) const;
    Line lineFrom(size_t first) const;
    void findTurns();
    size_t topWidth() const;
    StepSample topAt(size_t index, size_t half) const;
    double value(size_t k) const { return m_smooth.empty() ? m_samples[k].actual : m_smooth[k]; }

    std::vector<StepSample> m_samples;
    std::vector<double> m_smooth; // empty where nothing was to smooth
    size_t m_halfWidth = 0;       // of the average, in samples
    size_t m_rise = 0;            // samples from 20 to 80 % of the largest value
    size_t m_peak = 0;            // index
    std::vector<size_t> m_turns;  // indexes
    size_t m_countBefore = 0;     // of samples before the step
    double m_low = std::numeric_limits<double>::infinity();
    double m_high = -m_low;
    double m_before = 0;
    double m_noise = 0;
    double m_smoothedNoise = 0;
    double m_direction = 1;
    double m_range = 0;
    double m_steady = 0;
    Line m_lastFifth;
    bool m_isFirstMade = false;
    bool m_hasMoved = false;
    bool m_isSteady = false;
};
