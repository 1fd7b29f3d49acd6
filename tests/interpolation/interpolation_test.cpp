#include <qx/interpolation/interpolation.h>
#include <qx/vectors/vector_functions.h>

#include <array>
#include <cmath>
#include <limits>
#include <numbers>
#include <vector>

#include "tests/transforms/reference.h"
#include "tests/typed_test.h"

namespace {

template <typename T>
class Interpolation : public ::testing::Test {
 protected:
  static constexpr T eps = std::numeric_limits<T>::epsilon();

  CQXQuaternion<T> RandomUnit() {
    CQXQuaternion<T> q(random.In(-1, 1), random.In(-1, 1), random.In(-1, 1), random.In(-1, 1));
    q.Normalize();
    return q;
  }
  CQXMatrix4<T> RandomMatrix() {
    CQXMatrix4<T> m;
    for (std::int32_t i = 0; i < 16; ++i) m[i] = random.In(-2, 2);
    return m;
  }
  static void ExpectNear(const CQXQuaternion<T>& a, const CQXQuaternion<T>& b, T bound) {
    for (std::int32_t i = 0; i < 4; ++i) EXPECT_NEAR(a[i], b[i], bound) << i;
  }
  template <typename Matrix>
  static void ExpectNear(const Matrix& a, const Matrix& b, T bound) {
    EXPECT_LE((a - b).Norm(QX_MATRIX_NORM_ROW_SUM), bound);
  }

  /// Value of a polynomial with small whole coefficients for element i; its degree is 1, 2 or 3.
  static T Polynomial(std::size_t i, int degree, T t) {
    const T k = T(i % 5) - 2;
    T value = k + 1;
    for (int power = 1; power <= degree; ++power) value = value * t + (k - T(power));
    return value;
  }
  /// A key of a shape whose elements follow the polynomials at time t.
  template <typename Key>
  static Key KeyAt(Key shape, std::size_t count, int degree, T t) {
    for (std::size_t i = 0; i < count; ++i) shape.Data()[i] = Polynomial(i, degree, t);
    return shape;
  }
  template <typename Key>
  static void ExpectPolynomial(const Key& key, std::size_t count, int degree, T t, T bound) {
    for (std::size_t i = 0; i < count; ++i)
      EXPECT_NEAR(key.Data()[i], Polynomial(i, degree, t), bound) << i << ' ' << t;
  }

  template <typename Key>
  static void TestVectors(const Key& shape, std::size_t count) {
    TestKeys(
        shape, count, [](const auto&... arguments) { return CQXInterpolation::VectorsLinear(arguments...); },
        [](const auto&... arguments) { return CQXInterpolation::VectorsQuadratic(arguments...); },
        [](const auto&... arguments) { return CQXInterpolation::VectorsCubic(arguments...); });
  }
  template <typename Key>
  static void TestMatrices(const Key& shape, std::size_t count) {
    TestKeys(
        shape, count, [](const auto&... arguments) { return CQXInterpolation::MatricesLinear(arguments...); },
        [](const auto&... arguments) { return CQXInterpolation::MatricesQuadratic(arguments...); },
        [](const auto&... arguments) { return CQXInterpolation::MatricesCubic(arguments...); });
  }
  template <typename Key, typename Linear, typename Quadratic, typename Cubic>
  static void TestKeys(const Key& shape, std::size_t count, Linear linear, Quadratic quadratic, Cubic cubic) {
    const auto key = [&](int degree, T t) { return KeyAt(shape, count, degree, t); };
    const T t0 = -1, t1 = T(0.5), t2 = 1, t3 = 3;
    for (const T t : {T(-1), T(0), T(0.25), T(0.5), T(1), T(3), T(4)}) {
      ExpectPolynomial(linear(key(1, 0), key(1, 1), t), count, 1, t, 32 * eps);
      ExpectPolynomial(quadratic(key(2, t0), key(2, t1), key(2, t2), t0, t1, t2, t), count, 2, t, 2048 * eps);
      ExpectPolynomial(cubic(key(3, t0), key(3, t1), key(3, t2), key(3, t3), t0, t1, t2, t3, t), count, 3, t,
                       16384 * eps);
    }
  }

  reference::Random<T> random;
};
TYPED_TEST_SUITE(Interpolation, FloatTypes);

TYPED_TEST(Interpolation, PolynomialsAreReproducedByEveryTypeOfKey) {
  using T = TypeParam;
  this->TestVectors(CQXVector2<T>(), 2);
  this->TestVectors(CQXVector3<T>(), 3);
  this->TestVectors(CQXVector4<T>(), 4);
  this->TestVectors(CQXVectorN<T>(7), 7);
  this->TestVectors(CQXBaseVector<T>(6), 6);
  this->TestVectors(CQXVectorN<T>(), 0);
  this->TestMatrices(CQXMatrix2<T>(), 4);
  this->TestMatrices(CQXMatrix3<T>(), 9);
  this->TestMatrices(CQXMatrix4<T>(), 16);
  this->TestMatrices(CQXMatrixN<T>(3), 9);
  this->TestMatrices(CQXMatrixMN<T>(2, 5), 10);
  const CQXBaseMatrix<T> a = this->KeyAt(CQXBaseMatrix<T>(3, 2), 6, 1, 0),
                         b = this->KeyAt(CQXBaseMatrix<T>(3, 2), 6, 1, 1);
  const CQXBaseMatrix<T> blend = CQXInterpolation::MatricesLinear(a, b, 4);
  EXPECT_EQ(blend.RowsNb() * 10 + blend.ColsNb(), 32);
  this->ExpectPolynomial(blend, 6, 1, 4, 32 * this->eps);
  EXPECT_EQ(CQXInterpolation::MatricesLinear(CQXMatrixMN<T>(a), CQXMatrixMN<T>(b), 4).GetRank(), -1);
}

TYPED_TEST(Interpolation, ComplexElementsAreStoredExactly) {
  using T = TypeParam;
  using C = CQXComplex<T>;
  const T small = T(1e-6);  // closer to zero than the assignment of a complex number can tell
  CQXBaseVector<C> a(2), b(2);
  CQXBaseMatrix<C> ma(1, 2), mb(1, 2);
  b[0].Set(small, -small);
  a[1].Set(1, 2);
  b[1].Set(3, -2);
  for (std::int32_t i = 0; i < 2; ++i) {
    ma[i].Set(a[i].Real(), a[i].Imag());
    mb[i].Set(b[i].Real(), b[i].Imag());
  }
  const CQXBaseVector<C> v = CQXInterpolation::VectorsLinear(a, b, T(0.5));
  const CQXBaseMatrix<C> m = CQXInterpolation::MatricesLinear(ma, mb, T(0.5));
  for (const C* element : {v.Data(), m.Data()}) {
    EXPECT_EQ(element[0].Real(), small / 2);
    EXPECT_EQ(element[0].Imag(), -small / 2);
    EXPECT_EQ(element[1].Real(), 2);
    EXPECT_EQ(element[1].Imag(), 0);
  }
}

TYPED_TEST(Interpolation, VandermondeColumnsAreTheLagrangeBasis) {
  using T = TypeParam;
  const T nodes[] = {T(-0.75), T(0.5), 2, 3};
  const CQXMatrix3<T> m3 = CQXInterpolation::InverseVandermondeMatrix(nodes[0], nodes[1], nodes[2]);
  const CQXMatrix4<T> m4 = CQXInterpolation::InverseVandermondeMatrix(nodes[0], nodes[1], nodes[2], nodes[3]);
  for (std::int32_t j = 0; j < 4; ++j) {
    for (std::int32_t i = 0; i < 4; ++i) {
      const T t = nodes[i];
      EXPECT_NEAR(((m4(0, j) * t + m4(1, j)) * t + m4(2, j)) * t + m4(3, j), i == j ? 1 : 0, 256 * this->eps);
      if (i == 3 || j == 3) continue;
      EXPECT_NEAR((m3(0, j) * t + m3(1, j)) * t + m3(2, j), i == j ? 1 : 0, 64 * this->eps);
    }
  }
  EXPECT_FALSE(std::isfinite(CQXInterpolation::InverseVandermondeMatrix(T(1), T(1), T(2))(0, 0)));
}

TYPED_TEST(Interpolation, SlerpTakesTheShortArcAtConstantSpeed) {
  using T = TypeParam;
  using Q = CQXQuaternion<T>;
  for (int i = 0; i < 300; ++i) {
    const Q q1 = this->RandomUnit();
    const T angle = this->random.In(0.02, 3.1), t = this->random.In(0, 1);
    CQXVector3<T> axis = this->random.Vector(-1, 1);
    axis.Normalize();
    Q turn, part;
    turn.SetRotation(angle, axis);
    part.SetRotation(angle * t, axis);
    const Q q2 = q1 * turn, expected = q1 * part;
    // Conditioned like the arc cosine near parallel keys.
    const T bound = 64 * this->eps / std::sin(angle / 2);
    this->ExpectNear(CQXInterpolation::Slerp(q1, q2, t), expected, bound);
    this->ExpectNear(CQXInterpolation::Slerp(q1, std::as_const(q2).Negate(), t), expected, bound);
    this->ExpectNear(CQXInterpolation::Slerp(q1, std::as_const(q2).Negate(), 0), q1, bound);
  }
  const Q q = this->RandomUnit(), opposite = std::as_const(q).Negate();
  this->ExpectNear(CQXInterpolation::Slerp(q, q, T(0.3)), q, 2 * this->eps);
  this->ExpectNear(CQXInterpolation::Slerp(q, opposite, T(0.5)), q, 2 * this->eps);
  // Beyond the threshold the blend is linear, and shorter than 1.
  const Q near(std::cos(T(1e-3)), std::sin(T(1e-3)), 0, 0);
  this->ExpectNear(CQXInterpolation::Slerp(Q(), near, T(0.25)), Q() * T(0.75) + near * T(0.25), 2 * this->eps);
}

TYPED_TEST(Interpolation, SquadAndTheCubicPathGoThroughTheirKeys) {
  using T = TypeParam;
  using Q = CQXQuaternion<T>;
  for (int i = 0; i < 50; ++i) {
    Q q[4];
    for (Q& key : q) key = this->RandomUnit();
    const T bound = 256 * this->eps;
    this->ExpectNear(CQXInterpolation::Squad(q[0], q[1], q[2], q[3], 0), q[0], bound);
    const Q middle = CQXInterpolation::Squad(q[0], q[1], q[2], q[3], T(0.5));
    this->ExpectNear(middle,
                     CQXInterpolation::Slerp(CQXInterpolation::Slerp(q[0], q[3], T(0.5)),
                                             CQXInterpolation::Slerp(q[1], q[2], T(0.5)), T(0.5)),
                     0);
    const auto cubic = [&](T t0, T t, T t3) {
      return CQXInterpolation::SlerpCubic(q[0], q[1], q[2], q[3], t0, 2, 4, t3, t);
    };
    this->ExpectNear(cubic(1, 2, 5), q[1], 0);
    this->ExpectNear(cubic(1, -7, 5), q[1], 0);
    this->ExpectNear(cubic(1, 4, 5), q[2], 0);
    this->ExpectNear(cubic(1, 9, 5), q[2], 0);
    this->ExpectNear(cubic(1, 3, 5), cubic(-100, 3, 1e4), 0);  // the outer nodes play no role
    this->ExpectNear(CQXInterpolation::SlerpCubic(q[0], q[1], q[2], q[3], 1, 2, 2, 3, T(2.5)), q[1], 0);
    // The printed steps, written out.
    const auto control = [](const Q& before, const Q& key, const Q& after) {
      const Q inverse = key.Invert();
      Q sum = (inverse * after).Log() + (inverse * before).Log();
      sum *= T(-0.25);
      return key * sum.Exp();
    };
    const Q a = control(q[0], q[1], q[2]), b = control(q[1], q[2], q[3]);
    this->ExpectNear(cubic(1, T(2.5), 5), CQXInterpolation::Squad(q[1], a, b, q[2], T(0.25)), 0);
  }
  // A steady turn about one axis by the angles 0, 1, 2, 3: by symmetry the middle is at 1.5.
  Q turns[4];
  for (int i = 0; i < 4; ++i) turns[i].SetRotation(T(i), CQXVector3<T>(0, 0, 1));
  const Q middle = CQXInterpolation::SlerpCubic(turns[0], turns[1], turns[2], turns[3], 0, 1, 2, 3, T(1.5));
  Q expected;
  expected.SetRotation(T(1.5), CQXVector3<T>(0, 0, 1));
  Q unit = middle;
  unit.Normalize();
  this->ExpectNear(unit, expected, 16 * this->eps);
}

TYPED_TEST(Interpolation, RotationsOfMatricesAndAnglesAgree) {
  using T = TypeParam;
  using V = CQXVector3<T>;
  for (int i = 0; i < 60; ++i) {
    const int order = i % 6;
    const auto qxOrder = static_cast<qxRotationsOrder>(order);
    std::array<double, 3> angles[4];
    V degrees[4];
    CQXMatrix3<T> m[4];
    CQXMatrix4<T> wide[4];
    for (int k = 0; k < 4; ++k) {
      angles[k] = this->random.Angles();
      for (double& angle : angles[k]) angle *= i % 7 == 0 ? 3 : 1;  // several turns
      degrees[k] = V(T(angles[k][0]), T(angles[k][1]), T(angles[k][2]));
      m[k].SetRotationByEulerAngles(degrees[k].X(), degrees[k].Y(), degrees[k].Z(), qxOrder);
      wide[k] = this->RandomMatrix();  // all but the block is dropped
      for (std::int32_t r = 0; r < 3; ++r) {
        for (std::int32_t c = 0; c < 3; ++c) wide[k](r, c) = m[k](r, c);
      }
    }
    const T t = this->random.In(0, 1), bound = 2048 * this->eps;
    const CQXMatrix3<T> linear = CQXInterpolation::RotationsLinear(m[0], m[1], t);
    this->ExpectNear(CQXInterpolation::RotationsLinear(wide[0], wide[1], t), qxMatrix3To4(linear), T(0));
    this->ExpectNear(CQXInterpolation::RotationsLinear(m[0], m[1], 0), m[0], bound);
    this->ExpectNear(CQXInterpolation::RotationsLinear(m[0], m[1], 1), m[1], bound);
    const CQXMatrix3<T> cubic = CQXInterpolation::RotationsCubic(m[0], m[1], m[2], m[3], 0, 1, 3, 4, 1 + t);
    this->ExpectNear(CQXInterpolation::RotationsCubic(wide[0], wide[1], wide[2], wide[3], 0, 1, 3, 4, 1 + t),
                     qxMatrix3To4(cubic), T(0));
    this->ExpectNear(CQXInterpolation::RotationsCubic(m[0], m[1], m[2], m[3], 0, 1, 3, 4, 3), m[2], bound);

    T ax = 0, ay = 0, az = 0;
    CQXInterpolation::RotationsLinear(degrees[0].X(), degrees[0].Y(), degrees[0].Z(), degrees[1].X(), degrees[1].Y(),
                                      degrees[1].Z(), qxOrder, t, ax, ay, az);
    EXPECT_LE(reference::Distance(linear, reference::Euler({double(ax), double(ay), double(az)}, order)),
              4 * double(bound));
    const V edge =
        CQXInterpolation::RotationsCubic(degrees[0], degrees[1], degrees[2], degrees[3], qxOrder, 0, 1, 3, 4, 1);
    EXPECT_LE(
        reference::Distance(m[1], reference::Euler({double(edge.X()), double(edge.Y()), double(edge.Z())}, order)),
        4 * double(bound));
  }
  T ax = 1, ay = 2, az = 3;
  CQXInterpolation::RotationsLinear(1, 2, 3, 4, 5, 6, qxRotationsOrder(9), T(0.5), ax, ay, az);
  EXPECT_EQ(ax * 100 + ay * 10 + az, 123);
}

TYPED_TEST(Interpolation, TranslationsAndScalingsReadNothingElse) {
  using T = TypeParam;
  using V = CQXVector3<T>;
  CQXMatrix4<T> keys[4];
  V d[4], s[4], c[4];
  const T nodes[] = {0, 1, 2, 3};
  for (int k = 0; k < 4; ++k) {
    keys[k] = this->RandomMatrix();
    d[k] = keys[k].ExtractTranslation();
  }
  CQXMatrix4<T> expected;
  expected.Unit();
  expected.SetColVector(3, qxVector3To4(d[0] + (d[1] - d[0]) * T(0.25), 1));
  this->ExpectNear(CQXInterpolation::TranslationsLinear(keys[0], keys[1], T(0.25)), expected, 0);
  expected.SetColVector(3, qxVector3To4(CQXInterpolation::VectorsCubic(d[0], d[1], d[2], d[3], 0, 1, 2, 3, T(1.5)), 1));
  this->ExpectNear(CQXInterpolation::TranslationsCubic(keys[0], keys[1], keys[2], keys[3], 0, 1, 2, 3, T(1.5)),
                   expected, 0);

  for (int k = 0; k < 4; ++k) {
    s[k] = this->random.Vector(1.5, 3);
    c[k] = this->random.Vector(-2, 2);
    keys[k] = this->RandomMatrix();  // what is off the diagonal is not read
    for (std::int32_t i = 0; i < 3; ++i) {
      keys[k](i, i) = s[k][i];
      keys[k](i, 3) = (1 - s[k][i]) * c[k][i];
    }
  }
  const auto scaling = [](const V& factors, const V& center) {
    CQXMatrix4<T> m;
    for (std::int32_t i = 0; i < 3; ++i) {
      m(i, i) = factors[i];
      m(i, 3) = (1 - factors[i]) * center[i];
    }
    m(3, 3) = 1;
    return m;
  };
  this->ExpectNear(CQXInterpolation::ScalingsLinear(keys[0], keys[1], T(0.25)),
                   scaling(s[0] * T(0.75) + s[1] * T(0.25), c[0] * T(0.75) + c[1] * T(0.25)), 128 * this->eps);
  this->ExpectNear(CQXInterpolation::ScalingsCubic(keys[0], keys[1], keys[2], keys[3], 0, 1, 2, 3, nodes[2]),
                   scaling(s[2], c[2]), 4096 * this->eps);
  // A factor of 1 loses the translation on its axis; a translation of almost zero has the origin as its center.
  CQXMatrix4<T> key = scaling(V(1, 2, 3), V());
  key(0, 3) = 5;
  key(1, 3) = 4;
  const CQXMatrix4<T> lost = CQXInterpolation::ScalingsLinear(key, key, 0);
  EXPECT_EQ(lost(0, 3), 0);
  EXPECT_EQ(lost(1, 3), 4);
  key(0, 3) = 0;
  key(1, 3) = T(1e-6);
  EXPECT_EQ(CQXInterpolation::ScalingsLinear(key, key, 0)(1, 3), 0);
}

TYPED_TEST(Interpolation, AffineKeysBlendPlainlyUnlessAllAreSingular) {
  using T = TypeParam;
  CQXMatrix4<T> regular[4], singular[4];
  for (int k = 0; k < 4; ++k) {
    regular[k] = this->RandomMatrix();
    for (std::int32_t i = 0; i < 3; ++i) regular[k](i, i) += 6;
    singular[k] = this->RandomMatrix();
    singular[k].SetRowVector(1, singular[k].RowVector(0) * T(2));
    singular[k](1, 3) = T(k);
  }
  const T t = T(0.375);
  const auto linear = [&](const CQXMatrix4<T>& a, const CQXMatrix4<T>& b) {
    return CQXInterpolation::AffineTransfLinear(a, b, t);
  };
  for (const auto& [a, b] : {std::pair(regular[0], regular[1]), {regular[0], singular[1]}, {singular[0], regular[1]}}) {
    this->ExpectNear(linear(a, b), CQXInterpolation::MatricesLinear(a, b, t), 0);
  }
  CQXMatrix4<T> expected = CQXInterpolation::MatricesLinear(singular[0], singular[1], t);
  expected.SetRowVector(3, {0, 0, 0, 1});
  this->ExpectNear(linear(singular[0], singular[1]), expected, 32 * this->eps);

  const auto cubic = [&](const CQXMatrix4<T>(&m)[4], T time) {
    return CQXInterpolation::AffineTransfCubic(m[0], m[1], m[2], m[3], 0, 1, 2, 3, time);
  };
  this->ExpectNear(cubic(regular, T(1.5)),
                   CQXInterpolation::MatricesCubic(regular[0], regular[1], regular[2], regular[3], 0, 1, 2, 3, T(1.5)),
                   0);
  expected = CQXInterpolation::MatricesCubic(singular[0], singular[1], singular[2], singular[3], 0, 1, 2, 3, T(1.5));
  expected.SetRowVector(3, {0, 0, 0, 1});
  this->ExpectNear(cubic(singular, T(1.5)), expected, 256 * this->eps);
}

}  // namespace
