#include "tests/operations/operations.h"

namespace {

constexpr qxMatrixNorm norms[] = {QX_MATRIX_NORM_COLUMN_SUM, QX_MATRIX_NORM_ROW_SUM, QX_MATRIX_NORM_EUCLIDEAN,
                                  QX_MATRIX_NORM_SPECTRAL};

template <typename T>
CQXMatrixMN<T> RandomMatrix(std::int32_t rows, std::int32_t columns, std::uint32_t seed) {
  return CQXMatrixMN<T>(rows, columns, Numbers<T>(seed).Array(qxElementCount(rows, columns)).data());
}

template <typename T>
CQXVectorN<T> RandomVector(std::int32_t n, std::uint32_t seed) {
  return CQXVectorN<T>(n, Numbers<T>(seed).Array(static_cast<std::size_t>(n)).data());
}

constexpr std::int32_t shapes[][2] = {{1, 1},   {1, 5},   {5, 1},   {2, 2},   {2, 3},   {3, 2},   {3, 3},  {4, 4},
                                      {5, 5},   {7, 4},   {4, 7},   {8, 8},   {9, 9},   {13, 6},  {6, 13}, {16, 16},
                                      {17, 17}, {33, 20}, {20, 33}, {40, 40}, {65, 63}, {3, 130}, {130, 3}};

/// Of each shape: random, of rank 2, with zero rows and columns, diagonal, graded over many powers of ten, zero.
template <typename T>
std::vector<CQXMatrixMN<T>> Matrices() {
  std::vector<CQXMatrixMN<T>> all;
  for (const auto& [rows, columns] : shapes) {
    const CQXMatrixMN<T> a = Made(RandomMatrix<T>(rows, columns, 21));
    all.push_back(a);
    all.push_back(RandomMatrix<T>(rows, 2, 22) * RandomMatrix<T>(2, columns, 23));
    auto gaps = Made(a), diagonal = Made(CQXMatrixMN<T>(rows, columns)), graded = Made(a);
    for (std::int32_t r = 0; r < rows; ++r) {
      for (std::int32_t c = 0; c < columns; ++c) {
        if (r % 3 == 1 || c % 4 == 2) gaps(r, c) = 0;
        if (r == c) diagonal(r, c) = a(r, c);
        for (std::int32_t k = 0; k < r % 8; ++k) graded(r, c) /= 10;
      }
    }
    all.push_back(gaps);
    all.push_back(diagonal);
    all.push_back(graded);
    all.push_back(CQXMatrixMN<T>(rows, columns));
  }
  return all;
}

template <typename T, typename Function>
void OverMatrices(const std::string& operation, Function f, bool isPlatform = false) {
  Row<T>(
      "MatrixMN " + operation,
      [&](Hash& h) {
        for (const CQXMatrixMN<T>& a : Matrices<T>()) f(h, CQXMatrixMN<T>(a), a.RowsNb(), a.ColsNb());
      },
      isPlatform);
}

template <typename T>
void BaseMatrixRows() {
  OverMatrices<T>("arithmetic", [](Hash& h, auto a, std::int32_t rows, std::int32_t columns) {
    const CQXMatrixMN<T> b = RandomMatrix<T>(rows, columns, 31);
    h(a + b), h(a - b), h(a * T(3)), h(a / T(7)), h(a.Negate()), h(a == b), h(a != b), h(a.Transpose()),
        h(a.Diagonal()), h(a.Trace());
    a += b;
    a *= T(1.25);
    a -= b;
    a /= T(3);
    h(a), h(a.Mean()), h(a.InnerProduct(b)), h(a.CorrelationCoefficient(b));
  });
  OverMatrices<T>("*", [](Hash& h, auto a, std::int32_t rows, std::int32_t columns) {
    for (const std::int32_t n : {1, 2, 3, 4, 7, 8, 9, 31, 66}) h(a * RandomMatrix<T>(columns, n, 32));
    h(a * RandomVector<T>(columns, 33), rows);
  });
  OverMatrices<T>("parts", [](Hash& h, auto a, std::int32_t rows, std::int32_t columns) {
    const CQXMatrixMN<T> b = RandomMatrix<T>(rows, columns, 34);
    std::vector<T> buffer(qxElementCount(rows, columns));
    a.DumpPart(rows / 3, columns / 3, rows - 1, columns - 1, buffer.data(), 1);
    h(buffer), h(a.RowVector(rows / 2)), h(a.ColVector(columns / 2));
    a.DumpPart(0, 0, rows / 2, columns - 1, buffer.data(), 0);
    a.FillPart(0, columns / 2, rows - 1, columns - 1, buffer.data(), 0);
    a.CopyPartRow(rows / 2, 0, columns, 0, 0, b);
    a.CopyPartColumn(columns / 2, 0, rows, 0, 0, b);
    h(buffer), h(a), h(a.ExtractLeftCornerMatrix((rows + 1) / 2, (columns + 1) / 2)),
        h(a.ExtractMatrix(rows / 2, columns / 2, rows - rows / 2, columns - columns / 2));
    a.InsertMatrix(b, rows / 2, columns / 2, rows - rows / 2, columns - columns / 2);
    a.AnnulateSmallElements(T(0.2));
    h(a), h(a.IsAlmostZero()), h(a.IsDiagonal()), h(a.IsBidiagonal()), h(a.IsURTriangular()),
        h(a.IsLLTriangular(T(0.3)));
  });
  Row<T>("Matrix of complex", [](Hash& h) {
    using C = CQXComplex<T>;
    for (const auto& [rows, columns] : shapes) {
      Numbers<T> next(35);
      auto a = Made(CQXBaseMatrix<C>(rows, columns)), b = Made(CQXBaseMatrix<C>(columns, rows));
      for (std::int32_t i = 0; i < rows * columns; ++i) {
        const T x = next(), y = next();
        a[i].Set(x, y);
        b[i].Set(y, next());
      }
      h(a * b), h(a.Transpose() + b), h(a - b.Transpose()), h(a.Negate()), h(a * a[0]), h(a / C(T(0.5), T(0.25))),
          h(a.Diagonal()), h(a.Trace()), h(a == a), h(a * b.ColVector(0));
    }
  });
  Row<T>("Matrix printed", [](Hash& h) {
    std::ostringstream stream;
    stream << RandomMatrix<T>(5, 3, 36);
    h(stream.str()), h(Printed([] { RandomMatrix<T>(6, 7, 36).PrintPartOfMatrix(1, 2, 4, 5); }));
  });
}

template <typename T>
void DecompositionRows() {
  using M = CQXMatrixMN<T>;
  OverMatrices<T>("QR_Decomposition", [](Hash& h, auto a, std::int32_t m, std::int32_t n) {
    M q(m, m), r(m, n);
    h(a.QR_Decomposition(q, r), q, r);
  });
  OverMatrices<T>("SV_Decomposition", [](Hash& h, auto a, std::int32_t m, std::int32_t n) {
    M u(m, m), v(n, n);
    CQXVectorN<T> s(std::min(m, n));
    h(a.SV_Decomposition(u, v, s)), h(u), h(v), h(s), h(a.GetRank()), h(a.IsSingCalculated());
    std::vector<T> numbers(static_cast<std::size_t>(std::min(m, n)));
    a.GetSingularNumbers(numbers.data());
    h(numbers);
  });
  OverMatrices<T>("ThinSVD", [](Hash& h, auto a, std::int32_t m, std::int32_t n) {
    if (m < n) return;
    M u(m, n), v(n, n);
    CQXVectorN<T> s(n);
    h(a.ThinSVD(u, v, s), u, v, s);
  });
  OverMatrices<T>("CalculateRank",
                  [](Hash& h, auto a, std::int32_t, std::int32_t) { h(a.CalculateRank()), h(a.GetRank()); });
  OverMatrices<T>("Inverse", [](Hash& h, auto a, std::int32_t m, std::int32_t n) {
    M inverse(n, m);
    h(a.Inverse(inverse), inverse);
    for (const qxMatrixNorm norm : norms) {
      T condition = 0;
      h(a.Inverse(inverse, norm, T(1e-6), condition), inverse, condition);
    }
  });
  OverMatrices<T>("PseudoInverse", [](Hash& h, auto a, std::int32_t m, std::int32_t n) {
    M inverse(n, m);
    CQXVectorN<T> x(n);
    const CQXVectorN<T> b = RandomVector<T>(m, 41);
    for (const qxMatrixNorm norm : norms) {
      T condition = 0;
      h(a.PseudoInverse(inverse, norm, condition), inverse, condition);
      h(a.PseudoSolveSystem(b, x, norm, condition)), h(x), h(condition), h(a.Norm(norm));
    }
  });
  OverMatrices<T>(
      "AnnulateRelativelyDiagonal",
      [](Hash& h, auto a, std::int32_t, std::int32_t) {
        a.AnnulateRelativelyDiagonal(3);
        h(a);
      },
      true);
}

/// Square matrices: random, symmetric, positive, triangular, singular, diagonal and zero, of every small size.
template <typename T, typename Function>
void OverSquares(const std::string& operation, Function f) {
  using M = CQXMatrixN<T>;
  Row<T>("MatrixN " + operation, [&](Hash& h) {
    for (const std::int32_t n : {1, 2, 3, 4, 5, 6, 7, 8, 9, 12, 17, 31, 40}) {
      const M a = Made(M(RandomMatrix<T>(n, n, 51)));
      M lower = Made(a), upper = Made(a), diagonal = Made(M(n)), singular = Made(a);
      for (std::int32_t r = 0; r < n; ++r) {
        for (std::int32_t c = 0; c < n; ++c) {
          if (r < c) lower(r, c) = 0;
          if (r > c) upper(r, c) = 0;
          if (r == c) diagonal(r, c) = a(r, c) * T(3);
          if (r == n - 1) singular(r, c) = singular(0, c);
        }
      }
      const M positive = a * a.Transpose() + diagonal * diagonal;
      for (const M& m : {a, M(a + a.Transpose()), positive, lower, upper, diagonal, singular, M(n), M(a * T(1000))}) {
        f(h, m, n, M(n), M(n), CQXVectorN<T>(n));
      }
    }
  });
}

template <typename T>
void SquareRows() {
  using M = CQXMatrixN<T>;
  using V = CQXVectorN<T>;
  OverSquares<T>("Det", [](Hash& h, const M& a, std::int32_t, M, M, V) {
    h(a.Det()), h(a.DetForTriangular()), h(a.IsSingular()), h(a.IsUnit()), h(a.IsSymmetric()), h(a.IsOrthogonal()),
        h(a.IsPositive());
  });
  OverSquares<T>("*", [](Hash& h, const M& a, std::int32_t n, M x, M y, V) {
    x = a * RandomMatrix<T>(n, n, 52);
    y = a;
    y *= x;
    y.PreMultiply(a);
    y.PostMultiply(x);
    h(x, y, a ^ 0, a ^ 1, a ^ 5, a ^ -2, a.GetCharacteristicsMatrix(T(0.5)));
  });
  OverSquares<T>("LU_Decomposition",
                 [](Hash& h, const M& a, std::int32_t, M l, M u, V) { h(a.LU_Decomposition(l, u), l, u); });
  OverSquares<T>("Inverse", [](Hash& h, const M& a, std::int32_t, M x, M, V) {
    h(a.Inverse(x)), h(x), h(a.DiagInverse(x)), h(x), h(a.LowLeftInverse(x)), h(x), h(a.UpperRightInverse(x)), h(x);
    for (const qxMatrixNorm norm : norms) {
      T condition = 0;
      h(a.Inverse(x, norm, T(1e-6), condition)), h(x), h(condition), h(a.ConditionNumber(norm)), h(a.Norm(norm));
    }
  });
  OverSquares<T>("InvPreconditioner",
                 [](Hash& h, const M& a, std::int32_t, M x, M, V) { h(a.InvPreconditioner(x, T(1e-6)), x); });
  OverSquares<T>("SolveSystem", [](Hash& h, const M& a, std::int32_t n, M, M, V x) {
    const V b = RandomVector<T>(n, 53);
    T condition = 0;
    h(a.SolveSystem(b, x)), h(x), h(a.SolveSystem(b, x, QX_MATRIX_NORM_ROW_SUM, T(1e-6), condition)), h(x),
        h(condition);
  });
  OverSquares<T>("SymmetricEigensolve",
                 [](Hash& h, const M& a, std::int32_t, M x, M, V v) { h(a.SymmetricEigensolve(v, x), v, x); });
  OverSquares<T>("SpectralDecomposition", [](Hash& h, const M& a, std::int32_t, M p, M d, V) {
    for (const std::int32_t flag : {0, 1}) h(a.SpectralDecomposition(p, d, flag), p, d);
  });
  OverSquares<T>("PolarDecomposition", [](Hash& h, const M& a, std::int32_t, M r, M s, V) {
    for (const std::int32_t flag : {0, 1}) h(a.PolarDecomposition(r, s, flag), r, s);
  });
  OverSquares<T>("conjugate gradients", [](Hash& h, const M& a, std::int32_t n, M, M, V x) {
    h(CQXAlgebra::SolveByCongugateGradient(a, RandomVector<T>(n, 54), x, T(1e-5), T(0)), x);
    h(CQXAlgebra::SolveByCongugateGradient(a, RandomVector<T>(n, 54), x, T(1e-5), T(0.1)), x);
  });
}

}  // namespace

template <typename T>
void MatrixRows() {
  BaseMatrixRows<T>();
  DecompositionRows<T>();
  SquareRows<T>();
}

template void MatrixRows<float>();
template void MatrixRows<double>();
