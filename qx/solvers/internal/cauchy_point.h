#pragma once

#include <qx/solvers/internal/bounded_state.h>

/// @file
/// The generalized Cauchy point of the bounded method. Internal, not part of the interface.

namespace qxSolvers {

/// Finds the first local minimum of the model along the projected gradient: R. H. Byrd et al. (1995), algorithm CP.
/// Sets the target, the states of the variables and W'(target - x).
/// @return false when the model could not be factored.
template <qxReal T>
[[nodiscard]] bool FindCauchyPoint(BoundedState<T>& state);

}  // namespace qxSolvers
