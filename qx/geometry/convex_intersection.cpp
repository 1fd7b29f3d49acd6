#include <qx/foundation/block.h>
#include <qx/foundation/internal/instantiate.h>
#include <qx/geometry/geometry.h>
#include <qx/geometry/internal/polygon.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

namespace {

using qxGeometry::Between;
using qxGeometry::Cross;
using qxGeometry::Point;
using qxGeometry::Polygon;
using qxGeometry::roundingUnit;
using qxGeometry::Size;
using qxGeometry::SquareLength;
using qxGeometry::ToPoint;

/// Vertices that are cut by one half-plane after the other.
class ClippedPolygon {
 public:
  /// @param capacity most vertices that may arise
  explicit ClippedPolygon(std::size_t capacity)
      : m_capacity(capacity), m_vertices(qxMakeBlock<Point>(capacity)), m_spare(qxMakeBlock<Point>(capacity)) {}

  [[nodiscard]] bool HasMemory() const { return m_vertices != nullptr && m_spare != nullptr; }
  [[nodiscard]] std::size_t Count() const { return m_count; }
  [[nodiscard]] Point& operator[](std::size_t i) { return m_vertices[i]; }

  void Append(Point p) {
    if (m_count < m_capacity) m_vertices[m_count++] = p;
  }

  /// Keeps what has a distance of at least 0.
  /// @param cross (inside, outside, distance of inside, distance of outside) -> point of the border
  template <typename Distance, typename CrossBorder>
  void Cut(Distance distance, CrossBorder cross) {
    const std::size_t count = m_count;
    m_vertices.swap(m_spare);
    m_count = 0;
    for (std::size_t i = 0; i < count; ++i) {
      const Point a = m_spare[i];
      const Point b = m_spare[i + 1 < count ? i + 1 : 0];
      const double distanceA = distance(a);
      const double distanceB = distance(b);
      if (distanceA >= 0) Append(a);
      if (distanceA > 0 && distanceB < 0) Append(cross(a, b, distanceA, distanceB));
      if (distanceA < 0 && distanceB > 0) Append(cross(b, a, distanceB, distanceA));
    }
  }

  /// Writes the vertices, each of a run of equal ones once.
  template <qxReal T>
  std::int32_t Write(CQXVector2<T>* result) const {
    std::size_t written = 0;
    for (std::size_t i = 0; i < m_count; ++i) {
      const CQXVector2<T> v = qxGeometry::ToVector<T>(m_vertices[i]);
      const auto isSame = [&](const CQXVector2<T>& other) { return v.X() == other.X() && v.Y() == other.Y(); };
      if (written > 0 && (isSame(result[written - 1]) || (i + 1 == m_count && isSame(result[0])))) continue;
      result[written++] = v;
    }
    return static_cast<std::int32_t>(written);
  }

 private:
  std::size_t m_capacity;
  std::size_t m_count = 0;
  qxBlock<Point> m_vertices;
  qxBlock<Point> m_spare;
};

template <qxReal T>
void AppendCounterClockwise(const Polygon<T>& polygon, ClippedPolygon& clipped) {
  const bool isClockwise = polygon.DoubleArea() < 0;
  for (std::int32_t i = 0; i < polygon.Count(); ++i) {
    clipped.Append(polygon[isClockwise ? polygon.Count() - 1 - i : i]);
  }
}

/// 0 where a distance is within its rounding, so that vertices on the border never count as outside.
double Settled(double distance, double rounding) { return std::abs(distance) <= rounding ? 0 : distance; }

/// Cuts by the side of the axis-parallel line at @p level; a positive @p sign keeps what is above the level.
template <qxReal T>
void CutAtLevel(ClippedPolygon& clipped, double Point::*along, double Point::*across, double level, double sign) {
  clipped.Cut([=](Point p) { return Settled(sign * (p.*across - level), roundingUnit<T> * std::abs(level)); },
              [=](Point inside, Point outside, double distanceInside, double distanceOutside) {
                const double t = distanceInside / (distanceInside - distanceOutside);
                Point p;
                p.*along = inside.*along + t * (outside.*along - inside.*along);
                p.*across = level;
                return p;
              });
}

}  // namespace

template <qxReal T>
std::int32_t CQXGeometry::IntersectConvexPolygons(std::int32_t n, const CQXVector2<T>* a, std::int32_t m,
                                                  const CQXVector2<T>* b, std::int32_t& k, CQXVector2<T>* result) {
  k = 0;
  if (n <= 0 || m <= 0) return 0;
  Polygon<T> clipped(n, a);
  Polygon<T> clip(m, b);
  if (std::abs(clipped.DoubleArea()) > std::abs(clip.DoubleArea())) std::swap(clipped, clip);
  const double area = clip.DoubleArea();
  if (!(std::abs(area) > 0)) return 0;
  const double sense = area > 0 ? 1 : -1;
  ClippedPolygon polygon(static_cast<std::size_t>(n) + static_cast<std::size_t>(m));
  if (!polygon.HasMemory()) return 0;
  AppendCounterClockwise(clipped, polygon);
  for (std::int32_t i = 0; i < clip.Count(); ++i) {
    const Point origin = clip[i];
    const Point edge = clip.Next(i) - origin;
    if (!(SquareLength(edge) > 0)) continue;
    polygon.Cut(
        [&](Point p) {
          return Settled(sense * Cross(edge, p - origin),
                         roundingUnit<T> * Size(edge) * std::max(Size(origin), Size(p)));
        },
        [](Point inside, Point outside, double distanceInside, double distanceOutside) {
          return Between(inside, outside, distanceInside / (distanceInside - distanceOutside));
        });
  }
  k = polygon.Write(result);
  return k > 0 ? 1 : 0;
}

template <qxReal T>
std::int32_t CQXGeometry::ConvexPolygonRectangleIntersection(std::int32_t n, const CQXVector2<T>* vertices,
                                                             const CQXVector2<T>& corner, const CQXVector2<T>& opposite,
                                                             std::int32_t& k, CQXVector2<T>* result) {
  k = 0;
  if (n <= 0) return 0;
  const Point a = ToPoint(corner);
  const Point b = ToPoint(opposite);
  const Point low{std::min(a.x, b.x), std::min(a.y, b.y)};
  const Point high{std::max(a.x, b.x), std::max(a.y, b.y)};
  ClippedPolygon polygon(static_cast<std::size_t>(n) + 4);
  if (!polygon.HasMemory()) return 0;
  AppendCounterClockwise(Polygon<T>(n, vertices), polygon);
  CutAtLevel<T>(polygon, &Point::y, &Point::x, low.x, 1);
  CutAtLevel<T>(polygon, &Point::y, &Point::x, high.x, -1);
  CutAtLevel<T>(polygon, &Point::x, &Point::y, low.y, 1);
  CutAtLevel<T>(polygon, &Point::x, &Point::y, high.y, -1);
  for (std::size_t i = 0; i < polygon.Count(); ++i) {  // what was on the border within rounding
    polygon[i] = {std::clamp(polygon[i].x, low.x, high.x), std::clamp(polygon[i].y, low.y, high.y)};
  }
  k = polygon.Write(result);
  return k > 0 ? 1 : 0;
}

#define QX_INSTANTIATE(T)                                                                                          \
  template std::int32_t CQXGeometry::IntersectConvexPolygons(std::int32_t, const CQXVector2<T>*, std::int32_t,     \
                                                             const CQXVector2<T>*, std::int32_t&, CQXVector2<T>*); \
  template std::int32_t CQXGeometry::ConvexPolygonRectangleIntersection(                                           \
      std::int32_t, const CQXVector2<T>*, const CQXVector2<T>&, const CQXVector2<T>&, std::int32_t&, CQXVector2<T>*);
QX_FOR_FLOAT_AND_DOUBLE(QX_INSTANTIATE)
#undef QX_INSTANTIATE
