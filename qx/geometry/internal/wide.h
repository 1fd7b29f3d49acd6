#pragma once

#include <qx/foundation/scalar.h>
#include <qx/vectors/vector2.h>
#include <qx/vectors/vector3.h>

#include <algorithm>

/// @file
/// Vectors in 64-bit floats and back, for algorithms that decide in them. Internal, not part of the interface.

namespace qxGeometry {

template <qxReal T>
[[nodiscard]] inline CQXVector2<double> Wide(const CQXVector2<T>& v) {
  return {static_cast<double>(v.X()), static_cast<double>(v.Y())};
}
template <qxReal T>
[[nodiscard]] inline CQXVector3<double> Wide(const CQXVector3<T>& v) {
  return {static_cast<double>(v.X()), static_cast<double>(v.Y()), static_cast<double>(v.Z())};
}

template <qxReal T>
[[nodiscard]] inline CQXVector2<T> Narrow(const CQXVector2<double>& v) {
  return {static_cast<T>(v.X()), static_cast<T>(v.Y())};
}
template <qxReal T>
[[nodiscard]] inline CQXVector3<T> Narrow(const CQXVector3<double>& v) {
  return {static_cast<T>(v.X()), static_cast<T>(v.Y()), static_cast<T>(v.Z())};
}

/// Where the foot of the perpendicular from @p p stands on the line a + t (b - a); 0 where a is b.
template <typename V>
[[nodiscard]] inline double FootParameter(const V& p, const V& a, const V& b) {
  const V direction = b - a;
  const double square = direction.SquareLength();
  return square > 0 ? (p - a).Dot(direction) / square : 0;
}

/// The point of the segment a b that is nearest to @p p.
template <typename V>
[[nodiscard]] inline V NearestOnSegment(const V& p, const V& a, const V& b) {
  return a + (b - a) * std::clamp(FootParameter(p, a, b), 0.0, 1.0);
}

template <typename V>
[[nodiscard]] inline double SquareDistanceToSegment(const V& p, const V& a, const V& b) {
  return (p - NearestOnSegment(p, a, b)).SquareLength();
}

}  // namespace qxGeometry
