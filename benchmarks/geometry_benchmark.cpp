#include <qx/geometry/geometry.h>

#include <cmath>
#include <cstdint>
#include <numbers>
#include <random>
#include <vector>

#include <benchmark/benchmark.h>

#if __has_include(<CGAL/convex_hull_2.h>)
#define CGAL_DISABLE_GMP 1
#define CGAL_DISABLE_MPFR 1
#include <CGAL/Exact_predicates_inexact_constructions_kernel.h>
#include <CGAL/convex_hull_2.h>
#define HAS_CGAL
#endif
#if __has_include(<boost/geometry.hpp>)
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"  // in what is inlined from the peer
#endif
#include <boost/geometry.hpp>
#include <boost/geometry/geometries/multi_point.hpp>
#include <boost/geometry/geometries/point_xy.hpp>
#include <boost/geometry/geometries/polygon.hpp>
#define HAS_BOOST
#endif

namespace {

/// Points in a square, or on a circle in disorder.
std::vector<CQXVector2<double>> MakePoints(std::int64_t n, bool onCircle) {
  std::mt19937_64 generator(7);
  std::uniform_real_distribution<double> uniform;
  std::vector<CQXVector2<double>> points(static_cast<std::size_t>(n));
  for (auto& p : points) {
    const double x = uniform(generator), y = uniform(generator);
    const double angle = 2 * std::numbers::pi * x;
    p = onCircle ? CQXVector2<double>(1000 * std::cos(angle), 1000 * std::sin(angle))
                 : CQXVector2<double>(1000 * x, 1000 * y);
  }
  return points;
}

void Hull_qx(benchmark::State& state) {
  const auto points = MakePoints(state.range(0), state.range(1) != 0);
  std::vector<CQXVector2<double>> hull(points.size());
  std::int32_t m = 0;
  for (auto _ : state) {
    CQXGeometry::BuildConvexHull(static_cast<std::int32_t>(points.size()), points.data(), m, hull.data());
    benchmark::ClobberMemory();
  }
  state.counters["vertices"] = m;
}

#ifdef HAS_CGAL
void Hull_cgal(benchmark::State& state) {
  using Kernel = CGAL::Exact_predicates_inexact_constructions_kernel;
  std::vector<Kernel::Point_2> points, hull;
  for (const auto& p : MakePoints(state.range(0), state.range(1) != 0)) points.emplace_back(p.X(), p.Y());
  for (auto _ : state) {
    hull.clear();
    CGAL::convex_hull_2(points.begin(), points.end(), std::back_inserter(hull));
    benchmark::ClobberMemory();
  }
  state.counters["vertices"] = static_cast<double>(hull.size());
}
#endif

#ifdef HAS_BOOST
namespace bg = boost::geometry;
using BoostPoint = bg::model::d2::point_xy<double>;
using BoostPolygon = bg::model::polygon<BoostPoint, false, true>;

void Hull_boost(benchmark::State& state) {
  bg::model::multi_point<BoostPoint> points;
  for (const auto& p : MakePoints(state.range(0), state.range(1) != 0)) points.emplace_back(p.X(), p.Y());
  BoostPolygon hull;
  for (auto _ : state) {
    bg::clear(hull);
    bg::convex_hull(points, hull);
    benchmark::ClobberMemory();
  }
  state.counters["vertices"] = static_cast<double>(hull.outer().size()) - 1;  // the first point again at the end
}
#endif

void SizesAndShapes(benchmark::internal::Benchmark* b) {
  b->ArgNames({"points", "circle"})->Unit(benchmark::kMicrosecond);
  for (const std::int64_t n : {1000, 1000000}) {
    for (const std::int64_t onCircle : {0, 1}) b->Args({n, onCircle});
  }
}

BENCHMARK(Hull_qx)->Apply(SizesAndShapes);
#ifdef HAS_CGAL
BENCHMARK(Hull_cgal)->Apply(SizesAndShapes);
#endif
#ifdef HAS_BOOST
BENCHMARK(Hull_boost)->Apply(SizesAndShapes);
#endif

std::vector<CQXVector2<double>> RegularPolygon(std::int64_t n, double shift) {
  std::vector<CQXVector2<double>> polygon;
  for (std::int64_t i = 0; i < n; ++i) {
    const double angle = 2 * std::numbers::pi * static_cast<double>(i) / static_cast<double>(n) + shift;
    polygon.emplace_back(std::cos(angle) + shift, std::sin(angle));
  }
  return polygon;
}

void Locate_qx(benchmark::State& state) {
  const auto polygon = RegularPolygon(state.range(0), 0);
  const auto points = MakePoints(1024, false);
  std::int64_t inside = 0;
  for (auto _ : state) {
    for (const auto& p : points) {
      inside += CQXGeometry::IsPointInConvexPolygon(p / 500.0 - CQXVector2<double>(1, 1),
                                                    static_cast<std::int32_t>(polygon.size()), polygon.data());
    }
  }
  benchmark::DoNotOptimize(inside);
  state.SetItemsProcessed(state.iterations() * 1024);
}
BENCHMARK(Locate_qx)->Arg(8)->Arg(1000);

void Intersect_qx(benchmark::State& state) {
  const auto a = RegularPolygon(state.range(0), 0), b = RegularPolygon(state.range(0), 0.3);
  std::vector<CQXVector2<double>> result(a.size() + b.size());
  std::int32_t k = 0;
  for (auto _ : state) {
    const auto n = static_cast<std::int32_t>(a.size());
    CQXGeometry::IntersectConvexPolygons(n, a.data(), n, b.data(), k, result.data());
    benchmark::ClobberMemory();
  }
  state.counters["vertices"] = k;
}
BENCHMARK(Intersect_qx)->Arg(8)->Arg(100);

#ifdef HAS_BOOST
void Intersect_boost(benchmark::State& state) {
  BoostPolygon polygons[2];
  for (int i = 0; i < 2; ++i) {
    for (const auto& p : RegularPolygon(state.range(0), 0.3 * i)) bg::append(polygons[i], BoostPoint(p.X(), p.Y()));
    bg::correct(polygons[i]);
  }
  std::vector<BoostPolygon> result;
  for (auto _ : state) {
    result.clear();
    bg::intersection(polygons[0], polygons[1], result);
    benchmark::ClobberMemory();
  }
  state.counters["vertices"] = result.empty() ? 0 : static_cast<double>(result[0].outer().size()) - 1;
}
BENCHMARK(Intersect_boost)->Arg(8)->Arg(100);
#endif

/// A simple polygon with reentrant corners, about (500, 500).
std::vector<CQXVector2<double>> Star(std::int64_t n) {
  std::vector<CQXVector2<double>> star;
  for (std::int64_t i = 0; i < n; ++i) {
    const double angle = 2 * std::numbers::pi * static_cast<double>(i) / static_cast<double>(n);
    const double radius = i % 2 == 0 ? 480 : 300;
    star.emplace_back(500 + radius * std::cos(angle), 500 + radius * std::sin(angle));
  }
  return star;
}

/// A noisy wave.
std::vector<CQXVector2<double>> Wave(std::int64_t n) {
  std::mt19937_64 generator(3);
  std::uniform_real_distribution<double> uniform(-0.5, 0.5);
  std::vector<CQXVector2<double>> wave;
  for (std::int64_t i = 0; i < n; ++i) {
    const double x = static_cast<double>(i);
    wave.emplace_back(x, 100 * std::sin(0.01 * x) + uniform(generator));
  }
  return wave;
}

void Inside_qx(benchmark::State& state) {
  const auto star = Star(state.range(0));
  const auto points = MakePoints(1024, false);
  std::int64_t inside = 0;
  for (auto _ : state) {
    for (const auto& p : points) {
      inside +=
          CQXGeometry::IsPointInPolygon(p, static_cast<std::int32_t>(star.size()), star.data()) == QX_LOCATION_INSIDE;
    }
  }
  benchmark::DoNotOptimize(inside);
  state.SetItemsProcessed(state.iterations() * 1024);
}
BENCHMARK(Inside_qx)->Arg(8)->Arg(1000)->Unit(benchmark::kMicrosecond);

void Simple_qx(benchmark::State& state) {
  const auto star = Star(state.range(0));
  for (auto _ : state) {
    benchmark::DoNotOptimize(CQXGeometry::IsPolygonSimple(static_cast<std::int32_t>(star.size()), star.data()));
  }
}
BENCHMARK(Simple_qx)->Arg(1000)->Unit(benchmark::kMicrosecond);

void Simplify_qx(benchmark::State& state) {
  const auto wave = Wave(state.range(0));
  std::vector<CQXVector2<double>> result(wave.size());
  std::int32_t m = 0;
  for (auto _ : state) {
    CQXGeometry::SimplifyPolyline(static_cast<std::int32_t>(wave.size()), wave.data(), 1.0, m, result.data());
    benchmark::ClobberMemory();
  }
  state.counters["points"] = m;
}
BENCHMARK(Simplify_qx)->Arg(10000)->Unit(benchmark::kMicrosecond);

#ifdef HAS_BOOST
BoostPolygon BoostStar(std::int64_t n) {
  BoostPolygon polygon;
  for (const auto& p : Star(n)) bg::append(polygon, BoostPoint(p.X(), p.Y()));
  bg::correct(polygon);
  return polygon;
}

void Inside_boost(benchmark::State& state) {
  const BoostPolygon star = BoostStar(state.range(0));
  const auto points = MakePoints(1024, false);
  std::int64_t inside = 0;
  for (auto _ : state) {
    for (const auto& p : points) inside += bg::covered_by(BoostPoint(p.X(), p.Y()), star) ? 1 : 0;
  }
  benchmark::DoNotOptimize(inside);
  state.SetItemsProcessed(state.iterations() * 1024);
}
BENCHMARK(Inside_boost)->Arg(8)->Arg(1000)->Unit(benchmark::kMicrosecond);

void Simple_boost(benchmark::State& state) {
  const BoostPolygon star = BoostStar(state.range(0));
  for (auto _ : state) benchmark::DoNotOptimize(bg::is_valid(star));
}
BENCHMARK(Simple_boost)->Arg(1000)->Unit(benchmark::kMicrosecond);

void Simplify_boost(benchmark::State& state) {
  bg::model::linestring<BoostPoint> wave, result;
  for (const auto& p : Wave(state.range(0))) wave.emplace_back(p.X(), p.Y());
  for (auto _ : state) {
    result.clear();
    bg::simplify(wave, result, 1.0);
    benchmark::ClobberMemory();
  }
  state.counters["points"] = static_cast<double>(result.size());
}
BENCHMARK(Simplify_boost)->Arg(10000)->Unit(benchmark::kMicrosecond);
#endif

}  // namespace
