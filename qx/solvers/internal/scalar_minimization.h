#pragma once

#include <qx/foundation/scalar.h>

/// @file
/// Minimisation of functions of one variable behind CQXOptimization, which documents it, for a plain function and for
/// one with a user's argument. Internal, not part of the interface.

namespace qxSolvers {

template <qxReal T, typename F>
void FindTriple(T& a, T& b, T& c, T& fa, T& fb, T& fc, F f);
template <qxReal T, typename F>
[[nodiscard]] T MinimizeByGoldenSections(T a, T b, T c, T tol, T& xMin, F f);
template <qxReal T, typename F>
[[nodiscard]] T MinimizeByParabolas(T a, T b, T c, T tol, T& xMin, F f);
template <qxReal T, typename F>
[[nodiscard]] T MinimizeByDerivatives(T a, T b, T c, T tol, T& xMin, F f, F df);

}  // namespace qxSolvers
