#pragma once

#include <qx/foundation/scalar.h>
#include <qx/vectors/vector2.h>

#include <cmath>

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

[[nodiscard]] inline Point operator-(Point a, Point b) { return {a.x - b.x, a.y - b.y}; }
[[nodiscard]] inline double Cross(Point a, Point b) { return a.x * b.y - a.y * b.x; }
[[nodiscard]] inline double Dot(Point a, Point b) { return a.x * b.x + a.y * b.y; }
[[nodiscard]] inline double SquareLength(Point a) { return Dot(a, a); }

/// Twice the area of the triangle, positive when it is counter-clockwise.
[[nodiscard]] inline double Turn(Point a, Point b, Point c) { return Cross(b - a, c - b); }

/// Closeness of points: at most this far apart in x and in y they coincide.
inline constexpr double closeness = 1e-6;

[[nodiscard]] inline bool DoCoincide(Point a, Point b) {
  return std::abs(a.x - b.x) <= closeness && std::abs(a.y - b.y) <= closeness;
}

}  // namespace qxGeometry
