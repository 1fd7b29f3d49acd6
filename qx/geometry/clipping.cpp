#include <qx/foundation/internal/instantiate.h>
#include <qx/geometry/geometry.h>

#include <cmath>

namespace {

/// Into [lo, hi]; not a number becomes lo.
template <qxReal T>
T Clamped(T x, T lo, T hi) {
  if (!(x >= lo)) return lo;
  return x > hi ? hi : x;
}

template <qxReal T>
bool IsFinite(const CQXVector2<T>& p) {
  return std::isfinite(p.X()) && std::isfinite(p.Y());
}

/// The part of a segment a + u (b - a) that is left, and the borders that cut its ends.
template <qxReal T>
struct SegmentPart {
  T first = 0, last = 1;
  qxRectangleBorder firstBorder = QX_BORDER_NONE, lastBorder = QX_BORDER_NONE;

  /// Cuts by a border: @p speed is the rate at which the segment leaves through it, @p room the distance of its first
  /// end from it, negative outside. False when nothing is left, also for not a number.
  bool Cut(T speed, T room, qxRectangleBorder border) {
    if (speed == 0) return room >= 0;
    const T u = room / speed;
    if (speed < 0) {
      if (!(u <= last)) return false;
      if (u > first) {
        first = u;
        firstBorder = border;
      }
    } else {
      if (!(u >= first)) return false;
      if (u < last) {
        last = u;
        lastBorder = border;
      }
    }
    return true;
  }
};

/// Puts a point on the border exactly, and what rounding or an overflow of the difference left outside into the
/// rectangle.
template <qxReal T>
CQXVector2<T> OnBorder(const CQXVector2<T>& p, const CQXVector2<T>& lo, const CQXVector2<T>& hi,
                       qxRectangleBorder border) {
  CQXVector2<T> q(Clamped(p.X(), lo.X(), hi.X()), Clamped(p.Y(), lo.Y(), hi.Y()));
  if (border == QX_BORDER_LEFT) q.X() = lo.X();
  if (border == QX_BORDER_RIGHT) q.X() = hi.X();
  if (border == QX_BORDER_TOP) q.Y() = lo.Y();
  if (border == QX_BORDER_BOTTOM) q.Y() = hi.Y();
  return q;
}

}  // namespace

template <qxReal T>
std::int32_t CQXGeometry::LinePlaneIntersection(const CQXVector3<T>& p, const CQXVector3<T>& v, qxNonDeduced<T> a,
                                                qxNonDeduced<T> b, qxNonDeduced<T> c, qxNonDeduced<T> d,
                                                CQXVector3<T>& point) {
  const CQXVector3<T> normal(a, b, c);
  const T speed = normal.Dot(v);
  if (speed == 0) return 0;
  point = p + v * (-(normal.Dot(p) + d) / speed);
  return 1;
}

template <qxReal T>
CQXVector3<T> CQXGeometry::GetPointOnPlane(T a, T b, T c, T d) {
  const CQXVector3<T> normal(a, b, c);
  const T square = normal.SquareLength();
  if (square == 0) return {};
  return normal * (-d / square);
}

template <qxReal T>
std::int32_t CQXGeometry::ClipSegmentToRectangle(const CQXVector2<T>& a, const CQXVector2<T>& b,
                                                 const CQXVector2<T>& lo, const CQXVector2<T>& hi, CQXVector2<T>& qa,
                                                 CQXVector2<T>& qb) {
  if (!IsFinite(a) || !IsFinite(b)) return 0;
  const CQXVector2<T> v = b - a;
  SegmentPart<T> part;
  if (!part.Cut(-v.X(), a.X() - lo.X(), QX_BORDER_LEFT) || !part.Cut(v.X(), hi.X() - a.X(), QX_BORDER_RIGHT) ||
      !part.Cut(-v.Y(), a.Y() - lo.Y(), QX_BORDER_TOP) || !part.Cut(v.Y(), hi.Y() - a.Y(), QX_BORDER_BOTTOM)) {
    return 0;
  }
  const CQXVector2<T> first = part.firstBorder == QX_BORDER_NONE ? a : a + v * part.first;
  const CQXVector2<T> last = part.lastBorder == QX_BORDER_NONE ? b : a + v * part.last;
  qa = OnBorder(first, lo, hi, part.firstBorder);
  qb = OnBorder(last, lo, hi, part.lastBorder);
  return 1;
}

template <qxReal T>
qxRectangleBorder CQXGeometry::PointRelativelyRectangleBorder(const CQXVector2<T>& p, const CQXVector2<T>& lo,
                                                              const CQXVector2<T>& hi, std::int32_t horizontalFirst) {
  constexpr qxRectangleBorder orders[2][4] = {{QX_BORDER_LEFT, QX_BORDER_RIGHT, QX_BORDER_TOP, QX_BORDER_BOTTOM},
                                              {QX_BORDER_TOP, QX_BORDER_BOTTOM, QX_BORDER_LEFT, QX_BORDER_RIGHT}};
  const T distances[] = {0, std::abs(p.X() - lo.X()), std::abs(p.Y() - lo.Y()), std::abs(p.X() - hi.X()),
                         std::abs(p.Y() - hi.Y())};
  for (const T tolerance : {T(0), T(1e-6)}) {
    for (const qxRectangleBorder border : orders[horizontalFirst != 0]) {
      if (distances[border] <= tolerance) return border;
    }
  }
  return QX_BORDER_NONE;
}

template <qxReal T>
std::int32_t CQXGeometry::EncloseCornerPoint(qxRectangleBorder border1, qxRectangleBorder border2,
                                             const CQXVector2<T>& lo, const CQXVector2<T>& hi, CQXVector2<T>& corner) {
  const auto either = [&](qxRectangleBorder border) { return border1 == border || border2 == border; };
  const bool left = either(QX_BORDER_LEFT), right = either(QX_BORDER_RIGHT);
  const bool top = either(QX_BORDER_TOP), bottom = either(QX_BORDER_BOTTOM);
  if (left == right || top == bottom) return 0;
  corner = {left ? lo.X() : hi.X(), top ? lo.Y() : hi.Y()};
  return 1;
}

#define QX_INSTANTIATE(T)                                                                                            \
  template std::int32_t CQXGeometry::LinePlaneIntersection(const CQXVector3<T>&, const CQXVector3<T>&, T, T, T, T,   \
                                                           CQXVector3<T>&);                                          \
  template CQXVector3<T> CQXGeometry::GetPointOnPlane(T, T, T, T);                                                   \
  template std::int32_t CQXGeometry::ClipSegmentToRectangle(const CQXVector2<T>&, const CQXVector2<T>&,              \
                                                            const CQXVector2<T>&, const CQXVector2<T>&,              \
                                                            CQXVector2<T>&, CQXVector2<T>&);                         \
  template qxRectangleBorder CQXGeometry::PointRelativelyRectangleBorder(const CQXVector2<T>&, const CQXVector2<T>&, \
                                                                         const CQXVector2<T>&, std::int32_t);        \
  template std::int32_t CQXGeometry::EncloseCornerPoint(qxRectangleBorder, qxRectangleBorder, const CQXVector2<T>&,  \
                                                        const CQXVector2<T>&, CQXVector2<T>&);
QX_FOR_FLOAT_AND_DOUBLE(QX_INSTANTIATE)
#undef QX_INSTANTIATE
