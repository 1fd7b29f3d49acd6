#include <qx/matrices/matrix_n.h>

#include "tests/matrices/residuals.h"

namespace {

using namespace residuals;

template <typename T>
class Square : public ::testing::Test {
 protected:
  using Matrix = CQXMatrixN<T>;
  static constexpr double eps = static_cast<double>(std::numeric_limits<T>::epsilon());
  static inline const std::vector<std::int32_t> sizes = {1, 2, 3, 4, 5, 6, 9, 16, 33, 64};

  static Matrix Symmetric(const std::string& kind, std::int32_t n) {
    const Matrix a = Make<T>(kind, n, n);
    return (a + a.Transpose()) / T(2);
  }
  /// Random with a heavy diagonal: no pivot is small.
  static Matrix Dominant(std::int32_t n) {
    Matrix a = Make<T>("random", n, n);
    for (std::int32_t i = 0; i < n; ++i) a(i, i) += T(n);
    return a;
  }
  static double DistanceFromUnit(Matrix product) {
    for (std::int32_t i = 0; i < product.Size(); ++i) product(i, i) -= 1;
    return residuals::Size(product);
  }
};
TYPED_TEST_SUITE(Square, FloatTypes);

TYPED_TEST(Square, ResultsStayInTheClass) {
  using T = TypeParam;
  using M = CQXMatrixN<T>;
  const T elements[] = {1, 2, 3, 4, 5, 6};
  const M a(2, elements), unit = a ^ 0;
  const CQXMatrixMN<T> wide(2, 3, elements);
  EXPECT_EQ((a * wide).ColsNb(), 3);
  EXPECT_EQ(M(wide).Size(), 2);
  EXPECT_EQ(M(wide)(1, 0), wide(1, 0));
  const CQXVectorN<T> image = a * CQXVectorN<T>(2, T(1));
  EXPECT_EQ(image[1], 7);
  M c = (a * a + a - a.Transpose() * T(2) / T(2)).Negate();
  EXPECT_EQ(c(1, 1), -22);
  CQXBaseMatrix<T>& base = c;
  base = a;
  base *= 2;
  EXPECT_TRUE(c == a * T(2));
  static_cast<CQXMatrixMN<T>&>(c) = a;
  c *= c;
  c.PostMultiply(a);
  c.PreMultiply(a);
  EXPECT_TRUE(c == (a ^ 4));
  (c = a) ^= -2;
  EXPECT_LE(residuals::Size(c * a * a - unit), 256 * this->eps);
  EXPECT_EQ(Largest(M(2) ^ -1), 0);
  EXPECT_EQ(a.GetCharacteristicsMatrix(3)(1, 1), 1);
  T diagonal[2];
  a.GetDiagElements(diagonal);
  EXPECT_EQ(diagonal[1], a.DetForTriangular());
  EXPECT_EQ(a.IsUnit(2), 0);
  EXPECT_EQ(a.IsUnit(3), 1);
  EXPECT_EQ(a.IsSymmetric(T(0.9)), 0);
  EXPECT_EQ(a.IsSymmetric(1), 1);
  EXPECT_EQ(a.IsOrthogonal(), 0);
  EXPECT_EQ(unit.IsOrthogonal(0), 1);
  EXPECT_EQ(a.IsPositive(), 0);
  EXPECT_EQ((a.Transpose() * a).IsPositive(), 1);
  EXPECT_EQ(a.IsSingular(T(1.9)), 0);
  EXPECT_EQ(a.IsSingular(T(2.1)), 1);
}

TYPED_TEST(Square, LUFactorsWithoutExchange) {
  using T = TypeParam;
  for (const std::int32_t n : this->sizes) {
    const CQXMatrixN<T> a = Make<T>("random", n, n);
    CQXMatrixN<T> l(n), u(n), inPlace(a);
    ASSERT_EQ(a.LU_Decomposition(l, u, T(1e-6)), 1);
    EXPECT_EQ(l.IsLLTriangular(0), 1);
    EXPECT_EQ(u.IsURTriangular(0), 1);
    for (std::int32_t i = 0; i < n; ++i) EXPECT_EQ(l(i, i), 1);
    ExpectSmall<T>("LU: A - LU over n norm(L) norm(U)", residuals::Size(l * u - a),
                   n * residuals::Size(l) * residuals::Size(u), 2);
    ASSERT_EQ(inPlace.LU_Decomposition(inPlace, u), 1);
    EXPECT_TRUE(inPlace == l);
  }
  const T elements[] = {2, 1, 1, 4, 2, 5, 6, 7, 8};  // the second pivot vanishes
  CQXMatrixN<T> a(3, elements), l(3), u(3);
  EXPECT_EQ(a.LU_Decomposition(l, u), 0);
  EXPECT_EQ(u(0, 2), 1);
  EXPECT_EQ(l(2, 0), 3);
  EXPECT_EQ(u(1, 2) + u(2, 2), 0);
  a(0, 0) = T(1e-7);
  EXPECT_EQ(a.LU_Decomposition(l, u), 0);
  EXPECT_EQ(Largest(l) + Largest(u), 0);
}

TYPED_TEST(Square, DeterminantsFallBackOnExchange) {
  using T = TypeParam;
  const T swap[] = {0, 0, 2, 0, 3, 0, 5, 0, 0}, small[] = {0, T(5e-10), 1, 0};
  EXPECT_EQ(CQXMatrixN<T>(3, swap).Det(), -30);
  EXPECT_EQ(CQXMatrixN<T>(2, small).Det(), 0);  // the second pivot is below 1e-9
  EXPECT_EQ(CQXMatrixN<T>(4).Det(), 0);
  EXPECT_EQ(CQXMatrixN<T>(0).Det(), 1);
  for (const std::int32_t n : this->sizes) {  // the product of the singular numbers, up to the sign
    const CQXMatrixN<T> a = Make<T>("random", n, n);
    CQXMatrixN<T> u(n), v(n);
    CQXVectorN<T> s(n);
    ASSERT_EQ(a.SV_Decomposition(u, v, s, 0), 0);
    double product = 1;
    for (std::int32_t i = 0; i < n; ++i) product *= static_cast<double>(s[i]);
    const double kappa = static_cast<double>(s[0] / s[n - 1]);
    EXPECT_NEAR(std::abs(static_cast<double>(a.Det())) / product, 1, 64 * n * kappa * this->eps) << n;
  }
}

TYPED_TEST(Square, InversesOfEverySize) {
  using T = TypeParam;
  for (const std::int32_t n : this->sizes) {
    SCOPED_TRACE(n);
    const std::int32_t success = n >= 2 && n <= 4 ? 0 : 1, failure = n >= 2 && n <= 4 ? 3 : 0;
    const CQXMatrixN<T> a = this->Dominant(n);
    CQXMatrixN<T> inverse(n), other(a), turned(n), singular(a);
    CQXVectorN<T> x(n), b(n, T(1));
    T condition = 0;
    ASSERT_EQ(a.Inverse(inverse), success);
    ASSERT_EQ(other.Inverse(other), success);
    EXPECT_TRUE(other == inverse);
    for (const std::int32_t kind : {0, 1, 2, 3}) {
      const qxMatrixNorm norm = static_cast<qxMatrixNorm>(kind);
      ASSERT_EQ(a.Inverse(other, norm, T(1e-6), condition), success);
      EXPECT_NEAR(condition / (a.Norm(norm) * inverse.Norm(norm)), 1, 1e-4);
      EXPECT_NEAR(condition / a.ConditionNumber(norm), 1, 1e-4);
    }
    ExpectSmall<T>("inverse: AX - I over n cond", this->DistanceFromUnit(a * other), n * static_cast<double>(condition),
                   2);
    ASSERT_EQ(a.SolveSystem(b, x), 1);
    ExpectSmall<T>("solve: Ax - b over n cond norm", std::sqrt(static_cast<double>((a * x - b).SquareLength())),
                   n * static_cast<double>(condition * b.Length()), 2);
    ASSERT_EQ(a.SolveSystem(b, b, QX_MATRIX_NORM_ROW_SUM, T(1e-6), condition), 1);
    EXPECT_TRUE(b == x);

    // No pivot in the first place: elimination fails, the inverse is there all the same.
    for (std::int32_t i = 0; i < n; ++i) turned.SetRowVector(i, a.RowVector((i + 1) % n));
    if (n > 1) turned(0, 0) = 0;
    ASSERT_EQ(turned.Inverse(inverse), success);
    ExpectSmall<T>("inverse without first pivot: AX - I over n cond", this->DistanceFromUnit(turned * inverse),
                   n * static_cast<double>(turned.ConditionNumber(QX_MATRIX_NORM_SPECTRAL)), 4);

    for (std::int32_t c = 0; c < n; ++c) singular(n - 1, c) = n == 1 ? T(0) : singular(0, c);
    EXPECT_EQ(singular.Inverse(other), failure);
    EXPECT_EQ(singular.SolveSystem(b, x), 0);
    EXPECT_EQ(singular.SolveSystem(b, x, QX_MATRIX_NORM_EUCLIDEAN, T(1e-6), condition), 0);
    EXPECT_EQ(condition, QX_OVERFLOW_VALUE<T>);
    EXPECT_TRUE(x == b);
    for (const std::int32_t norm : {0, 1, 2, 3}) {
      EXPECT_EQ(singular.Inverse(other, static_cast<qxMatrixNorm>(norm), T(1e-6), condition), failure);
      EXPECT_EQ(singular.ConditionNumber(static_cast<qxMatrixNorm>(norm)), QX_OVERFLOW_VALUE<T>);
    }
    EXPECT_LE(this->DistanceFromUnit(a * other), 1e-4);  // untouched
  }
  CQXMatrixN<T> small(5), one(1);
  small.SetDiagonal(T(0.01));
  EXPECT_EQ(small.Inverse(small, T(1e-4)), 3);  // pivots above, their product below the tolerance
  EXPECT_EQ(small.Inverse(small, T(1e-11)), 1);
  one(0, 0) = T(1e-7);
  EXPECT_EQ(one.Inverse(one), 0);
  EXPECT_EQ(one.Inverse(one, T(1e-8)), 1);
  EXPECT_NEAR(one(0, 0) * T(1e-7), 1, 4 * this->eps);
}

TYPED_TEST(Square, InversesOfSimpleStructures) {
  using T = TypeParam;
  using M = CQXMatrixN<T>;
  for (const std::int32_t n : this->sizes) {
    M l(n), d(n), inverse(n);
    const M a = Make<T>("random", n, n);
    for (std::int32_t i = 0; i < n; ++i) {
      for (std::int32_t j = 0; j < i; ++j) l(i, j) = a(i, j) / 4;
      l(i, i) = 1 + a(i, i) / 2;
    }
    const M u = l.Transpose();
    ASSERT_EQ(l.LowLeftInverse(inverse), 1);
    EXPECT_EQ(inverse.IsLLTriangular(0), 1);
    const double scale = n * residuals::Size(l) * residuals::Size(inverse);
    ExpectSmall<T>("triangular inverse: LX - I over n norm(L) norm(X)", this->DistanceFromUnit(l * inverse), scale, 2);
    ASSERT_EQ(u.UpperRightInverse(inverse), 1);
    EXPECT_EQ(inverse.IsURTriangular(0), 1);
    ExpectSmall<T>("triangular inverse: UX - I over n norm(U) norm(X)", this->DistanceFromUnit(u * inverse), scale, 2);
    d.SetDiagonal(T(n));
    ASSERT_EQ(d.DiagInverse(d), 1);
    EXPECT_EQ(d(n - 1, n - 1), 1 / T(n));
    EXPECT_EQ(u.LowLeftInverse(inverse), n == 1);
    EXPECT_EQ(l.UpperRightInverse(inverse), n == 1);
    EXPECT_EQ(u.DiagInverse(inverse), n == 1);
    l(n - 1, n - 1) = T(1e-5);
    EXPECT_EQ(l.LowLeftInverse(inverse, T(1e-4)), 0);
    EXPECT_EQ(Largest(inverse), 0);
  }
  const T elements[] = {4, T(1e-7), -2, 9}, equal[] = {1, 1, 1, 1};
  M p(2);
  EXPECT_EQ(M(2, elements).LowLeftInverse(p), 1);  // within 1e-6 of zero above the diagonal
  EXPECT_EQ(p(0, 1), 0);
  EXPECT_EQ(M(2, elements).InvPreconditioner(p, 1), 1);
  EXPECT_EQ(p(1, 0), 0);
  EXPECT_EQ(p(1, 1), 1 / T(9));
  EXPECT_EQ(M(2, elements).InvPreconditioner(p, T(0.2)), 1);
  EXPECT_EQ(M(2).InvPreconditioner(p, 1), 0);
  EXPECT_NE(p(1, 0), 0);
  EXPECT_EQ(M(2, equal).InvPreconditioner(p, T(0.5)), 1);  // not to be inverted: the diagonal stands in
  EXPECT_EQ(p.IsUnit(0), 1);
}

TYPED_TEST(Square, EigenvaluesComposeTheMatrix) {
  using T = TypeParam;
  for (const std::string& kind : kinds) {
    if (kind == "graded up" || kind == "graded down") continue;
    for (const std::int32_t n : this->sizes) {
      SCOPED_TRACE(kind + " " + std::to_string(n));
      const CQXMatrixN<T> a = this->Symmetric(kind, n);
      CQXMatrixN<T> vectors(n), p(n), d(n);
      CQXVectorN<T> values(n);
      const double size = residuals::Size(a);
      const T tolerance = static_cast<T>(this->eps * size / 8);
      ASSERT_EQ(a.SpectralDecomposition(p, d, 0, tolerance), 1);
      ExpectSmall<T>("eigenvalues: A - V D V^T over n norm", residuals::Size(p * d * p.Transpose() - a), n * size, 4);
      ExpectSmall<T>("eigenvectors: I - V^T V over n", LossOfOrthogonality(p), n, 4);
      for (std::int32_t i = 1; i < n; ++i) EXPECT_LE(d(i - 1, i - 1), d(i, i));
      ASSERT_EQ(a.SpectralDecomposition(vectors, d, 1, tolerance), 1);
      EXPECT_TRUE(p == vectors.Transpose());
      const qxStatus status = a.SymmetricEigensolve(values, vectors, tolerance);
      if (status == QX_STATUS_TOO_MANY_ROTATIONS) continue;
      ASSERT_EQ(status, QX_STATUS_OK);
      EXPECT_TRUE(p == vectors);
      EXPECT_TRUE(values == d.Diagonal());
    }
  }
}

TYPED_TEST(Square, BothEigenSolversAgree) {
  using T = TypeParam;
  for (const std::string& kind : kinds) {
    for (const std::int32_t n : this->sizes) {
      SCOPED_TRACE(kind + " " + std::to_string(n));
      const CQXMatrixN<T> a = this->Symmetric(kind, n);
      const double size = residuals::Size(a);
      CQXMatrixN<T> vectors(n), p(n), d(n);
      CQXVectorN<T> values(n);
      ASSERT_EQ(a.SymmetricEigensolveQL(values, vectors, 0), QX_STATUS_OK);
      for (std::int32_t i = 0; i < n; ++i) d(i, i) = values[i];
      for (std::int32_t i = 1; i < n; ++i) EXPECT_LE(values[i - 1], values[i]);
      ExpectSmall<T>("QL: A - V D V^T over n norm", residuals::Size(vectors * d * vectors.Transpose() - a), n * size,
                     4);
      ExpectSmall<T>("QL: I - V^T V over n", LossOfOrthogonality(vectors), n, 4);
      if (kind == "graded up" || kind == "graded down") continue;
      ASSERT_EQ(a.SpectralDecomposition(p, d, 0, static_cast<T>(this->eps * size / 8)), 1);
      const CQXVectorN<T> difference = values - CQXVectorN<T>(d.Diagonal());
      ExpectSmall<T>("QL: eigenvalues less those of Jacobi over n norm", static_cast<double>(difference.NormInf()),
                     n * size, 4);
    }
  }
  // 2, -1, -1, ...: the eigenvalues of the second difference are known, 2 - 2 cos(k pi / (n + 1)).
  constexpr std::int32_t n = 100;
  CQXMatrixN<T> a(n), vectors(n);
  CQXVectorN<T> values(n);
  for (std::int32_t i = 0; i < n; ++i) {
    a(i, i) = std::ldexp(T(2), 90);
    if (i > 0) a(i - 1, i) = a(i, i - 1) = std::ldexp(T(-1), 90);
  }
  ASSERT_EQ(a.SymmetricEigensolveQL(values, vectors), QX_STATUS_OK);
  for (std::int32_t k = 0; k < n; ++k) {
    EXPECT_NEAR(static_cast<double>(std::ldexp(values[k], -90)), 2 - 2 * std::cos((k + 1) * std::acos(-1.0) / (n + 1)),
                n * this->eps);
  }
  a(3, 4) += std::ldexp(T(1), 90);
  EXPECT_EQ(a.SymmetricEigensolveQL(values, vectors, 1), QX_STATUS_NOT_SYMMETRIC);
  a(0, 0) = std::numeric_limits<T>::infinity();
  EXPECT_EQ(a.SymmetricEigensolveQL(values, vectors, std::numeric_limits<T>::max()), QX_STATUS_TOO_MANY_ROTATIONS);
}

/// The printed sweep, element by element on the upper triangle with indices from 1, as an independent form.
template <typename T>
std::int32_t PrintedJacobi(std::int32_t n, std::int32_t limit, T tolerance, CQXMatrixN<T>& a, CQXVectorN<T>& values,
                           CQXMatrixN<T>& vectors) {
  const CQXMatrixN<T> rotator(n);
  CQXVectorN<T> b(n), z(n);
  vectors.Unit();
  for (std::int32_t i = 0; i < n; ++i) values[i] = b[i] = a(i, i);
  std::int32_t rotations = 0;
  const auto isLost = [](T g, T x) { return std::abs(x) + g == std::abs(x); };
  for (std::int32_t i = 1; i <= limit; ++i) {
    T sum = 0;
    for (std::int32_t p = 0; p < n; ++p) {
      for (std::int32_t q = p + 1; q < n; ++q) sum += std::abs(a(p, q));
    }
    if (sum < tolerance) break;
    const T threshold = i < 4 ? T(0.2) * sum / (T(n) * T(n)) : T(0);
    for (std::int32_t p = 0; p < n; ++p) {
      for (std::int32_t q = p + 1; q < n; ++q) {
        const T g = 100 * std::abs(a(p, q));
        if (i > 4 && isLost(g, values[p]) && isLost(g, values[q])) {
          a(p, q) = 0;
        } else if (std::abs(a(p, q)) > threshold) {
          T h = values[q] - values[p], t;
          if (isLost(g, h)) {
            t = a(p, q) / h;
          } else {
            const T theta = T(0.5) * h / a(p, q);
            t = (theta < 0 ? -1 : 1) / (std::abs(theta) + std::sqrt(1 + theta * theta));
          }
          const T c = 1 / std::sqrt(1 + t * t), s = t * c, tau = s / (1 + c);
          h = t * a(p, q);
          z[p] -= h;
          z[q] += h;
          values[p] -= h;
          values[q] += h;
          a(p, q) = 0;
          for (std::int32_t j = 0; j < p; ++j) rotator.JacobiRotate(a, j, p, j, q, s, tau);
          for (std::int32_t j = p + 1; j < q; ++j) rotator.JacobiRotate(a, p, j, j, q, s, tau);
          for (std::int32_t j = q + 1; j < n; ++j) rotator.JacobiRotate(a, p, j, q, j, s, tau);
          for (std::int32_t j = 0; j < n; ++j) rotator.JacobiRotate(vectors, j, p, j, q, s, tau);
          ++rotations;
        }
      }
    }
    for (std::int32_t k = 0; k < n; ++k) {
      b[k] += z[k];
      values[k] = b[k];
      z[k] = 0;
    }
  }
  return rotations;
}

TYPED_TEST(Square, TheSweepsAreThePrintedOnesToTheLastBit) {
  using T = TypeParam;
  for (const std::int32_t n : {1, 2, 3, 7, 20}) {
    const CQXMatrixN<T> a = this->Symmetric("random", n);
    for (const std::int32_t limit : {0, 1, 2, 50}) {
      CQXMatrixN<T> expected(a), expectedVectors(n), offset(n + 1), vectors(n + 1);
      CQXVectorN<T> expectedValues(n), values(n + 1, T(-7));
      const std::int32_t rotations = PrintedJacobi(n, limit, T(1e-5), expected, expectedValues, expectedVectors);
      offset.InsertMatrix(a, 1, 1, n, n);
      for (std::int32_t r = 2; r <= n; ++r) offset(r, 1) = T(99);  // the lower triangle is not read
      std::int32_t sweeps = limit;
      EXPECT_EQ(a.DestructiveJacobiUnitOffset(offset, values, vectors, sweeps, T(1e-5)), QX_STATUS_OK);
      EXPECT_EQ(sweeps, rotations);
      EXPECT_EQ(values[0], -7);
      EXPECT_EQ(vectors(0, 0), 0);
      for (std::int32_t i = 0; i < n; ++i) {
        EXPECT_EQ(values[i + 1], expectedValues[i]);
        for (std::int32_t j = 0; j < n; ++j) {
          EXPECT_EQ(vectors(i + 1, j + 1), expectedVectors(i, j));
          if (i < j) {
            EXPECT_EQ(offset(i + 1, j + 1), expected(i, j));
          }
        }
      }
    }
  }
}

TYPED_TEST(Square, StatusesOfTheEigenSolver) {
  using T = TypeParam;
  CQXMatrixN<T> room(4), tight(3);
  CQXVectorN<T> roomy(4), short3(3, T(-7));
  std::int32_t sweeps = 5;
  EXPECT_EQ(tight.DestructiveJacobiUnitOffset(tight, roomy, room, sweeps, 0), QX_STATUS_OUT_OF_MEMORY);
  EXPECT_EQ(tight.DestructiveJacobiUnitOffset(room, short3, room, sweeps, 0), QX_STATUS_OUT_OF_MEMORY);
  EXPECT_EQ(tight.DestructiveJacobiUnitOffset(room, roomy, tight, sweeps, 0), QX_STATUS_OUT_OF_MEMORY);
  EXPECT_EQ(sweeps, 5);
  CQXMatrixN<T> a(3), vectors(3);
  CQXVectorN<T> values(3, T(-7));
  a(0, 1) = 1;
  EXPECT_EQ(a.SymmetricEigensolve(values, vectors, T(0.5)), QX_STATUS_NOT_SYMMETRIC);
  EXPECT_EQ(a.SpectralDecomposition(vectors, vectors, 0, T(0.5)), 0);
  EXPECT_EQ(values[2], -7);
  EXPECT_EQ(Largest(vectors), 0);
  // Exactly fifty rotations are reported as too many, converged or not: fifty 2 x 2 blocks take one each.
  for (const std::int32_t blocks : {49, 50, 51}) {
    const std::int32_t n = 2 * blocks;
    CQXMatrixN<T> paired(n), p(n), d(n);
    CQXVectorN<T> found(n, T(-7));
    for (std::int32_t i = 0; i < n; ++i) {
      paired(i, i) = T(i / 2 + 1);
      paired(i, i ^ 1) = T(0.25);
    }
    const qxStatus status = paired.SymmetricEigensolve(found, p, T(1e-4));
    EXPECT_EQ(status, blocks == 50 ? QX_STATUS_TOO_MANY_ROTATIONS : QX_STATUS_OK) << blocks;
    EXPECT_EQ(found[0], blocks == 50 ? T(-7) : T(0.75));
    EXPECT_EQ(paired.SpectralDecomposition(p, d, 0, T(1e-4)), 1);
  }
  a(1, 1) = std::numeric_limits<T>::quiet_NaN();
  a(0, 1) = a(0, 2) = a(2, 0) = std::numeric_limits<T>::infinity();
  static_cast<void>(a.SymmetricEigensolve(values, vectors));  // ends, whatever it says
  EXPECT_EQ(CQXMatrixN<T>(0).SymmetricEigensolve(values, vectors), QX_STATUS_OK);
}

TYPED_TEST(Square, PolarFormsOfBothSides) {
  using T = TypeParam;
  const auto expectPolar = [](const CQXMatrixN<T>& a, T sign) {
    const std::int32_t n = a.Size();
    CQXMatrixN<T> r(n), s(n);
    for (const std::int32_t flag : {1, 0}) {
      ASSERT_EQ(a.PolarDecomposition(r, s, flag, 0), 1);
      EXPECT_GT(r.Det() * sign, 0);
      EXPECT_EQ(s.IsSymmetric(0), 1);
      const T largest = static_cast<T>(Largest(a));
      EXPECT_EQ((s / largest).IsPositive(0), 1);
      ExpectSmall<T>("polar: A - RS over n norm", residuals::Size(((flag != 0 ? r * s : s * r) - a) / largest),
                     n * residuals::Size(a / largest), 8);
      ExpectSmall<T>("polar: I - R^T R over n", LossOfOrthogonality(r), n, 4);
    }
  };
  for (const std::int32_t n : this->sizes) {
    SCOPED_TRACE(n);
    for (const T sign : {T(1), T(-1)}) {
      CQXMatrixN<T> a = this->Dominant(n) / T(n);
      for (std::int32_t c = 0; c < n; ++c) a(0, c) *= sign;
      for (const T scale : {T(1), T(1e30), T(1e-30)}) expectPolar(a * scale, sign);
      // Condition numbers up to 1e10, where the type knows them.
      CQXMatrixN<T> u(n), v(n), d(n);
      CQXVectorN<T> singular(n);
      ASSERT_EQ(a.SV_Decomposition(u, v, singular, 0), 0);
      for (const T condition : {T(1e2), T(1e5), T(1e10)}) {
        if (n == 1 || condition * static_cast<T>(this->eps) > T(0.02)) continue;
        for (std::int32_t i = 0; i < n; ++i) d(i, i) = std::pow(condition, -T(i) / T(n - 1));
        const CQXMatrixN<T> hard = u * d * v.Transpose();
        expectPolar(hard, u.Det() * v.Det());
      }
    }
  }
  CQXMatrixN<T> a(5), r(5), s(5);
  EXPECT_EQ(a.PolarDecomposition(r, s, 1, 0), 0);
  a.SetDiagonal(T(0.5));
  EXPECT_EQ(a.PolarDecomposition(r, s, 1, T(0.03126)), 0);  // the determinant is 1 / 32
  EXPECT_EQ(Largest(r) + Largest(s), 0);
  EXPECT_EQ(a.PolarDecomposition(r, s, 1, T(0.03124)), 1);
  EXPECT_EQ(r.IsUnit(0), 1);
  EXPECT_TRUE(s == a);
  a(2, 3) = std::numeric_limits<T>::quiet_NaN();
  EXPECT_EQ(a.PolarDecomposition(r, s, 1, 0), 0);
}

}  // namespace
