#pragma once

#include <qx/solvers/internal/direct_task.h>

/// @file
/// The method of conjugate directions of Powell. Internal, not part of the interface.

namespace qxSolvers {

/// CQXOptimization::PowellConjugateDirections().
template <qxReal T>
T MinimizeByConjugateDirections(const DirectTask<T>& task, CQXVectorN<T>& x, const Objective<T>& objective,
                                QX_OPTIMIZATION_INFO& info);

}  // namespace qxSolvers
