#include <qx/foundation/block.h>
#include <qx/foundation/conversion.h>
#include <qx/foundation/internal/instantiate.h>
#include <qx/geometry/geometry.h>
#include <qx/geometry/internal/nearest_point.h>

#include <algorithm>
#include <cmath>

namespace {

using qxGeometry::Narrow;
using qxGeometry::Wide;

/// Bernstein's form by a scheme like Horner's.
template <typename V>
auto PointOfBezier(std::int32_t n, const V* controls, double t) {
  const double rest = 1 - t;
  auto sum = Wide(controls[0]);
  if (n == 1) return sum;
  double power = 1;
  double binomial = 1;
  sum *= rest;
  for (std::int32_t i = 1; i + 1 < n; ++i) {
    power *= t;
    binomial = binomial * (n - i) / i;
    sum = (sum + Wide(controls[i]) * (power * binomial)) * rest;
  }
  return sum + Wide(controls[n - 1]) * (power * t);
}

}  // namespace

template <qxGeometricVector V>
V CQXGeometry::BezierPoint(std::int32_t n, const V* controls, typename V::Element t) {
  if (n <= 0) return {};
  return Narrow<typename V::Element>(PointOfBezier(n, controls, static_cast<double>(t)));
}

template <qxGeometricVector V>
void CQXGeometry::SplitBezier(std::int32_t n, const V* controls, typename V::Element t, V* left, V* right) {
  if (n <= 0) return;
  std::copy_n(controls, n, right);
  left[0] = right[0];
  for (std::int32_t level = 1; level < n; ++level) {
    for (std::int32_t i = 0; i < n - level; ++i) right[i] = right[i] * (1 - t) + right[i + 1] * t;
    left[level] = right[0];
  }
}

template <qxGeometricVector V>
std::int32_t CQXGeometry::CountBezierSegments(std::int32_t n, const V* controls, typename V::Element tolerance) {
  double bend = 0;
  for (std::int32_t i = 1; i + 1 < n; ++i) {
    const auto second = Wide(controls[i - 1]) - Wide(controls[i]) * 2 + Wide(controls[i + 1]);
    bend = std::max(bend, second.SquareLength());
  }
  if (bend == 0) return 1;
  const double degree = n - 1;
  const double count =
      std::ceil(std::sqrt(degree * (degree - 1) / 8 * std::sqrt(bend) / static_cast<double>(tolerance)));
  constexpr double most = std::numeric_limits<std::int32_t>::max() - 1;
  return count < most ? std::max(qxToInt32(count), 1) : qxToInt32(most);
}

template <qxGeometricVector V>
void CQXGeometry::BezierPolyline(std::int32_t n, const V* controls, std::int32_t segmentsNb, V* points) {
  if (n <= 0 || segmentsNb <= 0) return;
  points[0] = controls[0];
  for (std::int32_t i = 1; i < segmentsNb; ++i) {
    points[i] = Narrow<typename V::Element>(PointOfBezier(n, controls, static_cast<double>(i) / segmentsNb));
  }
  points[segmentsNb] = controls[n - 1];
}

template <qxGeometricVector V>
void CQXGeometry::SimplifyPolyline(std::int32_t n, const V* points, typename V::Element tolerance, std::int32_t& m,
                                   V* result) {
  m = 0;
  if (n <= 0) return;
  // The ends of the parts that are still to do, the nearest on top.
  const qxBlock<std::int32_t> ends = qxMakeBlock<std::int32_t>(static_cast<std::size_t>(n));
  if (ends == nullptr) return;
  const double bound = static_cast<double>(tolerance) * static_cast<double>(tolerance);
  std::size_t pending = 0;
  if (n > 1) ends[pending++] = n - 1;
  result[m++] = points[0];
  for (std::int32_t start = 0; pending > 0;) {
    const std::int32_t end = ends[pending - 1];
    // Not result: it may be the points.
    const auto a = Wide(points[start]);
    const auto b = Wide(points[end]);
    double farthest = bound;
    std::int32_t split = start;
    for (std::int32_t i = start + 1; i < end; ++i) {
      const double square = qxGeometry::SquareDistanceToSegment(Wide(points[i]), a, b);
      if (square > farthest) {
        farthest = square;
        split = i;
      }
    }
    if (split != start) {
      ends[pending++] = split;
      continue;
    }
    --pending;
    result[m++] = points[end];
    start = end;
  }
}

#define QX_INSTANTIATE_FOR(V)                                                                          \
  template V CQXGeometry::BezierPoint(std::int32_t, const V*, typename V::Element);                    \
  template void CQXGeometry::SplitBezier(std::int32_t, const V*, typename V::Element, V*, V*);         \
  template std::int32_t CQXGeometry::CountBezierSegments(std::int32_t, const V*, typename V::Element); \
  template void CQXGeometry::BezierPolyline(std::int32_t, const V*, std::int32_t, V*);                 \
  template void CQXGeometry::SimplifyPolyline(std::int32_t, const V*, typename V::Element, std::int32_t&, V*);
#define QX_INSTANTIATE(T)           \
  QX_INSTANTIATE_FOR(CQXVector2<T>) \
  QX_INSTANTIATE_FOR(CQXVector3<T>)
QX_FOR_FLOAT_AND_DOUBLE(QX_INSTANTIATE)
#undef QX_INSTANTIATE
#undef QX_INSTANTIATE_FOR
