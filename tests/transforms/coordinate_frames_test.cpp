#include <qx/transforms/affine_3d_transform.h>
#include <qx/transforms/coordinate_frames.h>

#include <limits>
#include <vector>

#include "tests/transforms/reference.h"
#include "tests/typed_test.h"

namespace {

/// In the plane and in space.
template <typename Frame>
class Frames : public ::testing::Test {
 protected:
  using Kind = qxFrame<Frame>;
  using Element = typename Kind::Element;
  using Vector = typename Kind::Vector;
  using Axes = typename Kind::Axes;
  static constexpr Element eps = std::numeric_limits<Element>::epsilon();
  static constexpr std::int32_t dimension = Vector::Dim();

  Vector RandomVector(double size = 3) {
    Vector v;
    for (std::int32_t i = 0; i < dimension; ++i) v[i] = random.In(-size, size);
    return v;
  }
  Axes RandomRotation() {
    CQXMatrix3<Element> r;
    const auto angles = random.Angles();
    const bool isPlane = dimension == 2;
    r.SetRotationByEulerAngles(isPlane ? 0 : Element(angles[0]), isPlane ? 0 : Element(angles[1]), Element(angles[2]),
                               QX_ROTATIONS_XYZ);
    Axes axes;
    for (std::int32_t i = 0; i < dimension; ++i) {
      for (std::int32_t k = 0; k < dimension; ++k) axes(i, k) = r(i, k);
    }
    return axes;
  }
  /// Axes far from singular.
  Axes RandomAxes() {
    Axes a = RandomRotation();
    for (std::int32_t i = 0; i < dimension; ++i) a.SetColVector(i, a.ColVector(i) * random.In(0.5, 2));
    return a * RandomRotation();
  }
  Frame RandomFrame() { return Kind::Make(RandomAxes(), RandomVector()); }
  std::vector<Vector> RandomPoints(std::size_t n, double size = 3) {
    std::vector<Vector> points(n);
    for (Vector& p : points) p = RandomVector(size);
    return points;
  }
  static std::vector<Vector> Images(const Frame& m, const std::vector<Vector>& points) {
    std::vector<Vector> images;
    for (const Vector& p : points) images.push_back(qxLocalToWorld(m, p));
    return images;
  }
  /// Sum of squared distances that a transform leaves.
  static double Residual(const Frame& m, const std::vector<Vector>& source, const std::vector<Vector>& target) {
    double sum = 0;
    for (std::size_t i = 0; i < source.size(); ++i)
      sum += double((qxLocalToWorld(m, source[i]) - target[i]).SquareLength());
    return sum;
  }

  reference::Random<Element> random;
};
using FrameTypes = ::testing::Types<CQXMatrix3<float>, CQXMatrix3<double>, CQXMatrix4<float>, CQXMatrix4<double>>;
TYPED_TEST_SUITE(Frames, FrameTypes);

TYPED_TEST(Frames, WhatGoesIntoAFrameComesBack) {
  for (int i = 0; i < 100; ++i) {
    TypeParam frame = this->RandomFrame();
    frame(this->dimension, 0) = 7;  // the last row is not read
    const auto p = this->RandomVector(), q = this->RandomVector(), n = this->RandomVector();
    typename qxFrame<TypeParam>::Vector local, localVector;
    ASSERT_EQ(qxWorldToLocal(frame, p, local) + qxWorldToLocalVector(frame, q - p, localVector), 2);
    EXPECT_LE((qxLocalToWorld(frame, local) - p).NormInf(), 64 * this->eps);
    EXPECT_LE((qxLocalToWorldVector(frame, localVector) - (q - p)).NormInf(), 64 * this->eps);
    EXPECT_LE((qxLocalToWorld(frame, local + localVector) - q).NormInf(), 128 * this->eps);
    // A plane through p stays one through its image.
    const auto plane = qxFrame<TypeParam>::MakePlane(n, -n.Dot(p)), localPlane = qxWorldToLocalPlane(frame, plane);
    typename qxFrame<TypeParam>::Plane back;
    EXPECT_NEAR(qxFrame<TypeParam>::NormalOf(localPlane).Dot(local) + localPlane[this->dimension], 0, 256 * this->eps);
    ASSERT_EQ(qxLocalToWorldPlane(frame, localPlane, back), 1);
    EXPECT_LE((back - plane).NormInf(), 256 * this->eps);
    // A transform acts on the images as the other one on the points.
    const TypeParam motion = this->RandomFrame();
    TypeParam inside, outside;
    ASSERT_EQ(qxWorldToLocalMatrix(frame, motion, inside) + qxLocalToWorldMatrix(frame, inside, outside), 2);
    EXPECT_LE((qxLocalToWorld(frame, qxLocalToWorld(inside, local)) - qxLocalToWorld(motion, p)).NormInf(),
              512 * this->eps);
    EXPECT_LE((qxLocalToWorld(outside, p) - qxLocalToWorld(motion, p)).NormInf(), 1024 * this->eps);
  }
  TypeParam flat = this->RandomFrame(), untouched;
  flat.SetColVector(1, flat.ColVector(0));
  typename qxFrame<TypeParam>::Vector v;
  typename qxFrame<TypeParam>::Plane plane;
  EXPECT_EQ(qxWorldToLocal(flat, v, v) + qxWorldToLocalVector(flat, v, v) + qxLocalToWorldPlane(flat, plane, plane) +
                qxLocalToWorldMatrix(flat, flat, untouched) + qxWorldToLocalMatrix(flat, flat, untouched),
            0);
  EXPECT_EQ(untouched[0], 0);
}

TYPED_TEST(Frames, TransformsAreFoundFromTheirPairs) {
  using T = typename TestFixture::Element;
  constexpr auto d = static_cast<std::size_t>(TestFixture::dimension);
  for (int i = 0; i < 60; ++i) {
    const auto rotation = this->RandomRotation();
    const auto shift = this->RandomVector();
    const T scale = this->random.In(0.2, 4);
    const TypeParam rigid = qxFrame<TypeParam>::Make(rotation, shift);
    const TypeParam similar = qxFrame<TypeParam>::Make(rotation * scale, shift), affine = this->RandomFrame();
    for (const double unit : {1.0, 1e9}) {
      for (const std::size_t n : {d, d + 1, d + 2, std::size_t(40)}) {
        const auto points = this->RandomPoints(n, unit);
        const auto count = static_cast<std::int32_t>(n);
        TypeParam found;
        const auto expect = [&](const TypeParam& expected, double bound) {
          const double error = this->Residual(found, points, this->Images(expected, points));
          EXPECT_LE(std::sqrt(error), bound * double(this->eps) * (unit + 3)) << n << ' ' << unit;
        };
        ASSERT_EQ(qxFindRigidTransform(count, points.data(), this->Images(rigid, points).data(), found), 1);
        expect(rigid, 200);
        ASSERT_EQ(qxFindSimilarityTransform(count, points.data(), this->Images(similar, points).data(), found), 1);
        expect(similar, 400);
        if (n == d) {
          EXPECT_EQ(qxFindAffineTransform(count, points.data(), points.data(), found), 0);
        } else if (qxFindAffineTransform(count, points.data(), this->Images(affine, points).data(), found, T(0.01)) !=
                   0) {
          expect(affine, 20000);
        }
      }
    }
    const auto tiny = this->RandomPoints(d + 1, 1e-9);
    TypeParam unit;
    ASSERT_EQ(qxFindRigidTransform(TestFixture::dimension + 1, tiny.data(), tiny.data(), unit), 1);
    EXPECT_EQ(unit.IsUnit(64 * this->eps), 1);
    if (qxFindAffineTransform(TestFixture::dimension + 1, tiny.data(), tiny.data(), unit, T(0.01)) != 0) {
      EXPECT_EQ(unit.IsUnit(T(2e4) * this->eps), 1);
    }
  }
}

TYPED_TEST(Frames, NoNearbyTransformFitsBetter) {
  using T = typename TestFixture::Element;
  for (int i = 0; i < 20; ++i) {
    const auto source = this->RandomPoints(12);
    auto target = this->Images(this->RandomFrame(), source);
    for (auto& q : target) q += this->RandomVector(0.5);
    TypeParam affine, rigid, similar;
    ASSERT_EQ(qxFindAffineTransform(12, source.data(), target.data(), affine), 1);
    ASSERT_EQ(qxFindRigidTransform(12, source.data(), target.data(), rigid), 1);
    ASSERT_EQ(qxFindSimilarityTransform(12, source.data(), target.data(), similar), 1);
    const auto axesOf = [](const TypeParam& m) { return qxFrame<TypeParam>::AxesOf(m); };
    EXPECT_EQ(axesOf(rigid).IsRotation(64 * this->eps), 1);
    EXPECT_LT(this->Residual(affine, source, target), this->Residual(similar, source, target));
    EXPECT_LT(this->Residual(similar, source, target), this->Residual(rigid, source, target));
    for (int k = 0; k < 30; ++k) {
      // Small steps within each family.
      const auto step = this->RandomVector(0.02);
      auto turn = this->RandomRotation();
      for (int half = 0; half < 7; ++half) {  // towards the unit matrix
        for (std::int32_t e = 0; e < turn.ColsNb(); ++e) turn(e, e) += 1;
        typename TestFixture::Axes q, s;
        if (turn.PolarDecomposition(q, s, 1, T(1e-6)) != 0) turn = q;
      }
      if (turn.IsRotation(T(1e-4)) == 0) continue;
      const auto moved = [&](const TypeParam& m, T factor) {
        return qxFrame<TypeParam>::Make(turn * axesOf(m) * factor, qxFrame<TypeParam>::OriginOf(m) + step);
      };
      const double slack = 1 + 1e3 * double(this->eps);
      EXPECT_LE(this->Residual(rigid, source, target), slack * this->Residual(moved(rigid, 1), source, target));
      for (const T factor : {T(0.99), T(1), T(1.01)}) {
        EXPECT_LE(this->Residual(similar, source, target),
                  slack * this->Residual(moved(similar, factor), source, target));
        EXPECT_LE(this->Residual(affine, source, target),
                  slack * this->Residual(moved(affine, factor), source, target));
      }
    }
  }
}

TYPED_TEST(Frames, PointsThatDetermineNothingAreRefused) {
  using T = typename TestFixture::Element;
  constexpr std::int32_t d = TestFixture::dimension;
  auto points = this->RandomPoints(10);
  const auto good = points;
  TypeParam m;
  const auto all = [&](std::int32_t n) {
    return qxFindAffineTransform(n, points.data(), good.data(), m) * 4 +
           qxFindRigidTransform(n, points.data(), good.data(), m) * 2 +
           qxFindSimilarityTransform(n, points.data(), good.data(), m);
  };
  for (const std::int32_t n : {-1, 0, 1}) EXPECT_EQ(all(n), 0);
  for (auto& p : points) p[d - 1] = p[0] * 2 + 1;  // in a plane of space, on a line of the plane
  EXPECT_EQ(all(10), 3);
  for (auto& p : points) p[1] = 3 * p[0];
  EXPECT_EQ(all(10), d == 3 ? 0 : 3);  // on a line
  for (auto& p : points) p = good[0];
  EXPECT_EQ(all(10), 0);
  m.SetToZero();
  points = good;
  points[7][0] = std::numeric_limits<T>::quiet_NaN();
  EXPECT_EQ(all(10), 0);
  EXPECT_EQ(m[0], 0);
}

TYPED_TEST(Frames, MirroredPointsGetARotationAllTheSame) {
  const auto points = this->RandomPoints(9);
  auto mirrored = points;
  for (auto& p : mirrored) p[0] = -p[0];
  TypeParam m;
  ASSERT_EQ(qxFindRigidTransform(9, points.data(), mirrored.data(), m), 1);
  EXPECT_EQ(qxFrame<TypeParam>::AxesOf(m).IsRotation(64 * this->eps), 1);
}

}  // namespace
