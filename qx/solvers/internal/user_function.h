#pragma once

#include <qx/foundation/scalar.h>

/// @file
/// A function of one variable with the user's argument bound to it. Internal, not part of the interface.

namespace qxSolvers {

template <qxReal T>
struct UserFunction {
  T (*function)(T, void*);
  void* user;

  T operator()(T x) const { return function(x, user); }
};

}  // namespace qxSolvers
