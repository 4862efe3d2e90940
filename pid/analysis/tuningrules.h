#pragma once

// Gains for a known process or a known limit of stability, and the forms in which
// boards take them.
//
// SIMC: S. Skogestad, "Simple analytic rules for model reduction and PID controller
// tuning", J. Process Control 13 (2003); its half rule makes two lags one for PI.
// AMIGO: K. J. Astrom and T. Hagglund, "Revisiting the Ziegler-Nichols step response
// method for PID control", J. Process Control 14 (2004).
// Ziegler and Nichols: "Optimum Settings for Automatic Controllers", Trans. ASME 64
// (1942), from the limit of stability.
//
// SIMC asks for a closed loop that follows as a lag of chosen time, which it has no
// answer to where a process swings or runs away. There the same is asked of the poles
// (direct synthesis of the characteristic equation):
// - Two poles that swing: three equal poles; the derivative, which acts on the actual
//   value, damps. For PI, or where the dead time is too long to damp, the integral
//   alone, slow enough not to excite the swing.
// - A pole that runs away: with P alone the closed loop is the lag that is wanted, and
//   the integral slow against it. PI also where PID is asked for. Such a loop always
//   overshoots, the less the faster it is.

#include "plantmodel.h"
#include "stepfigures.h"

#include <optional>

enum class ControllerKind { P, Pi, Pid };

struct Tuning
{
    enum class Problem {
        None,
        NoRule,   // the rule has nothing for this kind of process or controller; or it
                  // runs away faster than its dead time lets a controller see
        NoNumber, // the model has no gain, or its numbers are no process
        Negative, // the process acts the other way round; fields take no negative gain
        TooLarge, // beyond what the board's numbers, of single precision, hold
        TooSmall, // the same, all of them towards 0
    };

    Problem problem = Problem::NoRule;
    ParallelGains gains;  // also with the last three
    double closedLag = 0; // s, of SIMC: roughly that of the loop
};

// What adds to the dead time of a loop, in seconds; 0 where unknown.
struct LoopTiming
{
    double period = 0;         // of the controller
    double reportInterval = 0; // shorter dead times than this are not seen
};

// slowness: the time of the closed loop as a multiple of the dead time, from about
// 0.5 (fast) to 5 (slow); 1 is the rule's recommendation. Without (much) dead time a
// share of the process's own time takes its place.
Tuning simcTuning(const PlantModel &model, ControllerKind kind, double slowness, const LoopTiming &timing);

// First order and integrating; PI and PID.
Tuning amigoTuning(const PlantModel &model, ControllerKind kind, const LoopTiming &timing);

// The limit of stability: the loop swings steadily with P alone.
struct UltimatePoint
{
    enum class Problem {
        None,
        NotProportional, // I and D must be 0, P above 0
        NoSwing,         // raise P
        Dying,           // raise P a little
        Growing,         // lower P
    };

    Problem problem = Problem::NoSwing;
    double gain = 0;
    double period = 0; // s
};

// From the figures of a step with these gains. A swing that changes by less than a
// tenth per period is steady. The lowest such P is the limit: with a higher one the
// swing grows until the controller's own limit holds it, and looks the same.
UltimatePoint ultimatePoint(const StepFigures &figures, const ParallelGains &gains);
Tuning zieglerNicholsTuning(const UltimatePoint &point, ControllerKind kind);

// How a board reads its three numbers.
enum class GainForm {
    Parallel,  // P, I in 1/s, D in s
    PerPeriod, // the same for sums and differences of errors without time: I T, D / T
    Standard,  // Kc, Ti in s (0: no integral), Td in s
};

// period: of the controller, in seconds; of use for PerPeriod alone, where it must not
// be 0. Nothing where numbers are missing: PerPeriod without a period, Standard of
// an I without P.
std::optional<ParallelGains> fromBoard(const ParallelGains &numbers, GainForm form, double period);
std::optional<ParallelGains> toBoard(const ParallelGains &gains, GainForm form, double period);

// None if the board's fields can take the numbers, else one of the last three.
Tuning::Problem fieldProblem(const ParallelGains &numbers);
