#include <qx/geometry/geometry.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "tests/typed_test.h"

namespace {

template <typename T>
class Segments : public ::testing::Test {
 public:
  static constexpr double eps = static_cast<double>(std::numeric_limits<T>::epsilon());

  T In(double from, double to) { return T(std::uniform_real_distribution<double>(from, to)(engine)); }
  template <typename V>
  V Random() {
    V v;
    for (std::int32_t i = 0; i < V::Dim(); ++i) v[i] = In(-2, 2);
    return v;
  }

  std::mt19937 engine{271};
};
TYPED_TEST_SUITE(Segments, FloatTypes);

struct Cell {
  int x, y;
};
int Cross(Cell a, Cell b) { return a.x * b.y - a.y * b.x; }

/// The kind by whole numbers: the parameters of the common point, or intervals on the common line.
qxSegmentsIntersection Model(Cell a, Cell b, Cell c, Cell d) {
  const Cell u{b.x - a.x, b.y - a.y}, v{d.x - c.x, d.y - c.y}, w{c.x - a.x, c.y - a.y};
  const int determinant = Cross(u, v);
  if (determinant != 0) {
    const int sign = determinant < 0 ? -1 : 1, full = sign * determinant;
    const int s = sign * Cross(w, v), t = sign * Cross(w, u);
    if (s < 0 || s > full || t < 0 || t > full) return QX_SEGMENTS_APART;
    return s > 0 && s < full && t > 0 && t < full ? QX_SEGMENTS_CROSS : QX_SEGMENTS_TOUCH;
  }
  const Cell along = u.x != 0 || u.y != 0 ? u : v.x != 0 || v.y != 0 ? v : w;
  if (Cross(along, w) != 0) return QX_SEGMENTS_APART;
  const auto place = [&](Cell p) { return along.x * p.x + along.y * p.y; };
  const int low = std::max(std::min(place(a), place(b)), std::min(place(c), place(d)));
  const int high = std::min(std::max(place(a), place(b)), std::max(place(c), place(d)));
  return low > high ? QX_SEGMENTS_APART : low == high ? QX_SEGMENTS_TOUCH : QX_SEGMENTS_OVERLAP;
}

TYPED_TEST(Segments, EveryPairOnASmallGridMeetsAsItShould) {
  using T = TypeParam;
  using V = CQXVector2<T>;
  const auto cell = [](int i) { return Cell{i % 4, i / 4}; };
  const auto at = [&](int i) { return V(T(1 << 20) + T(cell(i).x), T(-7) - T(cell(i).y)); };
  for (int i = 0; i < 16 * 16 * 16 * 16; ++i) {
    const int k[] = {i % 16, i / 16 % 16, i / 256 % 16, i / 4096};
    const V a = at(k[0]), b = at(k[1]), c = at(k[2]), d = at(k[3]);
    V from(77, 77), to(77, 77);
    const qxSegmentsIntersection kind = CQXGeometry::SegmentsIntersection(a, b, c, d, from, to);
    ASSERT_EQ(kind, Model(cell(k[0]), cell(k[1]), cell(k[2]), cell(k[3]))) << i;
    if (kind == QX_SEGMENTS_APART) {
      ASSERT_EQ(from.X() + to.Y(), 154);
      continue;
    }
    ASSERT_EQ(from.X() == to.X() && from.Y() == to.Y(), kind != QX_SEGMENTS_OVERLAP) << i;
    if (kind == QX_SEGMENTS_OVERLAP) {
      ASSERT_GT((to - from).Dot(b - a), 0) << i;
    }
    for (const V& p : {from, to}) {  // in 64-bit floats the distance of a rounded point is that of its rounding
      ASSERT_LE(CQXGeometry::DistanceToSegment(p, a, b), T(1 << 20) * std::numeric_limits<T>::epsilon()) << i;
      ASSERT_LE(CQXGeometry::DistanceToSegment(p, c, d), T(1 << 20) * std::numeric_limits<T>::epsilon()) << i;
    }
  }
}

template <typename V, typename Test>
void NearestPoints(Test& test) {
  using T = typename V::Element;
  for (int round = 0; round < 400; ++round) {
    V a = test.template Random<V>(), b = test.template Random<V>(), c = test.template Random<V>(),
      d = test.template Random<V>(), p, q;
    if (round % 4 == 1) b = a;
    if (round % 4 == 2) d = c + (b - a) * T(round % 8 == 2 ? 2 : -1);  // parallel
    const double distance = double(CQXGeometry::ClosestPointsOfSegments(a, b, c, d, p, q));
    EXPECT_NEAR(distance, double((p - q).Length()), 8 * test.eps);
    EXPECT_NEAR(double(CQXGeometry::DistanceToSegment(p, a, b)), 0, 4 * test.eps);
    EXPECT_NEAR(double(CQXGeometry::DistanceToSegment(q, c, d)), 0, 4 * test.eps);
    double sampled = distance + 1;
    for (int i = 0; i <= 40; ++i) {
      const V onFirst = a + (b - a) * (T(i) / 40);
      double nearest = 1e9;
      for (int k = 0; k <= 40; ++k) {
        nearest = std::min(nearest, double((onFirst - c - (d - c) * (T(k) / 40)).Length()));
      }
      sampled = std::min(sampled, nearest);
      const double exact = double(CQXGeometry::DistanceToSegment(onFirst, c, d));
      EXPECT_LE(exact, nearest + 8 * test.eps);
      EXPECT_GE(exact, nearest - double((d - c).Length()) / 80 - 8 * test.eps);
    }
    EXPECT_LE(distance, sampled + 8 * test.eps);
    EXPECT_GE(distance, sampled - double((b - a).Length() + (d - c).Length()) / 80 - 8 * test.eps);

    const V foot = CQXGeometry::ProjectOnLine(c, a, b);
    EXPECT_NEAR(double((c - foot).Dot(b - a)), 0, 128 * test.eps);
    EXPECT_NEAR(double(CQXGeometry::DistanceToLine(c, a, b)), double((c - foot).Length()), 64 * test.eps);
    p = q = V(T(77));
    const std::int32_t found = CQXGeometry::ClosestPointsOfLines(a, b, c, d, p, q);
    ASSERT_EQ(found, round % 4 == 1 || (round % 4 == 2 && sizeof(T) == 8) ? 0 : found);
    if (found == 0) {
      EXPECT_EQ(p[0] + q[1], 154);
    } else if (round % 4 != 2) {  // the connection is perpendicular to both
      const double size = 1 + double(p.Length()) + double(q.Length());
      EXPECT_NEAR(double((p - q).Dot(b - a)), 0, 256 * test.eps * size * size);
      EXPECT_NEAR(double((p - q).Dot(d - c)), 0, 256 * test.eps * size * size);
    }
  }
}

TYPED_TEST(Segments, NearestPointsBeatAllSamples) {
  using T = TypeParam;
  NearestPoints<CQXVector2<T>>(*this);
  NearestPoints<CQXVector3<T>>(*this);
  CQXVector3<T> p, q;
  // Over and above each other, and beyond an end.
  EXPECT_EQ((CQXGeometry::ClosestPointsOfSegments<CQXVector3<T>>({0, 0, 0}, {4, 0, 0}, {1, -1, 2}, {1, 3, 2}, p, q)),
            2);
  EXPECT_EQ((p - CQXVector3<T>(1, 0, 0)).NormInf() + (q - CQXVector3<T>(1, 0, 2)).NormInf(), 0);
  EXPECT_EQ((CQXGeometry::ClosestPointOnSegment<CQXVector2<T>>({9, 3}, {0, 0}, {4, 0}) - CQXVector2<T>(4, 0)).NormInf(),
            0);
  EXPECT_EQ((CQXGeometry::DistanceToLine<CQXVector2<T>>({9, 3}, {0, 0}, {4, 0})), 3);
  EXPECT_EQ((CQXGeometry::DistanceToSegment<CQXVector2<T>>({7, 4}, {0, 0}, {4, 0})), 5);
}

}  // namespace
