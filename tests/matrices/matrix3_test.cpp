#include <qx/foundation/complex.h>
#include <qx/matrices/matrix3.h>
#include <qx/vectors/base_vector.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <random>

#include "tests/typed_test.h"

namespace {

template <typename T>
class Matrix3 : public ::testing::Test {
 protected:
  static constexpr T eps = std::numeric_limits<T>::epsilon();

  T Uniform(T low, T high) { return std::uniform_real_distribution<T>(low, high)(m_generator); }

  /// The elementary right-handed rotation about an axis.
  static CQXMatrix3<T> Elementary(std::int32_t axis, T degrees) {
    const T radians = degrees * std::numbers::pi_v<T> / 180;
    const T c = std::cos(radians);
    const T s = std::sin(radians);
    switch (axis) {
      case 0:
        return CQXMatrix3<T>(1, 0, 0, 0, c, -s, 0, s, c);
      case 1:
        return CQXMatrix3<T>(c, 0, s, 0, 1, 0, -s, 0, c);
      default:
        return CQXMatrix3<T>(c, -s, 0, s, c, 0, 0, 0, 1);
    }
  }
  static CQXMatrix3<T> Composed(T ax, T ay, T az, qxRotationsOrder order) {
    const CQXMatrix3<T> x = Elementary(0, ax), y = Elementary(1, ay), z = Elementary(2, az);
    switch (order) {
      case QX_ROTATIONS_XYZ:
        return z * y * x;
      case QX_ROTATIONS_XZY:
        return y * z * x;
      case QX_ROTATIONS_YXZ:
        return z * x * y;
      case QX_ROTATIONS_YZX:
        return x * z * y;
      case QX_ROTATIONS_ZYX:
        return x * y * z;
      default:
        return y * x * z;
    }
  }
  static void ExpectSame(const CQXMatrix3<T>& a, const CQXMatrix3<T>& b, T bound) {
    for (std::int32_t i = 0; i < 9; ++i) EXPECT_NEAR(a[i], b[i], bound) << i;
  }
  static void ExpectEigenvectors(const CQXMatrix3<T>& m, T lambda, const T* vectors, std::int32_t count, T bound) {
    for (std::int32_t i = 0; i < count; ++i) {
      const CQXVector3<T> v(vectors + 3 * i);
      EXPECT_GE(v.NormInf(), 1);
      EXPECT_LE((m * v - v * lambda).NormInf(), bound * v.NormInf());
    }
  }

 private:
  std::mt19937 m_generator{4711};
};
TYPED_TEST_SUITE(Matrix3, FloatTypes);

constexpr qxRotationsOrder orders[] = {QX_ROTATIONS_XYZ, QX_ROTATIONS_XZY, QX_ROTATIONS_YXZ,
                                       QX_ROTATIONS_YZX, QX_ROTATIONS_ZYX, QX_ROTATIONS_ZXY};

TYPED_TEST(Matrix3, EulerAnglesRebuildTheRotationInEveryOrder) {
  CQXMatrix3<TypeParam> m, rebuilt;
  TypeParam ax, ay, az;
  const auto expectRoundTrip = [&](TypeParam x, TypeParam y, TypeParam z, qxRotationsOrder order, TypeParam bound) {
    m.SetRotationByEulerAngles(x, y, z, order);
    this->ExpectSame(m, this->Composed(x, y, z, order), 16 * this->eps);
    m.ExtractEulerAngles(order, ax, ay, az);
    for (const TypeParam angle : {ax, ay, az}) EXPECT_EQ(angle >= -180 && angle < 180, true) << angle;
    rebuilt.SetRotationByEulerAngles(ax, ay, az, order);
    this->ExpectSame(rebuilt, m, bound);
  };
  for (const qxRotationsOrder order : orders) {
    for (int repetition = 0; repetition < 100; ++repetition) {
      expectRoundTrip(this->Uniform(-180, 180), this->Uniform(-180, 180), this->Uniform(-180, 180), order,
                      std::sqrt(this->eps));
    }
    // All quarter turns: among them every lock. The angles go through one more turn.
    for (int code = 0; code < 216; ++code) {
      expectRoundTrip(TypeParam(90 * (code % 6 - 2)), TypeParam(90 * (code / 6 % 6 - 2)),
                      TypeParam(90 * (code / 36 - 2)), order, 16 * this->eps);
    }
    // The lock with other angles beside it, and almost the lock.
    for (const TypeParam middle : {TypeParam(90), TypeParam(-90), TypeParam(89.99), TypeParam(-89.9)}) {
      for (std::int32_t axis = 0; axis < 3; ++axis) {
        TypeParam angles[3] = {30, -50, 110};
        angles[axis] = middle;
        expectRoundTrip(angles[0], angles[1], angles[2], order, std::sqrt(this->eps));
      }
    }
  }
}

TYPED_TEST(Matrix3, LockedAnglesAreHalves) {
  CQXMatrix3<TypeParam> m;
  TypeParam ax, ay, az;
  m.SetRotationByEulerAngles(50, 90, 20, QX_ROTATIONS_XYZ);  // only the difference 30 is determined
  m.ExtractEulerAngles(QX_ROTATIONS_XYZ, ax, ay, az);
  const TypeParam bound = 720 * this->eps;
  EXPECT_NEAR(ax, 15, bound);
  EXPECT_NEAR(ay, 90, std::sqrt(this->eps));
  EXPECT_NEAR(az, -15, bound);
  m.SetRotationByEulerAngles(50, -90, 20, QX_ROTATIONS_XYZ);  // the sum 70
  m.ExtractEulerAngles(QX_ROTATIONS_XYZ, ax, ay, az);
  EXPECT_NEAR(ax, 35, bound);
  EXPECT_NEAR(az, 35, bound);
}

TYPED_TEST(Matrix3, OrdersOutsideTheEnumerationChangeNothing) {
  CQXMatrix3<TypeParam> m(1, 2, 3, 4, 5, 6, 7, 8, 9);
  TypeParam ax = 7, ay = 8, az = 9;
  for (const std::int32_t order : {6, 17, -1, std::numeric_limits<std::int32_t>::min()}) {
    m.SetRotationByEulerAngles(10, 20, 30, static_cast<qxRotationsOrder>(order));
    m.ExtractEulerAngles(static_cast<qxRotationsOrder>(order), ax, ay, az);
  }
  EXPECT_EQ(m[8] == 9 && ax == 7 && ay == 8 && az == 9, true);
}

TYPED_TEST(Matrix3, AngleAndAxisRebuildTheRotation) {
  using V = CQXVector3<TypeParam>;
  CQXMatrix3<TypeParam> m, rebuilt;
  const auto expectRoundTrip = [&](TypeParam degrees, const V& direction, TypeParam bound) {
    m.SetRotationByAngleAxis(degrees, direction);
    EXPECT_EQ(m.IsRotation(64 * this->eps), 1);
    TypeParam angle = 1000;
    V axis;
    m.ExtractRotationAngleAxis(angle, axis);
    EXPECT_EQ(angle >= -180 && angle < 180, true) << angle;
    EXPECT_EQ(axis.IsAlmostUnit(8 * this->eps), 1);
    rebuilt.SetRotationByAngleAxis(angle, axis);
    this->ExpectSame(rebuilt, m, bound);
  };
  for (int repetition = 0; repetition < 200; ++repetition) {
    expectRoundTrip(this->Uniform(2, 358), V(this->Uniform(-1, 1), this->Uniform(-1, 1), this->Uniform(-1, 1)),
                    64 * std::sqrt(this->eps));
  }
  // Half turns about every axis and diagonal, and turns on both sides of 120 degrees, where the trace changes its sign.
  for (const TypeParam degrees :
       {TypeParam(180), TypeParam(-180), TypeParam(119.9), TypeParam(120.1), TypeParam(240)}) {
    for (int code = 1; code < 27; ++code) {
      if (code == 13) continue;
      const V direction(static_cast<TypeParam>(code % 3 - 1), static_cast<TypeParam>(code / 3 % 3 - 1),
                        static_cast<TypeParam>(code / 9 - 1));
      expectRoundTrip(degrees, direction, 512 * this->eps);
    }
  }
  for (std::int32_t i = 0; i < 3; ++i) {
    V axis;
    TypeParam angle;
    axis[i] = 1;
    CQXMatrix3<TypeParam> halfTurn;
    halfTurn.SetDiagonal(-1);
    halfTurn(i, i) = 1;
    V found;
    halfTurn.ExtractRotationAngleAxis(angle, found);
    EXPECT_EQ(angle, -180);
    EXPECT_EQ(found == axis, true);
  }
}

TYPED_TEST(Matrix3, NoRotationHasAngleZeroAndNoAxis) {
  using V = CQXVector3<TypeParam>;
  CQXMatrix3<TypeParam> m;
  TypeParam angle = 9;
  V axis(1, 1, 1);
  m.SetDiagonal(1 + 2 * this->eps);  // the trace is above 3 by rounding
  m.ExtractRotationAngleAxis(angle, axis);
  EXPECT_EQ(angle, 0);
  EXPECT_EQ(axis.NormInf(), 0);
  m.SetRotationByAngleAxis(360, V(0, 0, 5));
  EXPECT_EQ(m.IsUnit(), 1);
  m.SetRotationByAngleAxis(90, V(0, 0, 7));
  this->ExpectSame(m, {0, -1, 0, 1, 0, 0, 0, 0, 1}, 4 * this->eps);
}

TYPED_TEST(Matrix3, IndicesMinorsAndRows) {
  using M = CQXMatrix3<TypeParam>;
  const std::int32_t pairs[3][2] = {{1, 2}, {0, 2}, {0, 1}};
  for (std::int32_t i = 0; i < 3; ++i) {
    std::int32_t a, b;
    M::GetPairOfIndices(i, a, b);
    EXPECT_EQ(a, pairs[i][0]);
    EXPECT_EQ(b, pairs[i][1]);
    EXPECT_EQ(M::GetThirdIndex(a, b), i);
  }
  const M m(1, 2, 3, 4, 5, 6, 7, 8, 10);
  EXPECT_EQ(m.CalculateMinor(0, 2, 1, 2), 2 * 10 - 3 * 8);
  EXPECT_EQ(m.CalculateMinorSubtrIm(0, 2, 1, 2, 3), 2 * 10 - 3 * 8 - 9);

  // Rows whose three absolute minors (columns 01, 02, 12) are given, in all orders and ties: the first largest wins.
  for (int code = 0; code < 27; ++code) {
    const TypeParam m01 = static_cast<TypeParam>(code % 3 + 1), m02 = static_cast<TypeParam>(code / 3 % 3 + 1),
                    m12 = static_cast<TypeParam>(code / 9 + 1);
    const M rows(1, 0, -m12 / m01, 0, m01, m02, 0, 0, 0);
    std::int32_t c1, c2;
    rows.GetMainMinorColumns(0, 1, c1, c2);
    const int expected = m01 >= m02 && m01 >= m12 ? 1 : m02 >= m12 ? 2 : 12;
    EXPECT_EQ(c1 * 10 + c2, expected) << code;
  }

  TypeParam v[6];
  M(2, -2, 1, 0, 0, 0, 0, 0, 0).FindEigenvectorsFromRow(0, v);  // of equal ones the first
  const TypeParam expected[6] = {1, 1, 0, TypeParam(-0.5), 0, 1};
  for (int i = 0; i < 6; ++i) EXPECT_EQ(v[i], expected[i]) << i;

  const M zeros(0, 0, 0, 1, 2, 3, TypeParam(0.5), TypeParam(-0.5), 0);
  std::int32_t indices[3];
  TypeParam numbers[3];
  EXPECT_EQ(zeros.FindZeroRows(indices, TypeParam(0.5)), 2);  // the bound itself is inside
  EXPECT_EQ(indices[0] == 0 && indices[1] == 2, true);
  EXPECT_EQ(zeros.FindZeroRows(numbers, TypeParam(0.4)), 1);
  EXPECT_EQ(numbers[0], 0);
  EXPECT_EQ(zeros.TestRowsForDependence(0, 1), 1);
  EXPECT_EQ(zeros.TestRowsForDependence(1, 2), 0);
}

TYPED_TEST(Matrix3, EigenvaluesAndTheirVectors) {
  using T = TypeParam;
  using M = CQXMatrix3<T>;
  T values[3], vectors[9];
  // Similar to diag(1, 2, -3).
  const M basis(1, 2, 0, 0, 1, 1, 1, 0, 1);
  M inverse;
  ASSERT_EQ(basis.Inverse(inverse), 0);
  const M m = basis * M(1, 0, 0, 0, 2, 0, 0, 0, -3) * inverse;
  ASSERT_EQ(m.FindEigenvalues(values[0], values[1], values[2]), 3);
  EXPECT_NEAR(values[0] + values[1] + values[2], 0, 256 * this->eps);
  for (const T lambda : values) {
    ASSERT_EQ(m.FindEigenvectorsReal(lambda, vectors, T(1e-4)), 1);
    this->ExpectEigenvectors(m, lambda, vectors, 1, T(1e-4));
  }
  EXPECT_EQ(M(0, -1, 0, 1, 0, 0, 0, 0, 5).FindEigenvalues(values[0], values[1], values[2]), 1);
  EXPECT_NEAR(values[0], 5, 64 * this->eps);
  EXPECT_NEAR(values[1], 0, 64 * this->eps);
  EXPECT_NEAR(values[2], 1, 64 * this->eps);
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
               {M(3, 0, 0, 0, 5, 0, 0, 0, 7), 5, 1},   //
               {M(1, 2, 3, 2, 4, 6, 1, 1, 1), 0, 1}};  // the first pair is colinear
  for (const auto& c : cases) {
    for (const T tolerance : {T(1e-6), T(0), T(-1)}) {
      T vectors[9] = {};
      ASSERT_EQ(c.m.FindEigenvectorsReal(c.lambda, vectors, tolerance), c.count);
      this->ExpectEigenvectors(c.m, c.lambda, vectors, c.count, 32 * this->eps);
      if (c.count == 2) {
        EXPECT_GT(CQXVector3<T>(vectors).Cross(CQXVector3<T>(vectors + 3)).NormInf(), T(0.1));
      }
    }
  }
}

TYPED_TEST(Matrix3, ComplexEigenvectors) {
  using T = TypeParam;
  using M = CQXMatrix3<T>;
  using Complex = CQXComplex<T>;
  for (const M& m : {M(0, -1, 0, 1, 0, 0, 0, 0, 5), M(5, 1, 2, 0, 0, -1, 0, 1, 0), M(1, 2, 3, -3, 1, 2, 1, -5, 1)}) {
    T real, re, im;
    ASSERT_EQ(m.FindEigenvalues(real, re, im), 1);
    const Complex lambda(re, im);
    CQXBaseVector<Complex> v;
    ASSERT_EQ(m.FindEigenvectorComplex(lambda, v), 1);
    ASSERT_EQ(v.Dim(), 3);
    T largest = 0;
    for (std::int32_t i = 0; i < 3; ++i) largest = std::max(largest, v[i].Magn());
    EXPECT_GT(largest, T(0.1));
    for (std::int32_t r = 0; r < 3; ++r) {
      const Complex residual = v[0] * m(r, 0) + v[1] * m(r, 1) + v[2] * m(r, 2) - lambda * v[r];
      EXPECT_NEAR(residual.Real(), 0, 512 * this->eps * largest);
      EXPECT_NEAR(residual.Imag(), 0, 512 * this->eps * largest);
    }
  }
  const M m(2, 0, 0, 0, 2, 0, 0, 0, 2);
  CQXBaseVector<Complex> untouched(3, Complex(7, 0));
  EXPECT_EQ(m.FindEigenvectorComplex(Complex(2, 0), untouched), 0);
  EXPECT_EQ(untouched[2].Real(), 7);
  const M rows(0, 1, 0, -1, 0, 0, 0, 0, 1);
  EXPECT_EQ(rows.TestComplexRowsForDependence(0, 1, 1), 1);  // i is an eigenvalue of the first block
  EXPECT_EQ(rows.TestComplexRowsForDependence(0, 1, 2), 0);
}

TYPED_TEST(Matrix3, AnySolutionKeepsItsCode) {
  using M = CQXMatrix3<TypeParam>;
  using V = CQXVector3<TypeParam>;
  V x;
  EXPECT_EQ(M(2, 0, 0, 0, 4, 0, 0, 0, 8).FindAnySolution(V(2, 4, 8), x), 1);
  EXPECT_EQ(x == V(1, 1, 1), true);
  const M singular(1, 0, 0, 0, 1, 0, 1, 1, 0);
  EXPECT_EQ(singular.FindAnySolution(V(2, 3, 5), x), -2);
  EXPECT_EQ(singular * x == V(2, 3, 5), true);
  EXPECT_EQ(singular.FindAnySolution(V(2, 3, 9), x), -1);
  EXPECT_EQ(x == V(), true);
}

TYPED_TEST(Matrix3, MotionsOfThePlaneMultiplyFromEitherSide) {
  using T = TypeParam;
  using M = CQXMatrix3<T>;
  const M any(1, 2, 3, 4, 5, 6, 0, 0, 1), translation(1, 0, 7, 0, 1, 8, 0, 0, 1);
  for (const std::int32_t flag : {0, 1}) {
    const auto expect = [&](const M& moved, const M& motion) {
      this->ExpectSame(moved, flag != 0 ? motion * any : any * motion, 16 * this->eps);
    };
    M m[3] = {any, any, any};
    m[0].Rotate(T(0.3), flag);
    expect(m[0], this->Elementary(2, T(0.3) * 180 / std::numbers::pi_v<T>));
    m[1].Scale(2, 3, flag);
    expect(m[1], M(2, 0, 0, 0, 3, 0, 0, 0, 1));
    m[2].Translate(7, 8, flag);
    expect(m[2], translation);
  }
  EXPECT_EQ(any.IsCoordinateMatrix(0) && translation.IsTranslation(0) && !any.IsTranslation(), true);
  M inverse;
  ASSERT_EQ(any.InverseCoordinateMatrix(inverse), 0);
  EXPECT_EQ((any * inverse).IsUnit(16 * this->eps), 1);
  EXPECT_EQ(M(1, 2, 3, 2, 4, 6, 0, 0, 1).InverseCoordinateMatrix(inverse), 3);
  EXPECT_EQ(qxMatrix2To3(qxMatrix3To2(any)) == M(1, 2, 0, 4, 5, 0, 0, 0, 1), true);
}

TYPED_TEST(Matrix3, ScaleAndRotationRebuildTheMap) {
  using T = TypeParam;
  using M = CQXMatrix3<T>;
  M rotation;
  rotation.SetRotationByEulerAngles(20, 40, -60, QX_ROTATIONS_XYZ);
  const M stretch(3, 1, 0, 1, 4, -1, 0, -1, 2), diagonal(3, 0, 0, 0, 1, 0, 0, 0, 2);
  const T bound = 256 * this->eps;
  for (const std::int32_t side : {0, 1}) {
    for (const T sign : {T(1), T(-1)}) {
      for (const bool isStretched : {true, false}) {
        const M& s = isStretched ? stretch : diagonal;
        const M m = (side != 0 ? rotation * s : s * rotation) * sign;
        M out1, d, out3;
        std::int32_t hasStretch = 9, reflection = 9;
        ASSERT_EQ(m.ExtractScaleRotation(out1, d, out3, side, bound, hasStretch, reflection), 1);
        const M& q = side != 0 ? out1 : out3;
        const M& v = side != 0 ? out3 : out1;
        EXPECT_EQ(hasStretch, isStretched ? 1 : 0);
        EXPECT_EQ(reflection, sign < 0 ? 1 : 0);
        EXPECT_EQ(d.IsDiagonal(bound), 1);
        EXPECT_EQ(v.IsRotation(bound), 1);
        this->ExpectSame(q, rotation * sign, bound);
        this->ExpectSame(v * d * v.Transpose(), s, 4 * bound);
        if (!isStretched) {
          EXPECT_EQ(v.IsUnit(0), 1);
          this->ExpectSame(d, diagonal, bound);  // in the order of the axes
        }
      }
    }
  }
  M out1, out2, out3;
  std::int32_t hasStretch = 9, reflection = 9;
  EXPECT_EQ(M(1, 2, 3, 2, 4, 6, 0, 0, 1).ExtractScaleRotation(out1, out2, out3, 1, T(1e-6), hasStretch, reflection), 0);
  EXPECT_EQ(hasStretch == 9 && reflection == 9, true);
}

}  // namespace
