#pragma once

// A discrete PID controller in parallel form, with what a real one needs: the
// derivative acts on the measured value (no kick when the target steps) and is
// smoothed, the output is limited, and the integral does not wind up while it
// is.

namespace Boardsim {

class PidController
{
public:
    static constexpr double limit = 1000; // of the output, either way

    void setGains(double p, double i, double d); // i in 1/s, d in s
    void reset();                                // forgets the past, keeps the gains

    // The output for the next period, in seconds.
    double control(double target, double measured, double period);

private:
    double m_p = 0;
    double m_i = 0;
    double m_d = 0;
    double m_integral = 0;
    double m_slope = 0;
    double m_last = 0;
    bool m_first = true;
};

} // namespace Boardsim
