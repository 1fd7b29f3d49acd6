#include <qx/foundation/internal/instantiate.h>
#include <qx/geometry/geometry.h>
#include <qx/geometry/internal/nearest_point.h>
#include <qx/geometry/internal/plane_predicates.h>

#include <algorithm>
#include <limits>

namespace {

using qxGeometry::FootParameter;
using qxGeometry::GuardedLength;
using qxGeometry::Narrow;
using qxGeometry::NearestOnSegment;
using qxGeometry::Point;
using qxGeometry::ToPoint;
using qxGeometry::Wide;

template <typename V>
V OnLine(const V& p, const V& a, const V& b) {
  return a + (b - a) * FootParameter(p, a, b);
}

/// The points of the lines a b and c d that are nearest to each other, as parameters s and t.
/// @return false when the lines are parallel.
template <typename V>
bool FindNearest(const V& a, const V& b, const V& c, const V& d, double& s, double& t) {
  const V u = b - a;
  const V v = d - c;
  const V w = c - a;
  const double uu = u.Dot(u), uv = u.Dot(v), vv = v.Dot(v);
  const double determinant = uu * vv - uv * uv;
  // The square of the sine of the angle between them is within rounding of 0.
  if (!(determinant > 16 * std::numeric_limits<double>::epsilon() * uu * vv)) return false;
  s = (w.Dot(u) * vv - w.Dot(v) * uv) / determinant;
  t = (w.Dot(u) * uv - w.Dot(v) * uu) / determinant;
  return true;
}

bool IsBefore(Point a, Point b) { return a.x < b.x || (a.x == b.x && a.y < b.y); }

bool IsInBox(Point p, Point a, Point b) {
  return p.x >= std::min(a.x, b.x) && p.x <= std::max(a.x, b.x) && p.y >= std::min(a.y, b.y) &&
         p.y <= std::max(a.y, b.y);
}

/// The common part of segments on one line, in the direction of the first one.
qxSegmentsIntersection Overlap(Point a, Point b, Point c, Point d, Point& from, Point& to) {
  const bool isBackwards = IsBefore(b, a);
  if (isBackwards) std::swap(a, b);
  if (IsBefore(d, c)) std::swap(c, d);
  from = IsBefore(a, c) ? c : a;
  to = IsBefore(b, d) ? b : d;
  if (IsBefore(to, from)) return QX_SEGMENTS_APART;
  if (isBackwards) std::swap(from, to);
  return AreSame(from, to) ? QX_SEGMENTS_TOUCH : QX_SEGMENTS_OVERLAP;
}

qxSegmentsIntersection Intersect(Point a, Point b, Point c, Point d, Point& from, Point& to) {
  const double sideC = Cross(b - a, c - a), sideD = Cross(b - a, d - a);
  const double sideA = Cross(d - c, a - c), sideB = Cross(d - c, b - c);
  if (sideA == 0 && sideB == 0 && sideC == 0 && sideD == 0) return Overlap(a, b, c, d, from, to);
  if (((sideC < 0 && sideD > 0) || (sideC > 0 && sideD < 0)) &&
      ((sideA < 0 && sideB > 0) || (sideA > 0 && sideB < 0))) {
    from = to = Between(c, d, sideC / (sideC - sideD));
    return QX_SEGMENTS_CROSS;
  }
  const struct {
    double side;
    Point end, a, b;
  } ends[] = {{sideA, a, c, d}, {sideB, b, c, d}, {sideC, c, a, b}, {sideD, d, a, b}};
  for (const auto& e : ends) {
    if (e.side != 0 || !IsInBox(e.end, e.a, e.b)) continue;
    from = to = e.end;
    return QX_SEGMENTS_TOUCH;
  }
  return QX_SEGMENTS_APART;
}

}  // namespace

template <qxGeometricVector V>
V CQXGeometry::ProjectOnLine(const V& p, const V& a, const V& b) {
  return Narrow<typename V::Element>(OnLine(Wide(p), Wide(a), Wide(b)));
}

template <qxGeometricVector V>
V CQXGeometry::ClosestPointOnSegment(const V& p, const V& a, const V& b) {
  return Narrow<typename V::Element>(NearestOnSegment(Wide(p), Wide(a), Wide(b)));
}

template <qxGeometricVector V>
typename V::Element CQXGeometry::DistanceToLine(const V& p, const V& a, const V& b) {
  return GuardedLength<typename V::Element>((OnLine(Wide(p), Wide(a), Wide(b)) - Wide(p)).SquareLength());
}

template <qxGeometricVector V>
typename V::Element CQXGeometry::DistanceToSegment(const V& p, const V& a, const V& b) {
  return GuardedLength<typename V::Element>(qxGeometry::SquareDistanceToSegment(Wide(p), Wide(a), Wide(b)));
}

template <qxGeometricVector V>
std::int32_t CQXGeometry::ClosestPointsOfLines(const V& a, const V& b, const V& c, const V& d, V& onFirst,
                                               V& onSecond) {
  using T = typename V::Element;
  double s, t;
  if (!FindNearest(Wide(a), Wide(b), Wide(c), Wide(d), s, t)) return 0;
  const auto first = Wide(a) + (Wide(b) - Wide(a)) * s;
  const auto second = Wide(c) + (Wide(d) - Wide(c)) * t;
  onFirst = Narrow<T>(first);
  onSecond = Narrow<T>(second);
  return 1;
}

template <qxGeometricVector V>
typename V::Element CQXGeometry::ClosestPointsOfSegments(const V& a, const V& b, const V& c, const V& d, V& onFirst,
                                                         V& onSecond) {
  using T = typename V::Element;
  const auto from = Wide(a), to = Wide(b), from2 = Wide(c), to2 = Wide(d);
  // The nearest points are inside of both segments, or one of them is an end.
  auto first = from, second = NearestOnSegment(from, from2, to2);
  const auto offer = [&](const auto& p, const auto& q) {
    if (!((p - q).SquareLength() < (first - second).SquareLength())) return;
    first = p;
    second = q;
  };
  offer(to, NearestOnSegment(to, from2, to2));
  offer(NearestOnSegment(from2, from, to), from2);
  offer(NearestOnSegment(to2, from, to), to2);
  double s, t;
  if (FindNearest(from, to, from2, to2, s, t) && s > 0 && s < 1 && t > 0 && t < 1) {
    offer(from + (to - from) * s, from2 + (to2 - from2) * t);
  }
  onFirst = Narrow<T>(first);
  onSecond = Narrow<T>(second);
  return GuardedLength<T>((first - second).SquareLength());
}

template <qxReal T>
qxSegmentsIntersection CQXGeometry::SegmentsIntersection(const CQXVector2<T>& a, const CQXVector2<T>& b,
                                                         const CQXVector2<T>& c, const CQXVector2<T>& d,
                                                         CQXVector2<T>& from, CQXVector2<T>& to) {
  Point first, last;
  const qxSegmentsIntersection kind = Intersect(ToPoint(a), ToPoint(b), ToPoint(c), ToPoint(d), first, last);
  if (kind == QX_SEGMENTS_APART) return kind;
  from = qxGeometry::ToVector<T>(first);
  to = qxGeometry::ToVector<T>(last);
  return kind;
}

#define QX_INSTANTIATE_FOR(V)                                                                              \
  template V CQXGeometry::ProjectOnLine(const V&, const V&, const V&);                                     \
  template V CQXGeometry::ClosestPointOnSegment(const V&, const V&, const V&);                             \
  template typename V::Element CQXGeometry::DistanceToLine(const V&, const V&, const V&);                  \
  template typename V::Element CQXGeometry::DistanceToSegment(const V&, const V&, const V&);               \
  template std::int32_t CQXGeometry::ClosestPointsOfLines(const V&, const V&, const V&, const V&, V&, V&); \
  template typename V::Element CQXGeometry::ClosestPointsOfSegments(const V&, const V&, const V&, const V&, V&, V&);
#define QX_INSTANTIATE(T)                                                                                       \
  QX_INSTANTIATE_FOR(CQXVector2<T>)                                                                             \
  QX_INSTANTIATE_FOR(CQXVector3<T>)                                                                             \
  template qxSegmentsIntersection CQXGeometry::SegmentsIntersection(const CQXVector2<T>&, const CQXVector2<T>&, \
                                                                    const CQXVector2<T>&, const CQXVector2<T>&, \
                                                                    CQXVector2<T>&, CQXVector2<T>&);
QX_FOR_FLOAT_AND_DOUBLE(QX_INSTANTIATE)
#undef QX_INSTANTIATE
#undef QX_INSTANTIATE_FOR
