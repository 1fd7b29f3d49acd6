#pragma once

#include <qx/vectors/internal/wide.h>

#include <algorithm>

/// @file
/// The points of lines and segments that are nearest to a point, in 64-bit floats. Internal, not part of the interface.

namespace qxGeometry {

using qxVectors::Narrow;
using qxVectors::Wide;

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
