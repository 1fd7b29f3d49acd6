#pragma once

#include <qx/foundation/scalar.h>
#include <qx/solvers/internal/user_function.h>

#include <cstdint>

/// @file
/// The root finders behind CQXAlgebra, which documents them, for a plain function and for one with a user's argument.
/// Internal, not part of the interface.

namespace qxSolvers {

template <qxReal T, typename F>
[[nodiscard]] bool FindRootByNewton(T lo, T hi, T tol, T& root, F f, F df);
template <qxReal T, typename F>
[[nodiscard]] T FindRootBySafeNewton(T lo, T hi, T tol, F f, F df);
template <qxReal T, typename F>
[[nodiscard]] T FindRootByBrent(T lo, T hi, T tol, F f);
template <qxReal T, typename F>
[[nodiscard]] T FindRootBySecant(T lo, T hi, T tol, F f);
template <qxReal T, typename F>
[[nodiscard]] T FindRootByBisection(T lo, T hi, T tol, F f);
template <qxReal T, typename F>
void NarrowRootBrackets(const T& lo, const T& hi, std::int32_t n, std::int32_t& found, T* lowerEnds, T* upperEnds, F f);
template <qxReal T, typename F>
[[nodiscard]] bool SearchRootBrackets(T& x1, T& x2, F f);

}  // namespace qxSolvers
