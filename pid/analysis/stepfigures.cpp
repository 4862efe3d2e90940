#include "stepfigures.h"

#include "responseshape.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr size_t maxSpans = 16384;

void integrate(const std::vector<StepSample> &samples, double target, StepFigures *figures)
{
    if (samples.size() < 2)
        return;
    double absolute = 0;
    double square = 0;
    double timed = 0;
    double last = std::abs(target - samples.front().actual);
    for (size_t k = 1; k < samples.size(); ++k) {
        const double error = std::abs(target - samples[k].actual);
        const double half = (samples[k].seconds - samples[k - 1].seconds) / 2;
        absolute += half * (last + error);
        square += half * (last * last + error * error);
        timed += half * (samples[k - 1].seconds * last + samples[k].seconds * error);
        last = error;
    }
    figures->iae = absolute;
    figures->ise = square;
    figures->itae = timed;
}

// Reports come in bursts where a driver collects them, so that single intervals
// say little: the rate is the median over spans of many.
void measureArrival(const std::vector<StepSample> &samples, StepFigures *figures)
{
    if (samples.size() < 4)
        return;
    const size_t intervals = samples.size() - 1;
    const size_t length = std::clamp<size_t>(intervals / 20, 1, 256);
    const size_t starts = intervals - length + 1;
    std::vector<double> spans(std::min(starts, maxSpans));
    for (size_t k = 0; k < spans.size(); ++k) {
        const size_t first = k * starts / spans.size();
        spans[k] = samples[first + length].seconds - samples[first].seconds;
    }
    const auto middle = spans.begin() + std::ptrdiff_t(spans.size() / 2);
    std::nth_element(spans.begin(), middle, spans.end());
    const double interval = *middle / double(length);
    if (!(interval > 0))
        return;
    double deviation = 0;
    for (size_t k = 1; k < samples.size(); ++k)
        deviation += std::abs(samples[k].seconds - samples[k - 1].seconds - interval);
    figures->reportRate = 1 / interval;
    figures->jitter = deviation / double(intervals);
}

// How many follow one another within a factor of 2 of the same time: neither
// shoulders of a slow rise nor what noise adds after the swings.
size_t regularTurns(const std::vector<StepSample> &turns)
{
    if (turns.size() < 3)
        return turns.size();
    const double half = turns[1].seconds - turns[0].seconds;
    size_t count = 2;
    for (; count < turns.size(); ++count) {
        const double next = turns[count].seconds - turns[count - 1].seconds;
        if (next > 2 * half || next < half / 2)
            break;
    }
    return count;
}

void measureSwings(const ResponseShape &shape, StepFigures *figures)
{
    std::vector<StepSample> turns = shape.turns();
    turns.resize(regularTurns(turns));
    if (turns.size() < 3)
        return;
    // The swings fall geometrically, and turns follow at half a period: lines over
    // their number, in which a large swing, known more exactly, counts more.
    double w = 0, x = 0, xx = 0, y = 0, xy = 0, t = 0, xt = 0;
    for (size_t k = 0; k + 1 < turns.size(); ++k) {
        const double swing = std::abs(turns[k + 1].actual - turns[k].actual) / shape.range();
        const double middle = (turns[k + 1].seconds + turns[k].seconds) / 2;
        const double weight = swing * swing;
        const double number = double(k);
        w += weight;
        x += weight * number;
        xx += weight * number * number;
        y += weight * std::log(swing);
        xy += weight * number * std::log(swing);
        t += weight * middle;
        xt += weight * number * middle;
    }
    const double spread = xx - x * x / w;
    if (!(spread > 0))
        return;
    figures->period = 2 * (xt - x * t / w) / spread;
    figures->decayRatio = std::exp(2 * (xy - x * y / w) / spread);
}

void measureMovement(const ResponseShape &shape, double band, StepFigures *figures)
{
    const double movement = std::abs(shape.steady() - shape.before());
    if (movement < 0.1 * shape.range())
        return;
    figures->delayTime = shape.firstBeyond(0.5 * movement);
    const auto low = shape.firstBeyond(0.1 * movement);
    const auto high = shape.firstBeyond(0.9 * movement);
    if (low && high)
        figures->riseTime = *high - *low;
    if (3 * shape.smoothedNoise() < band * movement)
        figures->settlingTime = shape.lastOutside(band * movement);

    const StepSample peak = shape.peak();
    const double excess = shape.direction() * (peak.actual - shape.steady());
    if (peak.seconds < 0.8 * shape.samples().back().seconds &&
        excess > std::max(0.001 * movement, 5 * shape.smoothedNoise())) {
        figures->overshoot = 100 * excess / movement;
        figures->peakTime = peak.seconds;
    } else {
        figures->overshoot = 0;
        figures->peakTime.reset();
    }
}

void measureShape(const ResponseShape &shape, const Step &step, StepFigures *figures)
{
    if (shape.isSteady()) {
        figures->steadyValue = shape.steady();
        figures->steadyError = step.to - shape.steady();
    }
    figures->noise = shape.isSteady() ? shape.noiseOfLastFifth() : shape.noise();
    if (!shape.hasMoved())
        return;
    const StepSample peak = shape.peak();
    figures->peak = peak.actual;
    if (shape.peakIsTurn())
        figures->peakTime = peak.seconds;
    const double moved = shape.isSteady() ? std::abs(shape.steady() - shape.before()) : shape.range();
    figures->deadTime = shape.firstBeyond(std::max(0.02 * moved, 5 * shape.smoothedNoise()));
    if (shape.isSteady())
        measureMovement(shape, step.band, figures);
    measureSwings(shape, figures);
}

} // namespace

StepFigures measureStep(const Step &step)
{
    StepFigures figures;
    const ResponseShape shape(step);
    if (std::isfinite(step.to))
        integrate(shape.samples(), step.to, &figures);
    measureArrival(shape.samples(), &figures);
    if (shape.samples().size() >= size_t(StepFigures::minSamples) && shape.samples().back().seconds > 0)
        measureShape(shape, step, &figures);
    for (auto *figure : {&figures.deadTime, &figures.peak, &figures.peakTime, &figures.delayTime,
                         &figures.riseTime, &figures.overshoot, &figures.settlingTime, &figures.steadyValue,
                         &figures.steadyError, &figures.period, &figures.decayRatio, &figures.iae,
                         &figures.ise, &figures.itae, &figures.noise, &figures.reportRate, &figures.jitter})
        if (*figure && !std::isfinite(**figure))
            figure->reset();
    return figures;
}
