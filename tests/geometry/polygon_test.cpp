#include <qx/geometry/geometry.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <numeric>
#include <random>
#include <vector>

#include "tests/typed_test.h"

namespace {

template <typename T>
using Points = std::vector<CQXVector2<T>>;

template <typename T>
class GeneralPolygon : public ::testing::Test {
 protected:
  static constexpr double eps = static_cast<double>(std::numeric_limits<T>::epsilon());

  static std::int32_t Count(const Points<T>& points) { return static_cast<std::int32_t>(points.size()); }
  int Whole(int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(engine); }

  /// Whole coordinates about (100, -50) in the order of their angle: simple, with reentrant corners.
  Points<T> Star() {
    Points<T> star;
    const int n = Whole(3, 12);
    for (int i = 0; i < n; ++i) {
      const double angle = 2 * std::numbers::pi * (i + 0.2) / n, radius = Whole(6, 20);
      star.emplace_back(T(100 + std::round(radius * std::cos(angle))), T(-50 + std::round(radius * std::sin(angle))));
    }
    return star;
  }
  /// Turns about p by the sum of angles, in units of a full turn.
  static double Turns(const Points<T>& polygon, const CQXVector2<T>& p) {
    double angle = 0;
    for (std::size_t i = 0; i < polygon.size(); ++i) {
      const auto a = polygon[i] - p, b = polygon[(i + 1) % polygon.size()] - p;
      angle += std::atan2(double(a.X()) * double(b.Y()) - double(a.Y()) * double(b.X()), double(a.Dot(b)));
    }
    return angle / (2 * std::numbers::pi);
  }

  std::mt19937 engine{31};
};
TYPED_TEST_SUITE(GeneralPolygon, FloatTypes);

TYPED_TEST(GeneralPolygon, WholePointsAreCountedAsPickSays) {
  using T = TypeParam;
  for (int round = 0; round < 60; ++round) {
    Points<T> polygon = this->Star();
    std::int32_t n = this->Count(polygon);
    if (CQXGeometry::IsPolygonSimple(n, polygon.data()) == 0) continue;  // rounding joined two corners
    std::int64_t border = 0, inside = 0;
    for (std::size_t i = 0; i < polygon.size(); ++i) {
      const auto edge = polygon[(i + 1) % polygon.size()] - polygon[i];
      border += std::gcd(std::int64_t(edge.X()), std::int64_t(edge.Y()));
    }
    const double area = double(CQXGeometry::CalculatePolygonArea(n, polygon.data()));
    if (round % 2 != 0) std::reverse(polygon.begin(), polygon.end());
    if (round % 3 == 0) polygon.push_back(polygon[0]);
    n = this->Count(polygon);
    EXPECT_EQ(double(CQXGeometry::CalculatePolygonArea(n, polygon.data())), round % 2 != 0 ? -area : area);
    CQXVector2<T> centroid;
    ASSERT_EQ(CQXGeometry::CalculatePolygonCentroid(n, polygon.data(), centroid), 1);
    double momentX = 0, momentY = 0;
    for (int y = -80; y <= -20; ++y) {
      for (int x = 70; x <= 130; ++x) {
        const CQXVector2<T> p{T(x), T(y)};
        for (const qxFillRule rule : {QX_FILL_NON_ZERO, QX_FILL_EVEN_ODD}) {
          inside += CQXGeometry::IsPointInPolygon(p, n, polygon.data(), rule) == QX_LOCATION_INSIDE;
        }
        // Inside of the cells, on no edge.
        const CQXVector2<T> q(T(x) + T(0.5), T(y) + T(0.37));
        const int winding = CQXGeometry::FindWindingNumber(q, n, polygon.data());
        const double turns = this->Turns(polygon, q);
        if (std::abs(turns - std::round(turns)) < 1e-3) {
          EXPECT_EQ(winding, int(std::round(turns))) << x << ' ' << y;
        }
        momentX += std::abs(winding) * double(q.X());
        momentY += std::abs(winding) * double(q.Y());
      }
    }
    EXPECT_EQ(double(inside) / 2, area + double(border) / 2 + 1) << round;
    EXPECT_NEAR(double(centroid.X()), momentX / area, 0.5 + 100 * double(border) / area);
    EXPECT_NEAR(double(centroid.Y()), momentY / area, 0.5 + 50 * double(border) / area);
  }
}

TYPED_TEST(GeneralPolygon, MeasuresOfAnAngle) {
  using T = TypeParam;
  const Points<T> angle = {{0, 0}, {4, 0}, {4, 1}, {1, 1}, {1, 3}, {0, 3}};
  CQXVector2<T> centroid(77, 77);
  EXPECT_EQ(CQXGeometry::CalculatePolygonArea(6, angle.data()), 6);
  EXPECT_EQ(CQXGeometry::CalculatePolygonPerimeter(6, angle.data()), 14);
  ASSERT_EQ(CQXGeometry::CalculatePolygonCentroid(6, angle.data(), centroid), 1);
  EXPECT_NEAR(double(centroid.X()), (4 * 2 + 2 * 0.5) / 6, 4 * this->eps);
  EXPECT_NEAR(double(centroid.Y()), (4 * 0.5 + 2 * 2) / 6, 4 * this->eps);
  const Points<T> flat = {{0, 0}, {4, 0}, {2, 0}};
  centroid = {77, 77};
  for (const std::int32_t n : {-1, 0, 2, 3}) {
    EXPECT_EQ(CQXGeometry::CalculatePolygonArea(n, flat.data()), 0);
    EXPECT_EQ(CQXGeometry::CalculatePolygonCentroid(n, flat.data(), centroid), 0);
  }
  EXPECT_EQ(centroid.X(), 77);
  EXPECT_EQ(CQXGeometry::CalculatePolygonPerimeter(3, flat.data()), 8);
}

TYPED_TEST(GeneralPolygon, RulesDifferWhereTheBorderGoesRoundTwice) {
  using T = TypeParam;
  // A square, and in it a smaller one in the same sense: its inside has the winding number 2.
  const Points<T> twice = {{0, 0}, {9, 0}, {9, 9}, {0, 9}, {0, 0}, {3, 3}, {6, 3}, {6, 6}, {3, 6}, {3, 3}};
  const T nan = std::numeric_limits<T>::quiet_NaN();
  const struct {
    CQXVector2<T> p;
    T tolerance;
    std::int32_t winding;
    bool isNonZero, isOdd;
  } cases[] = {{{1, 4}, 0, 1, true, true},     {{4, 4}, 0, 2, true, false},    {{3, 4}, 0, 0, true, true},
               {{4, 3}, 0, 0, true, true},     {{9, 9}, 0, 0, true, true},     {{0, 0}, 0, 0, true, true},
               {{10, 9}, 0, 0, false, false},  {{-1, 9}, 0, 0, false, false},  {{-1, 4}, 0, 0, false, false},
               {{10, 0}, 1, 0, true, true},    {{10, -1}, 1, 0, false, false}, {{4, 9}, 0, 0, true, true},
               {{nan, 4}, 1, 0, false, false}, {{4, nan}, 1, 0, false, false}, {{5, T(3.5)}, T(0.5), 2, true, true}};
  for (const auto& c : cases) {
    const std::int32_t n = this->Count(twice);
    EXPECT_EQ(CQXGeometry::FindWindingNumber(c.p, n, twice.data()), c.winding) << c.p.X() << ' ' << c.p.Y();
    EXPECT_EQ(CQXGeometry::IsPointInPolygon(c.p, n, twice.data(), QX_FILL_NON_ZERO, c.tolerance) == QX_LOCATION_INSIDE,
              c.isNonZero);
    EXPECT_EQ(CQXGeometry::IsPointInPolygon(c.p, n, twice.data(), QX_FILL_EVEN_ODD, c.tolerance) == QX_LOCATION_INSIDE,
              c.isOdd);
  }
  EXPECT_EQ(CQXGeometry::IsPointInPolygon<T>({0, 0}, 0, nullptr), QX_LOCATION_OUTSIDE);
}

TYPED_TEST(GeneralPolygon, SimpleBordersNeitherTouchNorCross) {
  using T = TypeParam;
  const struct {
    Points<T> polygon;
    std::int32_t isSimple;
  } cases[] = {{{{0, 0}, {4, 0}, {2, 3}}, 1},
               {{{0, 0}, {4, 0}, {2, 3}, {0, 0}}, 1},  // closed
               {{{0, 0}, {4, 0}}, 0},
               {{{0, 0}, {4, 0}, {2, 0}}, 0},                           // flat
               {{{0, 0}, {4, 0}, {4, 0}, {2, 3}}, 0},                   // one vertex twice
               {{{0, 0}, {4, 4}, {4, 0}, {0, 4}}, 0},                   // crossed
               {{{0, 0}, {4, 0}, {4, 4}, {2, 0}, {0, 4}}, 0},           // touches an edge
               {{{0, 0}, {4, 0}, {4, 4}, {2, T(0.001)}, {0, 4}}, 1},    // nearly
               {{{0, 0}, {4, 0}, {4, 4}, {4, 2}, {6, 2}, {6, -1}}, 0},  // runs back
               {{{0, 0}, {2, 0}, {4, 0}, {4, 4}}, 1},                   // a vertex on an edge
               {{{0, 0}, {T(INFINITY), 0}, {4, 4}}, 0}};
  for (const auto& c : cases) {
    Points<T> polygon = c.polygon;
    for (std::size_t i = 0; i < polygon.size(); ++i) {
      EXPECT_EQ(CQXGeometry::IsPolygonSimple(this->Count(polygon), polygon.data()), c.isSimple) << &c - cases;
      if (polygon.size() > 4) std::rotate(polygon.begin(), polygon.begin() + 1, polygon.end());
    }
  }
  EXPECT_EQ(CQXGeometry::IsPolygonSimple<T>(-1, nullptr), 0);
}

}  // namespace
