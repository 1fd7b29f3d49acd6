#include <qx/geometry/geometry.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "tests/typed_test.h"

namespace {

template <typename T>
class Curves : public ::testing::Test {
 public:
  static constexpr double eps = static_cast<double>(std::numeric_limits<T>::epsilon());

  T In(double from, double to) { return T(std::uniform_real_distribution<double>(from, to)(engine)); }
  template <typename V>
  std::vector<V> Random(std::int32_t n) {
    std::vector<V> points(static_cast<std::size_t>(n));
    for (auto& p : points) {
      for (std::int32_t i = 0; i < V::Dim(); ++i) p[i] = In(-2, 2);
    }
    return points;
  }
  template <typename V>
  static double DistanceToPolyline(const V& p, const std::vector<V>& polyline) {
    double distance = double((p - polyline[0]).Length());
    for (std::size_t i = 1; i < polyline.size(); ++i) {
      distance = std::min(distance, double(CQXGeometry::DistanceToSegment(p, polyline[i - 1], polyline[i])));
    }
    return distance;
  }

  std::mt19937 engine{577};
};
TYPED_TEST_SUITE(Curves, FloatTypes);

template <typename V, typename Test>
void CurvesOfEveryDegree(Test& test) {
  using T = typename V::Element;
  for (std::int32_t n = 1; n <= 9; ++n) {
    const auto size = static_cast<std::size_t>(n);
    for (int round = 0; round < 10; ++round) {
      const std::vector<V> controls = test.template Random<V>(n);
      const T t = round == 0 ? T(0) : round == 1 ? T(1) : test.In(0, 1);
      // By de Casteljau's construction, and its two halves as curves of their own.
      std::vector<V> left(size), right = controls;
      CQXGeometry::SplitBezier(n, right.data(), t, left.data(), right.data());
      const V p = CQXGeometry::BezierPoint(n, controls.data(), t);
      EXPECT_LE(double((p - left.back()).NormInf()), 16 * n * test.eps);
      EXPECT_LE(double((p - right[0]).NormInf()), 16 * n * test.eps);
      for (const T u : {T(0), T(0.25), T(0.75), T(1)}) {
        EXPECT_LE(
            double((CQXGeometry::BezierPoint(n, left.data(), u) - CQXGeometry::BezierPoint(n, controls.data(), t * u))
                       .NormInf()),
            64 * n * test.eps);
        EXPECT_LE(double((CQXGeometry::BezierPoint(n, right.data(), u) -
                          CQXGeometry::BezierPoint(n, controls.data(), t + (1 - t) * u))
                             .NormInf()),
                  64 * n * test.eps);
      }
      const T tolerance = round % 2 == 0 ? T(0.1) : T(0.002);
      const std::int32_t segmentsNb = CQXGeometry::CountBezierSegments(n, controls.data(), tolerance);
      ASSERT_GE(segmentsNb, 1);
      std::vector<V> polyline(static_cast<std::size_t>(segmentsNb) + 1);
      CQXGeometry::BezierPolyline(n, controls.data(), segmentsNb, polyline.data());
      EXPECT_EQ((polyline[0] - controls[0]).NormInf() + (polyline.back() - controls.back()).NormInf(), 0);
      for (int i = 0; i <= 200; ++i) {
        const V onCurve = CQXGeometry::BezierPoint(n, controls.data(), T(i) / 200);
        EXPECT_LE(test.DistanceToPolyline(onCurve, polyline), double(tolerance) + 16 * test.eps);
      }
    }
  }
}

TYPED_TEST(Curves, PolylinesKeepTheirTolerance) {
  using T = TypeParam;
  using V = CQXVector2<T>;
  CurvesOfEveryDegree<V>(*this);
  CurvesOfEveryDegree<CQXVector3<T>>(*this);
  // A parabola leaves each of k chords by exactly M / (4 k^2), M = 8 being its second difference.
  const V parabola[] = {{0, 0}, {1, 4}, {2, 0}};
  for (const std::int32_t k : {1, 2, 7}) {
    const T bound = T(2) / T(k * k);
    EXPECT_EQ(CQXGeometry::CountBezierSegments(3, parabola, bound * T(1.001)), k);
    EXPECT_EQ(CQXGeometry::CountBezierSegments(3, parabola, bound * T(0.999)), k + 1);
  }
  const V line[] = {{0, 0}, {1, 1}, {2, 2}};
  constexpr std::int32_t most = std::numeric_limits<std::int32_t>::max() - 1;
  EXPECT_EQ(CQXGeometry::CountBezierSegments(3, line, 0), 1);
  EXPECT_EQ(CQXGeometry::CountBezierSegments(0, line, 1), 1);
  for (const T none : {T(0), T(-1), T(NAN), T(1e-37)}) {
    EXPECT_EQ(CQXGeometry::CountBezierSegments(3, parabola, none), most);
  }
  V untouched(77, 77);
  CQXGeometry::BezierPolyline(3, parabola, 0, &untouched);
  CQXGeometry::BezierPolyline(0, parabola, 5, &untouched);
  CQXGeometry::SplitBezier<V>(0, parabola, 0, &untouched, &untouched);
  EXPECT_EQ(untouched.X(), 77);
  EXPECT_EQ(CQXGeometry::BezierPoint<V>(0, parabola, T(0.5)).NormInf(), 0);
}

TYPED_TEST(Curves, SimplifiedPolylinesStayWithinTheTolerance) {
  using T = TypeParam;
  using V = CQXVector2<T>;
  for (int round = 0; round < 60; ++round) {
    std::vector<V> points = this->template Random<V>(1 + round);
    if (round % 2 == 0) {
      for (std::size_t i = 0; i < points.size(); ++i)
        points[i] = {T(i), T(std::sin(0.3 * double(i))) + points[i].Y() / 50};
    }
    const T tolerance = round % 3 == 0 ? T(0.1) : T(0.5);
    std::vector<V> result = points;
    std::int32_t m = -1;
    CQXGeometry::SimplifyPolyline(static_cast<std::int32_t>(result.size()), result.data(), tolerance, m, result.data());
    result.resize(static_cast<std::size_t>(m));
    EXPECT_EQ((result[0] - points[0]).NormInf() + (result.back() - points.back()).NormInf(), 0);
    // A subsequence; what is left out between two is near the segment of these two.
    std::size_t k = 0;
    for (const V& p : points) {
      if (k + 1 < result.size() && (result[k + 1] - p).NormInf() == 0) ++k;
      const V& next = result[std::min(k + 1, result.size() - 1)];
      EXPECT_LE(double(CQXGeometry::DistanceToSegment(p, result[k], next)), double(tolerance)) << round;
    }
    EXPECT_EQ(k + 1, result.size());
  }
  // The farthest vertex stays, then each part is looked at anew; at the tolerance itself a vertex goes.
  const V zigzag[] = {{0, 0}, {1, 1}, {2, -3}, {3, T(-2.5)}, {4, 0}, {4, 0}};
  V result[6];
  std::int32_t m = -1;
  const struct {
    T tolerance;
    std::vector<std::int32_t> kept;
  } cases[] = {
      {3, {0, 5}}, {T(2.9), {0, 2, 5}}, {T(1.3), {0, 1, 2, 5}}, {0, {0, 1, 2, 3, 4, 5}}, {-1, {0, 1, 2, 3, 4, 5}}};
  for (const auto& c : cases) {
    CQXGeometry::SimplifyPolyline(6, zigzag, c.tolerance, m, result);
    if (c.tolerance <= 0) continue;
    ASSERT_EQ(m, static_cast<std::int32_t>(c.kept.size())) << c.tolerance;
    for (std::int32_t i = 0; i < m; ++i) {
      EXPECT_EQ((result[i] - zigzag[c.kept[static_cast<std::size_t>(i)]]).NormInf(), 0);
    }
  }
  CQXGeometry::SimplifyPolyline<V>(0, nullptr, 1, m, nullptr);
  EXPECT_EQ(m, 0);
}

}  // namespace
