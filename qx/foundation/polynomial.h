#pragma once

#include <qx/foundation/api.h>

/// @file
/// Polynomials through given values, in Horner's form. Values may be numbers, fixed vectors or fixed matrices.

/// Value at @p t of the quadratic polynomial with the coefficients k = V y, the highest power first.
/// @param v the 3x3 matrix V by rows; CQXInterpolation::InverseVandermondeMatrix() makes it from three nodes
template <typename T, typename Y>
[[nodiscard]] constexpr Y qxQuadraticAt(const T* v, T t, const Y& y0, const Y& y1, const Y& y2) noexcept {
  const Y k0 = y0 * v[0] + y1 * v[1] + y2 * v[2];
  const Y k1 = y0 * v[3] + y1 * v[4] + y2 * v[5];
  const Y k2 = y0 * v[6] + y1 * v[7] + y2 * v[8];
  return (k0 * t + k1) * t + k2;
}

/// Value at @p t of the cubic polynomial with the coefficients k = V y, the highest power first.
/// @param v the 4x4 matrix V by rows; CQXInterpolation::InverseVandermondeMatrix() makes it from four nodes
template <typename T, typename Y>
[[nodiscard]] constexpr Y qxCubicAt(const T* v, T t, const Y& y0, const Y& y1, const Y& y2, const Y& y3) noexcept {
  const Y k0 = y0 * v[0] + y1 * v[1] + y2 * v[2] + y3 * v[3];
  const Y k1 = y0 * v[4] + y1 * v[5] + y2 * v[6] + y3 * v[7];
  const Y k2 = y0 * v[8] + y1 * v[9] + y2 * v[10] + y3 * v[11];
  const Y k3 = y0 * v[12] + y1 * v[13] + y2 * v[14] + y3 * v[15];
  return ((k0 * t + k1) * t + k2) * t + k3;
}
