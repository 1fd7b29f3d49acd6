#include <qx/geometry/geometry.h>

#include <cmath>
#include <limits>
#include <random>

#include "tests/typed_test.h"

namespace {

template <typename T>
class Planes : public ::testing::Test {
 protected:
  static constexpr double eps = static_cast<double>(std::numeric_limits<T>::epsilon());

  CQXVector3<T> Random() { return {In(), In(), In()}; }
  T In() { return T(std::uniform_real_distribution<double>(-2, 2)(engine)); }

  std::mt19937 engine{141};
};
TYPED_TEST_SUITE(Planes, FloatTypes);

TYPED_TEST(Planes, PointsAgreeWithTheirPlane) {
  using T = TypeParam;
  using V = CQXVector3<T>;
  using Plane = CQXVector4<T>;
  for (int round = 0; round < 300; ++round) {
    const V a = this->Random(), b = this->Random(), c = this->Random(), p = this->Random();
    const double area = double((b - a).Cross(c - a).Length()), bound = 64 * this->eps / area;
    if (area < 0.1) continue;
    Plane plane;
    ASSERT_EQ(CQXGeometry::PlaneThroughPoints(a, b, c, plane), 1);
    const V normal(plane[0], plane[1], plane[2]);
    EXPECT_NEAR(double(normal.Length()), 1, 4 * this->eps);
    EXPECT_GT(double(normal.Dot((b - a).Cross(c - a))), 0);
    for (const V& v : {a, b, c}) EXPECT_NEAR(double(CQXGeometry::DistanceToPlane(v, plane)), 0, bound);
    const V foot = CQXGeometry::ProjectOnPlane(p, plane * T(-3));
    EXPECT_NEAR(double(CQXGeometry::DistanceToPlane(foot, plane)), 0, bound);
    EXPECT_NEAR(double((p - foot).Cross(normal).Length()), 0, 8 * this->eps);
    EXPECT_NEAR(double(CQXGeometry::DistanceToPlane(p, plane * T(-3))), -double((p - foot).Dot(normal)), bound);

    // The barycentric weights of the foot, and the line that goes down to it.
    V weights, hit;
    T parameter = 0;
    ASSERT_EQ(CQXGeometry::BarycentricCoordinates(p, a, b, c, weights), 1);
    EXPECT_NEAR(double((a * weights.X() + b * weights.Y() + c * weights.Z() - foot).Length()), 0, 8 * bound / area);
    const bool isInside = weights.GetMinComponent(0) >= 0;
    if (std::abs(weights.GetMinComponent(0)) > 1e-3) {
      ASSERT_EQ(CQXGeometry::LineTriangleIntersection(p, normal * T(-2), a, b, c, parameter, hit), isInside) << round;
      EXPECT_NEAR(isInside ? double((hit - weights).NormInf()) : 0, 0, 8 * bound / area);
      EXPECT_NEAR(2 * double(parameter), isInside ? double(CQXGeometry::DistanceToPlane(p, plane)) : 0, bound);
    }

    Plane other(this->In(), this->In(), this->In(), this->In());
    V point, direction;
    if (V(other[0], other[1], other[2]).Cross(normal).Length() < T(0.2)) continue;
    ASSERT_EQ(CQXGeometry::PlanesIntersection(plane, other, point, direction), 1);
    EXPECT_GT(double(direction.Dot(normal.Cross(V(other[0], other[1], other[2])))), 0);
    EXPECT_NEAR(double(direction.Dot(point)), 0, 64 * this->eps * (1 + double(point.SquareLength())));
    for (const T u : {T(0), T(1)}) {
      for (const Plane& both : {plane, other}) {
        EXPECT_NEAR(double(CQXGeometry::DistanceToPlane(point + direction * u, both)), 0,
                    256 * this->eps * (1 + double(point.Length())));
      }
    }
  }
}

TYPED_TEST(Planes, HitsAndMissesAtTheBorders) {
  using T = TypeParam;
  using V = CQXVector3<T>;
  const V a(0, 0, 1), b(4, 0, 1), c(0, 4, 1);
  const struct {
    V start, direction;
    bool hits;
    T parameter;
    V weights;
  } lines[] = {{{1, 1, 0}, {0, 0, 1}, true, 1, {T(0.5), T(0.25), T(0.25)}},
               {{0, 0, 0}, {0, 0, 2}, true, T(0.5), {1, 0, 0}},        // a vertex
               {{2, 2, 3}, {0, 0, -1}, true, 2, {0, T(0.5), T(0.5)}},  // an edge
               {{2, 0, 3}, {0, 0, 1}, true, -2, {T(0.5), T(0.5), 0}},  // behind the start
               {{0, 5, 0}, {0, 0, 1}, false, 0, {}},
               {{T(2.001), 2, 0}, {0, 0, 1}, false, 0, {}},
               {{-T(0.001), 1, 0}, {0, 0, 1}, false, 0, {}},
               {{1, -T(0.001), 0}, {0, 0, 1}, false, 0, {}},
               {{0, 0, 1}, {1, 1, 0}, false, 0, {}},  // in the plane
               {{0, 0, 0}, {0, 0, 0}, false, 0, {}}};
  for (const auto& line : lines) {
    for (const bool isTurned : {false, true}) {
      T parameter = 77;
      V weights(T(77));
      ASSERT_EQ(CQXGeometry::LineTriangleIntersection(line.start, line.direction, a, isTurned ? c : b, isTurned ? b : c,
                                                      parameter, weights),
                line.hits);
      EXPECT_EQ(parameter, line.hits ? line.parameter : T(77));
      if (isTurned) std::swap(weights.Y(), weights.Z());
      EXPECT_EQ((weights - (line.hits ? line.weights : V(T(77)))).NormInf(), 0);
    }
  }
  const CQXVector4<T> plane(0, 0, 2, -2), none(0, 0, 0, 3);  // z = 1
  const struct {
    V a, b;
    bool hits;
    V point;
  } segments[] = {{{1, 2, 0}, {3, 2, 2}, true, {2, 2, 1}},  {{1, 2, 1}, {3, 2, 2}, true, {1, 2, 1}},
                  {{1, 2, 3}, {3, 2, 1}, true, {3, 2, 1}},  {{1, 2, 1}, {3, 2, 1}, true, {1, 2, 1}},
                  {{1, 2, 0}, {3, 2, T(0.999)}, false, {}}, {{1, 2, 4}, {3, 2, 2}, false, {}}};
  for (const auto& s : segments) {
    V point(T(77));
    ASSERT_EQ(CQXGeometry::SegmentPlaneIntersection(s.a, s.b, plane, point), s.hits);
    EXPECT_EQ((point - (s.hits ? s.point : V(T(77)))).NormInf(), 0);
  }
  V p(T(77)), q;
  CQXVector4<T> through(77, 77, 77, 77);
  EXPECT_EQ(CQXGeometry::SegmentPlaneIntersection(V(T(NAN), 0, 0), V(), plane, p), 0);
  EXPECT_EQ(CQXGeometry::PlanesIntersection(plane, plane * T(-3), p, q), 0);
  EXPECT_EQ(CQXGeometry::PlanesIntersection(plane, none, p, q), 0);
  EXPECT_EQ(CQXGeometry::PlaneThroughPoints(a, b, V(T(1), 0, 1), through), 0);
  EXPECT_EQ(CQXGeometry::BarycentricCoordinates(p, a, b, V(T(1), 0, 1), p), 0);
  EXPECT_EQ(p.X() + through[0], 154);
  EXPECT_EQ(CQXGeometry::DistanceToPlane(p, none), 0);
  EXPECT_EQ((CQXGeometry::ProjectOnPlane(p, none) - p).NormInf(), 0);
}

}  // namespace
