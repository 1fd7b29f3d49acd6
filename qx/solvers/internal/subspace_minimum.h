#pragma once

#include <qx/solvers/internal/bounded_state.h>

/// @file
/// The minimum of the bounded method's model over the free variables. Internal, not part of the interface.

namespace qxSolvers {

/// Moves the target from the Cauchy point to the minimum of the model over the variables that are free there, by the
/// direct primal method; the step is cut back to the bounds.
/// @return false when the matrix of the subspace could not be factored.
template <qxReal T>
[[nodiscard]] bool MinimizeInSubspace(BoundedState<T>& state);

}  // namespace qxSolvers
