#include <qx/foundation/internal/instantiate.h>
#include <qx/geometry/geometry.h>
#include <qx/geometry/internal/nearest_point.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

using qxGeometry::Narrow;
using qxGeometry::Wide;
using Space = CQXVector3<double>;

/// A plane n . p + offset = 0.
struct Plane {
  Space normal;
  double offset;

  template <qxReal T>
  explicit Plane(const CQXVector4<T>& plane)
      : normal(static_cast<double>(plane[0]), static_cast<double>(plane[1]), static_cast<double>(plane[2])),
        offset(static_cast<double>(plane[3])) {}

  /// The signed distance, times the length of the normal.
  [[nodiscard]] double Height(const Space& p) const { return normal.Dot(p) + offset; }
};

template <qxReal T>
CQXVector4<T> ToVector(const Space& normal, double offset) {
  return {static_cast<T>(normal.X()), static_cast<T>(normal.Y()), static_cast<T>(normal.Z()), static_cast<T>(offset)};
}

}  // namespace

template <qxReal T>
std::int32_t CQXGeometry::PlaneThroughPoints(const CQXVector3<T>& a, const CQXVector3<T>& b, const CQXVector3<T>& c,
                                             CQXVector4<T>& plane) {
  const Space normal = (Wide(b) - Wide(a)).Cross(Wide(c) - Wide(a));
  const double length = std::sqrt(normal.SquareLength());
  if (!(length > 0)) return 0;
  const Space unit = normal / length;
  plane = ToVector<T>(unit, -unit.Dot(Wide(a)));
  return 1;
}

template <qxReal T>
T CQXGeometry::DistanceToPlane(const CQXVector3<T>& p, const CQXVector4<T>& plane) {
  const Plane wide(plane);
  const double length = std::sqrt(wide.normal.SquareLength());
  return length > 0 ? static_cast<T>(wide.Height(Wide(p)) / length) : T(0);
}

template <qxReal T>
CQXVector3<T> CQXGeometry::ProjectOnPlane(const CQXVector3<T>& p, const CQXVector4<T>& plane) {
  const Plane wide(plane);
  const double square = wide.normal.SquareLength();
  if (!(square > 0)) return p;
  return Narrow<T>(Wide(p) - wide.normal * (wide.Height(Wide(p)) / square));
}

template <qxReal T>
std::int32_t CQXGeometry::SegmentPlaneIntersection(const CQXVector3<T>& a, const CQXVector3<T>& b,
                                                   const CQXVector4<T>& plane, CQXVector3<T>& point) {
  const Plane wide(plane);
  const double heightA = wide.Height(Wide(a));
  const double heightB = wide.Height(Wide(b));
  if ((heightA > 0 && heightB > 0) || (heightA < 0 && heightB < 0) || std::isnan(heightA - heightB)) return 0;
  const double t = heightA == heightB ? 0 : std::clamp(heightA / (heightA - heightB), 0.0, 1.0);
  point = heightB == 0 && heightA != 0 ? b : Narrow<T>(Wide(a) + (Wide(b) - Wide(a)) * t);
  return 1;
}

template <qxReal T>
std::int32_t CQXGeometry::PlanesIntersection(const CQXVector4<T>& first, const CQXVector4<T>& second,
                                             CQXVector3<T>& point, CQXVector3<T>& direction) {
  const Plane a(first), b(second);
  const Space along = a.normal.Cross(b.normal);
  const double square = along.SquareLength();
  const double scale = a.normal.SquareLength() * b.normal.SquareLength();
  // The square of the sine of the angle between them is within rounding of the type.
  constexpr double eps = static_cast<double>(std::numeric_limits<T>::epsilon());
  if (!(square > 16 * eps * eps * scale)) return 0;
  const Space foot = (a.normal * b.offset - b.normal * a.offset).Cross(along) / square;
  point = Narrow<T>(foot);
  direction = Narrow<T>(along / std::sqrt(square));
  return 1;
}

template <qxReal T>
std::int32_t CQXGeometry::LineTriangleIntersection(const CQXVector3<T>& p, const CQXVector3<T>& v,
                                                   const CQXVector3<T>& a, const CQXVector3<T>& b,
                                                   const CQXVector3<T>& c, T& parameter, CQXVector3<T>& weights) {
  const Space edge1 = Wide(b) - Wide(a);
  const Space edge2 = Wide(c) - Wide(a);
  const Space across = Wide(v).Cross(edge2);
  const double determinant = edge1.Dot(across);
  if (!(std::abs(determinant) > 0)) return 0;
  const double sign = determinant > 0 ? 1 : -1;
  const Space toStart = Wide(p) - Wide(a);
  const Space turned = toStart.Cross(edge1);
  // Times the determinant, so that borders are tested without a quotient.
  const double weightB = sign * toStart.Dot(across);
  const double weightC = sign * Wide(v).Dot(turned);
  if (!(weightB >= 0 && weightC >= 0 && weightB + weightC <= sign * determinant)) return 0;
  const double size = sign * determinant;
  parameter = static_cast<T>(sign * edge2.Dot(turned) / size);
  weights = Narrow<T>({(size - weightB - weightC) / size, weightB / size, weightC / size});
  return 1;
}

template <qxGeometricVector V>
std::int32_t CQXGeometry::BarycentricCoordinates(const V& p, const V& a, const V& b, const V& c,
                                                 CQXVector3<typename V::Element>& weights) {
  const auto u = Wide(b) - Wide(a), v = Wide(c) - Wide(a), w = Wide(p) - Wide(a);
  const double uu = u.Dot(u), uv = u.Dot(v), vv = v.Dot(v);
  const double determinant = uu * vv - uv * uv;
  if (!(determinant > 16 * std::numeric_limits<double>::epsilon() * uu * vv)) return 0;
  const double weightB = (vv * u.Dot(w) - uv * v.Dot(w)) / determinant;
  const double weightC = (uu * v.Dot(w) - uv * u.Dot(w)) / determinant;
  weights = Narrow<typename V::Element>(Space(1 - weightB - weightC, weightB, weightC));
  return 1;
}

#define QX_INSTANTIATE(T)                                                                                           \
  template std::int32_t CQXGeometry::PlaneThroughPoints(const CQXVector3<T>&, const CQXVector3<T>&,                 \
                                                        const CQXVector3<T>&, CQXVector4<T>&);                      \
  template T CQXGeometry::DistanceToPlane(const CQXVector3<T>&, const CQXVector4<T>&);                              \
  template CQXVector3<T> CQXGeometry::ProjectOnPlane(const CQXVector3<T>&, const CQXVector4<T>&);                   \
  template std::int32_t CQXGeometry::SegmentPlaneIntersection(const CQXVector3<T>&, const CQXVector3<T>&,           \
                                                              const CQXVector4<T>&, CQXVector3<T>&);                \
  template std::int32_t CQXGeometry::PlanesIntersection(const CQXVector4<T>&, const CQXVector4<T>&, CQXVector3<T>&, \
                                                        CQXVector3<T>&);                                            \
  template std::int32_t CQXGeometry::LineTriangleIntersection(const CQXVector3<T>&, const CQXVector3<T>&,           \
                                                              const CQXVector3<T>&, const CQXVector3<T>&,           \
                                                              const CQXVector3<T>&, T&, CQXVector3<T>&);            \
  template std::int32_t CQXGeometry::BarycentricCoordinates(                                                        \
      const CQXVector2<T>&, const CQXVector2<T>&, const CQXVector2<T>&, const CQXVector2<T>&, CQXVector3<T>&);      \
  template std::int32_t CQXGeometry::BarycentricCoordinates(                                                        \
      const CQXVector3<T>&, const CQXVector3<T>&, const CQXVector3<T>&, const CQXVector3<T>&, CQXVector3<T>&);
QX_FOR_FLOAT_AND_DOUBLE(QX_INSTANTIATE)
#undef QX_INSTANTIATE
