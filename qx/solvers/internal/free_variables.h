#pragma once

#include <cstdint>

/// @file
/// The free variables of the bounded method. Internal, not part of the interface.

namespace qxSolvers {

/// The variables that are not at a bound, and how they changed; the arrays have room for all n variables.
struct FreeVariables {
  std::int32_t* index;     ///< the free ones in ascending order in front, the others from the back
  std::int32_t* entering;  ///< those that became free from the front, those that did no longer from the back
  std::int32_t freeCount = 0;
  std::int32_t enterCount = 0;
  std::int32_t leaveCount = 0;

  /// Takes in the bound states, above 0 for a variable at a bound.
  /// @param isFollowing whether the former list is there to be compared with
  /// @return whether anything has changed
  bool Update(std::int32_t n, const std::int32_t* boundState, bool isFollowing) noexcept;
};

}  // namespace qxSolvers
