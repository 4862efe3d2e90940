#include "pidcontroller.h"

#include <algorithm>

namespace Boardsim {

void PidController::setGains(double p, double i, double d)
{
    m_p = p;
    m_i = i;
    m_d = d;
}

void PidController::reset()
{
    m_integral = 0;
    m_slope = 0;
    m_first = true;
}

double PidController::control(double target, double measured, double period)
{
    constexpr double smoothing = 0.02; // seconds
    if (m_first)
        m_last = measured;
    m_first = false;
    m_slope += period / (smoothing + period) * ((measured - m_last) / period - m_slope);
    m_last = measured;

    const double error = target - measured;
    const double increment = m_i * error * period;
    const double wanted = m_p * error + m_integral + increment - m_d * m_slope;
    const double output = std::clamp(wanted, -limit, limit);
    // Held while it would only drive the output further beyond its limit.
    if (output == wanted || (wanted > limit) != (increment > 0))
        m_integral += increment;
    return output;
}

} // namespace Boardsim
