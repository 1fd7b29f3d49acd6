#pragma once

#include <qx/foundation/scalar.h>
#include <qx/solvers/internal/objective.h>
#include <qx/solvers/optimization.h>

#include <cstdint>

/// @file
/// The unbounded limited-memory method, for both forms of the interface and for the bounded method without bounds.
/// Internal, not part of the interface.

namespace qxSolvers {

/// Whether sizes, tolerances and limit are those of a possible task, and the start holds n elements.
template <qxReal T>
[[nodiscard]] bool AreValidArguments(std::int32_t n, std::int32_t m, const CQXVectorN<T>& x, T xTol, T fTol, T gTol,
                                     std::int32_t maxIterations) {
  return !(n < 1 || m < 1 || n < m || gTol <= 0 || fTol <= 0 || xTol <= 0 || maxIterations < 1 || x.Dim() < n ||
           x.Data() == nullptr);
}

template <qxReal T>
T MinimizeByLBFGS(std::int32_t n, std::int32_t m, CQXVectorN<T>& x, T xTol, T fTol, T gTol, std::int32_t maxIterations,
                  const Objective<T>& objective, QX_OPTIMIZATION_INFO& info);

/// Searches the line from x along a direction for a step with sufficient decrease and a small slope, by the method told
/// at StepInterval. The function and its gradient are evaluated at x first, then at each trial.
/// @param[out] start room for n elements: x as it came
/// @param[in,out] x,f,gradient the point, the value and the gradient there, in the end those of the last trial
/// @param[in,out] step first trial, in the end the last one
/// @return 1 for a step that meets both conditions; 2 when the bracket is narrow, 3 and 4 at the smallest and the
///         largest step, 5 at the limit of 20 trials, 6 when rounding prevents progress; 0 when the direction does not
///         go downhill and -1 when the first step is not positive: then x is as it came.
template <qxReal T>
std::int32_t SearchLine(std::int32_t n, const T* direction, const Objective<T>& objective, T* start, CQXVectorN<T>& x,
                        T& f, CQXVectorN<T>& gradient, T& step);

}  // namespace qxSolvers
