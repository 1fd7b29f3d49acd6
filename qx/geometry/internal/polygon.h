#pragma once

#include <qx/geometry/internal/nearest_point.h>
#include <qx/geometry/internal/plane_predicates.h>

/// @file
/// A polygon as the algorithms see it, and where a point lies in it. Internal, not part of the interface.

namespace qxGeometry {

/// A polygon as a closed chain: the vertex after the last one is the first.
template <qxReal T>
class Polygon {
 public:
  Polygon(std::int32_t n, const CQXVector2<T>* vertices) : m_count(n), m_vertices(vertices) {}

  /// The polygon without the vertices at the end that repeat the first one and close the ring.
  [[nodiscard]] static Polygon Open(std::int32_t n, const CQXVector2<T>* vertices) {
    while (n > 1 && AreSame(ToPoint(vertices[n - 1]), ToPoint(vertices[0]))) --n;
    return Polygon(n, vertices);
  }

  [[nodiscard]] std::int32_t Count() const { return m_count; }
  [[nodiscard]] Point operator[](std::int32_t i) const { return ToPoint(m_vertices[i]); }
  [[nodiscard]] Point Next(std::int32_t i) const { return ToPoint(m_vertices[i + 1 < m_count ? i + 1 : 0]); }

  /// Twice the area; positive for counter-clockwise vertices.
  [[nodiscard]] double DoubleArea() const {
    double area = 0;
    for (std::int32_t i = 1; i + 1 < m_count; ++i) area += Cross((*this)[i] - (*this)[0], (*this)[i + 1] - (*this)[0]);
    return area;
  }

  [[nodiscard]] double SquareDistanceToBorder(const CQXVector2<T>& p) const {
    double square = std::numeric_limits<double>::infinity();
    for (std::int32_t i = 0; i < m_count; ++i) {
      const CQXVector2<T>& next = m_vertices[i + 1 < m_count ? i + 1 : 0];
      square = std::min(square, SquareDistanceToSegment(Wide(p), Wide(m_vertices[i]), Wide(next)));
    }
    return square;
  }

 private:
  std::int32_t m_count;
  const CQXVector2<T>* m_vertices;
};

/// How a polygon goes round a point.
struct Winding {
  std::int32_t number = 0;     ///< turns counter-clockwise; of no meaning on the border
  std::int32_t crossings = 0;  ///< edges that cross the ray from the point to the right
  bool isOnBorder = false;     ///< the point is on an edge, by a turn of exactly 0
};

/// Counts the edges that cross the ray to the right of @p p: one end at most as high as the point, one end above. No
/// quotient is formed, so that the answer is exact where the turns are.
template <qxReal T>
[[nodiscard]] Winding FindWinding(const Polygon<T>& polygon, Point p) {
  Winding winding;
  for (std::int32_t i = 0; i < polygon.Count(); ++i) {
    const Point a = polygon[i];
    const Point b = polygon.Next(i);
    if (std::min(a.y, b.y) > p.y || std::max(a.y, b.y) < p.y || std::max(a.x, b.x) < p.x) continue;
    const double turn = Turn(a, b, p);
    if (turn == 0 && std::min(a.x, b.x) <= p.x) winding.isOnBorder = true;
    if ((a.y <= p.y) == (b.y <= p.y)) continue;
    const bool isUpwards = a.y < b.y;
    if (isUpwards ? turn > 0 : turn < 0) {
      winding.number += isUpwards ? 1 : -1;
      ++winding.crossings;
    }
  }
  return winding;
}

}  // namespace qxGeometry
