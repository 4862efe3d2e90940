#include "plantfit.h"

#include "fitdata.h"
#include "loopfit.h"

#include <algorithm>
#include <cmath>

namespace {

using Problem = PlantFit::Problem;

constexpr int minSamples = 20;
constexpr int minMoving = 6;       // means, until 95 % of the range
constexpr double minError = 0.001; // of the range; below it no model is better than another

bool acts(const Step &step, const StepInput &input)
{
    const ParallelGains &gains = input.gains;
    for (const double number : {step.from, step.to, input.inputGain, gains.p, gains.i, gains.d, input.period,
                                input.limit, input.derivativeLag})
        if (!std::isfinite(number))
            return false;
    if (input.isClosed)
        return gains.p != 0 || gains.i != 0;
    return input.inputGain != 0 && step.to != step.from;
}

Problem problemOf(const ResponseShape &shape, const Step &step, const StepInput &input)
{
    const std::vector<StepSample> &samples = shape.samples();
    if (samples.size() < size_t(minSamples) || !(samples.back().seconds > 0))
        return Problem::TooFewSamples;
    if (!acts(step, input))
        return Problem::NoInput;
    if (shape.range() < 5 * shape.noise() && shape.range() > 0 && shape.hasMoved())
        return Problem::StepTooSmall;
    if (!shape.hasMoved())
        return Problem::NoMovement;
    return Problem::None;
}

// Nothing where the equation is no model that a rule knows.
std::optional<PlantModel> modelOf(const Dynamics &plant, bool withLag)
{
    PlantModel model;
    model.delay = plant.delay;
    if (plant.order == 2) {
        if (!(plant.a0 > 0) || !(plant.a1 > 0))
            return std::nullopt;
        model.kind = PlantModel::Kind::SecondOrder;
        model.frequency = std::sqrt(plant.a0);
        model.damping = plant.a1 / (2 * model.frequency);
        model.gain = plant.b / plant.a0;
    } else if (!withLag || plant.a0 == 0) {
        model.kind = PlantModel::Kind::Integrating;
        model.gain = plant.b;
    } else {
        model.kind = plant.a0 > 0 ? PlantModel::Kind::FirstOrder : PlantModel::Kind::Unstable;
        model.lag = 1 / std::abs(plant.a0);
        model.gain = plant.b / std::abs(plant.a0);
    }
    return model;
}

struct Choice
{
    PlantModel model;
    FitData::Candidate candidate;
    double gainDeviation = 0;
};

std::optional<Choice> choose(const FitData &data)
{
    const double floor = minError * data.range();
    const double count = double(data.means().size());
    double bestScore = std::numeric_limits<double>::infinity();
    std::optional<Choice> best;
    constexpr std::pair<int, bool> kinds[] = {{1, false}, {1, true}, {2, true}};
    for (const auto &[order, withLag] : kinds) {
        const LoopFit fit(data, order, withLag);
        if (!fit.isValid())
            continue;
        const std::optional<PlantModel> model = modelOf(fit.candidate().plant, withLag);
        if (!model || !std::isfinite(model->gain))
            continue;
        // Errors of neighbors are alike where a model is wrong, hence three times
        // the usual price of a parameter.
        const double score =
            count * std::log(fit.distance() + floor * floor) + 3 * fit.parameters() * std::log(count);
        if (score < bestScore) {
            bestScore = score;
            best = Choice{*model, fit.candidate(), fit.gainDeviation(floor)};
        }
    }
    return best;
}

// The model's response at the time of each sample; the last value of the simulation
// where a record goes on long after it.
QVector<double> curveAt(const QVector<StepSample> &samples, const Step &step, const StepInput &input,
                        const FitData::Candidate &candidate, const FitData &data)
{
    double last = 0;
    for (const StepSample &sample : samples)
        if (std::isfinite(sample.seconds))
            last = std::max(last, sample.seconds);
    const int count = int(std::min(last, 20 * data.end()) / data.step()) + 2;
    const std::vector<double> grid =
        simulateStep(candidate.plant, input, candidate.before, step.from, step.to, data.step(), count);
    QVector<double> curve;
    curve.reserve(samples.size());
    for (const StepSample &sample : samples) {
        const double at = std::isfinite(sample.seconds) ? std::max(0.0, sample.seconds / data.step()) : 0;
        const size_t first = size_t(std::min(at, double(grid.size() - 2)));
        const double share = std::min(at - double(first), 1.0);
        curve.append(grid[first] + share * (grid[first + 1] - grid[first]));
    }
    return curve;
}

double rmsWithin(const QVector<StepSample> &samples, const QVector<double> &curve, double end)
{
    double sum = 0;
    int count = 0;
    for (int k = 0; k < samples.size(); ++k) {
        const double off = samples[k].actual - curve[k];
        if (samples[k].seconds < 0 || samples[k].seconds > end || !std::isfinite(off))
            continue;
        sum += off * off;
        ++count;
    }
    return count > 0 ? std::sqrt(sum / count) : 0;
}

} // namespace

PlantFit fitPlant(const Step &step, const StepInput &input)
{
    PlantFit fit;
    const ResponseShape shape(step);
    fit.problem = problemOf(shape, step, input);
    if (fit.problem != Problem::None)
        return fit;
    const FitData data(shape, step, input);
    const double movingEnd = data.end() / 2.5;
    const auto moving = std::count_if(data.means().begin(), data.means().end(),
                                      [&](const FitData::Mean &mean) { return mean.seconds <= movingEnd; });
    if (moving < minMoving) {
        fit.problem = Problem::TooFewSamples;
        return fit;
    }
    const std::optional<Choice> choice = choose(data);
    if (!choice) {
        fit.problem = data.reachedLimit() ? Problem::Saturated : Problem::PoorFit;
        return fit;
    }
    fit.model = choice->model;
    fit.curve = curveAt(step.samples, step, input, choice->candidate, data);
    fit.residual = rmsWithin(step.samples, fit.curve, data.end());
    fit.residualShare = 100 * fit.residual / data.range();
    const double rate = measureStep(step).reportRate.value_or(0);
    if (rate > 0 && fit.model.delay < 1 / rate)
        fit.delayAtMost = 1 / rate;

    // What the fit leaves beyond noise is the model's fault.
    const double excess = std::sqrt(std::max(0.0, fit.residual * fit.residual - data.noise() * data.noise()));
    if (!(excess < 0.05 * data.range()))
        fit.problem = data.reachedLimit() ? Problem::Saturated : Problem::PoorFit;
    else if (!(choice->gainDeviation < 0.4))
        fit.problem = Problem::NotIdentifiable;
    return fit;
}
