#pragma once

#include <qx/foundation/rotations_order.h>
#include <qx/foundation/scalar.h>
#include <qx/matrices/matrix3.h>
#include <qx/vectors/vector3.h>

/// @file
/// The rotations that quaternions and transforms are set from. Internal, not part of the interface.

namespace qxMotions {

/// Rotation by an angle in degrees about an axis.
template <qxReal T>
[[nodiscard]] CQXMatrix3<T> AxisRotation(T angleInDegrees, const CQXVector3<T>& axis) noexcept {
  CQXMatrix3<T> r;
  r.SetRotationByAngleAxis(angleInDegrees, axis);
  return r;
}

/// Rotation by three angles in degrees; the unit matrix for an order outside the enumeration.
template <qxReal T>
[[nodiscard]] CQXMatrix3<T> EulerRotation(T axInDegrees, T ayInDegrees, T azInDegrees,
                                          qxRotationsOrder order) noexcept {
  CQXMatrix3<T> r;
  r.Unit();
  r.SetRotationByEulerAngles(axInDegrees, ayInDegrees, azInDegrees, order);
  return r;
}

}  // namespace qxMotions
