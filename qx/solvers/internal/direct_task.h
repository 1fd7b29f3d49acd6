#pragma once

#include <qx/foundation/scalar.h>
#include <qx/solvers/internal/objective.h>
#include <qx/solvers/optimization.h>

#include <cstdint>

/// @file
/// What the methods without derivatives are given. Internal, not part of the interface.

namespace qxSolvers {

/// Size, tolerances and limit of a minimisation without derivatives.
template <qxReal T>
struct DirectTask {
  std::int32_t n;
  T step;  ///< how far the first trials go
  T xTol;
  T fTol;
  std::int32_t limit;

  /// Whether they are possible, and the start holds n elements.
  [[nodiscard]] bool IsValid(const CQXVectorN<T>& x) const {
    return n >= 1 && step > 0 && xTol > 0 && fTol > 0 && limit >= 1 && x.Dim() >= n && x.Data() != nullptr;
  }
};

}  // namespace qxSolvers
