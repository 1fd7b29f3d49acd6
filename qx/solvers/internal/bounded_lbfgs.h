#pragma once

#include <qx/foundation/scalar.h>
#include <qx/solvers/internal/bounded_state.h>
#include <qx/solvers/internal/lbfgs.h>

/// @file
/// The bounded limited-memory method. Internal, not part of the interface.

namespace qxSolvers {

/// CQXOptimization::QuasiNewtonConstraintLBFGSB().
template <qxReal T>
T MinimizeByLBFGSB(const LimitedMemoryTask<T>& task, const Bounds<T>& bounds, CQXVectorN<T>& x,
                   const Objective<T>& objective, QX_OPTIMIZATION_INFO& info);

}  // namespace qxSolvers
