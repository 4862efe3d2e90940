#include "loopfit.h"

#include <algorithm>
#include <cmath>

LoopFit::LoopFit(const FitData &data, int order, bool withLag)
    : m_data(data)
    , m_parameters{LogGain, Delay, Before}
{
    if (withLag)
        m_parameters.push_back(A0);
    if (order == 2)
        m_parameters.push_back(A1);
    std::vector<std::pair<double, Candidate>> starts;
    for (const Candidate &candidate : data.starts(order, withLag))
        starts.emplace_back(data.distance(candidate), candidate);
    const auto nearer = [](const auto &a, const auto &b) { return a.first < b.first; };
    std::sort(starts.begin(), starts.end(), nearer);
    starts.resize(std::min<size_t>(starts.size(), 2));
    for (const auto &start : starts)
        improve(start.second);
    if (!data.reachedLimit() || starts.empty())
        return;
    // The instant at which a controller leaves its limit jumps from one period to the
    // next, which stops what follows slopes.
    search();
    search(); // the first may end in a corner
    search();
    search(); // the first may end in a corner
    improve(m_candidate);
}

FitData::Candidate LoopFit::moved(Candidate candidate, Parameter parameter, double by) const
{
    Dynamics &plant = candidate.plant;
    switch (parameter) {
    case LogGain:
        plant.b *= std::exp(std::clamp(by, -2.0, 2.0));
        break;
    case Delay:
        plant.delay = std::clamp(plant.delay + by, 0.0, m_data.maxDelay());
        break;
    case A0:
        plant.a0 += by;
        break;
    case A1:
        plant.a1 += by;
        break;
    case Before:
        candidate.before += by;
        break;
    }
    return candidate;
}

// For difference quotients.
double LoopFit::smallStep(const Candidate &candidate, Parameter parameter) const
{
    const Dynamics &plant = candidate.plant;
    constexpr double fineness = 1e-4;
    const double end = m_data.end();
    const double delayStep = 0.1 * m_data.step();
    switch (parameter) {
    case LogGain:
        break;
    case Delay: // inwards
        return plant.delay + delayStep < m_data.maxDelay() ? delayStep : -delayStep;
    case A0:
        return fineness * std::max(std::abs(plant.a0), plant.order == 1 ? 1 / end : 1 / (end * end));
    case A1:
        return fineness * std::max(std::abs(plant.a1), 1 / end);
    case Before:
        return fineness * m_data.range();
    }
    return fineness;
}

LinearEquations LoopFit::equations(const Candidate &candidate) const
{
    const std::vector<double> response = m_data.response(candidate);
    std::vector<std::vector<double>> slopes;
    for (Parameter parameter : m_parameters) {
        const double by = smallStep(candidate, parameter);
        slopes.push_back(m_data.response(moved(candidate, parameter, by)));
        for (size_t k = 0; k < response.size(); ++k)
            slopes.back()[k] = (slopes.back()[k] - response[k]) / by;
    }
    LinearEquations equations(parameters());
    for (size_t k = 0; k < response.size(); ++k) {
        double terms[LinearEquations::maxUnknowns] = {};
        for (size_t n = 0; n < slopes.size(); ++n)
            terms[n] = slopes[n][k];
        const FitData::Mean &mean = m_data.means()[k];
        equations.add(terms, mean.actual - response[k], mean.weight);
    }
    return equations;
}

void LoopFit::improve(Candidate candidate)
{
    double distance = m_data.distance(candidate);
    double damping = 1e-2;
    for (int iteration = 0; iteration < maxIterations && damping < 1e8; ++iteration) {
        const LinearEquations undamped = equations(candidate);
        const double before = distance;
        while (damping < 1e8) {
            LinearEquations damped = undamped;
            damped.damp(damping);
            double by[LinearEquations::maxUnknowns] = {};
            Candidate next = candidate;
            if (damped.solve(by))
                for (size_t k = 0; k < m_parameters.size(); ++k)
                    next = moved(next, m_parameters[k], by[k]);
            const double there = m_data.distance(next);
            if (there < distance) {
                candidate = next;
                distance = there;
                damping = std::max(damping / 10, 1e-9);
                break;
            }
            damping *= 10;
        }
        if (before - distance < 1e-6 * before)
            break;
    }
    if (distance < m_distance) {
        m_distance = distance;
        m_candidate = candidate;
    }
}

// Nelder and Mead's simplex about the best so far, with the usual factors.
void LoopFit::search()
{
    constexpr int maxRounds = 250;
    using Point = std::array<double, LinearEquations::maxUnknowns>;
    using Corner = std::pair<double, Point>; // distance, changes of the parameters
    const size_t size = m_parameters.size();
    const Candidate start = m_candidate;
    const auto candidateAt = [&](const Point &by) {
        Candidate candidate = start;
        for (size_t k = 0; k < size; ++k)
            candidate = moved(candidate, m_parameters[k], by[k]);
        return candidate;
    };
    const auto cornerAt = [&](const Point &by) { return Corner(m_data.distance(candidateAt(by)), by); };
    const auto nearer = [](const Corner &a, const Corner &b) { return a.first < b.first; };

    std::vector<Corner> corners{Corner(m_distance, Point{})};
    for (size_t k = 0; k < size; ++k) {
        Point by{};
        by[k] = 1000 * smallStep(start, m_parameters[k]);
        corners.push_back(cornerAt(by));
    }
    for (int round = 0; round < maxRounds; ++round) {
        std::sort(corners.begin(), corners.end(), nearer);
        if (corners.back().first - corners.front().first <= 1e-6 * corners.front().first)
            break;
        Point middle{}; // of all but the worst
        for (size_t k = 0; k < size; ++k)
            for (size_t n = 0; n < size; ++n)
                middle[k] += corners[n].second[k] / double(size);
        const auto along = [&](double factor) {
            Point by = middle;
            for (size_t k = 0; k < size; ++k)
                by[k] += factor * (corners.back().second[k] - middle[k]);
            return cornerAt(by);
        };
        Corner next = along(-1);
        if (next.first < corners.front().first)
            next = std::min(next, along(-2), nearer);
        else if (!(next.first < corners[size - 1].first))
            next = along(next.first < corners.back().first ? -0.5 : 0.5);
        if (next.first < corners.back().first) {
            corners.back() = next;
            continue;
        }
        for (size_t n = 1; n <= size; ++n) {
            for (size_t k = 0; k < size; ++k)
                corners[n].second[k] = (corners[n].second[k] + corners[0].second[k]) / 2;
            corners[n] = cornerAt(corners[n].second);
        }
    }
    const Corner best = *std::min_element(corners.begin(), corners.end(), nearer);
    if (best.first < m_distance) {
        m_distance = best.first;
        m_candidate = candidateAt(best.second);
    }
}

double LoopFit::gainDeviation(double atLeast) const
{
    LoopFit fit = *this;
    // A dead time of 0 is at its end, where it can make up for no other gain.
    if (m_candidate.plant.delay < m_data.step())
        fit.m_parameters.erase(fit.m_parameters.begin() + Delay);
    const double variance = fit.equations(m_candidate).inverseAt(LogGain, LogGain);
    if (!(variance > 0))
        return std::numeric_limits<double>::infinity();
    const double square = std::max(m_distance, atLeast * atLeast);
    return std::sqrt(variance * square / double(m_data.means().size()));
}
