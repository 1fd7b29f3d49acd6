#include <qx/foundation/complex.h>
#include <qx/matrices/matrix3.h>
#include <qx/vectors/base_vector.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <random>

#include "tests/fixed_test.h"

namespace {

template <typename T>
class Matrix3 : public ::testing::Test {
 protected:
  T Uniform(T low, T high) { return std::uniform_real_distribution<T>(low, high)(m_generator); }

  /// The elementary right-handed rotation about an axis.
  static CQXMatrix3<T> Elementary(std::int32_t axis, T degrees) {
    const T radians = degrees * std::numbers::pi_v<T> / 180;
    const std::int32_t j = (axis + 1) % 3, k = (axis + 2) % 3;
    CQXMatrix3<T> m;
    m.Unit();
    m(j, j) = m(k, k) = std::cos(radians);
    m(k, j) = std::sin(radians);
    m(j, k) = -m(k, j);
    return m;
  }
  static void ExpectEigenvectors(const CQXMatrix3<T>& m, T lambda, const T* vectors, std::int32_t count, T bound) {
    for (std::int32_t i = 0; i < count; ++i) {
      const CQXVector3<T> v(vectors + 3 * i);
      EXPECT_GE(v.NormInf(), 1);
      EXPECT_LE(Difference(m * v, v * lambda), bound * v.NormInf());
    }
  }

 private:
  std::mt19937 m_generator{4711};
};
TYPED_TEST_SUITE(Matrix3, FloatTypes);

TYPED_TEST(Matrix3, EulerAnglesRebuildTheRotationInEveryOrder) {
  using T = TypeParam;
  using V = CQXVector3<T>;
  const std::int32_t sequences[6][3] = {{0, 1, 2}, {0, 2, 1}, {1, 0, 2}, {1, 2, 0}, {2, 1, 0}, {2, 0, 1}};
  for (std::int32_t code = 0; code < 6; ++code) {
    const auto order = static_cast<qxRotationsOrder>(code);
    const auto expectRoundTrip = [&](const V& angles, T bound) {
      CQXMatrix3<T> m, rebuilt;
      m.SetRotationByEulerAngles(angles[0], angles[1], angles[2], order);
      const auto factor = [&](std::int32_t i) {
        return this->Elementary(sequences[code][i], angles[sequences[code][i]]);
      };
      EXPECT_LT(Difference(m, factor(2) * factor(1) * factor(0)), 16 * eps<T>);
      V found;
      m.ExtractEulerAngles(order, found[0], found[1], found[2]);
      EXPECT_GE(found.GetMinComponent(0), -180);
      EXPECT_LT(found.GetMaxComponent(0), 180);
      rebuilt.SetRotationByEulerAngles(found[0], found[1], found[2], order);
      EXPECT_LT(Difference(rebuilt, m), bound);
    };
    for (int repetition = 0; repetition < 100; ++repetition) {
      expectRoundTrip(V(this->Uniform(-180, 180), this->Uniform(-180, 180), this->Uniform(-180, 180)),
                      std::sqrt(eps<T>));
    }
    // All quarter turns: among them every lock. The angles go through one more turn.
    for (int turns = 0; turns < 216; ++turns) {
      expectRoundTrip(V(T(turns % 6 - 2), T(turns / 6 % 6 - 2), T(turns / 36 - 2)) * 90, 16 * eps<T>);
    }
    // The lock with other angles beside it, and almost the lock.
    for (const T middle : {T(90), T(-90), T(89.99), T(-89.9)}) {
      V angles(30, -50, 110);
      angles[sequences[code][1]] = middle;
      expectRoundTrip(angles, std::sqrt(eps<T>));
    }
  }
}

TYPED_TEST(Matrix3, LockedAnglesAreHalves) {
  CQXMatrix3<TypeParam> m;
  TypeParam ax, ay, az;
  for (const TypeParam side : {TypeParam(1), TypeParam(-1)}) {
    m.SetRotationByEulerAngles(50, 90 * side, 20, QX_ROTATIONS_XYZ);  // the difference 30 or the sum 70 is determined
    m.ExtractEulerAngles(QX_ROTATIONS_XYZ, ax, ay, az);
    EXPECT_NEAR(ax, side > 0 ? 15 : 35, 720 * eps<TypeParam>);
    EXPECT_NEAR(az, side > 0 ? -15 : 35, 720 * eps<TypeParam>);
  }
  m = CQXMatrix3<TypeParam>(1, 2, 3, 4, 5, 6, 7, 8, 9);
  for (const std::int32_t order : {6, -1, std::numeric_limits<std::int32_t>::min()}) {  // outside: nothing changes
    m.SetRotationByEulerAngles(10, 20, 30, static_cast<qxRotationsOrder>(order));
    m.ExtractEulerAngles(static_cast<qxRotationsOrder>(order), m[0], m[1], m[2]);
  }
  EXPECT_EQ(Numbers(m), Numbers(Ramp<CQXMatrix3<TypeParam>>(1)));
}

TYPED_TEST(Matrix3, AngleAndAxisRebuildTheRotation) {
  using T = TypeParam;
  using V = CQXVector3<T>;
  CQXMatrix3<T> m, rebuilt;
  T angle = 9;
  V axis;
  const auto expectRoundTrip = [&](T degrees, const V& direction, T bound) {
    m.SetRotationByAngleAxis(degrees, direction);
    EXPECT_LT(Difference(m * direction, direction), 16 * eps<T>);
    m.ExtractRotationAngleAxis(angle, axis);
    EXPECT_GE(angle, -180) << angle;
    EXPECT_LT(angle, 180) << angle;
    EXPECT_EQ(axis.IsAlmostUnit(8 * eps<T>), 1);
    rebuilt.SetRotationByAngleAxis(angle, axis);
    EXPECT_LT(Difference(rebuilt, m), bound);
  };
  for (int repetition = 0; repetition < 200; ++repetition) {
    expectRoundTrip(this->Uniform(2, 358), V(this->Uniform(-1, 1), this->Uniform(-1, 1), this->Uniform(-1, 1)),
                    64 * std::sqrt(eps<T>));
  }
  // Half turns about every axis and diagonal, and turns on both sides of 120 degrees, where the trace changes its sign.
  for (const T degrees : {T(180), T(-180), T(119.9), T(120.1), T(240)}) {
    for (int code = 1; code < 27; ++code) {
      if (code != 13) expectRoundTrip(degrees, V(T(code % 3 - 1), T(code / 3 % 3 - 1), T(code / 9 - 1)), 512 * eps<T>);
    }
  }
  m.SetRotationByAngleAxis(90, V(0, 0, 7));
  EXPECT_LT(Difference(m, this->Elementary(2, 90)), 4 * eps<T>);
  m.SetDiagonal(1 + 2 * eps<T>);  // no rotation; the trace is above 3 by rounding
  m.ExtractRotationAngleAxis(angle, axis);
  EXPECT_EQ(angle, 0);
  EXPECT_EQ(axis.NormInf(), 0);
}

TYPED_TEST(Matrix3, IndicesMinorsAndRows) {
  using T = TypeParam;
  using M = CQXMatrix3<T>;
  for (std::int32_t i = 0; i < 3; ++i) {
    std::int32_t a, b;
    M::GetPairOfIndices(i, a, b);
    EXPECT_LT(a, b);
    EXPECT_NE(a, i);
    EXPECT_NE(b, i);
    EXPECT_EQ(M::GetThirdIndex(a, b), i);
  }
  EXPECT_EQ(Ramp<M>(1).CalculateMinorSubtrIm(0, 2, 1, 2, 3), 2 * 9 - 3 * 8 - 9);

  // Rows whose three absolute minors (columns 01, 02, 12) are given, in all orders and ties: the first largest wins.
  for (int code = 0; code < 27; ++code) {
    const T m01 = T(code % 3 + 1), m02 = T(code / 3 % 3 + 1), m12 = T(code / 9 + 1);
    std::int32_t c1, c2;
    M(1, 0, -m12 / m01, 0, m01, m02, 0, 0, 0).GetMainMinorColumns(0, 1, c1, c2);
    EXPECT_EQ(c1 * 10 + c2, m01 >= m02 && m01 >= m12 ? 1 : m02 >= m12 ? 2 : 12) << code;
  }
  M v;
  M(2, -2, 1, 0, 0, 0, 0, 0, 0).FindEigenvectorsFromRow(0, v.Data());  // of equal ones the first
  EXPECT_EQ(Numbers(v), Numbers(M(1, 1, 0, T(-0.5), 0, 1, 0, 0, 0)));

  const M zeros(0, 0, 0, 1, 2, 3, T(0.5), T(-0.5), 0);
  std::int32_t rows[3];
  T numbers[3];
  EXPECT_EQ(zeros.FindZeroRows(rows, T(0.5)), 2);
  EXPECT_EQ(rows[0], 0);
  EXPECT_EQ(rows[1], 2);  // the bound is inside
  EXPECT_EQ(zeros.FindZeroRows(numbers, T(0.4)), 1);
  EXPECT_EQ(zeros.TestRowsForDependence(0, 1), 1);
  EXPECT_EQ(zeros.TestRowsForDependence(1, 2), 0);
}

TYPED_TEST(Matrix3, EigenvectorsOfEveryRank) {
  using T = TypeParam;
  using M = CQXMatrix3<T>;
  const struct {
    M m;
    T lambda;
    std::int32_t count;
  } cases[] = {{M(4, 0, 0, 0, 4, 0, 0, 0, 4), 4, 3},   // the unit vectors
               {M(2, 0, 0, 0, 2, 0, 1, 2, 3), 2, 2},   // two zero rows
               {M(2, 1, 2, 0, 2, 0, 0, 0, 2), 2, 2},   // two zero rows at the end
               {M(1, 1, 1, 1, 1, 1, 1, 1, 1), 0, 2},   // all colinear
               {M(0, 0, 0, 1, 2, 3, 2, 4, 6), 0, 2},   // a zero row first, the others colinear
               {M(0, 0, 0, 1, 2, 3, 2, 1, 6), 0, 1},   // a zero row, the others independent
               {M(1, 2, 3, 2, 4, 6, 1, 1, 1), 0, 1}};  // the first pair is colinear
  T vectors[9];
  for (const auto& c : cases) {
    for (const T tolerance : {T(1e-6), T(0), T(-1)}) {
      ASSERT_EQ(c.m.FindEigenvectorsReal(c.lambda, vectors, tolerance), c.count);
      this->ExpectEigenvectors(c.m, c.lambda, vectors, c.count, 32 * eps<T>);
      if (c.count == 2) {
        EXPECT_GT(CQXVector3<T>(vectors).Cross(CQXVector3<T>(vectors + 3)).NormInf(), T(0.1));
      }
    }
  }
  const M m(2, 1, 0, 1, 3, 1, 0, 1, 5);
  T values[3];
  ASSERT_EQ(m.FindEigenvalues(values[0], values[1], values[2]), 3);
  for (const T lambda : values) {
    ASSERT_EQ(m.FindEigenvectorsReal(lambda, vectors, T(1e-4)), 1);
    this->ExpectEigenvectors(m, lambda, vectors, 1, T(1e-4));
  }
  M exact;
  exact.Unit();
  for (const T tolerance : {T(0), T(1e-6)}) {  // a triple root, exact at any tolerance
    ASSERT_EQ(exact.FindEigenvalues(values[0], values[1], values[2], tolerance), 2);
    for (const T lambda : values) EXPECT_NEAR(lambda, 1, 4 * std::numeric_limits<T>::epsilon());
  }
  exact(0, 1) = -std::numeric_limits<T>::quiet_NaN();
  exact.FindEigenvalues(values[0], values[1], values[2]);
  for (const T lambda : values) EXPECT_EQ(std::isnan(lambda) && !std::signbit(lambda), true);
}

TYPED_TEST(Matrix3, ComplexEigenvectors) {
  using T = TypeParam;
  using M = CQXMatrix3<T>;
  using Complex = CQXComplex<T>;
  CQXBaseVector<Complex> v;
  for (const M& m : {M(0, -1, 0, 1, 0, 0, 0, 0, 5), M(5, 1, 2, 0, 0, -1, 0, 1, 0), M(1, 2, 3, -3, 1, 2, 1, -5, 1)}) {
    T real, re, im, vectors[9];
    ASSERT_EQ(m.FindEigenvalues(real, re, im), 1);
    ASSERT_EQ(m.FindEigenvectorsReal(real, vectors, T(1e-4)), 1);
    this->ExpectEigenvectors(m, real, vectors, 1, T(1e-4));
    const Complex lambda(re, im);
    ASSERT_EQ(m.FindEigenvectorComplex(lambda, v), 1);
    const T length = std::sqrt(v[0].SquareMagn() + v[1].SquareMagn() + v[2].SquareMagn());
    EXPECT_GT(length, T(0.1));
    for (std::int32_t r = 0; r < 3; ++r) {
      const Complex residual = v[0] * m(r, 0) + v[1] * m(r, 1) + v[2] * m(r, 2) - lambda * v[r];
      EXPECT_LT(std::hypot(residual.Real(), residual.Imag()), 512 * eps<T> * length);
    }
  }
  v[2].Set(7, 0);
  EXPECT_EQ(M(2, 0, 0, 0, 2, 0, 0, 0, 2).FindEigenvectorComplex(Complex(2, 0), v), 0);
  EXPECT_EQ(v[2].Real(), 7);
  const M rows(0, 1, 0, -1, 0, 0, 0, 0, 1);
  // i is an eigenvalue of the first block.
  EXPECT_EQ(rows.TestComplexRowsForDependence(0, 1, 1), 1);
  EXPECT_EQ(rows.TestComplexRowsForDependence(0, 1, 2), 0);
}

TYPED_TEST(Matrix3, AnySolutionKeepsItsCode) {
  using V = CQXVector3<TypeParam>;
  const CQXMatrix3<TypeParam> singular(1, 0, 0, 0, 1, 0, 1, 1, 0);
  V x;
  EXPECT_EQ(singular.FindAnySolution(V(2, 3, 5), x), -2);
  EXPECT_EQ(singular * x == V(2, 3, 5), true);
  EXPECT_EQ(singular.FindAnySolution(V(2, 3, 9), x), -1);
}

TYPED_TEST(Matrix3, MotionsOfThePlaneMultiplyFromEitherSide) {
  using T = TypeParam;
  using M = CQXMatrix3<T>;
  const M any(1, 2, 3, 4, 5, 6, 0, 0, 1), translation(1, 0, 7, 0, 1, 8, 0, 0, 1);
  M m = any;
  m.Translate(7, 8, 1);
  EXPECT_EQ(Numbers(m), Numbers(translation * any));
  m = any;
  m.Translate(7, 8, 0);
  EXPECT_EQ(Numbers(m), Numbers(any * translation));
  m = any;
  m.Scale(2, 3, 0);
  m.Rotate(std::numbers::pi_v<T> / 6, 1);
  EXPECT_LT(Difference(m, this->Elementary(2, 30) * any * M(2, 0, 0, 0, 3, 0, 0, 0, 1)), 32 * eps<T>);
  EXPECT_TRUE(any.IsCoordinateMatrix(0));
  EXPECT_TRUE(translation.IsTranslation(0));
  EXPECT_FALSE(any.IsTranslation());
  M inverse;
  ASSERT_EQ(any.InverseCoordinateMatrix(inverse), 0);
  EXPECT_EQ((any * inverse).IsUnit(16 * eps<T>), 1);
  EXPECT_EQ(M(1, 2, 3, 2, 4, 6, 0, 0, 1).InverseCoordinateMatrix(inverse), 3);
  EXPECT_EQ(qxMatrix2To3(qxMatrix3To2(any)) == M(1, 2, 0, 4, 5, 0, 0, 0, 1), true);
}

TYPED_TEST(Matrix3, ScaleAndRotationRebuildTheMap) {
  using T = TypeParam;
  using M = CQXMatrix3<T>;
  M rotation, out[3];
  rotation.SetRotationByEulerAngles(20, 40, -60, QX_ROTATIONS_XYZ);
  const M stretches[] = {M(3, 0, 0, 0, 1, 0, 0, 0, 2), M(3, 1, 0, 1, 4, -1, 0, -1, 2), M(3, -1, 0, -1, 4, -1, 0, -1, 2),
                         M(2, 1, 0, 1, 4, 1, 0, 1, 3)};
  const T bound = 256 * eps<T>;
  std::int32_t hasStretch, reflection;
  for (int code = 0; code < 16; ++code) {
    const std::int32_t side = code & 1, isReflected = code >> 1 & 1, isStretched = code < 4 ? 0 : 1;
    const M q = isReflected != 0 ? -rotation : rotation, s = stretches[code >> 2];
    const M m = side != 0 ? q * s : s * q;
    ASSERT_EQ(m.ExtractScaleRotation(out[0], out[1], out[2], side, bound, hasStretch, reflection), 1);
    const M &foundQ = out[side != 0 ? 0 : 2], &v = out[side != 0 ? 2 : 0], &d = out[1];
    EXPECT_EQ(hasStretch, isStretched);
    EXPECT_EQ(reflection, isReflected);
    EXPECT_TRUE(d.IsDiagonal(bound));
    EXPECT_TRUE(v.IsRotation(bound));
    EXPECT_LT(Difference(foundQ, q), bound);
    EXPECT_LT(Difference(v * d * v.Transpose(), s), 4 * bound);
    EXPECT_EQ(v.IsUnit(0), 1 - isStretched);  // a diagonal keeps the order of the axes
  }
  hasStretch = 9;
  const M singular(1, 2, 3, 2, 4, 6, 0, 0, 1);
  EXPECT_EQ(singular.ExtractScaleRotation(out[0], out[1], out[2], 1, bound, hasStretch, reflection), 0);
  EXPECT_EQ(hasStretch, 9);
}

}  // namespace
