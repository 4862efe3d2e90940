#pragma once

// Normal equations of a weighted least-squares problem with up to five unknowns.

#include <array>
#include <cstddef>

class LinearEquations
{
public:
    static constexpr int maxUnknowns = 5;

    explicit LinearEquations(int unknowns)
        : m_count(size_t(unknowns))
    {
    }

    // terms[0] * x0 + terms[1] * x1 ... = value
    void add(const double *terms, double value, double weight);
    // Adds to the diagonal its share: x is drawn to 0 (Marquardt's damping).
    void damp(double share);
    // False where the equations do not determine all unknowns.
    bool solve(double *unknowns) const;
    // Of the inverse of the matrix: variances for a residual of 1. 0 where there is none.
    double inverseAt(int row, int column) const;

private:
    bool solve(const std::array<double, maxUnknowns> &right, double *unknowns) const;

    size_t m_count;
    std::array<std::array<double, maxUnknowns>, maxUnknowns> m_matrix{};
    std::array<double, maxUnknowns> m_right{};
};
