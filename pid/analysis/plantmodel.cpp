#include "plantmodel.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace {

constexpr double farAway = 1e15;

using Matrix = std::array<std::array<double, 3>, 3>;

Matrix product(const Matrix &a, const Matrix &b)
{
    Matrix c{};
    for (size_t row = 0; row < 3; ++row)
        for (size_t column = 0; column < 3; ++column)
            for (size_t k = 0; k < 3; ++k)
                c[row][column] += a[row][k] * b[k][column];
    return c;
}

// e^a: the Taylor series of a / 2^n, squared n times.
Matrix exponential(Matrix a)
{
    double norm = 0;
    for (const auto &row : a)
        for (double element : row)
            norm = std::max(norm, std::abs(element));
    const int squarings = norm > 0.1 ? std::min(60, int(std::ceil(std::log2(norm / 0.1)))) : 0;
    for (auto &row : a)
        for (double &element : row)
            element = std::ldexp(element, -squarings);
    const Matrix identity{{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
    Matrix sum = identity;
    for (int k = 10; k > 0; --k) { // Horner
        sum = product(a, sum);
        for (size_t row = 0; row < 3; ++row)
            for (size_t column = 0; column < 3; ++column)
                sum[row][column] = sum[row][column] / k + identity[row][column];
    }
    for (int k = 0; k < squarings; ++k)
        sum = product(sum, sum);
    return sum;
}

// One step of the process with a constant input: state (y, y'), exact.
class PlantStep
{
public:
    PlantStep(const Dynamics &plant, double h)
    {
        Matrix rates{};
        if (plant.order == 1)
            rates[0] = {-plant.a0, 0, plant.b};
        else
            rates = {{{0, 1, 0}, {-plant.a0, -plant.a1, plant.b}, {0, 0, 0}}};
        for (auto &row : rates)
            for (double &element : row)
                element *= h;
        m_step = exponential(rates);
    }

    void advance(double input)
    {
        const double y = m_step[0][0] * m_y + m_step[0][1] * m_slope + m_step[0][2] * input;
        m_slope = m_step[1][0] * m_y + m_step[1][1] * m_slope + m_step[1][2] * input;
        m_y = y;
        if (!(std::abs(m_y) < farAway)) { // also of NaN
            m_y = std::signbit(m_y) ? -farAway : farAway;
            m_slope = 0;
        }
    }

    double output() const { return m_y; }

private:
    Matrix m_step;
    double m_y = 0;
    double m_slope = 0;
};

// Deviations from the state before the step.
class Controller
{
public:
    Controller(const StepInput &input, double period, double outputBefore)
        : m_input(input)
        , m_period(period)
        , m_outputBefore(outputBefore)
        , m_smoothing(period / (input.derivativeLag + period))
    {
    }

    // reference: what the proportional part sees change; error: what is integrated.
    double control(double reference, double error, double actual)
    {
        m_slope += m_smoothing * ((actual - m_last) / m_period - m_slope);
        m_last = actual;
        const ParallelGains &gains = m_input.gains;
        const double increment = gains.i * error * m_period;
        double wanted = gains.p * (reference - actual) + m_integral + increment - gains.d * m_slope;
        if (m_input.limit > 0) {
            const double absolute = m_outputBefore + wanted;
            const double output = std::clamp(absolute, -m_input.limit, m_input.limit);
            // The integral is held while it would only drive the output further.
            if (output == absolute || (absolute > 0) != (increment > 0))
                m_integral += increment;
            return output - m_outputBefore;
        }
        m_integral += increment;
        return wanted;
    }

private:
    const StepInput &m_input;
    double m_period;
    double m_outputBefore;
    double m_smoothing;
    double m_integral = 0;
    double m_slope = 0;
    double m_last = 0;
};

} // namespace

double PlantModel::slowLag() const
{
    return (damping + std::sqrt(std::max(0.0, damping * damping - 1))) / frequency;
}

double PlantModel::fastLag() const
{
    return 1 / (frequency * frequency * slowLag());
}

Dynamics Dynamics::of(const PlantModel &model)
{
    switch (model.kind) {
    case PlantModel::Kind::SecondOrder: {
        const double square = model.frequency * model.frequency;
        return {2, 2 * model.damping * model.frequency, square, model.gain * square, model.delay};
    }
    case PlantModel::Kind::Integrating:
        return {1, 0, 0, model.gain, model.delay};
    case PlantModel::Kind::Unstable:
        return {1, 0, -1 / model.lag, model.gain / model.lag, model.delay};
    case PlantModel::Kind::FirstOrder:
        break;
    }
    return {1, 0, 1 / model.lag, model.gain / model.lag, model.delay};
}

std::vector<double> simulateStep(const Dynamics &plant, const StepInput &input, double before, double from,
                                 double to, double h, int count)
{
    std::vector<double> actual(size_t(std::max(count, 0)));
    if (actual.empty() || !(h > 0))
        return actual;
    // A controller period is a number of steps, so that its output is constant in each.
    const int stepsPerPeriod = std::max(1, int(std::lround(std::min(input.period / h, 1e9))));
    // What held the value before, where the limit counts from 0.
    const double outputBefore = input.wasOff || plant.b == 0 ? 0 : plant.a0 * before / plant.b;
    const double reference = input.wasOff ? to - before : to - from;
    Controller controller(input, stepsPerPeriod * h, outputBefore);
    PlantStep process(plant, h);

    const double delay = std::min(plant.delay / h, double(count));
    const size_t wholeDelay = size_t(delay);
    const double rest = delay - double(wholeDelay);
    std::vector<double> inputs(actual.size());
    const auto inputAt = [&](size_t k, size_t ago) { return ago > k ? 0 : inputs[k - ago]; };
    double output = input.inputGain * (to - from);
    int untilControl = 0;
    for (size_t k = 0; k < actual.size(); ++k) {
        const double y = process.output();
        actual[k] = before + y;
        if (input.isClosed && untilControl-- <= 0) {
            untilControl = stepsPerPeriod - 1;
            output = controller.control(reference, to - before - y, y);
        }
        inputs[k] = output;
        process.advance((1 - rest) * inputAt(k, wholeDelay) + rest * inputAt(k, wholeDelay + 1));
    }
    return actual;
}
