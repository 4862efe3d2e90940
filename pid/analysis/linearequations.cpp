#include "linearequations.h"

#include <cmath>
#include <utility>

void LinearEquations::add(const double *terms, double value, double weight)
{
    for (size_t row = 0; row < m_count; ++row) {
        for (size_t column = 0; column < m_count; ++column)
            m_matrix[row][column] += weight * terms[row] * terms[column];
        m_right[row] += weight * terms[row] * value;
    }
}

void LinearEquations::damp(double share)
{
    for (size_t k = 0; k < m_count; ++k)
        m_matrix[k][k] *= 1 + share;
}

bool LinearEquations::solve(double *unknowns) const
{
    return solve(m_right, unknowns);
}

// Gaussian elimination after scaling to a diagonal of ones, after which a pivot is
// the share of an equation that does not follow from those before.
bool LinearEquations::solve(const std::array<double, maxUnknowns> &right, double *unknowns) const
{
    auto a = m_matrix;
    auto b = right;
    std::array<double, maxUnknowns> scale{};
    for (size_t k = 0; k < m_count; ++k) {
        if (!(a[k][k] > 0) || !std::isfinite(a[k][k]))
            return false;
        scale[k] = 1 / std::sqrt(a[k][k]);
    }
    for (size_t row = 0; row < m_count; ++row) {
        for (size_t column = 0; column < m_count; ++column)
            a[row][column] *= scale[row] * scale[column];
        b[row] *= scale[row];
    }
    // Symmetric and positive: the diagonal serves as pivot.
    for (size_t k = 0; k < m_count; ++k) {
        if (!(a[k][k] > 1e-13))
            return false;
        for (size_t row = k + 1; row < m_count; ++row) {
            const double factor = a[row][k] / a[k][k];
            for (size_t column = k; column < m_count; ++column)
                a[row][column] -= factor * a[k][column];
            b[row] -= factor * b[k];
        }
    }
    for (size_t k = m_count; k-- > 0;) {
        double sum = b[k];
        for (size_t column = k + 1; column < m_count; ++column)
            sum -= a[k][column] * b[column];
        b[k] = sum / a[k][k];
        unknowns[k] = b[k] * scale[k];
    }
    return true;
}

double LinearEquations::inverseAt(int row, int column) const
{
    std::array<double, maxUnknowns> unit{};
    unit[size_t(column)] = 1;
    std::array<double, maxUnknowns> solution{};
    return solve(unit, solution.data()) ? solution[size_t(row)] : 0;
}
