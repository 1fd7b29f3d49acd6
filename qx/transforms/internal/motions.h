#pragma once

#include <qx/foundation/rotations_order.h>
#include <qx/foundation/scalar.h>
#include <qx/matrices/matrix3.h>
#include <qx/matrices/matrix4.h>
#include <qx/vectors/vector3.h>
#include <qx/vectors/vector_functions.h>

/// @file
/// The motions that quaternions and transforms are set from. Internal, not part of the interface.

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

template <qxReal T>
[[nodiscard]] CQXMatrix3<T> UnitMatrix() {
  CQXMatrix3<T> unit;
  unit.Unit();
  return unit;
}

template <qxReal T>
[[nodiscard]] CQXMatrix3<T> DiagonalMatrix(const CQXVector3<T>& s) {
  return {s.X(), 0, 0, 0, s.Y(), 0, 0, 0, s.Z()};
}

/// Last column of the scaling about a centre: exactly zero for a centre of almost zero.
template <qxReal T>
[[nodiscard]] CQXVector3<T> ScalingShift(const CQXVector3<T>& s, const CQXVector3<T>& c) {
  if (c.IsAlmostZero(T(1e-6)) != 0) return {};
  return {(1 - s.X()) * c.X(), (1 - s.Y()) * c.Y(), (1 - s.Z()) * c.Z()};
}

/// The 4x4 matrix (a | d).
template <qxReal T>
[[nodiscard]] CQXMatrix4<T> Affine(const CQXMatrix3<T>& a, const CQXVector3<T>& d) {
  CQXMatrix4<T> m = qxMatrix3To4(a);
  m.SetColVector(3, qxVector3To4(d, 1));
  return m;
}

// ---- The pieces of the composite motions, named by the order of action

template <qxReal T>
[[nodiscard]] CQXMatrix4<T> Scaling(const CQXVector3<T>& s, const CQXVector3<T>& cs) {
  return Affine(DiagonalMatrix(s), ScalingShift(s, cs));
}
template <qxReal T>
[[nodiscard]] CQXMatrix4<T> Rotation(const CQXMatrix3<T>& r, const CQXVector3<T>& c) {
  return Affine(r, c - r * c);
}
template <qxReal T>
[[nodiscard]] CQXMatrix4<T> RotationTranslation(const CQXVector3<T>& t, const CQXMatrix3<T>& r,
                                                const CQXVector3<T>& c) {
  return Affine(r, t - c);
}
template <qxReal T>
[[nodiscard]] CQXMatrix4<T> TranslationRotation(const CQXVector3<T>& t, const CQXMatrix3<T>& r,
                                                const CQXVector3<T>& c) {
  return Affine(r, r * t - c);
}
template <qxReal T>
[[nodiscard]] CQXMatrix4<T> ScalingTranslation(const CQXVector3<T>& t, const CQXVector3<T>& s,
                                               const CQXVector3<T>& cs) {
  return Affine(DiagonalMatrix(s), ScalingShift(s, cs) + t);
}
template <qxReal T>
[[nodiscard]] CQXMatrix4<T> TranslationScaling(const CQXVector3<T>& t, const CQXVector3<T>& s,
                                               const CQXVector3<T>& cs) {
  return Affine(DiagonalMatrix(s), ScalingShift(s, cs) + CQXVector3<T>(s.X() * t.X(), s.Y() * t.Y(), s.Z() * t.Z()));
}

}  // namespace qxMotions
