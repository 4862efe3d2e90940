#pragma once

// The figures of one step of the target: how fast, how far beyond, how exact, how
// calm. Works on plain arrays and knows no board, recorder or clock.
//
// Seconds count from the step. A time that jumps back counts as the one before it;
// numbers that are not finite are dropped. Crossings lie on the straight line between
// two samples; integrals are trapezoids.
//
// Against noise the shape is read from a centred moving average, whose width is the
// smallest that brings the noise below 0.05 % of the range of the response, at most
// a sixth of the samples between 20 and 80 % of its rise. Without noise that is one
// sample. The top of a swing is that of a parabola through the samples around it.
//
// "Movement" is steadyValue less the value before the step. The response is steady
// where the last fifth of the time stays within the band around the mean of the last
// tenth, and its trend over that fifth is below half the band; the band is the
// given share of the range.
//
// Definitions of rise, delay, peak and settling time: K. Ogata, "Modern Control
// Engineering", section on transient-response specifications.

#include <QVector>

#include <optional>

struct StepSample
{
    double seconds; // since the step, below 0 before it
    double actual;
};
Q_DECLARE_TYPEINFO(StepSample, Q_PRIMITIVE_TYPE);

struct Step
{
    QVector<StepSample> samples; // in the order of their arrival
    double from = 0;             // target before
    double to = 0;               // and since the step
    // The actual value before the step. Without it: the mean of the samples before
    // 0, or the first sample.
    std::optional<double> before;
    double band = 0.02; // of settling, either way, as a share of the movement
};

struct StepFigures
{
    // Of the shape. Nothing where the value never leaves the noise or there are
    // fewer than minSamples since the step.
    std::optional<double> deadTime; // s, until 2 % of the movement (or five times the noise) is passed; while
                                    // still moving: of the range
    std::optional<double> peak;     // the largest value in the direction of the step
    std::optional<double> peakTime; // s; nothing where the response does not turn there
    // Also nothing while the value is still moving, or came back to where it was.
    std::optional<double> delayTime;    // s, until 50 % of the movement
    std::optional<double> riseTime;     // s, from 10 to 90 % of the movement
    std::optional<double> overshoot;    // % of the movement; 0 where none rises out of the noise
    std::optional<double> settlingTime; // s, until the band around steadyValue is left no more; nothing
                                        // where the noise is as wide as the band
    // Nothing while the value is still moving.
    std::optional<double> steadyValue; // mean of the last tenth of the time
    std::optional<double> steadyError; // target less steadyValue

    // Nothing where fewer than three turns, in regular order, rise out of the noise.
    std::optional<double> period;     // s, of the swings
    std::optional<double> decayRatio; // of a swing to the one a period before: 1 lasts, more grows

    // Of target less actual, from 0 to the last sample. With two samples or more.
    std::optional<double> iae;  // unit * s
    std::optional<double> ise;  // unit^2 * s
    std::optional<double> itae; // unit * s^2

    // RMS of the last fifth about its straight line; while still moving estimated
    // from fourth differences, which a smooth movement cancels.
    std::optional<double> noise;
    std::optional<double> reportRate; // reports per second, median; bursts count by their mean
    std::optional<double> jitter;     // s, mean deviation of the intervals from 1 / reportRate

    static constexpr int minSamples = 8;
};

StepFigures measureStep(const Step &step);
