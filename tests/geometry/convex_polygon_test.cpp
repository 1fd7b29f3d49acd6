#include <qx/geometry/geometry.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <random>
#include <utility>
#include <vector>

#include "tests/typed_test.h"

namespace {

template <typename T>
using Points = std::vector<CQXVector2<T>>;

template <typename T>
std::int32_t Count(const Points<T>& points) {
  return static_cast<std::int32_t>(points.size());
}

/// Signed distance of p from the line a b, positive on the left, in 80-bit floats.
template <typename T>
double Distance(const CQXVector2<T>& a, const CQXVector2<T>& b, const CQXVector2<T>& p) {
  using Long = long double;
  const Long ex = Long(b.X()) - Long(a.X()), ey = Long(b.Y()) - Long(a.Y());
  const Long px = Long(p.X()) - Long(a.X()), py = Long(p.Y()) - Long(a.Y());
  return static_cast<double>((ex * py - ey * px) / std::hypot(ex, ey));
}

/// Least signed distance from the edges of a counter-clockwise polygon: negative outside.
template <typename T>
double Depth(const Points<T>& polygon, const CQXVector2<T>& p) {
  double depth = std::numeric_limits<double>::infinity();
  for (std::size_t i = 0; i < polygon.size(); ++i) {
    depth = std::min(depth, Distance(polygon[i], polygon[(i + 1) % polygon.size()], p));
  }
  return depth;
}

template <typename T>
Points<T> Hull(const Points<T>& points) {
  Points<T> hull(points.size());
  std::int32_t m = -1;
  CQXGeometry::BuildConvexHull(Count(points), points.data(), m, hull.data());
  hull.resize(static_cast<std::size_t>(m));
  return hull;
}

template <typename T>
bool AreSame(const CQXVector2<T>& a, const CQXVector2<T>& b) {
  return a.X() == b.X() && a.Y() == b.Y();
}

/// The promises of a hull, by an independent O(n m) test.
template <typename T>
void ExpectHull(const Points<T>& points, const Points<T>& hull) {
  double size = 0;
  double lowest = std::numeric_limits<double>::infinity();
  for (const auto& p : points) {
    size = std::max(size, std::max(std::abs(double(p.X())), std::abs(double(p.Y()))));
    lowest = std::min(lowest, double(p.Y()));
  }
  const double tolerance = 1.5e-6 + 1e-14 * size;
  ASSERT_GE(hull.size(), 1u);
  for (const auto& v : hull) {
    EXPECT_TRUE(std::any_of(points.begin(), points.end(), [&](const auto& p) { return AreSame(p, v); }));
    EXPECT_FALSE(v.Y() < lowest + 1e-6 && v.X() < hull[0].X()) << "the start is the left end of the lowest run";
  }
  EXPECT_LT(hull[0].Y(), lowest + 1e-6);
  for (const auto& p : points) {
    if (hull.size() == 1) {
      EXPECT_LE(std::max(std::abs(p.X() - hull[0].X()), std::abs(p.Y() - hull[0].Y())), tolerance);
    } else {
      EXPECT_GE(Depth(hull, p), -tolerance) << p.X() << ' ' << p.Y();
    }
  }
  if (hull.size() < 3) return;
  for (std::size_t i = 0; i < hull.size(); ++i) {  // every vertex is extreme, the order is counter-clockwise
    const auto& a = hull[i];
    const auto& b = hull[(i + 1) % hull.size()];
    for (const auto& v : hull) {
      EXPECT_TRUE(AreSame(v, a) || AreSame(v, b) || Distance(a, b, v) > -1e-14 * size);
    }
  }
}

template <typename T>
class ConvexPolygon : public ::testing::Test {
 protected:
  static constexpr T eps = std::numeric_limits<T>::epsilon();
  std::mt19937 generator{20240607};

  /// Uniform in [0, 1).
  double Draw() { return static_cast<double>(generator()) / 4294967296.0; }

  static CQXVector2<T> At(double x, double y) { return {static_cast<T>(x), static_cast<T>(y)}; }

  static Points<T> Rectangle(double x1, double y1, double x2, double y2) {
    return {At(x1, y1), At(x2, y1), At(x2, y2), At(x1, y2)};
  }

  /// A random polygon with vertices on its edges, as far as rounding lets them, at an offset; thin every fourth time.
  Points<T> RingAt(double offset, int round) {
    Points<T> points, ring;
    const double height = round % 4 == 3 ? 0.01 : 1;
    for (int i = 0; i < 9; ++i) {
      const double x = Draw();
      points.push_back(At(offset + 100 * x, offset + 100 * (height * Draw() + x * (1 - height))));
    }
    const Points<T> corners = Hull(points);
    for (std::size_t i = 0; i < corners.size(); ++i) {
      const auto a = corners[i], step = corners[(i + 1) % corners.size()] - a;
      ring.push_back(a);
      for (T t = T(Draw()) / 64; round % 2 == 0 && t < 1; t = t * T(1 + 4 * Draw())) ring.push_back(a + step * t);
    }
    if (round % 8 >= 4) std::reverse(ring.begin(), ring.end());
    std::rotate(ring.begin(), ring.begin() + static_cast<std::ptrdiff_t>(generator() % ring.size()), ring.end());
    if (round % 3 == 0) ring.push_back(ring[0]);
    return ring;
  }

  Points<T> RandomPolygon() {
    Points<T> points;
    const double x = Draw(), y = Draw();
    for (int i = 0; i < 12; ++i) points.push_back(At(x + Draw(), y + Draw()));
    return Hull(points);
  }
};
TYPED_TEST_SUITE(ConvexPolygon, FloatTypes);

TYPED_TEST(ConvexPolygon, HullsKeepTheirPromises) {
  using T = TypeParam;
  for (const double scale : {1e-8, 1e-5, 1.0, 1e8}) {
    for (int n : {1, 2, 3, 4, 10, 100, 700}) {
      Points<T> families[6];
      for (int i = 0; i < n; ++i) {
        const double angle = 2 * std::numbers::pi * i / n, x = this->Draw(), y = this->Draw();
        families[0].push_back(this->At(scale * x, scale * y));
        families[1].push_back(this->At(scale * std::cos(angle), scale * std::sin(angle)));
        families[2].push_back(this->At(scale * (i % 7), scale * (i / 7)));                      // grid
        families[3].push_back(this->At(scale * std::floor(4 * x), scale * std::floor(4 * y)));  // duplicates
        families[4].push_back(this->At(scale * x, scale + 1e-7 * y));                           // a run with noise
        families[5].push_back(this->At(scale * (i % 2) + 9e-7 * x, scale * (i / 2 % 2) + 9e-7 * y));  // four clusters
      }
      for (const auto& points : families) {
        const Points<T> hull = Hull(points);
        ExpectHull(points, hull);
        if (::testing::Test::HasFailure()) FAIL() << "scale " << scale << ", n " << n;
        EXPECT_EQ(CQXGeometry::TestConvexity(Count(hull), hull.data()), 1);
      }
    }
  }
}

TYPED_TEST(ConvexPolygon, HullsOfGridsAndDegeneratePoints) {
  using T = TypeParam;
  Points<T> grid;
  for (int i = 0; i < 20 * 30; ++i) grid.push_back(this->At(i % 20, i / 20));
  std::shuffle(grid.begin(), grid.end(), this->generator);
  EXPECT_EQ(Hull(grid).size(), 4u);
  EXPECT_EQ(Hull<T>({{0, 0}, {4, 4}, {1, 1}, {3, 3}, {2, 2}}).size(), 2u);
  EXPECT_EQ(Hull<T>({this->At(2, 3), this->At(2, 3), this->At(2 + 5e-7, 3 - 5e-7)}).size(), 1u);
  EXPECT_EQ(Hull<T>({this->At(0, 0), this->At(3e-6, 0), this->At(0, 3e-6)}).size(), 3u);  // small, but not coincident
  std::int32_t m = 7;
  CQXGeometry::BuildConvexHull<T>(-3, nullptr, m, nullptr);
  EXPECT_EQ(m, 0);
  const T nan = std::numeric_limits<T>::quiet_NaN(), infinity = std::numeric_limits<T>::infinity();
  EXPECT_EQ(Hull<T>({{nan, nan}, {nan, 0}}).size(), 0u);
  EXPECT_EQ(Hull<T>({{0, 0}, {nan, -1}, {1, 0}, {2, nan}, {0, 1}}).size(), 3u);
  const T values[] = {0, 1, infinity, -infinity, std::numeric_limits<T>::max(), -std::numeric_limits<T>::max()};
  for (int round = 0; round < 1000; ++round) {  // turns that are not numbers
    Points<T> wild(7);
    for (auto& p : wild) p = {values[this->generator() % 6], values[this->generator() % 6]};
    EXPECT_LE(Hull(wild).size(), wild.size());
  }
}

TYPED_TEST(ConvexPolygon, ConvexityLooksAtTheSignOfTurns) {
  using T = TypeParam;
  const Points<T> dented = {{0, 0}, {2, 0}, {2, 2}, {1, T(0.5)}}, crossed = {{0, 0}, {2, 2}, {2, 0}, {0, 2}};
  EXPECT_EQ(CQXGeometry::TestConvexity(4, dented.data()), 0);
  EXPECT_EQ(CQXGeometry::TestConvexity(4, crossed.data()), 0);
}

TYPED_TEST(ConvexPolygon, BordersAndTheToleranceAreInside) {
  using T = TypeParam;
  for (int round = 0; round < 200; ++round) {
    Points<T> polygon = this->RandomPolygon();
    for (std::size_t i = 0; i < polygon.size(); ++i) {  // the boundary, and near it
      const auto a = polygon[i], b = polygon[(i + 1) % polygon.size()];
      const double t = this->Draw(), length = std::hypot(double(b.X() - a.X()), double(b.Y() - a.Y()));
      for (const double off : {0.0, 0.01, 0.04}) {
        const auto p = this->At(double(a.X()) + t * double(b.X() - a.X()) + off * double(b.Y() - a.Y()) / length,
                                double(a.Y()) + t * double(b.Y() - a.Y()) - off * double(b.X() - a.X()) / length);
        EXPECT_EQ(CQXGeometry::IsPointInConvexPolygon(p, Count(polygon), polygon.data(), T(0.02)),
                  off < 0.02 ? QX_LOCATION_INSIDE : QX_LOCATION_OUTSIDE);
      }
      EXPECT_EQ(CQXGeometry::IsPointInConvexPolygon(a, Count(polygon), polygon.data(), 0), QX_LOCATION_INSIDE);
    }
  }
  // The sense is found although the first vertices are on one line.
  const Points<T> house = {{0, 0}, {1, 0}, {2, 0}, {3, 0}, {0, 3}};
  const T nan = std::numeric_limits<T>::quiet_NaN();
  EXPECT_EQ(CQXGeometry::IsPointInConvexPolygon<T>({1, 1}, 5, house.data()), QX_LOCATION_INSIDE);
  EXPECT_EQ(CQXGeometry::IsPointInConvexPolygon<T>({3, 0}, 4, house.data()), QX_LOCATION_INSIDE);  // no area
  EXPECT_EQ(CQXGeometry::IsPointInConvexPolygon<T>({4, 0}, 4, house.data()), QX_LOCATION_OUTSIDE);
  // On the lines of edges, some with a vertex on them, and beyond their ends.
  const Points<T> box = {{0, 0}, {1, 0}, {2, 0}, {2, 2}, {0, 2}, {0, 1}};
  for (const auto& p : Points<T>{{0, 5}, {0, -1}, {-1, 0}, {5, 0}, {2, 5}, {2, -1}, {5, 2}, {-1, 2}}) {
    EXPECT_EQ(CQXGeometry::IsPointInConvexPolygon(p, 6, box.data()), QX_LOCATION_OUTSIDE) << p.X() << ' ' << p.Y();
  }
  EXPECT_EQ(CQXGeometry::IsPointInConvexPolygon<T>({1, 1}, 0, nullptr), QX_LOCATION_OUTSIDE);
  EXPECT_EQ(CQXGeometry::IsPointInConvexPolygon<T>({nan, 1}, 5, house.data()), QX_LOCATION_OUTSIDE);
}

TYPED_TEST(ConvexPolygon, PointsExtendAHull) {
  using T = TypeParam;
  for (int round = 0; round < 100; ++round) {
    Points<T> points, hull(65);
    std::int32_t n = 0;
    for (int i = 0; i < 64; ++i) {
      const bool onGrid = round % 2 == 0;  // many points on the edges
      points.push_back(onGrid ? this->At(std::floor(6 * this->Draw()), std::floor(6 * this->Draw()))
                              : this->At(this->Draw(), this->Draw()));
      const std::int32_t before = n;
      const std::int32_t isExtended = CQXGeometry::AddPointToConvexHall(points.back(), n, hull.data());
      EXPECT_LE(n, before + isExtended);
    }
    const Points<T> built = Hull(points);
    ASSERT_EQ(n, Count(built));
    EXPECT_TRUE(std::equal(built.begin(), built.end(), hull.begin(), AreSame<T>));
  }
}

TYPED_TEST(ConvexPolygon, IntersectionsOfKnownPolygons) {
  using T = TypeParam;
  const Points<T> square = this->Rectangle(0, 0, 2, 2);
  const Points<T> diamond = {{1, -T(0.5)}, {T(2.5), 1}, {1, T(2.5)}, {-T(0.5), 1}};
  const std::pair<Points<T>, std::int32_t> cases[] = {{diamond, 8},
                                                      {this->Rectangle(2, 0, 3, 2), 2},  // a common edge
                                                      {this->Rectangle(2, 2, 3, 3), 1},  // a common corner
                                                      {this->Rectangle(3, 0, 4, 1), 0},
                                                      {{{-1, 1}, {3, 1}}, 2},
                                                      {{{1, 1}}, 1},
                                                      {{}, 0}};
  Points<T> result(8);
  std::int32_t k = -1;
  for (const auto& [other, count] : cases) {
    EXPECT_EQ(CQXGeometry::IntersectConvexPolygons(4, square.data(), Count(other), other.data(), k, result.data()),
              count > 0);
    EXPECT_EQ(k, count);
  }
  CQXGeometry::UniteConvexPolygons(4, square.data(), 4, diamond.data(), k, result.data());
  EXPECT_EQ(k, 8);
}

TYPED_TEST(ConvexPolygon, IntersectionsHoldWhatIsInBoth) {
  using T = TypeParam;
  const double near = 64 * static_cast<double>(this->eps);
  for (int round = 0; round < 300; ++round) {
    const Points<T> a = this->RandomPolygon(), b = this->RandomPolygon();
    const Points<T> clockwise(b.rbegin(), b.rend());
    const Points<T> window = this->Rectangle(0.5, 0.6, 1.2, 1.1);
    const bool byRectangle = round % 2 == 1;
    const Points<T>& other = byRectangle ? window : b;
    Points<T> result(a.size() + other.size());
    std::int32_t k = -1;
    if (byRectangle) {
      CQXGeometry::ConvexPolygonRectangleIntersection(Count(a), a.data(), window[2], window[0], k, result.data());
    } else {
      CQXGeometry::IntersectConvexPolygons(Count(a), a.data(), Count(b), clockwise.data(), k, result.data());
    }
    ASSERT_LE(k, static_cast<std::int32_t>(a.size() + other.size()));
    result.resize(static_cast<std::size_t>(k));
    for (const auto& v : result) {
      EXPECT_GE(Depth(a, v), -near);
      EXPECT_GE(Depth(other, v), byRectangle ? 0 : -near);
    }
    for (int i = 0; i < 30; ++i) {
      const CQXVector2<T> p = this->At(2 * this->Draw(), 2 * this->Draw());
      if (std::min(Depth(a, p), Depth(other, p)) > 1e-5) {
        ASSERT_GE(k, 3);
        EXPECT_GE(Depth(result, p), -near);
      }
    }
  }
}

TYPED_TEST(ConvexPolygon, CutsByLinesAndRays) {
  using T = TypeParam;
  const Points<T> kite = {{0, -1}, {2, 0}, {0, 3}, {-1, 0}};
  const T nan = std::numeric_limits<T>::quiet_NaN();
  T low = -7, high = -7;
  EXPECT_EQ(CQXGeometry::HorizIntersectionConvexPolygon(4, kite.data(), nan, low, high), 0);
  EXPECT_EQ(CQXGeometry::VertIntersectionConvexPolygon(4, kite.data(), T(2.5), low, high), 0);
  EXPECT_TRUE(low == -7 && high == -7);
  EXPECT_EQ(CQXGeometry::HorizIntersectionConvexPolygon(4, kite.data(), 3, low, high), 1);
  EXPECT_TRUE(low == 0 && high == 0);  // touches
  EXPECT_EQ(CQXGeometry::VertIntersectionConvexPolygon(4, kite.data(), 1, low, high), 1);
  EXPECT_TRUE(low == T(-0.5) && high == T(1.5));
  CQXVector2<T> exit(-7, -7);
  for (int angle = -360; angle <= 360; angle += 5) {
    Points<T> polygon = this->RandomPolygon();
    const CQXVector2<T> center = CQXGeometry::CalculatePolygonCenter(Count(polygon), polygon.data());
    ASSERT_EQ(CQXGeometry::PolarRayPolygonIntersection(center, T(angle), Count(polygon), polygon.data(), exit), 1);
    EXPECT_NEAR(Depth(polygon, exit), 0, 16 * static_cast<double>(this->eps));
    const double turn = std::atan2(double(exit.Y() - center.Y()), double(exit.X() - center.X()));
    EXPECT_NEAR(std::remainder(turn * 180 / std::numbers::pi - angle, 360), 0, 1e4 * static_cast<double>(this->eps));
  }
  EXPECT_EQ(CQXGeometry::PolarRayPolygonIntersection<T>({-2, 0}, 0, 4, kite.data(), exit),
            1);  // from outside: the exit
  EXPECT_NEAR(exit.X(), 2, 1e-5);
  EXPECT_EQ(CQXGeometry::PolarRayPolygonIntersection<T>({-2, 0}, 180, 4, kite.data(), exit), 0);
}

/// Against all pairs and all edges: polygons as programs have them, with offsets and vertices on edges.
TYPED_TEST(ConvexPolygon, RoundedRingsAgreeWithBruteForce) {
  using T = TypeParam;
  for (int round = 0; round < 480; ++round) {
    const double offset = round % 5 * 1000, noise = 16 * static_cast<double>(this->eps) * (offset + 100);
    const Points<T> ring = this->RingAt(offset, round), hull = Hull(ring);
    const std::int32_t n = Count(ring);
    const auto location = [&](const CQXVector2<T>& p) {
      return CQXGeometry::IsPointInConvexPolygon(p, n, ring.data());
    };
    double diameter = 0, angle = 360 * this->Draw();
    for (const auto& a : ring) {
      for (const auto& b : ring)
        diameter = std::max(diameter, std::hypot(double(a.X()) - b.X(), double(a.Y()) - b.Y()));
      // Just outside of vertices the noise decides, farther away nothing but the depth.
      for (const double step : {0.1, 3.0, 1e4}) {
        for (const auto& p :
             {this->At(a.X() + step, a.Y()), this->At(a.X(), a.Y() - step), a + (ring[0] - a) * T(step)}) {
          const double depth = Depth(hull, p);
          if (std::abs(depth) < noise) continue;
          ASSERT_EQ(location(p), depth > 0 ? QX_LOCATION_INSIDE : QX_LOCATION_OUTSIDE) << round << ' ' << depth;
        }
      }
      ASSERT_EQ(CQXGeometry::IsPointInConvexPolygon(a, n, ring.data(), 0), QX_LOCATION_INSIDE) << round;
    }
    ASSERT_NEAR(CQXGeometry::CalculatePolygonDiameter(n, ring.data()), diameter, diameter * this->eps);
    const auto centre = CQXGeometry::CalculatePolygonCenter(n, ring.data());
    if (Depth(hull, centre) < noise) continue;
    ASSERT_EQ(location(centre), QX_LOCATION_INSIDE) << round;
    CQXVector2<T> exit;
    ASSERT_EQ(CQXGeometry::PolarRayPolygonIntersection(centre, T(angle), n, ring.data(), exit), 1);
    ASSERT_NEAR(Depth(hull, exit), 0, noise) << round;
    // The intersection with itself, moved by a little, loses no more than that.
    Points<T> moved = ring, common(2 * ring.size());
    for (auto& v : moved) v.X() += T(0.5);
    std::int32_t k = 0;
    CQXGeometry::IntersectConvexPolygons(n, ring.data(), n, moved.data(), k, common.data());
    common.resize(static_cast<std::size_t>(k));
    for (const auto& v : ring) {
      const auto p = v + (centre - v) * T(0.25);
      if (std::min(Depth(hull, p), Depth(Hull(moved), p)) < noise) continue;
      ASSERT_GE(Depth(Hull(common), p), -noise) << round;
    }
  }
  const Points<T> run = {{0, 2}, {3, 2}, {4, 2}, {9, 2}};
  EXPECT_EQ(CQXGeometry::CalculatePolygonDiameter(4, run.data()), 9);
}

TYPED_TEST(ConvexPolygon, MeasuresOfABox) {
  using T = TypeParam;
  const Points<T> box = this->Rectangle(0, 0, 4, 3);
  EXPECT_EQ(CQXGeometry::CalculatePolygonDiameter(4, box.data()), 5);
  EXPECT_EQ(CQXGeometry::CalculatePolygonInternalRadius(4, box.data()), T(1.5));
  EXPECT_EQ(CQXGeometry::CalculatePolygonInternalRadius(2, box.data()), 0);
  EXPECT_EQ(CQXGeometry::CalculatePolygonDiameter(0, box.data()), 0);
  EXPECT_EQ(CQXGeometry::CalculatePolygonCenter(0, box.data()).X(), 0);
}

}  // namespace
