#pragma once

// The process behind one step: the model whose simulated response is nearest to the
// measured one. Candidates are an integrator, a first-order lag (stable or not) and a
// second-order lag, each behind a dead time; the simplest that the samples carry is
// chosen (Bayesian information criterion). In a closed loop the known controller is
// part of the simulation, so that the noise that it feeds back does no harm.
//
// Starting values come from the integrated differential equation, a linear
// regression; the rest is Levenberg-Marquardt on the simulated response (K. Levenberg
// 1944, D. Marquardt 1963). At most 1000 means of samples are fitted, over the part of
// the time in which the response moves, so that the cost is bounded.

#include "plantmodel.h"
#include "stepfigures.h"

struct PlantFit
{
    enum class Problem {
        None,
        TooFewSamples,  // since the step, or while the value moves
        NoInput,        // nothing acts on the process: gains or target step are 0, or no numbers
        NoMovement,     // the value does not leave the noise
        StepTooSmall,   // the value moves by less than five times the noise
        Saturated,      // no model fits, and the controller was at its limit
        PoorFit,        // no model fits
        NotIdentifiable // one fits, but so do others with a quite different gain
    };

    // With any of the last three a model is there to be shown, but nothing should be
    // concluded from it; with those before there is none.
    Problem problem = Problem::TooFewSamples;
    PlantModel model;
    // The dead time cannot be told from 0 to this, the interval of reports, in seconds.
    std::optional<double> delayAtMost;
    double residual = 0;      // RMS, in units of the value, noise included
    double residualShare = 0; // the same in % of the range of the response
    QVector<double> curve;    // the model's response at the time of each sample

    bool hasModel() const { return !curve.isEmpty(); }
};

PlantFit fitPlant(const Step &step, const StepInput &input);
