#include <qx/foundation/block.h>
#include <qx/geometry/geometry.h>
#include <qx/geometry/internal/plane_predicates.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <numbers>

namespace {

using qxGeometry::Cross;
using qxGeometry::Dot;
using qxGeometry::Point;
using qxGeometry::SquareLength;
using qxGeometry::ToPoint;
using qxGeometry::Turn;

template <qxReal T>
CQXVector2<T> ToVector(Point p) {
  return {static_cast<T>(p.x), static_cast<T>(p.y)};
}

/// Largest of the magnitudes of the coordinates.
double Size(Point p) { return std::max(std::abs(p.x), std::abs(p.y)); }

/// What rounding to the type leaves uncertain in a coordinate of the given magnitude.
template <qxReal T>
constexpr double roundingUnit = 4 * static_cast<double>(std::numeric_limits<T>::epsilon());

/// A polygon as a closed chain: the vertex after the last one is the first.
template <qxReal T>
class Polygon {
 public:
  Polygon(std::int32_t n, const CQXVector2<T>* vertices) : m_count(n), m_vertices(vertices) {}

  [[nodiscard]] std::int32_t Count() const { return m_count; }
  [[nodiscard]] Point operator[](std::int32_t i) const { return ToPoint(m_vertices[i]); }
  [[nodiscard]] Point Next(std::int32_t i) const { return ToPoint(m_vertices[i + 1 < m_count ? i + 1 : 0]); }

  /// Twice the area; positive for counter-clockwise vertices.
  [[nodiscard]] double DoubleArea() const {
    double area = 0;
    for (std::int32_t i = 1; i + 1 < m_count; ++i) area += Cross((*this)[i] - (*this)[0], (*this)[i + 1] - (*this)[0]);
    return area;
  }

 private:
  std::int32_t m_count;
  const CQXVector2<T>* m_vertices;
};

double SquareDistanceToSegment(Point p, Point a, Point b) {
  const Point edge = b - a;
  const double square = SquareLength(edge);
  double t = square > 0 ? Dot(p - a, edge) / square : 0;
  t = std::clamp(t, 0.0, 1.0);
  return SquareLength(p - Point{a.x + t * edge.x, a.y + t * edge.y});
}

/// Length with the guard of type T.
template <qxReal T>
T GuardedLength(double square) {
  return static_cast<T>(qxGuardedSqrt(square, static_cast<double>(QX_TOLERANCE<T>)));
}

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
      const CQXVector2<T> v = ToVector<T>(m_vertices[i]);
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

/// Cuts a polygon by the line on which the coordinate @p across is @p level; the ends are coordinates @p along.
template <qxReal T>
std::int32_t CutByLine(const Polygon<T>& polygon, double Point::*along, double Point::*across, T level, T& end1,
                       T& end2) {
  constexpr double infinity = std::numeric_limits<double>::infinity();
  const double at = static_cast<double>(level);
  double smallest = infinity;
  double largest = -infinity;
  const auto include = [&](double x) {
    smallest = std::min(smallest, x);
    largest = std::max(largest, x);
  };
  for (std::int32_t i = 0; i < polygon.Count(); ++i) {
    const Point a = polygon[i];
    const Point b = polygon.Next(i);
    if (a.*across == at) include(a.*along);
    if ((a.*across < at && at < b.*across) || (b.*across < at && at < a.*across)) {
      const double t = (at - a.*across) / (b.*across - a.*across);
      include(
          std::clamp(a.*along + t * (b.*along - a.*along), std::min(a.*along, b.*along), std::max(a.*along, b.*along)));
    }
  }
  if (!(smallest <= largest)) return 0;
  end1 = static_cast<T>(smallest);
  end2 = static_cast<T>(largest);
  return 1;
}

}  // namespace

template <qxReal T>
std::int32_t CQXGeometry::TestConvexity(std::int32_t n, const CQXVector2<T>* vertices) {
  if (n <= 3) return 1;
  const Polygon<T> polygon(n, vertices);
  bool turnsLeft = false;
  bool turnsRight = false;
  Point previous = polygon[n - 1];
  for (std::int32_t i = 0; i < n; ++i) {
    const Point vertex = polygon[i];
    const Point next = polygon.Next(i);
    const Point edge1 = vertex - previous;
    const Point edge2 = next - vertex;
    const double turn = Cross(edge1, edge2);
    const double size = std::max(Size(previous), std::max(Size(vertex), Size(next)));
    const double rounding = roundingUnit<T> * size * (Size(edge1) + Size(edge2));
    turnsLeft = turnsLeft || turn > rounding;
    turnsRight = turnsRight || turn < -rounding;
    previous = vertex;
  }
  return turnsLeft && turnsRight ? 0 : 1;
}

template <qxReal T>
qxRelativeLocation CQXGeometry::IsPointInConvexPolygon(const CQXVector2<T>& point, std::int32_t n,
                                                       const CQXVector2<T>* vertices, qxNonDeduced<T> tolerance) {
  const Polygon<T> polygon(n, vertices);
  const Point p = ToPoint(point);
  const double bound = static_cast<double>(tolerance);
  const auto isNearAnEdge = [&] {
    for (std::int32_t i = 0; i < n; ++i) {
      if (SquareDistanceToSegment(p, polygon[i], polygon.Next(i)) <= bound * bound) return QX_LOCATION_INSIDE;
    }
    return QX_LOCATION_OUTSIDE;
  };
  if (n < 3) return isNearAnEdge();

  // The sense of the vertices, from one triangle unless that is too flat to tell.
  const Point origin = polygon[0];
  const Point toFirst = polygon[1] - origin;
  const Point toMiddle = polygon[n / 2] - origin;
  double sense = Cross(toFirst, toMiddle);
  if (std::abs(sense) <= 1e-6 * std::sqrt(SquareLength(toFirst) * SquareLength(toMiddle))) sense = polygon.DoubleArea();
  if (!(std::abs(sense) > 0)) return isNearAnEdge();
  sense = sense > 0 ? 1 : -1;

  // The fan about vertex 0: find the edge of the wedge that the point is in, or the end of the fan that it is beyond.
  const auto side = [&](std::int32_t i) { return sense * Cross(polygon[i] - origin, p - origin); };
  std::int32_t edge = side(1) < 0 ? 0 : n - 1;
  if (!(side(1) < 0 || side(n - 1) > 0)) {
    edge = 1;
    for (std::int32_t end = n - 1; end - edge > 1;) {
      const std::int32_t middle = edge + (end - edge) / 2;
      (side(middle) >= 0 ? edge : end) = middle;
    }
  }
  const double beyond = -sense * Turn(polygon[edge], polygon.Next(edge), p);
  if (beyond <= 0) return QX_LOCATION_INSIDE;
  // The polygon is on the other side of the line: only within the tolerance of it an edge can be near.
  if (beyond > bound * std::sqrt(SquareLength(polygon.Next(edge) - polygon[edge]))) return QX_LOCATION_OUTSIDE;
  return isNearAnEdge();
}

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
          const double t = distanceInside / (distanceInside - distanceOutside);
          return Point{inside.x + t * (outside.x - inside.x), inside.y + t * (outside.y - inside.y)};
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

template <qxReal T>
std::int32_t CQXGeometry::HorizIntersectionConvexPolygon(std::int32_t n, const CQXVector2<T>* vertices,
                                                         qxNonDeduced<T> y, T& x1, T& x2) {
  return CutByLine(Polygon<T>(n, vertices), &Point::x, &Point::y, y, x1, x2);
}

template <qxReal T>
std::int32_t CQXGeometry::VertIntersectionConvexPolygon(std::int32_t n, const CQXVector2<T>* vertices,
                                                        qxNonDeduced<T> x, T& y1, T& y2) {
  return CutByLine(Polygon<T>(n, vertices), &Point::y, &Point::x, x, y1, y2);
}

template <qxReal T>
std::int32_t CQXGeometry::PolarRayPolygonIntersection(const CQXVector2<T>& center, qxNonDeduced<T> angleInDegrees,
                                                      std::int32_t n, const CQXVector2<T>* vertices,
                                                      CQXVector2<T>& exit) {
  const Polygon<T> polygon(n, vertices);
  const double area = polygon.DoubleArea();
  if (!(std::abs(area) > 0)) return 0;
  const double sense = area > 0 ? 1 : -1;
  const Point origin = ToPoint(center);
  const double angle = static_cast<double>(angleInDegrees) * std::numbers::pi / 180;
  const Point direction{std::cos(angle), std::sin(angle)};
  double enter = 0;
  double leave = std::numeric_limits<double>::infinity();
  for (std::int32_t i = 0; i < n; ++i) {
    const Point edge = polygon.Next(i) - polygon[i];
    const double depth = sense * Cross(edge, origin - polygon[i]);
    const double approach = sense * Cross(edge, direction);
    if (approach < 0) {
      leave = std::min(leave, depth / -approach);
    } else if (approach > 0) {
      enter = std::max(enter, -depth / approach);
    } else if (depth < 0) {
      return 0;
    }
  }
  if (!(enter <= leave && std::isfinite(leave))) return 0;
  exit = ToVector<T>({origin.x + leave * direction.x, origin.y + leave * direction.y});
  return 1;
}

template <qxReal T>
CQXVector2<T> CQXGeometry::CalculatePolygonCenter(std::int32_t n, const CQXVector2<T>* vertices) {
  if (n <= 0) return {};
  const double weight = 1.0 / n;
  Point center{0, 0};
  for (std::int32_t i = 0; i < n; ++i) {
    const Point p = ToPoint(vertices[i]);
    center.x += weight * p.x;
    center.y += weight * p.y;
  }
  return ToVector<T>(center);
}

template <qxReal T>
T CQXGeometry::CalculatePolygonDiameter(std::int32_t n, const CQXVector2<T>* vertices) {
  if (n <= 1) return 0;
  const Polygon<T> polygon(n, vertices);
  const double sense = polygon.DoubleArea() < 0 ? -1 : 1;
  const auto vertex = [&](std::int64_t i) { return polygon[static_cast<std::int32_t>(i < n ? i : i - n)]; };
  double square = 0;
  std::int64_t opposite = 1;
  for (std::int64_t i = 0; i < n; ++i) {
    const Point a = vertex(i);
    const Point b = vertex(i + 1);
    const Point edge = b - a;
    // Vertices on one line with the edge, within rounding, are passed as well.
    const auto goesOn = [&](Point p, Point next) {
      const double rise = sense * Cross(edge, next - p);
      const double rounding = roundingUnit<T> * std::max(Size(p), Size(next)) * (Size(edge) + Size(next - p));
      return rise > rounding || (rise >= -rounding && Dot(edge, next - p) > 0);
    };
    opposite = std::max(opposite, i + 1);
    while (opposite + 1 < i + n && goesOn(vertex(opposite), vertex(opposite + 1))) ++opposite;
    const Point far = vertex(opposite);
    square = std::max(square, std::max(SquareLength(far - a), SquareLength(far - b)));
  }
  return GuardedLength<T>(square);
}

template <qxReal T>
T CQXGeometry::CalculatePolygonInternalRadius(std::int32_t n, const CQXVector2<T>* vertices) {
  if (n < 3) return 0;
  const Polygon<T> polygon(n, vertices);
  const Point center = ToPoint(CalculatePolygonCenter(n, vertices));
  double square = std::numeric_limits<double>::infinity();
  for (std::int32_t i = 0; i < n; ++i) {
    square = std::min(square, SquareDistanceToSegment(center, polygon[i], polygon.Next(i)));
  }
  return GuardedLength<T>(square);
}

#define INSTANTIATE(T)                                                                                                \
  template std::int32_t CQXGeometry::TestConvexity(std::int32_t, const CQXVector2<T>*);                               \
  template qxRelativeLocation CQXGeometry::IsPointInConvexPolygon(const CQXVector2<T>&, std::int32_t,                 \
                                                                  const CQXVector2<T>*, T);                           \
  template std::int32_t CQXGeometry::IntersectConvexPolygons(std::int32_t, const CQXVector2<T>*, std::int32_t,        \
                                                             const CQXVector2<T>*, std::int32_t&, CQXVector2<T>*);    \
  template std::int32_t CQXGeometry::ConvexPolygonRectangleIntersection(                                              \
      std::int32_t, const CQXVector2<T>*, const CQXVector2<T>&, const CQXVector2<T>&, std::int32_t&, CQXVector2<T>*); \
  template std::int32_t CQXGeometry::HorizIntersectionConvexPolygon(std::int32_t, const CQXVector2<T>*, T, T&, T&);   \
  template std::int32_t CQXGeometry::VertIntersectionConvexPolygon(std::int32_t, const CQXVector2<T>*, T, T&, T&);    \
  template std::int32_t CQXGeometry::PolarRayPolygonIntersection(const CQXVector2<T>&, T, std::int32_t,               \
                                                                 const CQXVector2<T>*, CQXVector2<T>&);               \
  template CQXVector2<T> CQXGeometry::CalculatePolygonCenter(std::int32_t, const CQXVector2<T>*);                     \
  template T CQXGeometry::CalculatePolygonDiameter(std::int32_t, const CQXVector2<T>*);                               \
  template T CQXGeometry::CalculatePolygonInternalRadius(std::int32_t, const CQXVector2<T>*)
INSTANTIATE(float);
INSTANTIATE(double);
#undef INSTANTIATE
