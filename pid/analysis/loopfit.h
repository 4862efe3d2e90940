#pragma once

// Levenberg-Marquardt for the parameters of one kind of process: gain, dead time,
// value before the step and, as far as the kind has them, the coefficients of its
// equation.

#include "fitdata.h"
#include "linearequations.h"

class LoopFit
{
public:
    // Integrating: order 1 and without lag.
    LoopFit(const FitData &data, int order, bool withLag);

    bool isValid() const { return m_distance < std::numeric_limits<double>::infinity(); }
    const FitData::Candidate &candidate() const { return m_candidate; }
    double distance() const { return m_distance; } // mean weighted square
    int parameters() const { return int(m_parameters.size()); }
    // Standard deviation of ln b if each mean deviates by as much as the fit leaves, at
    // least by the given value. Infinite where undetermined.
    double gainDeviation(double atLeast) const;

private:
    static constexpr int maxIterations = 25;
    enum Parameter { LogGain, Delay, A0, A1, Before };
    using Candidate = FitData::Candidate;

    void improve(Candidate candidate);
    void search();
    LinearEquations equations(const Candidate &candidate) const;
    Candidate moved(Candidate candidate, Parameter parameter, double by) const;
    double smallStep(const Candidate &candidate, Parameter parameter) const;

    const FitData &m_data;
    std::vector<Parameter> m_parameters;
    Candidate m_candidate;
    double m_distance = std::numeric_limits<double>::infinity();
};
