#include "tuningrules.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace {

using Kind = PlantModel::Kind;

// Shares of the process's own time below which no closed loop is asked for: the noise
// that a faster one carries to the output is not worth it.
constexpr double minLagShare = 0.2;      // of a lag
constexpr double minSwingShare = 1;      // of 1 / frequency
constexpr double minRunawayShare = 0.05; // of the lag of what runs away
constexpr double maxRunawayShare = 0.2;  // a slower loop would overshoot more

constexpr double maxSwingDelay = 0.4;    // rad; beyond it a derivative does not damp
constexpr double maxRunawayDelay = 0.25; // of the lag; beyond it no gain is good
constexpr double runawayIntegral = 10;   // its time, in closed lags

// Kc (1 + 1 / (Ti s) + Td s); no integral where ti is 0.
ParallelGains standard(double kc, double ti, double td = 0)
{
    return {kc, ti > 0 ? kc / ti : 0, kc * td};
}

// Kc (1 + 1 / (Ti s)) (1 + Td s)
ParallelGains series(double kc, double ti, double td)
{
    return {kc * (1 + td / ti), kc / ti, kc * td};
}

Tuning checked(const ParallelGains &gains, double closedLag = 0)
{
    Tuning tuning;
    tuning.gains = gains;
    tuning.closedLag = closedLag;
    const bool isNumber = std::isfinite(gains.p) && std::isfinite(gains.i) && std::isfinite(gains.d);
    tuning.problem = isNumber ? fieldProblem(gains) : Tuning::Problem::NoNumber;
    if (!isNumber)
        tuning.gains = {};
    return tuning;
}

Tuning noTuning(Tuning::Problem problem)
{
    Tuning tuning;
    tuning.problem = problem;
    return tuning;
}

bool isProcess(const PlantModel &model)
{
    if (!std::isfinite(model.gain) || model.gain == 0 || !(model.delay >= 0) || !std::isfinite(model.delay))
        return false;
    switch (model.kind) {
    case Kind::SecondOrder:
        return model.frequency > 0 && std::isfinite(model.frequency) && model.damping > 0 &&
               std::isfinite(model.damping);
    case Kind::Integrating:
        return true;
    case Kind::FirstOrder:
    case Kind::Unstable:
        break;
    }
    return model.lag > 0 && std::isfinite(model.lag);
}

// The dead time of the loop: a controller acts half a period late on the average, and
// one that the reports do not show is half their interval.
double effectiveDelay(const PlantModel &model, const LoopTiming &timing)
{
    return std::max(model.delay, timing.reportInterval / 2) + timing.period / 2;
}

Tuning simcOfLag(double gain, double lag, double delay, double closedLag)
{
    return checked(standard(lag / (gain * (closedLag + delay)), std::min(lag, 4 * (closedLag + delay))),
                   closedLag);
}

Tuning simcOfTwoLags(const PlantModel &model, ControllerKind kind, double slowness, double delay)
{
    const double slow = model.slowLag();
    const double fast = model.fastLag();
    if (kind == ControllerKind::Pi) {
        const double reduced = delay + fast / 2;
        const double lag = slow + fast / 2;
        return simcOfLag(model.gain, lag, reduced, slowness * std::max(reduced, minLagShare * lag));
    }
    const double closedLag = slowness * std::max(delay, minLagShare * slow);
    const double kc = slow / (model.gain * (closedLag + delay));
    return checked(series(kc, std::min(slow, 4 * (closedLag + delay)), fast), closedLag);
}

// The integral alone: the process is a dead time to it, of which its lag at low
// frequencies is a part. At most half the gain that the peak of the resonance allows.
Tuning integralAlone(const PlantModel &model, double slowness, double delay)
{
    const double late = delay + 2 * model.damping / model.frequency;
    const double closedLag = slowness * std::max(late, minSwingShare / model.frequency);
    const double i = std::min(1 / (closedLag + late), model.damping * model.frequency);
    return checked({0, i / model.gain, 0}, closedLag);
}

// s^3 + (2 damping w + w^2 K D) s^2 + w^2 (1 + K P) s + w^2 K I = (s + 1 / lag)^3
Tuning threePoles(const PlantModel &model, double slowness, double delay)
{
    const double w = model.frequency;
    const double closedLag = slowness * std::max(2 * delay, minSwingShare / w);
    // With a longer one P or D would turn negative; then the integral makes it slower.
    const double lag = std::min({closedLag, std::sqrt(3.0) / w, 3 / (2 * model.damping * w)});
    const double pole = 1 / lag;
    const double p = std::max(0.0, 3 * pole * pole / (w * w) - 1);
    const double i = pole * pole * pole / (w * w) * (lag / closedLag);
    const double d = std::max(0.0, (3 * pole - 2 * model.damping * w) / (w * w));
    return checked({p > 1e-9 ? p / model.gain : 0, i / model.gain, d / model.gain}, closedLag);
}

Tuning runaway(const PlantModel &model, double slowness, double delay)
{
    if (delay > maxRunawayDelay * model.lag)
        return noTuning(Tuning::Problem::NoRule);
    const double slowest = std::max(delay, maxRunawayShare * model.lag);
    const double closedLag = std::min(slowness * std::max(delay, minRunawayShare * model.lag), slowest);
    const double p = 1 + model.lag / (closedLag + delay);
    const double i = model.lag / (closedLag + delay) / (runawayIntegral * (closedLag + delay));
    return checked({p / model.gain, i / model.gain, 0}, closedLag);
}

} // namespace

Tuning simcTuning(const PlantModel &model, ControllerKind kind, double slowness, const LoopTiming &timing)
{
    if (!isProcess(model) || !(slowness > 0))
        return noTuning(Tuning::Problem::NoNumber);
    if (kind == ControllerKind::P)
        return noTuning(Tuning::Problem::NoRule);
    const double delay = effectiveDelay(model, timing);
    switch (model.kind) {
    case Kind::SecondOrder:
        if (model.damping >= 1)
            return simcOfTwoLags(model, kind, slowness, delay);
        if (kind == ControllerKind::Pi || delay * model.frequency > maxSwingDelay)
            return integralAlone(model, slowness, delay);
        return threePoles(model, slowness, delay);
    case Kind::Integrating: {
        if (!(delay > 0))
            return noTuning(Tuning::Problem::NoNumber);
        const double closedLag = slowness * delay;
        return checked(standard(1 / (model.gain * (closedLag + delay)), 4 * (closedLag + delay)), closedLag);
    }
    case Kind::Unstable:
        return runaway(model, slowness, delay);
    case Kind::FirstOrder:
        break;
    }
    return simcOfLag(model.gain, model.lag, delay, slowness * std::max(delay, minLagShare * model.lag));
}

Tuning amigoTuning(const PlantModel &model, ControllerKind kind, const LoopTiming &timing)
{
    if (!isProcess(model))
        return noTuning(Tuning::Problem::NoNumber);
    const double l = effectiveDelay(model, timing);
    const double t = model.lag;
    const double k = model.gain;
    if (kind == ControllerKind::P)
        return noTuning(Tuning::Problem::NoRule);
    if (!(l > 0)) // its gains grow without limit
        return noTuning(Tuning::Problem::NoNumber);
    if (model.kind == Kind::Integrating)
        return checked(kind == ControllerKind::Pi ? standard(0.35 / (k * l), 13.4 * l)
                                                  : standard(0.45 / (k * l), 8 * l, 0.5 * l));
    if (model.kind != Kind::FirstOrder)
        return noTuning(Tuning::Problem::NoRule);
    if (kind == ControllerKind::Pi)
        return checked(standard(0.15 / k + (0.35 - l * t / ((l + t) * (l + t))) * t / (k * l),
                                0.35 * l + 13 * l * t * t / (t * t + 12 * l * t + 7 * l * l)));
    return checked(standard((0.2 + 0.45 * t / l) / k, (0.4 * l + 0.8 * t) / (l + 0.1 * t) * l,
                            0.5 * l * t / (0.3 * l + t)));
}

UltimatePoint ultimatePoint(const StepFigures &figures, const ParallelGains &gains)
{
    UltimatePoint point;
    if (!(gains.p > 0) || gains.i != 0 || gains.d != 0) {
        point.problem = UltimatePoint::Problem::NotProportional;
    } else if (!figures.period || !figures.decayRatio) {
        point.problem = UltimatePoint::Problem::NoSwing;
    } else {
        point.gain = gains.p;
        point.period = *figures.period;
        if (*figures.decayRatio < 0.9)
            point.problem = UltimatePoint::Problem::Dying;
        else if (*figures.decayRatio > 1.1)
            point.problem = UltimatePoint::Problem::Growing;
        else
            point.problem = UltimatePoint::Problem::None;
    }
    return point;
}

Tuning zieglerNicholsTuning(const UltimatePoint &point, ControllerKind kind)
{
    if (point.problem != UltimatePoint::Problem::None || !(point.gain > 0) || !(point.period > 0))
        return noTuning(Tuning::Problem::NoNumber);
    switch (kind) {
    case ControllerKind::P:
        return checked({0.5 * point.gain, 0, 0});
    case ControllerKind::Pi:
        return checked(standard(0.45 * point.gain, point.period / 1.2));
    case ControllerKind::Pid:
        break;
    }
    return checked(standard(0.6 * point.gain, point.period / 2, point.period / 8));
}

std::optional<ParallelGains> fromBoard(const ParallelGains &numbers, GainForm form, double period)
{
    switch (form) {
    case GainForm::PerPeriod:
        if (!(period > 0))
            return std::nullopt;
        return ParallelGains{numbers.p, numbers.i / period, numbers.d * period};
    case GainForm::Standard:
        return standard(numbers.p, numbers.i, numbers.d);
    case GainForm::Parallel:
        break;
    }
    return numbers;
}

std::optional<ParallelGains> toBoard(const ParallelGains &gains, GainForm form, double period)
{
    switch (form) {
    case GainForm::PerPeriod:
        if (!(period > 0))
            return std::nullopt;
        return ParallelGains{gains.p, gains.i * period, gains.d / period};
    case GainForm::Standard:
        if (gains.p == 0 && (gains.i != 0 || gains.d != 0))
            return std::nullopt;
        return ParallelGains{gains.p, gains.i != 0 ? gains.p / gains.i : 0,
                             gains.p != 0 ? gains.d / gains.p : 0};
    case GainForm::Parallel:
        break;
    }
    return gains;
}

Tuning::Problem fieldProblem(const ParallelGains &numbers)
{
    using Float = std::numeric_limits<float>;
    double largest = 0;
    for (const double number : {numbers.p, numbers.i, numbers.d}) {
        if (number < 0)
            return Tuning::Problem::Negative;
        if (!(number <= double(Float::max())))
            return Tuning::Problem::TooLarge;
        largest = std::max(largest, number);
    }
    return largest < double(Float::min()) ? Tuning::Problem::TooSmall : Tuning::Problem::None;
}
