#pragma once

// What a control loop has to do with: five simulated processes. Input and
// output are in arbitrary units; a step is one millisecond.

#include <memory>

namespace Boardsim {

class Plant
{
public:
    enum class Kind {
        FirstOrder,  // a lag of 0.4 s
        SecondOrder, // swings at 6 rad/s, damping 0.25
        DeadTime,    // a lag of 0.5 s behind a delay of 150 ms
        Motor,       // takes inputs up to 600, turns at twice the input, sticks below 20
        Unstable,    // runs away by itself, doubling in 0.46 s, to a stop at 2000
    };

    static constexpr double step = 0.001; // seconds

    virtual ~Plant() = default;
    static std::unique_ptr<Plant> create(Kind kind);

    virtual double advance(double input) = 0; // one step; the new output
    double output() const { return m_output; }

protected:
    double m_output = 0;
};

} // namespace Boardsim
