#include <qx/geometry/geometry.h>
#include <qx/vectors/vector_functions.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <tuple>

#include "tests/typed_test.h"

namespace {

template <typename T>
class Clipping : public ::testing::Test {
 protected:
  static constexpr T eps = std::numeric_limits<T>::epsilon();

  T In(double from, double to) { return T(std::uniform_real_distribution<double>(from, to)(engine)); }

  const CQXVector2<T> corner{-2, 1}, opposite{6, 5};
  std::mt19937 engine{4711};
};
TYPED_TEST_SUITE(Clipping, FloatTypes);

TYPED_TEST(Clipping, SegmentsKeepWhatIsInTheClosedRectangle) {
  using T = TypeParam;
  using V = CQXVector2<T>;
  const V &lo = this->corner, &hi = this->opposite;
  const auto isInside = [&](const V& p) {
    return p.X() >= lo.X() && p.X() <= hi.X() && p.Y() >= lo.Y() && p.Y() <= hi.Y();
  };
  for (int i = 0; i < 20000; ++i) {
    V a(this->In(-6, 10), this->In(-2, 8)), b(this->In(-6, 10), this->In(-2, 8));
    if (i % 8 < 2) a.X() = lo.X();
    if (i % 4 == 1) b.X() = a.X();
    if (i % 4 == 2) b.Y() = a.Y();
    // The parameters of the part, as the intersection of two intervals.
    long double first = 0, last = 1;
    for (std::int32_t axis = 0; axis < 2; ++axis) {
      const long double p = a[axis], v = static_cast<long double>(b[axis]) - p;
      if (v == 0) {
        if (p < lo[axis] || p > hi[axis]) last = -1;
        continue;
      }
      const long double u = (lo[axis] - p) / v, w = (hi[axis] - p) / v;
      first = std::max(first, std::min(u, w));
      last = std::min(last, std::max(u, w));
    }
    if (std::abs(last - first) < 1e-4 && a.X() != b.X()) continue;  // a corner is grazed
    V qa(77, 77), qb(88, 88);
    const std::int32_t result = CQXGeometry::ClipSegmentToRectangle(a, b, lo, hi, qa, qb);
    ASSERT_EQ(result, first <= last ? 1 : 0) << a.X() << ' ' << a.Y() << ' ' << b.X() << ' ' << b.Y();
    if (result == 0) {
      EXPECT_EQ(qa.X() + qb.X(), 165);
      continue;
    }
    for (const auto& [q, end, u] : {std::tuple(qa, a, first), std::tuple(qb, b, last)}) {
      EXPECT_TRUE(isInside(q));
      if (isInside(end)) {
        EXPECT_EQ((q - end).NormInf(), 0);
      } else {
        EXPECT_NEAR(double(q.X()), double(a.X() + u * (static_cast<long double>(b.X()) - a.X())), 64 * this->eps);
        EXPECT_NEAR(double(q.Y()), double(a.Y() + u * (static_cast<long double>(b.Y()) - a.Y())), 64 * this->eps);
        EXPECT_TRUE(q.X() == lo.X() || q.X() == hi.X() || q.Y() == lo.Y() || q.Y() == hi.Y());
      }
    }
  }
  V qa, qb;
  EXPECT_EQ(CQXGeometry::ClipSegmentToRectangle(V(-3, 2), V(-1, 0), lo, hi, qa, qb), 1);  // touches a corner
  for (const T x : {std::numeric_limits<T>::quiet_NaN(), std::numeric_limits<T>::infinity()}) {
    EXPECT_EQ(CQXGeometry::ClipSegmentToRectangle(V(x, 2), V(1, -x), lo, hi, qa, qb), 0);
  }
}

TYPED_TEST(Clipping, BordersAreTestedExactlyBeforeNearly) {
  using T = TypeParam;
  using V = CQXVector2<T>;
  const V lo(0, 0), hi(8, 4);
  const T near = T(5e-7);
  const struct {
    V p;
    qxRectangleBorder verticalFirst, horizontalFirst;
  } cases[] = {{V(0, 2), QX_BORDER_LEFT, QX_BORDER_LEFT},
               {V(3, 4), QX_BORDER_BOTTOM, QX_BORDER_BOTTOM},
               {V(0, 0), QX_BORDER_LEFT, QX_BORDER_TOP},
               {V(8, 4), QX_BORDER_RIGHT, QX_BORDER_BOTTOM},
               {V(near, 0), QX_BORDER_TOP, QX_BORDER_TOP},
               {V(0, near), QX_BORDER_LEFT, QX_BORDER_LEFT},
               {V(near, near), QX_BORDER_LEFT, QX_BORDER_TOP},
               {V(T(3e-6), 2), QX_BORDER_NONE, QX_BORDER_NONE},
               {V(3, T(-1e-7)), QX_BORDER_TOP, QX_BORDER_TOP},
               {V(std::numeric_limits<T>::quiet_NaN(), 2), QX_BORDER_NONE, QX_BORDER_NONE}};
  for (const auto& c : cases) {
    EXPECT_EQ(CQXGeometry::PointRelativelyRectangleBorder(c.p, lo, hi, 0), c.verticalFirst);
    EXPECT_EQ(CQXGeometry::PointRelativelyRectangleBorder(c.p, lo, hi, 1), c.horizontalFirst);
  }
}

TYPED_TEST(Clipping, LinesMeetPlanesUnlessExactlyParallel) {
  using T = TypeParam;
  using V = CQXVector3<T>;
  V point(7, 7, 7);
  EXPECT_EQ(CQXGeometry::LinePlaneIntersection(V(1, 2, 3), V(1, -1, 0), 1, 1, 5, -4, point), 0);
  EXPECT_EQ(point.X(), 7);
  EXPECT_EQ(CQXGeometry::LinePlaneIntersection(V(1, 2, 3), V(0, 0, -2), 0, 0, 2, -1, point), 1);
  EXPECT_EQ((point - V(1, 2, T(0.5))).NormInf(), 0);
  EXPECT_EQ((CQXGeometry::GetPointOnPlane(T(1), T(2), T(2), T(-18)) - V(2, 4, 4)).NormInf(), 0);
  EXPECT_EQ(CQXGeometry::GetPointOnPlane(T(0), T(0), T(0), T(3)).NormInf(), 0);
}

}  // namespace
