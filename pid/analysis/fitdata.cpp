#include "fitdata.h"

#include "linearequations.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr int maxMeans = 1000;
constexpr int maxSteps = 2000;

} // namespace

FitData::FitData(const ResponseShape &shape, const Step &step, const StepInput &input)
    : m_step(step)
    , m_input(input)
    , m_before(shape.before())
    , m_noise(shape.noise())
    , m_range(shape.range())
{
    const double last = shape.samples().back().seconds;
    m_end = last;
    // What follows long after the movement adds noise and no knowledge.
    if (shape.isSteady())
        m_end = std::min(last, 2.5 * shape.lastOutside(0.05 * m_range + 3 * shape.smoothedNoise()));
    if (!(m_end > 0))
        m_end = last;
    // A period is a multiple of the step, unless it is shorter than one.
    m_h = m_end / maxSteps;
    if (input.isClosed && input.period > m_h)
        m_h = input.period / std::ceil(input.period / (2 * m_h));
    m_maxDelay = shape.firstBeyond(0.4 * m_range).value_or(m_end);
    average(shape);
    estimateInputs();
}

void FitData::average(const ResponseShape &shape)
{
    const std::vector<StepSample> &samples = shape.samples();
    const int bins = std::min(maxMeans, int(samples.size()));
    double seconds = 0;
    double actual = 0;
    int count = 0;
    int bin = 0;
    double total = double(shape.countBefore());
    if (total > 0)
        m_means.push_back({0, m_before, total});
    const auto finish = [&] {
        if (count > 0)
            m_means.push_back({seconds / count, m_before + actual / count, double(count)});
        total += count;
        seconds = actual = count = 0;
    };
    for (size_t k = shape.isFirstMade() ? 1 : 0; k < samples.size(); ++k) {
        const StepSample &sample = samples[k];
        if (sample.seconds > m_end)
            break;
        const int now = int(sample.seconds / m_end * bins);
        if (now != bin)
            finish();
        bin = now;
        seconds += sample.seconds;
        actual += sample.actual - m_before;
        ++count;
    }
    finish();
    for (Mean &mean : m_means)
        mean.weight /= total;
}

// The controller's output from the measured values, as a deviation.
void FitData::estimateInputs()
{
    const size_t count = m_means.size();
    m_value1.assign(count, 0);
    m_value2 = m_input1 = m_input2 = m_value1;
    const double reference = m_step.to - (m_input.wasOff ? m_before : m_step.from);
    const bool isLimited = m_input.isClosed && m_input.limit > 0 && (m_input.wasOff || m_before == 0);
    double integral = 0;
    double lastInput = 0;
    double lastValue = 0;
    double lastTime = 0;
    for (size_t k = 0; k < count; ++k) {
        const double dt = m_means[k].seconds - lastTime;
        const double value = m_means[k].actual - m_before;
        double input = m_input.inputGain * reference;
        if (m_input.isClosed) {
            const double slope = dt > 0 ? (value - lastValue) / dt : 0;
            const double increment = m_input.gains.i * (m_step.to - m_means[k].actual) * dt;
            const double wanted =
                m_input.gains.p * (reference - value) + integral + increment - m_input.gains.d * slope;
            input = isLimited ? std::clamp(wanted, -m_input.limit, m_input.limit) : wanted;
            if (input == wanted || (wanted > 0) != (increment > 0))
                integral += increment;
            if (input != wanted)
                m_reachedLimit = true;
        }
        if (k == 0)
            lastInput = input;
        const size_t before = k > 0 ? k - 1 : 0;
        m_value1[k] = m_value1[before] + dt * (lastValue + value) / 2;
        m_value2[k] = m_value2[before] + dt * (m_value1[before] + m_value1[k]) / 2;
        m_input1[k] = m_input1[before] + dt * (lastInput + input) / 2;
        m_input2[k] = m_input2[before] + dt * (m_input1[before] + m_input1[k]) / 2;
        lastInput = input;
        lastValue = value;
        lastTime = m_means[k].seconds;
    }
}

std::vector<double> FitData::delayed(const std::vector<double> &values, double delay) const
{
    std::vector<double> result(values.size());
    size_t from = 0;
    for (size_t k = 0; k < values.size(); ++k) {
        const double t = m_means[k].seconds - delay;
        if (t <= 0)
            continue;
        while (from + 1 < values.size() && m_means[from + 1].seconds <= t)
            ++from;
        if (from + 1 == values.size() || m_means[from].seconds > t) {
            result[k] = values[from];
            continue;
        }
        const double share =
            (t - m_means[from].seconds) / (m_means[from + 1].seconds - m_means[from].seconds);
        result[k] = values[from] + share * (values[from + 1] - values[from]);
    }
    return result;
}

std::vector<double> FitData::response(const Candidate &candidate) const
{
    const int count = int(m_end / m_h) + 2;
    const std::vector<double> grid =
        simulateStep(candidate.plant, m_input, candidate.before, m_step.from, m_step.to, m_h, count);
    std::vector<double> values(m_means.size());
    for (size_t k = 0; k < values.size(); ++k) {
        const double at = m_means[k].seconds / m_h;
        const size_t first = std::min(size_t(at), grid.size() - 2);
        values[k] = grid[first] + (at - double(first)) * (grid[first + 1] - grid[first]);
    }
    return values;
}

double FitData::distance(const Candidate &candidate) const
{
    const std::vector<double> values = response(candidate);
    double sum = 0;
    for (size_t k = 0; k < values.size(); ++k) {
        const double off = values[k] - m_means[k].actual;
        sum += m_means[k].weight * off * off;
    }
    return sum;
}

// Integrated once or twice, the equation of the process is linear in what is sought:
// y = b int u - a0 int y, or y = b int int u - a1 int y - a0 int int y.
std::vector<FitData::Candidate> FitData::starts(int order, bool withLag) const
{
    std::vector<Candidate> found;
    constexpr int delays = 8;
    for (int share = 0; share < delays; ++share) {
        Dynamics plant;
        plant.order = order;
        plant.delay = share * m_maxDelay / delays;
        const std::vector<double> driven = delayed(order == 1 ? m_input1 : m_input2, plant.delay);
        const int count = order == 2 ? 3 : withLag ? 2 : 1;
        LinearEquations equations(count);
        for (size_t k = 0; k < m_means.size(); ++k) {
            const double once = m_value1[k];
            const double terms[3] = {driven[k], order == 1 ? -once : -m_value2[k], -once};
            equations.add(terms, m_means[k].actual - m_before, m_means[k].weight);
        }
        double solution[3] = {};
        if (!equations.solve(solution) || !(std::abs(solution[0]) > 0))
            continue;
        plant.b = solution[0];
        plant.a0 = solution[1];
        plant.a1 = solution[2];
        found.push_back({plant, m_before});
    }
    return found;
}
