#pragma once

// A linear process with a dead time, the loop around it, and their response to a
// step, calculated in time. Units: input and output as the board's numbers, seconds.

#include <vector>

// C(s) = p + i / s + d s
struct ParallelGains
{
    double p = 0;
    double i = 0; // 1/s
    double d = 0; // s
};

struct PlantModel
{
    enum class Kind {
        FirstOrder,  // lag y' + y = gain u(t - delay)
        SecondOrder, // y'' / frequency^2 + 2 damping / frequency y' + y = gain u(t - delay)
        Integrating, // y' = gain u(t - delay)
        Unstable,    // lag y' - y = gain u(t - delay)
    };

    Kind kind = Kind::FirstOrder;
    double gain = 0;      // output per input; of Integrating also per second
    double lag = 0;       // s, of FirstOrder and Unstable
    double frequency = 0; // rad/s, of SecondOrder
    double damping = 0;   // of SecondOrder; from 1 on it is two lags
    double delay = 0;     // s, dead time

    // The two lags of SecondOrder with a damping of 1 or more, in seconds.
    double slowLag() const;
    double fastLag() const;
};

// How the target acts on the process.
struct StepInput
{
    bool isClosed = true;

    // Open: the input of the process is the target times this.
    double inputGain = 1;

    // Closed: a controller that acts on target less actual, its derivative on the
    // actual value alone.
    ParallelGains gains;
    double period = 0;        // s, of the controller; 0: unknown, as if it were very short
    double limit = 0;         // of its output, either way; the integral stops there. 0: none
    double derivativeLag = 0; // s, smoothing of the derivative
    // The loop was off before the step and its output 0. Else it was at rest, at the
    // target or (without integral) beside it.
    bool wasOff = false;
};

// y'' = b u(t - delay) - a1 y' - a0 y, or of order 1 y' = b u(t - delay) - a0 y.
struct Dynamics
{
    int order = 1;
    double a1 = 0;
    double a0 = 0;
    double b = 0;
    double delay = 0; // s

    static Dynamics of(const PlantModel &model);
};

// The actual value at 0, h, 2 h ... count values in all, from rest at `before` at a
// target of `from`, which becomes `to` at 0. What runs away ends at 1e15.
std::vector<double> simulateStep(const Dynamics &plant, const StepInput &input, double before, double from,
                                 double to, double h, int count);
