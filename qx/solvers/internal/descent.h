#pragma once

#include <qx/foundation/scalar.h>
#include <qx/solvers/internal/objective.h>
#include <qx/solvers/optimization.h>

#include <cstdint>

/// @file
/// The descent methods that keep no more than one direction or one matrix. Internal, not part of the interface.

namespace qxSolvers {

/// Size, tolerances and limit of a minimisation.
template <qxReal T>
struct DescentTask {
  std::int32_t n;
  T xTol;
  T fTol;
  T gTol;
  std::int32_t maxIterations;

  /// Whether they are possible, and the start holds n elements.
  [[nodiscard]] bool IsValid(const CQXVectorN<T>& x) const {
    return n >= 1 && xTol > 0 && fTol > 0 && gTol > 0 && maxIterations >= 1 && x.Dim() >= n && x.Data() != nullptr;
  }
};

/// CQXOptimization::FastestDescend().
template <qxReal T>
T MinimizeBySteepestDescent(const DescentTask<T>& task, CQXVectorN<T>& x, const Objective<T>& objective,
                            QX_OPTIMIZATION_INFO& info);
/// CQXOptimization::ConjugateGradient().
template <qxReal T>
T MinimizeByConjugateGradient(const DescentTask<T>& task, CQXVectorN<T>& x, const Objective<T>& objective,
                              QX_OPTIMIZATION_INFO& info);
/// CQXOptimization::QuasiNewtonBFGS().
template <qxReal T>
T MinimizeByBFGS(const DescentTask<T>& task, CQXVectorN<T>& x, const Objective<T>& objective,
                 QX_OPTIMIZATION_INFO& info);

}  // namespace qxSolvers
