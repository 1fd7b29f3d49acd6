#include <qx/geometry/geometry.h>

#include "fuzz/input.h"

namespace {

template <typename T>
std::vector<CQXVector2<T>> Points(Input& input) {
  std::vector<CQXVector2<T>> points(static_cast<std::size_t>(input.Integer(0, 24)));
  for (auto& point : points) point = input.Make<CQXVector2<T>>();
  return points;
}

template <typename T>
void Run(Input& input) {
  using G = CQXGeometry;
  const bool asHulls = input.Byte() % 2 != 0;
  auto a = Points<T>(input), b = Points<T>(input);
  auto n = static_cast<std::int32_t>(a.size()), m = static_cast<std::int32_t>(b.size());
  if (asHulls) {
    G::BuildConvexHull(n, a.data(), n, a.data());
    G::BuildConvexHull(m, b.data(), m, b.data());
  }
  std::vector<CQXVector2<T>> result(a.size() + b.size() + 5);
  std::int32_t k = 0;
  T x = 0, y = 0;
  const auto p = input.Make<CQXVector2<T>>(), q = input.Make<CQXVector2<T>>();
  G::UniteConvexPolygons(n, a.data(), m, b.data(), k, result.data());
  G::IntersectConvexPolygons(n, a.data(), m, b.data(), k, result.data());
  G::ConvexPolygonRectangleIntersection(n, a.data(), p, q, k, result.data());
  (void)G::TestConvexity(n, a.data());
  (void)G::IsPointInConvexPolygon(p, n, a.data());
  (void)G::CalculatePolygonDiameter(n, a.data());
  (void)G::CalculatePolygonInternalRadius(n, a.data());
  (void)G::CalculatePolygonCenter(n, a.data());
  G::HorizIntersectionConvexPolygon(n, a.data(), p.X(), x, y);
  G::PolarRayPolygonIntersection(p, q.X(), n, a.data(), result[0]);
  std::copy(a.begin(), a.end(), result.begin());
  k = n;
  G::AddPointToConvexHall(p, k, result.data());
  if (k > 1 && k <= n) G::UpdateConvexHallEdge(q, input.Integer(0, k - 1), k, result.data());
}

}  // namespace

QX_FUZZ(Run)
