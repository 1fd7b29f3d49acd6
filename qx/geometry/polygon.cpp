#include <qx/foundation/block.h>
#include <qx/foundation/internal/instantiate.h>
#include <qx/geometry/geometry.h>
#include <qx/geometry/internal/polygon.h>

#include <algorithm>
#include <numeric>

namespace {

using qxGeometry::Point;
using qxGeometry::Polygon;
using qxGeometry::ToPoint;
using qxGeometry::Winding;

/// True when edges i and k share nothing but, as neighbours, the vertex between them.
template <qxReal T>
bool MeetAsNeighbours(std::int32_t n, const CQXVector2<T>* vertices, std::int32_t i, std::int32_t k) {
  const auto next = [n](std::int32_t edge) { return edge + 1 < n ? edge + 1 : 0; };
  CQXVector2<T> from, to;
  const qxSegmentsIntersection kind =
      CQXGeometry::SegmentsIntersection(vertices[i], vertices[next(i)], vertices[k], vertices[next(k)], from, to);
  const bool areNeighbours = next(i) == k || next(k) == i;
  return kind == (areNeighbours ? QX_SEGMENTS_TOUCH : QX_SEGMENTS_APART);
}

}  // namespace

template <qxReal T>
T CQXGeometry::CalculatePolygonArea(std::int32_t n, const CQXVector2<T>* vertices) {
  return n < 3 ? T(0) : static_cast<T>(Polygon<T>(n, vertices).DoubleArea() / 2);
}

template <qxReal T>
T CQXGeometry::CalculatePolygonPerimeter(std::int32_t n, const CQXVector2<T>* vertices) {
  const Polygon<T> polygon(n, vertices);
  double length = 0;
  for (std::int32_t i = 0; i < n; ++i) length += std::sqrt(SquareLength(polygon.Next(i) - polygon[i]));
  return static_cast<T>(length);
}

template <qxReal T>
std::int32_t CQXGeometry::CalculatePolygonCentroid(std::int32_t n, const CQXVector2<T>* vertices,
                                                   CQXVector2<T>& centroid) {
  if (n < 3) return 0;
  const Polygon<T> polygon(n, vertices);
  const double area = polygon.DoubleArea();
  if (!(std::abs(area) > 0)) return 0;
  const Point origin = polygon[0];
  Point sum{0, 0};
  for (std::int32_t i = 1; i + 1 < n; ++i) {
    const Point a = polygon[i] - origin;
    const Point b = polygon[i + 1] - origin;
    const double part = Cross(a, b);
    sum.x += (a.x + b.x) * part;
    sum.y += (a.y + b.y) * part;
  }
  centroid = qxGeometry::ToVector<T>({origin.x + sum.x / (3 * area), origin.y + sum.y / (3 * area)});
  return 1;
}

template <qxReal T>
std::int32_t CQXGeometry::FindWindingNumber(const CQXVector2<T>& point, std::int32_t n, const CQXVector2<T>* vertices) {
  const Winding winding = FindWinding(Polygon<T>(n, vertices), ToPoint(point));
  return winding.isOnBorder ? 0 : winding.number;
}

template <qxReal T>
qxRelativeLocation CQXGeometry::IsPointInPolygon(const CQXVector2<T>& point, std::int32_t n,
                                                 const CQXVector2<T>* vertices, qxFillRule rule,
                                                 qxNonDeduced<T> tolerance) {
  const Polygon<T> polygon(n, vertices);
  const Point p = ToPoint(point);
  const double bound = static_cast<double>(tolerance);
  const Winding winding = FindWinding(polygon, p);
  const bool isInside = rule == QX_FILL_EVEN_ODD ? winding.crossings % 2 != 0 : winding.number != 0;
  if (winding.isOnBorder || isInside) return QX_LOCATION_INSIDE;
  return polygon.SquareDistanceToBorder(point) <= bound * bound ? QX_LOCATION_INSIDE : QX_LOCATION_OUTSIDE;
}

template <qxReal T>
std::int32_t CQXGeometry::IsPolygonSimple(std::int32_t n, const CQXVector2<T>* vertices) {
  const std::int32_t count = n > 0 ? Polygon<T>::Open(n, vertices).Count() : 0;
  if (count < 3) return 0;
  const Polygon<T> polygon(count, vertices);
  const auto low = [&](std::int32_t i) { return std::min(polygon[i].y, polygon.Next(i).y); };
  const auto high = [&](std::int32_t i) { return std::max(polygon[i].y, polygon.Next(i).y); };
  for (std::int32_t i = 0; i < count; ++i) {
    if (!std::isfinite(polygon[i].x) || !std::isfinite(polygon[i].y)) return 0;
  }
  // The edges upwards, so that each one meets those only that begin before it ends; as they are without memory.
  const qxBlock<std::int32_t> order = qxMakeBlock<std::int32_t>(static_cast<std::size_t>(count));
  if (order != nullptr) {
    std::iota(order.get(), order.get() + count, 0);
    std::sort(order.get(), order.get() + count, [&](std::int32_t i, std::int32_t k) { return low(i) < low(k); });
  }
  const auto edge = [&](std::int32_t i) { return order != nullptr ? order[static_cast<std::size_t>(i)] : i; };
  for (std::int32_t i = 0; i < count; ++i) {
    for (std::int32_t k = i + 1; k < count; ++k) {
      if (order != nullptr && low(edge(k)) > high(edge(i))) break;
      if (!MeetAsNeighbours(count, vertices, edge(i), edge(k))) return 0;
    }
  }
  return 1;
}

#define QX_INSTANTIATE(T)                                                                                             \
  template T CQXGeometry::CalculatePolygonArea(std::int32_t, const CQXVector2<T>*);                                   \
  template T CQXGeometry::CalculatePolygonPerimeter(std::int32_t, const CQXVector2<T>*);                              \
  template std::int32_t CQXGeometry::CalculatePolygonCentroid(std::int32_t, const CQXVector2<T>*, CQXVector2<T>&);    \
  template std::int32_t CQXGeometry::FindWindingNumber(const CQXVector2<T>&, std::int32_t, const CQXVector2<T>*);     \
  template qxRelativeLocation CQXGeometry::IsPointInPolygon(const CQXVector2<T>&, std::int32_t, const CQXVector2<T>*, \
                                                            qxFillRule, T);                                           \
  template std::int32_t CQXGeometry::IsPolygonSimple(std::int32_t, const CQXVector2<T>*);
QX_FOR_FLOAT_AND_DOUBLE(QX_INSTANTIATE)
#undef QX_INSTANTIATE
