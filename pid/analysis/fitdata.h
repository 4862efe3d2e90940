#pragma once

// What a fit works on: the response as at most 1000 means over equal times, the steps
// of the simulation, and starting values for its parameters.

#include "plantmodel.h"
#include "responseshape.h"

#include <limits>
#include <vector>

class FitData
{
public:
    struct Candidate
    {
        Dynamics plant;
        double before = 0; // actual value before the step
    };

    FitData(const ResponseShape &shape, const Step &step, const StepInput &input);

    struct Mean
    {
        double seconds;
        double actual;
        double weight; // of its square: share of the samples
    };
    const std::vector<Mean> &means() const { return m_means; }
    double end() const { return m_end; }     // s, of the part that is fitted
    double step() const { return m_h; }      // s, of the simulation
    double noise() const { return m_noise; } // of a sample
    double range() const { return m_range; }
    double maxDelay() const { return m_maxDelay; } // s
    bool reachedLimit() const { return m_reachedLimit; }

    // Responses at means(). The first mean may be that of the samples before the step.
    std::vector<double> response(const Candidate &candidate) const;
    // The mean weighted square of the distance to response(candidate).
    double distance(const Candidate &candidate) const;

    // One for each of a few dead times, by regression over the estimated input of the
    // process. Those without sense are left out. withLag: a0 is estimated too.
    std::vector<Candidate> starts(int order, bool withLag) const;

private:
    void average(const ResponseShape &shape);
    void estimateInputs();
    std::vector<double> delayed(const std::vector<double> &values, double delay) const;

    const Step &m_step;
    const StepInput &m_input;
    double m_before;
    double m_noise;
    double m_range;
    double m_end = 0;
    double m_h = 0;
    double m_maxDelay = 0;
    bool m_reachedLimit = false;
    std::vector<Mean> m_means;
    // Integrals, over the time and twice, of deviations of value and input.
    std::vector<double> m_value1, m_value2, m_input1, m_input2;
};
