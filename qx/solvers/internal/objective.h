#pragma once

#include <qx/foundation/scalar.h>
#include <qx/vectors/vector_n.h>

/// @file
/// The function that is minimised. Internal, not part of the interface.

namespace qxSolvers {

/// Function and gradient of n variables, with the user's argument.
template <qxReal T>
struct Objective {
  using Vector = CQXVectorN<T>;

  void* user;
  T (*value)(const Vector&, void*);
  void (*gradient)(const Vector&, Vector&, void*) = nullptr;

  [[nodiscard]] T Value(const Vector& x) const { return value(x, user); }
  void CalculateGradient(const Vector& x, Vector& g) const { gradient(x, g, user); }
};

}  // namespace qxSolvers
