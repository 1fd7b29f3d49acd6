#include <qx/geometry/geometry.h>
#include <qx/grids/grid.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <utility>
#include <vector>

#include "tests/typed_test.h"

namespace {

template <typename T>
using Points = std::vector<CQXVector2<T>>;

template <typename T>
class Grid : public ::testing::Test {
 protected:
  static constexpr double eps = static_cast<double>(std::numeric_limits<T>::epsilon());

  T In(double from, double to) { return T(std::uniform_real_distribution<double>(from, to)(engine)); }
  static std::int32_t Count(const Points<T>& points) { return static_cast<std::int32_t>(points.size()); }
  static Points<T> Rectangle(T x1, T y1, T x2, T y2) { return {{x1, y1}, {x2, y1}, {x2, y2}, {x1, y2}}; }

  /// What polygons cover of a pixel, by cutting the triangles from (0, 0) over each edge to the pixel, with their sign.
  static double Covered(const Points<T>& polygon, int x, int y) {
    double sum = 0;
    for (std::size_t i = 0; i < polygon.size(); ++i) {
      const auto wide = [&](std::size_t k) { return CQXVector2<double>(polygon[k].X(), polygon[k].Y()); };
      CQXVector2<double> triangle[] = {{0, 0}, wide(i), wide((i + 1) % polygon.size())}, part[7];
      std::int32_t k = 0;
      const double area = CQXGeometry::CalculatePolygonArea(3, triangle);
      CQXGeometry::ConvexPolygonRectangleIntersection<double>(3, triangle, {double(x), double(y)}, {x + 1.0, y + 1.0},
                                                              k, part);
      sum += (area < 0 ? -1 : 1) * CQXGeometry::CalculatePolygonArea(k, part);
    }
    return std::abs(sum);
  }

  std::mt19937 engine{1729};
};
TYPED_TEST_SUITE(Grid, FloatTypes);

TYPED_TEST(Grid, CoverageIsTheAreaInEachPixel) {
  using T = TypeParam;
  CQXGrid<T> grid(11, 9);
  for (int round = 0; round < 60; ++round) {
    Points<T> polygon;
    for (int i = 0, n = 3 + round % 6; i < n; ++i) {  // simple, some of it outside of the grid
      const double angle = 6.2831853 * (i + double(this->In(0, 0.9))) / n,
                   radius = double(this->In(0.3, round % 2 == 0 ? 4 : 9));
      polygon.emplace_back(T(5.2 + radius * std::cos(angle)), T(4.4 + radius * std::sin(angle)));
      if (round % 3 == 0) polygon.back() = {std::floor(polygon.back().X()), std::floor(polygon.back().Y())};
    }
    if (CQXGeometry::IsPolygonSimple(this->Count(polygon), polygon.data()) == 0) continue;
    if (round % 4 < 2) std::reverse(polygon.begin(), polygon.end());
    grid.SetToConstant(T(0.3));
    const qxFillRule rule = round % 5 < 2 ? QX_FILL_EVEN_ODD : QX_FILL_NON_ZERO;
    ASSERT_EQ(grid.RasterizePolygon(this->Count(polygon), polygon.data(), rule), 1);
    for (int y = 0; y < 9; ++y) {
      for (int x = 0; x < 11; ++x) {
        const double covered = this->Covered(polygon, x, y);
        ASSERT_NEAR(double(grid(x, y)), covered, 4e-12 + this->eps) << round << ": " << x << ' ' << y;
        if (covered < 1e-13) {
          ASSERT_EQ(grid(x, y), 0) << round << ": " << x << ' ' << y;
        }
        if (covered > 1 - 1e-13) {
          ASSERT_EQ(grid(x, y), 1) << round << ": " << x << ' ' << y;
        }
      }
    }
  }
}

TYPED_TEST(Grid, BordersOfPixelsAreExact) {
  using T = TypeParam;
  CQXGrid<T> grid(4, 3);
  const T far = T(9e29);
  const struct {
    Points<T> polygon;
    T pixels[12];
  } cases[] = {{this->Rectangle(1, 1, 3, 2), {0, 0, 0, 0, 0, 1, 1, 0, 0, 0, 0, 0}},
               {this->Rectangle(T(0.5), T(0.25), T(2.75), 1), {T(0.375), T(0.75), T(0.5625), 0}},
               {this->Rectangle(-5, -5, 9, 9), {1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1}},
               {this->Rectangle(-far, -far, far, far), {1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1}},
               {this->Rectangle(4, 0, 9, 3), {}},
               {this->Rectangle(-9, 0, 0, 3), {}},
               {this->Rectangle(0, 3, 4, 9), {}},
               {this->Rectangle(0, -9, 4, 0), {}},
               {this->Rectangle(3, 2, 9, 9), {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1}},
               {{{0, 0}, {4, 0}, {0, 4}}, {1, 1, 1, T(0.5), 1, 1, T(0.5), 0, 1, T(0.5), 0, 0}},
               {{{1, 1}, {2, 2}}, {}},
               {{{1, 1}}, {}},
               {{}, {}}};
  for (const auto& c : cases) {
    ASSERT_EQ(grid.RasterizePolygon(this->Count(c.polygon), c.polygon.data()), 1);
    for (std::size_t i = 0; i < 12; ++i) EXPECT_EQ(grid.Data()[i], c.pixels[i]) << &c - cases << ": " << i;
  }
  for (const T bad : {std::numeric_limits<T>::quiet_NaN(), std::numeric_limits<T>::infinity(), T(2e30)}) {
    const Points<T> polygon = {{0, 0}, {4, 0}, {0, bad}, {bad, 4}};
    grid.SetToConstant(T(0.3));
    EXPECT_EQ(grid.RasterizePolygon(3, polygon.data()), 0);
    EXPECT_EQ(grid.RasterizePolygon(4, polygon.data()), 0);
    EXPECT_EQ(grid(2, 1), T(0.3));
  }
}

TYPED_TEST(Grid, HolesAndSecondTurnsFollowTheRule) {
  using T = TypeParam;
  Points<T> vertices = this->Rectangle(0, 0, 5, 5), hole = this->Rectangle(T(1.5), 1, 4, 4);
  vertices.insert(vertices.end(), hole.begin(), hole.end());
  const std::int32_t counts[] = {4, -7, 4};  // an empty one between them
  CQXGrid<T> grid(5, 5);
  for (const bool isTurned : {false, true}) {
    if (isTurned) std::reverse(vertices.begin() + 4, vertices.end());
    for (const qxFillRule rule : {QX_FILL_NON_ZERO, QX_FILL_EVEN_ODD}) {
      ASSERT_EQ(grid.RasterizePolygons(3, counts, vertices.data(), rule), 1);
      EXPECT_EQ(grid(0, 2), 1);
      EXPECT_EQ(grid(2, 2), isTurned || rule == QX_FILL_EVEN_ODD ? 0 : 1);
      EXPECT_EQ(grid(4, 4), 1);
      EXPECT_EQ(grid(1, 2), isTurned || rule == QX_FILL_EVEN_ODD ? T(0.5) : T(1));
    }
  }
}

TYPED_TEST(Grid, DistancesAreThoseOfAllPairs) {
  using T = TypeParam;
  for (int round = 0; round < 60; ++round) {
    const std::int32_t width = 1 + round % 9, height = 1 + round % 7;
    CQXGrid<T> mask(width, height), field;
    const double share = round % 4 == 0 ? 0.05 : round % 4 == 1 ? 0.5 : 0.95;
    for (std::size_t i = 0; i < mask.Count(); ++i) mask.Data()[i] = double(this->In(0, 1)) < share ? T(0.5) : T(0.4999);
    if (round % 10 == 9) mask.SetToConstant(round % 20 == 9 ? T(1) : std::numeric_limits<T>::quiet_NaN());
    ASSERT_EQ(field.SetSignedDistance(mask), 1);
    ASSERT_EQ(field.Width(), width);
    for (std::int32_t y = 0; y < height; ++y) {
      for (std::int32_t x = 0; x < width; ++x) {
        const bool isInside = mask(x, y) >= T(0.5);
        double distance = std::numeric_limits<double>::infinity();
        for (std::int32_t v = 0; v < height; ++v) {
          for (std::int32_t u = 0; u < width; ++u) {
            if ((mask(u, v) >= T(0.5)) != isInside) distance = std::min(distance, std::hypot(u - x, v - y));
          }
        }
        if (distance < 1e9) {
          ASSERT_NEAR(double(field(x, y)), (isInside ? -1 : 1) * (distance - 0.5), 4 * this->eps * distance) << round;
        } else {
          ASSERT_EQ(double(field(x, y)), isInside ? -distance : distance) << round;
        }
      }
    }
    ASSERT_EQ(mask.SetSignedDistance(mask), 1);  // in place
    EXPECT_TRUE(std::equal(mask.Data(), mask.Data() + mask.Count(), field.Data()));
  }
}

TYPED_TEST(Grid, CopiesOwnTheirPixelsAndMovesHandThemOver) {
  using T = TypeParam;
  CQXGrid<T> a(3, 2), none(0, 5), b;
  EXPECT_EQ(none.Width() + none.Height() + static_cast<std::int32_t>(none.Count()), 0);
  EXPECT_EQ(none.RasterizePolygon(0, nullptr) + none.SetSignedDistance(none), 2);
  a(2, 1) = 7;
  b = a;
  CQXGrid<T> c(b);
  b(2, 1) = 8;
  EXPECT_EQ(a(2, 1) + c(2, 1), 14);
  const T* const block = c.Data();
  CQXGrid<T> d(std::move(c));
  a = std::move(d);
  EXPECT_EQ(a.Data(), block);
  EXPECT_EQ(a.Width() * 10 + a.Height(), 32);
  EXPECT_EQ(c.Count() + d.Count(), 0u);
  EXPECT_EQ(c.Width() + d.Height(), 0);
  std::swap(a, b);
  EXPECT_EQ(a(2, 1) - b(2, 1), 1);
  a = *&a;
  EXPECT_EQ(a(2, 1), 8);
  a = none;
  EXPECT_EQ(a.Data(), nullptr);
}

}  // namespace
