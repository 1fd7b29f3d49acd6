#include "tests/operations/operations.h"

namespace {

template <typename T>
using Points = std::vector<CQXVector2<T>>;

/// Random points, points on a grid and points on a line.
template <typename T>
Points<T> Cloud(std::int32_t n, std::uint32_t seed, int kind, T shift = 0) {
  Numbers<T> next(seed);
  Points<T> points(static_cast<std::size_t>(n));
  for (std::size_t i = 0; i < points.size(); ++i) {
    const T x = next(), y = next();
    points[i] = kind == 0   ? CQXVector2<T>(x + shift, y)
                : kind == 1 ? CQXVector2<T>(static_cast<T>(i % 5) + shift, static_cast<T>(i * 7 % 4))
                            : CQXVector2<T>(x + shift, 2 * x);
  }
  return points;
}

template <typename T>
Points<T> Hull(const Points<T>& points) {
  Points<T> hull(points.size());
  std::int32_t m = 0;
  CQXGeometry::BuildConvexHull(static_cast<std::int32_t>(points.size()), points.data(), m, hull.data());
  hull.resize(static_cast<std::size_t>(m));
  return hull;
}

template <typename T, typename Function>
void OverPolygons(const std::string& operation, Function f, bool isPlatform = false) {
  Row<T>(
      operation,
      [&](Hash& h) {
        for (const std::int32_t n : {0, 1, 2, 3, 4, 5, 8, 20, 300, 2000}) {
          for (int kind = 0; kind < 3; ++kind) {
            for (std::uint32_t seed = 1; seed < 6; ++seed) {
              const Points<T> a = Hull(Cloud<T>(n, seed, kind)), b = Hull(Cloud<T>(n / 2 + 2, seed + 9, 0, T(0.5)));
              f(h, a, b, static_cast<std::int32_t>(a.size()), static_cast<std::int32_t>(b.size()), Numbers<T>(seed));
            }
          }
        }
      },
      isPlatform);
}

}  // namespace

template <typename T>
void GeometryRows() {
  using G = CQXGeometry;
  using P = Points<T>;
  using V = CQXVector2<T>;
  using Int = std::int32_t;
  OverPolygons<T>("BuildConvexHull", [](Hash& h, const P& a, const P& b, Int n, Int, Numbers<T>) {
    h(a, b, G::TestConvexity(n, a.data()));
  });
  OverPolygons<T>("AddPointToConvexHall", [](Hash& h, P a, const P& b, Int n, Int, Numbers<T>) {
    a.resize(a.size() + b.size());
    for (const V& p : b) h(G::AddPointToConvexHall(p, n, a.data()), n, a);
  });
  OverPolygons<T>("UpdateConvexHallEdge", [](Hash& h, P a, const P& b, Int n, Int, Numbers<T>) {
    a.resize(a.size() + b.size() + 1);
    for (const V& p : b) {
      if (n >= 2) h(G::UpdateConvexHallEdge(p, n / 2, n, a.data()), n, a);
    }
  });
  OverPolygons<T>("IsPointInConvexPolygon", [](Hash& h, const P& a, const P& b, Int n, Int, Numbers<T> next) {
    for (int i = 0; i < 30; ++i) h(G::IsPointInConvexPolygon(next.template Make<V>(), n, a.data()));
    for (const V& p : b) h(G::IsPointInConvexPolygon(p, n, a.data(), T(0.1)));
  });
  OverPolygons<T>("UniteConvexPolygons", [](Hash& h, const P& a, const P& b, Int n, Int m, Numbers<T>) {
    P result(a.size() + b.size());
    Int k = 0;
    G::UniteConvexPolygons(n, a.data(), m, b.data(), k, result.data());
    h(k, result);
  });
  OverPolygons<T>("IntersectConvexPolygons", [](Hash& h, const P& a, const P& b, Int n, Int m, Numbers<T> next) {
    P result(a.size() + b.size() + 4);
    Int k = 0;
    h(G::IntersectConvexPolygons(n, a.data(), m, b.data(), k, result.data()), k, result);
    const V corner = next.template Make<V>();
    h(G::ConvexPolygonRectangleIntersection(n, a.data(), corner, next.template Make<V>(), k, result.data()), k, result);
  });
  OverPolygons<T>("polygons and lines", [](Hash& h, const P& a, const P&, Int n, Int, Numbers<T> next) {
    for (int i = 0; i < 20; ++i) {
      T x1 = 9, x2 = 9;
      h(G::HorizIntersectionConvexPolygon(n, a.data(), next(), x1, x2), x1, x2);
      h(G::VertIntersectionConvexPolygon(n, a.data(), next(), x1, x2), x1, x2);
    }
  });
  OverPolygons<T>(
      "PolarRayPolygonIntersection",
      [](Hash& h, const P& a, const P&, Int n, Int, Numbers<T> next) {
        V exit;
        for (int i = 0; i < 20; ++i) {
          const V centre = next.template Make<V>() * T(0.5);
          h(G::PolarRayPolygonIntersection(centre, next() * 360, n, a.data(), exit), exit);
        }
      },
      true);
  OverPolygons<T>("polygon measures", [](Hash& h, const P& a, const P&, Int n, Int, Numbers<T>) {
    h(G::CalculatePolygonCenter(n, a.data())), h(G::CalculatePolygonDiameter(n, a.data())),
        h(G::CalculatePolygonInternalRadius(n, a.data()));
  });
  Row<T>("lines, planes and rectangles", [](Hash& h) {
    Numbers<T> next(91);
    for (int i = 0; i < 300; ++i) {
      const auto c = next.Array(4);
      CQXVector3<T> point;
      const auto p = next.template Make<CQXVector3<T>>(), v = next.template Make<CQXVector3<T>>();
      h(G::LinePlaneIntersection(p, v, c[0], c[1], c[2], c[3], point)), h(point),
          h(G::GetPointOnPlane(c[0], i % 3 ? c[1] : T(0), c[2], c[3]));
      const V a(p[0] * 2, p[1] * 2), b(v[0] * 2, v[1] * 2), lo(T(-0.5), T(-0.25)), hi(T(0.5), T(0.75));
      V qa, qb, corner;
      h(G::ClipSegmentToRectangle(a, b, lo, hi, qa, qb), qa, qb);
      const qxRectangleBorder first = G::PointRelativelyRectangleBorder(qa, lo, hi, i % 2),
                              second = G::PointRelativelyRectangleBorder(qb, lo, hi, i % 2);
      h(first, second, G::EncloseCornerPoint(first, second, lo, hi, corner), corner);
    }
  });
}

template void GeometryRows<float>();
template void GeometryRows<double>();
