#include <qx/transforms/quaternion.h>

#include <array>
#include <limits>
#include <numbers>

#include "tests/transforms/reference.h"
#include "tests/typed_test.h"

namespace {

using std::numbers::pi_v;

template <typename T>
class Quaternion : public ::testing::Test {
 protected:
  static constexpr T eps = std::numeric_limits<T>::epsilon();
  static constexpr T nan = std::numeric_limits<T>::quiet_NaN();

  static void ExpectNear(const CQXQuaternion<T>& q, T w, T x, T y, T z, T bound = 0) {
    EXPECT_NEAR(q.w, w, bound);
    EXPECT_NEAR(q.x, x, bound);
    EXPECT_NEAR(q.y, y, bound);
    EXPECT_NEAR(q.z, z, bound);
  }
  static void ExpectNear(const CQXQuaternion<T>& q, const CQXQuaternion<T>& expected, T bound) {
    ExpectNear(q, expected.w, expected.x, expected.y, expected.z, bound);
  }

  CQXQuaternion<T> RandomUnit() {
    CQXQuaternion<T> q(random.In(-1, 1), random.In(-1, 1), random.In(-1, 1), random.In(-1, 1));
    q.Normalize();
    return q;
  }

  reference::Random<T> random;
};
TYPED_TEST_SUITE(Quaternion, FloatTypes);

TYPED_TEST(Quaternion, IndicesOutsideTheVectorPartReachTheScalar) {
  CQXQuaternion<TypeParam> q(1, 2, 3, 4);
  for (const std::int32_t index : {0, 4, 7, -1, std::numeric_limits<std::int32_t>::min()}) q[index] += 1;
  this->ExpectNear(q, 6, 2, 3, 4);
}

TYPED_TEST(Quaternion, TheHamiltonProductComposesRotations) {
  using Q = CQXQuaternion<TypeParam>;
  for (int i = 0; i < 200; ++i) {
    const Q a = this->RandomUnit(), b = this->RandomUnit();
    const CQXMatrix3<TypeParam> product = a.GetMatrix() * b.GetMatrix();
    EXPECT_TRUE(qxAreAlmostEqual(product, (a * b).GetMatrix(), 16 * this->eps));
    this->ExpectNear(a * a.Invert(), Q(), 4 * this->eps);
  }
  this->ExpectNear(Q(0, 1, 0, 0) * Q(0, 0, 1, 0), 0, 0, 0, 1);  // i j = k
}

TYPED_TEST(Quaternion, TheRunningProductReadsWhatItHasWritten) {
  using Q = CQXQuaternion<TypeParam>;
  // w = 5 - 12 - 21 - 32 = -60, x = -60 6 + 2 5 + 3 8 - 4 7 = -354, y = -60 7 + 354 8 + 3 5 - 4 6 = 2403,
  // z = -60 8 - 354 7 - 2403 6 + 4 5 = -17356
  Q q(1, 2, 3, 4);
  q *= Q(5, 6, 7, 8);
  this->ExpectNear(q, -60, -354, 2403, -17356);
  q.Set(1, 2, 3, 4);
  Q other = q;
  other *= Q(1, 2, 3, 4);
  q *= q;
  this->ExpectNear(q, other, 0);
  // Rotate by q = (1, 1, 0, 0): (0, 1, 2, 3) q = (-1, 1, 5, 1) and the inverse is (1/2, -1/2, 0, 0).
  // w = -1/2 + 1/2 = 0, x = 0 1 + -1/2 -1 = 1/2, y = 0 5 - 1/2 1 = -1/2, z = 0 1 + 1/2 5 + 1/2 1 = 3
  const CQXVector3<TypeParam> rotated = Q(1, 1, 0, 0).Rotate({1, 2, 3}), half(TypeParam(0.5), TypeParam(-0.5), 3);
  EXPECT_EQ((rotated - half).NormInf(), 0);
}

TYPED_TEST(Quaternion, LengthsNormalsAndInversesHaveFixedBounds) {
  using Q = CQXQuaternion<TypeParam>;
  const TypeParam small = std::sqrt(TypeParam(5e-7));
  Q q(0, small, 0, 0);
  EXPECT_EQ(q.Length(), 0);
  q.Normalize();
  this->ExpectNear(q, 1, 0, 0, 0);
  this->ExpectNear(std::as_const(q = Q(0, 0, 0, 0)).Invert(), 0, 0, 0, 0);
  const TypeParam below = TypeParam(0.00095), atBound = std::sqrt(TypeParam(1e-6));  // 0.00095^2 is 9.025e-7
  this->ExpectNear(std::as_const(q = Q(below, 0, 0, 0)).Invert(), 950, 0, 0, 0, 1024 * this->eps);
  this->ExpectNear(std::as_const(q = Q(0, 2 * atBound, 0, 0)).Invert(), 0, -500, 0, 0, 1024 * this->eps);
}

TYPED_TEST(Quaternion, PredicatesKeepTheirBoundaries) {
  using Q = CQXQuaternion<TypeParam>;
  const TypeParam half = TypeParam(0.5), e = QX_TOLERANCE<TypeParam>;
  EXPECT_EQ(Q(1 + half, half, -half, 0).IsIdentity(half), 1);
  EXPECT_EQ(Q(1, half, 0, 0).IsUnit(half * half), 0);
  EXPECT_EQ(Q(half, 1, 2, 3).IsPure(half), 0);
  const Q zero(0, 0, 0, 0);
  EXPECT_EQ(zero == Q(e, -e, e, -e), 1);
  EXPECT_EQ(zero == Q(0, 0, 0, 2 * e), 0);
  EXPECT_EQ(zero != Q(0, this->nan, 0, 0), 1);
}

TYPED_TEST(Quaternion, LogarithmAndExponentialKeepTheVectorPartUndivided) {
  using Q = CQXQuaternion<TypeParam>;
  const TypeParam bound = 8 * this->eps;
  this->ExpectNear(Q(0, 1, 0, 0).Log(), 0, pi_v<TypeParam> / 2, 0, 0, bound);
  this->ExpectNear(Q(-1, 1, 0, 0).Log(), std::log(TypeParam(2)) / 2, -pi_v<TypeParam> / 4, 0, 0, bound);
  this->ExpectNear(Q(0, 0, 3, 4).Log(), std::log(TypeParam(5)), 0, 3 * pi_v<TypeParam> / 2, 2 * pi_v<TypeParam>,
                   8 * bound);
  this->ExpectNear(Q(0, 0, 0, 0).Log(), std::log(QX_TOLERANCE<TypeParam>) / 2, 0, 0, 0, 4 * bound);
  this->ExpectNear(Q(2, TypeParam(0.0009), 0, 0).Exp(), std::exp(TypeParam(2)), 0, 0, 0, 16 * this->eps);
  const TypeParam e = std::exp(TypeParam(0.5)), l = 5;
  this->ExpectNear(Q(TypeParam(0.5), 0, 3, -4).Exp(), e * std::cos(l), 0, 3 * e * std::sin(l), -4 * e * std::sin(l),
                   32 * this->eps);
  const Q q(-1, 2, -3, TypeParam(0.5));
  this->ExpectNear(q.Pow(TypeParam(-0.5)), (q.Log() * TypeParam(-0.5)).Exp(), 0);
}

TYPED_TEST(Quaternion, AngleAndAxisAreInRadians) {
  using Q = CQXQuaternion<TypeParam>;
  using V = CQXVector3<TypeParam>;
  for (int i = 0; i < 200; ++i) {
    V axis = this->random.Vector(-1, 1), found;
    axis.Normalize();
    const TypeParam angle = this->random.In(0.1, 6.1);
    TypeParam foundAngle;
    Q q;
    q.SetRotation(angle, axis);
    q.GetAngleAndAxis(foundAngle, found);
    EXPECT_NEAR(foundAngle, angle, 256 * this->eps);
    EXPECT_LE((found - axis).NormInf(), 256 * this->eps);
    CQXMatrix3<TypeParam> rotation;
    rotation.SetRotationByAngleAxis(angle * 180 / pi_v<TypeParam>, axis);
    EXPECT_TRUE(qxAreAlmostEqual(q.GetMatrix(), rotation, 32 * this->eps));
  }
  TypeParam angle;
  V axis(1, 1, 1);
  Q(1, 0, 0, 0).GetAngleAndAxis(angle, axis);
  EXPECT_EQ(angle, 0);
  EXPECT_EQ(axis.NormInf(), 0);
  axis = V(1, 1, 1);
  Q(TypeParam(1.001), 0, 1, 0).GetAngleAndAxis(angle, axis);
  EXPECT_TRUE(std::isnan(angle));
  EXPECT_EQ(axis.NormInf(), 0);
  Q q;
  q.SetRotation(pi_v<TypeParam>, V(2, 0, 0));
  this->ExpectNear(q, 0, 2, 0, 0, this->eps);  // the axis is used as given
}

TYPED_TEST(Quaternion, EulerAnglesActInTheOrderOfTheEnumeration) {
  using Q = CQXQuaternion<TypeParam>;
  for (int order = 0; order < 6; ++order) {
    for (int i = 0; i < 100; ++i) {
      std::array<double, 3> angles = this->random.Angles();
      if (i % 4 == 0) angles[reference::sequences[order][1]] = i % 8 == 0 ? 90 : -90;  // gimbal lock
      const auto expected = reference::Euler(angles, order);
      const TypeParam ax = TypeParam(angles[0]), ay = TypeParam(angles[1]), az = TypeParam(angles[2]);
      const TypeParam toRadians = pi_v<TypeParam> / 180;
      const auto qxOrder = static_cast<qxRotationsOrder>(order);
      Q q;
      q.SetByEulerAngles(ax, ay, az, qxOrder);
      EXPECT_LE(reference::Distance(q.GetMatrix(), expected), 64 * this->eps);
      const Q byRadians = qxEulerToQuaternion(ax * toRadians, ay * toRadians, az * toRadians, qxOrder);
      EXPECT_LE(reference::Distance(byRadians.GetMatrix(), expected), 64 * this->eps);
      EXPECT_NEAR(byRadians.SquaredLength(), 1, 8 * this->eps);

      TypeParam fx, fy, fz;
      q.ExtractEulerAngles(qxOrder, fx, fy, fz);
      // Near the lock an angle is known to the root of the rounding, and no better than the bound of the lock.
      const double bound = i % 4 == 0 ? std::max(1e-5, 8 * std::sqrt(double(this->eps))) : 512 * double(this->eps);
      EXPECT_LE(reference::Distance(q.GetMatrix(), reference::Euler({double(fx), double(fy), double(fz)}, order)),
                bound);
    }
  }
  for (const std::int32_t order : {6, 17, -1}) {
    const auto bad = static_cast<qxRotationsOrder>(order);
    Q q(0, 1, 0, 0);
    q.SetByEulerAngles(10, 20, 30, bad);
    this->ExpectNear(q, 1, 0, 0, 0);
    this->ExpectNear(qxEulerToQuaternion<TypeParam>(10, 20, 30, bad), 1, 0, 0, 0);
    TypeParam x = 1, y = 2, z = 3;
    q.ExtractEulerAngles(bad, x, y, z);
    EXPECT_EQ(x + y + z, 6);
  }
}

TYPED_TEST(Quaternion, RotationMatricesComeBackFromEveryBranch) {
  using Q = CQXQuaternion<TypeParam>;
  int branches[4] = {};
  for (int i = 0; i < 2000; ++i) {
    const Q q = this->RandomUnit();
    const CQXMatrix3<TypeParam> m = qxQuaternionToMatrix(q);
    const CQXVector3<TypeParam> d = m.Diagonal();
    const std::int32_t largest = m.Trace() >= 0 ? 0 : d.GetIndexOfMaxComponent(0) + 1;
    ++branches[largest];
    this->ExpectNear(qxMatrixToQuaternion(m), q[largest] < 0 ? q.Negate() : q, 32 * this->eps);
  }
  for (const int count : branches) EXPECT_GT(count, 50);

  const auto fromDiagonal = [](TypeParam a, TypeParam b, TypeParam c) {
    return Q(CQXMatrix3<TypeParam>(a, 0, 0, 0, b, 0, 0, 0, c));
  };
  // No rotations: equal elements go to x before y, to x before z, to y before z.
  const TypeParam r = std::sqrt(TypeParam(5));
  this->ExpectNear(fromDiagonal(1, 1, -4), 0, r / 2, 0, 0, this->eps);
  this->ExpectNear(fromDiagonal(1, -4, 1), 0, r / 2, 0, 0, this->eps);
  this->ExpectNear(fromDiagonal(-4, 1, 1), 0, 0, r / 2, 0, this->eps);
}

}  // namespace
