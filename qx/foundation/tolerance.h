#pragma once

#include <qx/foundation/api.h>

#include <cmath>
#include <limits>

/// @file
/// Tolerances by element type, and the guarded square root behind every length and magnitude of the library.
/// Constants have no state; everything here may be called from any thread.

/// Default tolerance: 1e-9 for double, 1e-7 for float.
///
/// `==` and `!=` of vectors and matrices, normalisation, division guards and the guarded square root use it.
template <typename T>
inline constexpr T QX_TOLERANCE = T(1e-9);
template <>
inline constexpr float QX_TOLERANCE<float> = 1e-7f;

/// Square of the default tolerance, the first stage of the guarded root of a sum of squares: 1e-18 and 1e-14.
template <typename T>
inline constexpr T QX_TOLERANCE_SQUARED = T(1e-18);
template <>
inline constexpr float QX_TOLERANCE_SQUARED<float> = 1e-14f;

/// What the library hands to a predicate (IsAlmostZero, IsDiagonal, ...) when the caller gave no tolerance: 1e-6.
template <typename T>
inline constexpr T QX_PREDICATE_TOLERANCE = T(1e-6);

/// Tolerance of the few coarse tests on 2D vectors: 1e-3.
template <typename T>
inline constexpr T QX_COARSE_TOLERANCE = T(1e-3);

/// The value that stands for infinite: the largest float, for double too (3.4028234663852886e+38 exactly).
///
/// Guarded divisions and condition numbers of singular input return it.
template <typename T>
inline constexpr T QX_OVERFLOW_VALUE = T(std::numeric_limits<float>::max());

/// Square root with a dead zone: 0 when abs(x) is below QX_TOLERANCE, otherwise the square root of x.
///
/// The test is on x and not on its root: no length strictly between 0 and 3.16e-5 (float: 3.16e-4) is ever reported,
/// and a vector of true length 1e-5 has length 0. Scale tiny data before taking lengths.
/// Not a number, and a negative number outside the dead zone, give not a number.
template <typename T>
[[nodiscard]] inline T qxGuardedSqrt(T x) noexcept {
  if (std::abs(x) < QX_TOLERANCE<T>) return T(0);
  return std::sqrt(x);
}

/// The guarded root of a sum of squares: 0 when x is below @p squaredThreshold, otherwise qxGuardedSqrt(x).
///
/// The threshold is QX_TOLERANCE_SQUARED for vectors, and the square of its own precision for a complex number.
template <typename T>
[[nodiscard]] inline T qxGuardedSqrt(T x, T squaredThreshold) noexcept {
  if (x < squaredThreshold) return T(0);
  return qxGuardedSqrt(x);
}
