#pragma once

#include <qx/foundation/scalar.h>

#include <cmath>
#include <numbers>

/// Subtracts whole periods so that the angle falls into [-@p period / 2, @p period / 2).
///
/// The angle and the period share one unit: pass 360 for degrees, 2 pi for radians. The number of periods is
/// floor((period / 2 + angle) / period), where a negative quotient within @p tolerance of the whole number above it
/// counts as that number. Infinities and not a number give not a number.
template <qxReal T>
[[nodiscard]] inline T qxWrapAngle(T angle, T period, T tolerance) noexcept {
  const T quotient = (period / 2 + angle) / period;
  T periods = std::trunc(quotient);
  if (quotient < 0 && !(std::abs(quotient - periods) < tolerance)) periods -= 1;
  return angle - period * periods;
}

/// An angle in degrees as radians in [-pi, pi): the form in which the rotations by Euler angles take their angles.
/// @param tolerance as in qxWrapAngle(), of a number of turns
template <qxReal T>
[[nodiscard]] inline T qxWrappedRadians(T angleInDegrees, T tolerance = T(1e-9)) noexcept {
  constexpr T pi = std::numbers::pi_v<T>;
  return qxWrapAngle(angleInDegrees * pi / 180, 2 * pi, tolerance);
}
