#pragma once

#include <qx/geometry/internal/plane_predicates.h>

#include <cstddef>

/// @file
/// The exact hull of points that are numbers, without tolerances. Internal, not part of the interface.

namespace qxGeometry {

/// Point of a private copy: nothing is set before it is written.
template <qxReal T>
struct Site {
  T x;
  T y;
};

template <qxReal T>
[[nodiscard]] inline Point ToPoint(const Site<T>& site) {
  return {static_cast<double>(site.x), static_cast<double>(site.y)};
}

/// Sorts by y, then x, from @p sites to @p sorted: by buckets of equal height first, then each bucket.
/// @param count at least 1
/// @return false when there is no memory.
template <qxReal T>
[[nodiscard]] bool SortUpwards(std::size_t count, const Site<T>* sites, Site<T>* sorted);

/// Hull of points in ascending order of y, then x: up along the right side, down along the left one. Points on an edge
/// are no vertices.
/// @param count at least 1
/// @return the number of vertices, written counter-clockwise to @p hull, which has room for count + 1.
template <qxReal T>
std::size_t FindStrictHull(std::size_t count, const Site<T>* sites, Site<T>* hull);

}  // namespace qxGeometry
