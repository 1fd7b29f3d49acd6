#pragma once

#include <qx/solvers/internal/direct_task.h>

/// @file
/// The simplex method of Nelder and Mead. Internal, not part of the interface.

namespace qxSolvers {

/// CQXOptimization::SimplexDescent().
template <qxReal T>
T MinimizeBySimplex(const DirectTask<T>& task, CQXVectorN<T>& x, const Objective<T>& objective,
                    QX_OPTIMIZATION_INFO& info);

}  // namespace qxSolvers
