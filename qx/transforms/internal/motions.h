#pragma once

#include <qx/foundation/rotations_order.h>
#include <qx/foundation/scalar.h>
#include <qx/matrices/matrix2.h>
#include <qx/matrices/matrix3.h>
#include <qx/matrices/matrix4.h>
#include <qx/vectors/vector2.h>
#include <qx/vectors/vector3.h>
#include <qx/vectors/vector_functions.h>

#include <cmath>
#include <numbers>

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

/// Rotation of the plane by an angle in degrees, counter-clockwise.
template <qxReal T>
[[nodiscard]] CQXMatrix2<T> PlaneRotation(T angleInDegrees) noexcept {
  const T angle = angleInDegrees * std::numbers::pi_v<T> / 180;
  const T c = std::cos(angle), s = std::sin(angle);
  return {c, -s, s, c};
}

// ---- Vectors of space and of the plane alike, with matrices of their dimension

template <qxReal T>
[[nodiscard]] CQXMatrix2<T> DiagonalMatrix(const CQXVector2<T>& s) {
  return {s.X(), 0, 0, s.Y()};
}
template <qxReal T>
[[nodiscard]] CQXMatrix3<T> DiagonalMatrix(const CQXVector3<T>& s) {
  return {s.X(), 0, 0, 0, s.Y(), 0, 0, 0, s.Z()};
}

template <qxReal T>
[[nodiscard]] CQXVector2<T> ProductByAxis(const CQXVector2<T>& a, const CQXVector2<T>& b) {
  return {a.X() * b.X(), a.Y() * b.Y()};
}
template <qxReal T>
[[nodiscard]] CQXVector3<T> ProductByAxis(const CQXVector3<T>& a, const CQXVector3<T>& b) {
  return {a.X() * b.X(), a.Y() * b.Y(), a.Z() * b.Z()};
}

/// The coordinate matrix (a | d).
template <qxReal T>
[[nodiscard]] CQXMatrix3<T> Affine(const CQXMatrix2<T>& a, const CQXVector2<T>& d) {
  return {a[0], a[1], d.X(), a[2], a[3], d.Y(), 0, 0, 1};
}
template <qxReal T>
[[nodiscard]] CQXMatrix4<T> Affine(const CQXMatrix3<T>& a, const CQXVector3<T>& d) {
  CQXMatrix4<T> m = qxMatrix3To4(a);
  m.SetColVector(3, qxVector3To4(d, 1));
  return m;
}

/// Last column of the scaling about a centre: exactly zero for a centre of almost zero.
template <typename V>
[[nodiscard]] V ScalingShift(const V& s, const V& c) {
  using T = typename V::Element;
  return c.IsAlmostZero(T(1e-6)) != 0 ? V() : ProductByAxis(V(T(1)) - s, c);
}

// ---- The pieces of the composite motions, named by the order of action

template <typename V>
[[nodiscard]] auto Scaling(const V& s, const V& cs) {
  return Affine(DiagonalMatrix(s), ScalingShift(s, cs));
}
template <typename M, typename V>
[[nodiscard]] auto Rotation(const M& r, const V& c) {
  return Affine(r, c - r * c);
}
template <typename M, typename V>
[[nodiscard]] auto RotationTranslation(const V& t, const M& r, const V& c) {
  return Affine(r, t - c);
}
template <typename M, typename V>
[[nodiscard]] auto TranslationRotation(const V& t, const M& r, const V& c) {
  return Affine(r, r * t - c);
}
template <typename V>
[[nodiscard]] auto ScalingTranslation(const V& t, const V& s, const V& cs) {
  return Affine(DiagonalMatrix(s), ScalingShift(s, cs) + t);
}
template <typename V>
[[nodiscard]] auto TranslationScaling(const V& t, const V& s, const V& cs) {
  return Affine(DiagonalMatrix(s), ScalingShift(s, cs) + ProductByAxis(s, t));
}

}  // namespace qxMotions
