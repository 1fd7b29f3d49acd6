#pragma once

#include <qx/foundation/scalar.h>
#include <qx/foundation/tolerance.h>
#include <qx/vectors/vector2.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

/// @file
/// Predicates of the plane in 64-bit floats, for points of either type. Internal, not part of the interface.

namespace qxGeometry {

/// Point or difference of points in 64-bit floats.
struct Point {
  double x;
  double y;
};

template <qxReal T>
[[nodiscard]] inline Point ToPoint(const CQXVector2<T>& v) {
  return {static_cast<double>(v.X()), static_cast<double>(v.Y())};
}
template <qxReal T>
[[nodiscard]] inline CQXVector2<T> ToVector(Point p) {
  return {static_cast<T>(p.x), static_cast<T>(p.y)};
}

[[nodiscard]] inline Point operator-(Point a, Point b) { return {a.x - b.x, a.y - b.y}; }
[[nodiscard]] inline double Cross(Point a, Point b) { return a.x * b.y - a.y * b.x; }
[[nodiscard]] inline double Dot(Point a, Point b) { return a.x * b.x + a.y * b.y; }
[[nodiscard]] inline double SquareLength(Point a) { return Dot(a, a); }
[[nodiscard]] inline bool AreSame(Point a, Point b) { return a.x == b.x && a.y == b.y; }

/// The point a + t (b - a).
[[nodiscard]] inline Point Between(Point a, Point b, double t) {
  return {a.x + t * (b.x - a.x), a.y + t * (b.y - a.y)};
}

/// Twice the area of the triangle, positive when it is counter-clockwise.
[[nodiscard]] inline double Turn(Point a, Point b, Point c) { return Cross(b - a, c - b); }

/// Largest of the magnitudes of the coordinates.
[[nodiscard]] inline double Size(Point p) { return std::max(std::abs(p.x), std::abs(p.y)); }

/// Closeness of points: at most this far apart in x and in y they coincide.
inline constexpr double closeness = 1e-6;

[[nodiscard]] inline bool DoCoincide(Point a, Point b) {
  return std::abs(a.x - b.x) <= closeness && std::abs(a.y - b.y) <= closeness;
}

/// What rounding to the type leaves uncertain in a coordinate of magnitude 1.
template <qxReal T>
inline constexpr double roundingUnit = 4 * static_cast<double>(std::numeric_limits<T>::epsilon());

/// Length with the guard of type T.
template <qxReal T>
[[nodiscard]] inline T GuardedLength(double square) {
  return static_cast<T>(qxGuardedSqrt(square, static_cast<double>(QX_TOLERANCE<T>)));
}

}  // namespace qxGeometry
