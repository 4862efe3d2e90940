#include "plant.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace Boardsim {

namespace {

class FirstOrder : public Plant
{
public:
    explicit FirstOrder(double lag)
        : m_lag(lag)
    {
    }
    double advance(double input) override { return m_output += step / m_lag * (input - m_output); }

private:
    double m_lag;
};

class SecondOrder : public Plant
{
public:
    double advance(double input) override
    {
        constexpr double frequency = 6;
        constexpr double damping = 0.25;
        m_slope += step * (frequency * frequency * (input - m_output) - 2 * damping * frequency * m_slope);
        return m_output += step * m_slope;
    }

private:
    double m_slope = 0;
};

class DeadTime : public Plant
{
public:
    double advance(double input) override
    {
        const double delayed = m_inputs.at(m_at);
        m_inputs.at(m_at) = input;
        m_at = (m_at + 1) % m_inputs.size();
        return m_output = m_lag.advance(delayed);
    }

private:
    FirstOrder m_lag{0.5};
    std::array<double, 150> m_inputs{};
    size_t m_at = 0;
};

class Motor : public Plant
{
public:
    double advance(double input) override
    {
        constexpr double lag = 0.3;
        constexpr double friction = 20;
        double drive = std::clamp(input, -600.0, 600.0);
        if (std::abs(m_output) < 1 && std::abs(drive) < friction)
            return m_output = 0;
        drive -= std::copysign(friction, m_output != 0 ? m_output : drive);
        return m_output += step / lag * (2 * drive - m_output);
    }
};

class Unstable : public Plant
{
public:
    double advance(double input) override
    {
        return m_output = std::clamp(m_output + step * (1.5 * m_output + 3 * input), -2000.0, 2000.0);
    }
};

} // namespace

std::unique_ptr<Plant> Plant::create(Kind kind)
{
    switch (kind) {
    case Kind::FirstOrder:
        return std::make_unique<FirstOrder>(0.4);
    case Kind::SecondOrder:
        return std::make_unique<SecondOrder>();
    case Kind::DeadTime:
        return std::make_unique<DeadTime>();
    case Kind::Motor:
        return std::make_unique<Motor>();
    case Kind::Unstable:
        break;
    }
    return std::make_unique<Unstable>();
}

} // namespace Boardsim
