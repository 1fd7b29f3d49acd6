#include <qx/interpolation/interpolation.h>

#include <array>
#include <cmath>
#include <limits>
#include <numbers>

#include "tests/transforms/reference.h"
#include "tests/typed_test.h"

namespace {

using I = CQXInterpolation;

template <typename T>
class Interpolation : public ::testing::Test {
 protected:
  using Quaternion = CQXQuaternion<T>;
  static constexpr T eps = std::numeric_limits<T>::epsilon();
  static constexpr T nan = std::numeric_limits<T>::quiet_NaN();

  /// A polynomial of each element index, of the given degree.
  static double Polynomial(int degree, std::int32_t i, double t) {
    double value = 0;
    for (int k = degree; k >= 0; --k) value = value * t + std::sin(1.0 + 3 * k + i);
    return value;
  }
  template <typename Array>
  static Array Key(const Array& shape, std::int32_t count, int degree, double t) {
    Array key(shape);
    for (std::int32_t i = 0; i < count; ++i) key.Data()[i] = T(Polynomial(degree, i, t));
    return key;
  }
  template <typename Array>
  static void ExpectPolynomial(const Array& blend, std::int32_t count, int degree, double t, double bound) {
    for (std::int32_t i = 0; i < count; ++i) {
      EXPECT_NEAR(blend.Data()[i], Polynomial(degree, i, t), bound) << "degree " << degree << ", t " << t;
    }
  }
  static void ExpectNear(const Quaternion& q, const Quaternion& expected, T bound) {
    for (std::int32_t i = 0; i < 4; ++i) EXPECT_NEAR(q[i], expected[i], bound);
  }
  /// Quaternion of a rotation by twice the given angle about a fixed axis.
  static Quaternion Turn(double half) {
    const double s = std::sin(half);
    return {T(std::cos(half)), T(s * 2 / 7), T(s * 3 / 7), T(s * 6 / 7)};
  }
  Quaternion RandomUnit() {
    Quaternion q(random.In(-1, 1), random.In(-1, 1), random.In(-1, 1), random.In(-1, 1));
    q.Normalize();
    return q;
  }
  CQXMatrix4<T> RandomMatrix() {
    CQXMatrix4<T> m;
    for (std::int32_t i = 0; i < 16; ++i) m[i] = random.In(-2, 2);
    return m;
  }

  reference::Random<T> random;
};
TYPED_TEST_SUITE(Interpolation, FloatTypes);

TYPED_TEST(Interpolation, PolynomialsAreReproducedAtTheNodesAndBetween) {
  using T = TypeParam;
  // Nodes in no order; times at the nodes, between and beyond.
  const T t0 = T(0.5), t1 = -1, t2 = T(2.25), t3 = T(1.25);
  const auto test = [&](const auto& shape, std::int32_t count, auto linear, auto quadratic, auto cubic) {
    const auto key = [&](int degree, T t) { return this->Key(shape, count, degree, t); };
    const auto expect = [&](const auto& blend, int degree, T t, double bound) {
      this->ExpectPolynomial(blend, count, degree, t, bound * this->eps);
    };
    for (const T t : {t0, t1, t2, t3, T(0), T(1), T(0.75), T(-0.25), T(3)}) {
      expect(linear(key(1, 0), key(1, 1), t), 1, t, 16);
      expect(quadratic(key(2, t0), key(2, t1), key(2, t2), t0, t1, t2, t), 2, t, 256);
      expect(cubic(key(3, t0), key(3, t1), key(3, t2), key(3, t3), t0, t1, t2, t3, t), 3, t, 2048);
    }
  };
#define BLENDS(Kind)                                                             \
  [](const auto&... arguments) { return I::Kind##Linear(arguments...); },        \
      [](const auto&... arguments) { return I::Kind##Quadratic(arguments...); }, \
      [](const auto&... arguments) { return I::Kind##Cubic(arguments...); }
  const auto vectors = [&](const auto& shape, std::int32_t count) { test(shape, count, BLENDS(Vectors)); };
  const auto matrices = [&](const auto& shape, std::int32_t count) { test(shape, count, BLENDS(Matrices)); };
#undef BLENDS
  vectors(CQXVector2<T>(), 2);
  vectors(CQXVector3<T>(), 3);
  vectors(CQXVector4<T>(), 4);
  vectors(CQXVectorN<T>(37), 37);
  vectors(CQXBaseVector<T>(5), 5);
  matrices(CQXMatrix2<T>(), 4);
  matrices(CQXMatrix3<T>(), 9);
  matrices(CQXMatrix4<T>(), 16);
  matrices(CQXMatrixN<T>(6), 36);
  matrices(CQXMatrixMN<T>(2, 7), 14);
  matrices(CQXBaseMatrix<T>(3, 5), 15);
}

TYPED_TEST(Interpolation, ComplexBlendsAreExactAndKeepSmallNumbers) {
  using T = TypeParam;
  CQXBaseVector<CQXComplex<T>> a(1), b(1);
  a[0].Set(T(1e-7), T(-2e-9));
  b[0].Set(T(3e-7), T(4e-9));
  const auto v = I::VectorsLinear(a, b, 0.25);
  EXPECT_EQ(v[0].Real(), T(1e-7) + (T(3e-7) - T(1e-7)) * T(0.25));
  EXPECT_EQ(v[0].Imag(), T(-2e-9) + (T(4e-9) - T(-2e-9)) * T(0.25));
}

TYPED_TEST(Interpolation, EqualNodesGiveInfinities) {
  using T = TypeParam;
  EXPECT_TRUE(std::isinf(I::InverseVandermondeMatrix<T>(1, 1, 2)(0, 0)));
  EXPECT_TRUE(std::isinf(I::InverseVandermondeMatrix<T>(1, 3, 2, 1)(0, 3)));
}

TYPED_TEST(Interpolation, SlerpTurnsEvenlyAlongTheShorterArc) {
  for (int i = 0; i < 200; ++i) {
    const auto q = this->RandomUnit();
    const double half = this->random.In(0.01, 1.55);
    for (const double t : {0.0, 0.25, 0.5, 0.8, 1.0, -0.5, 1.75}) {
      const auto expected = q * this->Turn(t * half), end = q * this->Turn(half);
      // The arc cosine near 1 loses eps / half.
      const auto bound = TypeParam(8 * this->eps / half);
      this->ExpectNear(I::Slerp(q, end, TypeParam(t)), expected, bound);
      this->ExpectNear(I::Slerp(q, end * TypeParam(-1), TypeParam(t)), expected, bound);
    }
  }
}

TYPED_TEST(Interpolation, SlerpIsLinearAtAndBeyondParallel) {
  using T = TypeParam;
  using Q = CQXQuaternion<T>;
  const Q one(1, 0, 0, 0);
  this->ExpectNear(I::Slerp(one, one, 0.25), one, 0);
  this->ExpectNear(I::Slerp(one, Q(-1, 0, 0, 0), 0.25), one, 0);  // the negated weight: not zero
  this->ExpectNear(I::Slerp(Q(2, 0, 0, 0), Q(4, 4, 0, 0), 0.25), Q(T(2.5), 1, 0, 0), 0);  // a dot product of 8
  // The bound itself is linear, the number below it is not; antiparallel keys likewise.
  const T bound = T(0.999999);
  for (const T sign : {T(1), T(-1)}) {
    const Q at(bound * sign, 1, 0, 0), below(std::nextafter(bound, T(0)) * sign, 1, 0, 0);
    EXPECT_EQ(I::Slerp(one, at, 0.25).x, T(0.25) * sign);
    EXPECT_GT(std::abs(I::Slerp(one, below, 0.25).x - T(0.25) * sign), 0);
  }
  this->ExpectNear(I::Slerp(one, Q(T(-0.5), 1, 0, 0), 0), one, this->eps);
  EXPECT_TRUE(std::isnan(I::Slerp(one, Q(this->nan, 0, 0, 0), 0.5).w));
}

TYPED_TEST(Interpolation, SquadBlendsTheOuterAndTheInnerArc) {
  const double a[] = {-0.4, 0.1, 0.9, 0.5};
  for (const double t : {0.0, 0.2, 0.5, 0.9, 1.0}) {
    const double outer = a[0] + (a[3] - a[0]) * t, inner = a[1] + (a[2] - a[1]) * t;
    const double half = outer + (inner - outer) * 2 * t * (1 - t);
    this->ExpectNear(I::Squad(this->Turn(a[0]), this->Turn(a[1]), this->Turn(a[2]), this->Turn(a[3]), TypeParam(t)),
                     this->Turn(half), 16 * this->eps);
  }
}

TYPED_TEST(Interpolation, TheCubicRotationPathRunsThroughItsKeys) {
  using T = TypeParam;
  for (int i = 0; i < 50; ++i) {
    std::array<CQXQuaternion<T>, 4> q;
    for (auto& key : q) key = this->RandomUnit() * this->random.In(0.5, 2);  // lengths are used as they are
    const auto path = [&](double t) { return I::SlerpCubic(q[0], q[1], q[2], q[3], -5, 1, 3, 99, T(t)); };
    this->ExpectNear(path(-7), q[1], 0);
    this->ExpectNear(path(8), q[2], 0);
    // The control points, long-hand.
    const CQXQuaternion<T> inverse1 = q[1].InvertUnit() * (1 / q[1].SquaredLength()),
                           inverse2 = q[2].InvertUnit() * (1 / q[2].SquaredLength());
    const auto a = q[1] * (((inverse1 * q[2]).Log() + (inverse1 * q[0]).Log()) * T(-0.25)).Exp();
    const auto b = q[2] * (((inverse2 * q[3]).Log() + (inverse2 * q[1]).Log()) * T(-0.25)).Exp();
    this->ExpectNear(path(1.5), I::Squad(q[1], a, b, q[2], T(0.25)), 1024 * this->eps);
    this->ExpectNear(I::SlerpCubic(q[0], q[1], q[2], q[3], 1, 1, 3, 0, T(1.5)), path(1.5), 0);  // t0 and t3 are free
  }
  const auto q1 = this->RandomUnit(), q2 = this->RandomUnit();
  this->ExpectNear(I::SlerpCubic(q1, q1, q2, q2, 0, T(0.25), T(0.25) + T(5e-7), 1, 9), q1, 0);  // no interval
  this->ExpectNear(I::SlerpCubic(q2, q1, q2, q2, 0, 0, 1, 2, T(0.9e-6)), q1, 0);
  EXPECT_TRUE(std::isnan(I::SlerpCubic(q1, q1, q2, q2, 0, 1, 2, 3, this->nan).w));
}

TYPED_TEST(Interpolation, RotationMatricesTurnEvenlyAndDropTranslations) {
  using T = TypeParam;
  CQXMatrix3<T> a, b, expected;
  a.SetRotationByAngleAxis(20, {1, 2, -1});
  b.SetRotationByAngleAxis(100, {1, 2, -1});
  expected.SetRotationByAngleAxis(40, {1, 2, -1});
  CQXMatrix4<T> a4 = qxMatrix3To4(a), b4 = qxMatrix3To4(b);
  a4(0, 3) = b4(3, 1) = 7;
  EXPECT_TRUE(qxAreAlmostEqual(I::RotationsLinear(a4, b4, 0.25), qxMatrix3To4(expected), 16 * this->eps));
  const CQXMatrix4<T> cubic = I::RotationsCubic(a4, a4, b4, b4, 0, 1, 2, 3, 1.5);
  EXPECT_TRUE(qxAreAlmostEqual(cubic, qxMatrix3To4(I::RotationsCubic(a, a, b, b, 0, 1, 2, 3, 1.5)), 0));
}

TYPED_TEST(Interpolation, EulerAnglesAreBlendedInEachOrder) {
  using T = TypeParam;
  for (std::int32_t order = 0; order < 6; ++order) {
    const auto qxOrder = static_cast<qxRotationsOrder>(order);
    for (int i = 0; i < 40; ++i) {
      std::array<CQXVector3<T>, 4> keys;
      std::array<CQXMatrix3<T>, 4> rotations;
      for (std::size_t k = 0; k < 4; ++k) {
        keys[k] = this->random.Vector(-400, 400);  // more than a turn
        rotations[k].SetRotationByEulerAngles(keys[k].X(), keys[k].Y(), keys[k].Z(), qxOrder);
      }
      const auto expectRotation = [&](const CQXVector3<T>& angles, const CQXMatrix3<T>& expected) {
        const auto rotation = reference::Euler({double(angles.X()), double(angles.Y()), double(angles.Z())}, order);
        // The quaternions' guarded root, and float angles of 400 degrees.
        EXPECT_LE(reference::Distance(expected, rotation), 2e3 * double(this->eps));
      };
      const T t = this->random.In(0, 1);
      CQXVector3<T> angles;
      I::RotationsLinear(keys[0].X(), keys[0].Y(), keys[0].Z(), keys[1].X(), keys[1].Y(), keys[1].Z(), qxOrder, t,
                         angles.X(), angles.Y(), angles.Z());
      expectRotation(angles, I::RotationsLinear(rotations[0], rotations[1], t));
      const auto cubic = [&](T at) {
        return I::RotationsCubic(keys[0], keys[1], keys[2], keys[3], qxOrder, 0, 1, 2, 3, at);
      };
      expectRotation(cubic(1), rotations[1]);
      expectRotation(cubic(2), rotations[2]);
    }
  }
  T x = 1, y = 2, z = 3;
  const auto unknown = static_cast<qxRotationsOrder>(6);
  I::RotationsLinear(10, 20, 30, 40, 50, 60, unknown, 0.5, x, y, z);
  EXPECT_EQ((CQXVector3<T>(x, y, z) - CQXVector3<T>(1, 2, 3)).NormInf(), 0);
  EXPECT_EQ(I::RotationsCubic<T>({1, 2, 3}, {4, 5, 6}, {7, 8, 9}, {1, 2, 3}, unknown, 0, 1, 2, 3, 1.5).NormInf(), 0);
}

TYPED_TEST(Interpolation, TranslationsReadTheLastColumnOnly) {
  using T = TypeParam;
  std::array<CQXMatrix4<T>, 4> keys;
  for (auto& key : keys) key = this->RandomMatrix();
  const CQXMatrix4<T> linear = I::TranslationsLinear(keys[0], keys[1], T(0.3));
  const CQXMatrix4<T> cubic = I::TranslationsCubic(keys[0], keys[1], keys[2], keys[3], 0, 1, 2, 3, 2);
  EXPECT_EQ(linear.IsTranslation(0) + cubic.IsTranslation(0), 2);
  for (std::int32_t i = 0; i < 3; ++i) {
    EXPECT_NEAR(linear(i, 3), T(0.7) * keys[0](i, 3) + T(0.3) * keys[1](i, 3), 8 * this->eps);
    EXPECT_NEAR(cubic(i, 3), keys[2](i, 3), 256 * this->eps);
  }
}

TYPED_TEST(Interpolation, ScalingsBlendFactorsAndCentres) {
  using T = TypeParam;
  const auto scaling = [](const CQXVector3<T>& s, const CQXVector3<T>& c) {
    CQXMatrix4<T> m;
    for (std::int32_t i = 0; i < 3; ++i) {
      m(i, i) = s[i];
      m(i, 3) = (1 - s[i]) * c[i];
    }
    m(3, 3) = 1;
    return m;
  };
  const CQXVector3<T> s0(2, T(0.5), 3), c0(1, 2, -1), s1(4, T(0.25), -1), c1(3, -2, 1);
  CQXMatrix4<T> a = scaling(s0, c0);
  const CQXMatrix4<T> b = scaling(s1, c1);
  a(0, 1) = a(3, 0) = 9;  // ignored
  const CQXMatrix4<T> linear = scaling(s0 + (s1 - s0) * T(0.75), c0 + (c1 - c0) * T(0.75));
  EXPECT_TRUE(qxAreAlmostEqual(I::ScalingsLinear(a, b, 0.75), linear, 16 * this->eps));
  EXPECT_TRUE(qxAreAlmostEqual(I::ScalingsCubic(a, b, b, a, 0, 1, 2, 3, 1), b, 512 * this->eps));
  // A translation along an axis with the factor 1, and one that is almost zero, are lost.
  CQXMatrix4<T> moved = scaling({1, 2, 2}, {0, 5, 5}), still = scaling({2, 2, 2}, {});
  moved(0, 3) = 8;
  still(1, 3) = T(1e-6);
  EXPECT_TRUE(qxAreAlmostEqual(I::ScalingsLinear(moved, moved, 0.5), scaling({1, 2, 2}, {0, 5, 5}), 16 * this->eps));
  EXPECT_TRUE(qxAreAlmostEqual(I::ScalingsLinear(still, still, 0.5), scaling({2, 2, 2}, {}), 0));
}

TYPED_TEST(Interpolation, AffineKeysAreBlendedApartOnlyWhenAllAreSingular) {
  // Keys with last rows of their own: blended element by element they show in the result.
  CQXMatrix4<TypeParam> regular = this->RandomMatrix(), a = this->RandomMatrix(), b = this->RandomMatrix();
  for (std::int32_t i = 0; i < 3; ++i) {
    regular(i, i) += 6;
    a(i, 1) = 2 * a(i, 0);
    b(i, 1) = 2 * b(i, 0);
  }
  const auto linear = [](const auto&... keys) { return I::AffineTransfLinear(keys..., 0.25); };
  const auto cubic = [](const auto&... keys) { return I::AffineTransfCubic(keys..., 0, 1, 2, 3, 1.25); };
  const auto whole = [](const auto&... keys) { return I::MatricesLinear(keys..., 0.25); };
  const auto wholeCubic = [](const auto&... keys) { return I::MatricesCubic(keys..., 0, 1, 2, 3, 1.25); };
  EXPECT_TRUE(qxAreAlmostEqual(linear(regular, a), whole(regular, a), 0));
  EXPECT_TRUE(qxAreAlmostEqual(linear(a, regular), whole(a, regular), 0));
  EXPECT_TRUE(qxAreAlmostEqual(cubic(a, b, a, regular), wholeCubic(a, b, a, regular), 0));
  for (const auto& [apart, blend] :
       {std::pair(linear(a, b), whole(a, b)), std::pair(cubic(a, b, b, a), wholeCubic(a, b, b, a))}) {
    CQXMatrix4<TypeParam> expected = blend;
    expected.SetRowVector(3, {0, 0, 0, 1});
    EXPECT_TRUE(qxAreAlmostEqual(apart, expected, 16 * this->eps));
  }
}

}  // namespace
