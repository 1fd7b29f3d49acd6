#pragma once

#include <qx/foundation/scalar.h>
#include <qx/solvers/internal/objective.h>
#include <qx/solvers/optimization.h>

#include <cstdint>

/// @file
/// The unbounded limited-memory method. Internal, not part of the interface.

namespace qxSolvers {

/// Sizes, tolerances and limit of a minimisation by a limited-memory method.
template <qxReal T>
struct LimitedMemoryTask {
  std::int32_t n;
  std::int32_t m;
  T xTol;
  T fTol;
  T gTol;
  std::int32_t maxIterations;

  /// Whether they are possible, and the start holds n elements.
  [[nodiscard]] bool IsValid(const CQXVectorN<T>& x) const {
    return !(n < 1 || m < 1 || n < m || gTol <= 0 || fTol <= 0 || xTol <= 0 || maxIterations < 1 || x.Dim() < n ||
             x.Data() == nullptr);
  }
};

/// CQXOptimization::QuasiNewtonLBFGS().
template <qxReal T>
T MinimizeByLBFGS(const LimitedMemoryTask<T>& task, CQXVectorN<T>& x, const Objective<T>& objective,
                  QX_OPTIMIZATION_INFO& info);

}  // namespace qxSolvers
