#include <qx/foundation/block.h>
#include <qx/foundation/internal/instantiate.h>
#include <qx/geometry/geometry.h>
#include <qx/geometry/internal/polygon.h>
#include <qx/geometry/internal/strict_hull.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <numbers>

namespace {

using qxGeometry::Cross;
using qxGeometry::GuardedLength;
using qxGeometry::Point;
using qxGeometry::Polygon;
using qxGeometry::roundingUnit;
using qxGeometry::Site;
using qxGeometry::Size;
using qxGeometry::SquareLength;
using qxGeometry::ToPoint;
using qxGeometry::Turn;

/// How much rounding of the coordinates can change the turn of two edges at @p b.
template <qxReal T>
double TurnRounding(Point a, Point b, Point c) {
  return roundingUnit<T> * std::max(Size(a), std::max(Size(b), Size(c))) * (Size(b - a) + Size(c - b));
}

/// The sense of a convex polygon: 1 counter-clockwise, -1 clockwise, 0 without an area.
///
/// Three of its vertices have it too, unless they are so nearly on a line that rounding can have turned them.
template <qxReal T>
double Sense(const Polygon<T>& polygon) {
  const std::int32_t third = polygon.Count() / 3;
  const Point a = polygon[0];
  const Point b = polygon[third];
  const Point c = polygon[2 * third];
  double area = Turn(a, b, c);
  if (!(std::abs(area) > TurnRounding<T>(a, b, c))) area = polygon.DoubleArea();
  return area > 0 ? 1 : area < 0 ? -1 : 0;
}

/// Where a convex polygon is cut open into triangles about vertex 0.
struct Fan {
  std::int32_t edge;  ///< begins at this vertex: the outer edge of the triangle, or an end of the fan
  bool isBetween;     ///< the point is between the rays through both ends of the edge
};

/// The triangle whose wedge a point is in, or the end of the fan that it is beyond.
template <qxReal T>
Fan FindInFan(const Polygon<T>& polygon, double sense, Point p) {
  const Point origin = polygon[0];
  const auto side = [&](std::int32_t i) { return sense * Cross(polygon[i] - origin, p - origin); };
  std::int32_t end = polygon.Count() - 1;
  if (side(1) < 0) return {0, false};
  if (side(end) > 0) return {end, false};
  std::int32_t edge = 1;
  while (end - edge > 1) {
    const std::int32_t middle = edge + (end - edge) / 2;
    (side(middle) >= 0 ? edge : end) = middle;
  }
  return {edge, true};
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

/// Square of the largest distance of two vertices of a strictly convex polygon, by rotating calipers.
template <qxReal T>
double SquareDiameterOfHull(std::size_t size, const Site<T>* hull) {
  const auto vertex = [&](std::size_t i) { return ToPoint(hull[i < size ? i : i - size]); };
  double square = 0;
  std::size_t opposite = 1;
  for (std::size_t i = 0; i < size; ++i) {
    const Point a = vertex(i);
    const Point b = vertex(i + 1);
    opposite = std::max(opposite, i + 1);
    while (opposite + 1 < i + size && Cross(b - a, vertex(opposite + 1) - vertex(opposite)) > 0) ++opposite;
    const Point far = vertex(opposite);
    square = std::max(square, std::max(SquareLength(far - a), SquareLength(far - b)));
  }
  return square;
}

template <qxReal T>
double SquareDiameterOfPairs(std::int32_t n, const CQXVector2<T>* vertices) {
  double square = 0;
  for (std::int32_t i = 1; i < n; ++i) {
    for (std::int32_t k = 0; k < i; ++k) {
      square = std::max(square, SquareLength(ToPoint(vertices[i]) - ToPoint(vertices[k])));
    }
  }
  return square;
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
    const double turn = Cross(vertex - previous, next - vertex);
    const double rounding = TurnRounding<T>(previous, vertex, next);
    turnsLeft = turnsLeft || turn > rounding;
    turnsRight = turnsRight || turn < -rounding;
    previous = vertex;
  }
  return turnsLeft && turnsRight ? 0 : 1;
}

template <qxReal T>
qxRelativeLocation CQXGeometry::IsPointInConvexPolygon(const CQXVector2<T>& point, std::int32_t n,
                                                       const CQXVector2<T>* vertices, qxNonDeduced<T> tolerance) {
  const Polygon<T> polygon = Polygon<T>::Open(n, vertices);
  const Point p = ToPoint(point);
  const double bound = static_cast<double>(tolerance);
  const double sense = polygon.Count() < 3 ? 0 : Sense(polygon);
  if (sense != 0) {
    const Fan fan = FindInFan(polygon, sense, p);
    const Point a = polygon[fan.edge];
    const Point b = polygon.Next(fan.edge);
    const double length = std::sqrt(SquareLength(b - a));
    const double beyond = -sense * Turn(a, b, p);
    // Rounding of its ends turns the line of a short edge far away from it.
    const double rounding =
        roundingUnit<T> * std::max(Size(p), std::max(Size(a), Size(b))) * (length + 2 * std::sqrt(SquareLength(p - a)));
    if (fan.isBetween && beyond < -rounding) return QX_LOCATION_INSIDE;
    if (beyond > bound * length + rounding) return QX_LOCATION_OUTSIDE;
    const qxGeometry::Winding winding = FindWinding(polygon, p);
    if (winding.isOnBorder || winding.number != 0) return QX_LOCATION_INSIDE;
  }
  return polygon.SquareDistanceToBorder(point) <= bound * bound ? QX_LOCATION_INSIDE : QX_LOCATION_OUTSIDE;
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
std::int32_t CQXGeometry::PolarRayPolygonIntersection(const CQXVector2<T>& centre, qxNonDeduced<T> angleInDegrees,
                                                      std::int32_t n, const CQXVector2<T>* vertices,
                                                      CQXVector2<T>& exit) {
  const Polygon<T> polygon(n, vertices);
  if (!(std::abs(polygon.DoubleArea()) > 0)) return 0;
  const Point origin = ToPoint(centre);
  const double angle = static_cast<double>(angleInDegrees) * std::numbers::pi / 180;
  const Point direction{std::cos(angle), std::sin(angle)};
  double farthest = -1;
  for (std::int32_t i = 0; i < n; ++i) {
    const Point a = polygon[i];
    const Point b = polygon.Next(i);
    const double sideA = Cross(direction, a - origin);
    const double sideB = Cross(direction, b - origin);
    const double approach = Cross(b - a, direction);
    if ((sideA < 0 && sideB < 0) || (sideA > 0 && sideB > 0) || approach == 0) continue;
    farthest = std::max(farthest, Cross(b - a, origin - a) / -approach);
  }
  if (!(farthest >= 0 && std::isfinite(farthest))) return 0;
  exit = qxGeometry::ToVector<T>({origin.x + farthest * direction.x, origin.y + farthest * direction.y});
  return 1;
}

template <qxReal T>
CQXVector2<T> CQXGeometry::CalculatePolygonCenter(std::int32_t n, const CQXVector2<T>* vertices) {
  if (n <= 0) return {};
  const double weight = 1.0 / n;
  Point centre{0, 0};
  for (std::int32_t i = 0; i < n; ++i) {
    const Point p = ToPoint(vertices[i]);
    centre.x += weight * p.x;
    centre.y += weight * p.y;
  }
  return qxGeometry::ToVector<T>(centre);
}

template <qxReal T>
T CQXGeometry::CalculatePolygonDiameter(std::int32_t n, const CQXVector2<T>* vertices) {
  if (n <= 1) return 0;
  const std::size_t given = static_cast<std::size_t>(n);
  const qxBlock<Site<T>> sorted = qxMakeBlock<Site<T>>(given);
  const qxBlock<Site<T>> hull = qxMakeBlock<Site<T>>(given + 1);
  std::size_t count = 0;
  if (sorted != nullptr && hull != nullptr) {
    for (std::size_t i = 0; i < given; ++i) {
      if (!std::isnan(vertices[i].X()) && !std::isnan(vertices[i].Y()))
        hull[count++] = {vertices[i].X(), vertices[i].Y()};
    }
    if (count == 0) return 0;
    if (SortUpwards(count, hull.get(), sorted.get())) {
      return GuardedLength<T>(SquareDiameterOfHull(FindStrictHull(count, sorted.get(), hull.get()), hull.get()));
    }
  }
  return GuardedLength<T>(SquareDiameterOfPairs(n, vertices));
}

template <qxReal T>
T CQXGeometry::CalculatePolygonInternalRadius(std::int32_t n, const CQXVector2<T>* vertices) {
  if (n < 3) return 0;
  const CQXVector2<T> centre = CalculatePolygonCenter(n, vertices);
  return GuardedLength<T>(Polygon<T>(n, vertices).SquareDistanceToBorder(centre));
}

#define QX_INSTANTIATE(T)                                                                                           \
  template std::int32_t CQXGeometry::TestConvexity(std::int32_t, const CQXVector2<T>*);                             \
  template qxRelativeLocation CQXGeometry::IsPointInConvexPolygon(const CQXVector2<T>&, std::int32_t,               \
                                                                  const CQXVector2<T>*, T);                         \
  template std::int32_t CQXGeometry::HorizIntersectionConvexPolygon(std::int32_t, const CQXVector2<T>*, T, T&, T&); \
  template std::int32_t CQXGeometry::VertIntersectionConvexPolygon(std::int32_t, const CQXVector2<T>*, T, T&, T&);  \
  template std::int32_t CQXGeometry::PolarRayPolygonIntersection(const CQXVector2<T>&, T, std::int32_t,             \
                                                                 const CQXVector2<T>*, CQXVector2<T>&);             \
  template CQXVector2<T> CQXGeometry::CalculatePolygonCenter(std::int32_t, const CQXVector2<T>*);                   \
  template T CQXGeometry::CalculatePolygonDiameter(std::int32_t, const CQXVector2<T>*);                             \
  template T CQXGeometry::CalculatePolygonInternalRadius(std::int32_t, const CQXVector2<T>*);
QX_FOR_FLOAT_AND_DOUBLE(QX_INSTANTIATE)
#undef QX_INSTANTIATE
