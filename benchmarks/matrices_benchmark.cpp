#include <qx/matrices/matrix_n.h>

#include <algorithm>
#include <vector>

#include <benchmark/benchmark.h>

#if __has_include(<Eigen/Dense>)
#include <Eigen/Dense>
#define QX_HAS_EIGEN
#endif
#if __has_include(<gsl/gsl_linalg.h>) && defined(QX_LINK_GSL)
#include <gsl/gsl_blas.h>
#include <gsl/gsl_eigen.h>
#include <gsl/gsl_linalg.h>
#define QX_HAS_GSL
#endif
#if __has_include(<lapacke.h>) && defined(QX_LINK_LAPACKE)
#include <lapacke.h>
#define QX_HAS_LAPACKE
#endif

// Run-time-sized matrices of double beside the libraries that stand in their place elsewhere. All rows of a group get
// the same elements; those that destroy their input copy it inside the timed loop.

namespace {

std::vector<double> Elements(std::int64_t rows, std::int64_t columns, bool symmetric) {
  std::vector<double> m(static_cast<std::size_t>(rows * columns));
  std::uint32_t state = 12345;
  for (double& x : m) {
    state = state * 1664525 + 1013904223;
    x = static_cast<double>(state >> 8) / 8388608.0 - 1.0;
  }
  for (std::int64_t i = 0; i < std::min(rows, columns); ++i) {
    for (std::int64_t j = 0; symmetric && j < i; ++j) {
      m[static_cast<std::size_t>(i * columns + j)] = m[static_cast<std::size_t>(j * columns + i)];
    }
    m[static_cast<std::size_t>(i * columns + i)] += static_cast<double>(rows) / 4;
  }
  return m;
}

std::int32_t Argument(const benchmark::State& state, std::size_t i = 0) {
  return static_cast<std::int32_t>(state.range(i));
}

template <typename T>
void ProductQX(benchmark::State& state) {
  const std::int32_t n = Argument(state);
  const std::vector<double> elements = Elements(n, n, false);
  CQXMatrixN<T> a(n), b(n);
  std::copy(elements.begin(), elements.end(), a.Data());
  std::copy(elements.rbegin(), elements.rend(), b.Data());
  for (auto _ : state) benchmark::DoNotOptimize((a * b).Data());
}
BENCHMARK(ProductQX<double>)->Arg(64)->Arg(256)->Arg(512);
BENCHMARK(ProductQX<float>)->Arg(64)->Arg(256)->Arg(512);

void InverseQX(benchmark::State& state) {
  const std::int32_t n = Argument(state);
  const CQXMatrixN<double> a(n, Elements(n, n, false).data());
  CQXMatrixN<double> inverse(n);
  for (auto _ : state) benchmark::DoNotOptimize(a.Inverse(inverse));
}
BENCHMARK(InverseQX)->Arg(16)->Arg(64);

void EigenvaluesQX(benchmark::State& state) {
  const std::int32_t n = Argument(state);
  const CQXMatrixN<double> a(n, Elements(n, n, true).data());
  CQXMatrixN<double> vectors(n);
  CQXVectorN<double> values(n);
  for (auto _ : state) benchmark::DoNotOptimize(a.SymmetricEigensolve(values, vectors, 1e-12));
}
BENCHMARK(EigenvaluesQX)->Arg(3)->Arg(16)->Arg(64)->Arg(128);

void SingularValuesQX(benchmark::State& state) {
  const std::int32_t rows = Argument(state), columns = Argument(state, 1);
  const CQXMatrixMN<double> a(rows, columns, Elements(rows, columns, false).data());
  CQXMatrixMN<double> u(rows, columns), v(columns);
  CQXVectorN<double> s(columns);
  for (auto _ : state) benchmark::DoNotOptimize(a.ThinSVD(u, v, s));
}
BENCHMARK(SingularValuesQX)->Args({4, 4})->Args({16, 16})->Args({64, 64})->Args({128, 64});

#ifdef QX_HAS_EIGEN
template <typename T>
using RowMajor = Eigen::Matrix<T, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;

template <typename T>
void ProductEigen(benchmark::State& state) {
  const std::int32_t n = Argument(state);
  const std::vector<double> elements = Elements(n, n, false);
  RowMajor<T> a(n, n), b(n, n), product(n, n);
  std::copy(elements.begin(), elements.end(), a.data());
  std::copy(elements.rbegin(), elements.rend(), b.data());
  for (auto _ : state) {
    product.noalias() = a * b;
    benchmark::DoNotOptimize(product.data());
  }
}
BENCHMARK(ProductEigen<double>)->Arg(64)->Arg(256)->Arg(512);
BENCHMARK(ProductEigen<float>)->Arg(64)->Arg(256)->Arg(512);

void InverseEigen(benchmark::State& state) {
  const std::int32_t n = Argument(state);
  const std::vector<double> elements = Elements(n, n, false);
  const RowMajor<double> a = Eigen::Map<const RowMajor<double>>(elements.data(), n, n);
  RowMajor<double> inverse(n, n);
  for (auto _ : state) {
    inverse = a.inverse();
    benchmark::DoNotOptimize(inverse.data());
  }
}
BENCHMARK(InverseEigen)->Arg(16)->Arg(64);

void EigenvaluesEigen(benchmark::State& state) {
  const std::int32_t n = Argument(state);
  const std::vector<double> elements = Elements(n, n, true);
  const RowMajor<double> a = Eigen::Map<const RowMajor<double>>(elements.data(), n, n);
  Eigen::SelfAdjointEigenSolver<RowMajor<double>> solver(n);
  for (auto _ : state) benchmark::DoNotOptimize(solver.compute(a).eigenvalues().data());
}
BENCHMARK(EigenvaluesEigen)->Arg(3)->Arg(16)->Arg(64)->Arg(128);

template <typename Solver>
void SingularValuesEigen(benchmark::State& state) {
  const std::int32_t rows = Argument(state), columns = Argument(state, 1);
  const std::vector<double> elements = Elements(rows, columns, false);
  const RowMajor<double> a = Eigen::Map<const RowMajor<double>>(elements.data(), rows, columns);
  Solver solver(rows, columns, Eigen::ComputeThinU | Eigen::ComputeThinV);
  for (auto _ : state) benchmark::DoNotOptimize(solver.compute(a).singularValues().data());
}
BENCHMARK(SingularValuesEigen<Eigen::JacobiSVD<RowMajor<double>>>)
    ->Args({4, 4})
    ->Args({16, 16})
    ->Args({64, 64})
    ->Args({128, 64});
BENCHMARK(SingularValuesEigen<Eigen::BDCSVD<RowMajor<double>>>)
    ->Args({4, 4})
    ->Args({16, 16})
    ->Args({64, 64})
    ->Args({128, 64});
#endif

#ifdef QX_HAS_GSL
class MatrixGSL {
 public:
  MatrixGSL(std::int64_t rows, std::int64_t columns)
      : m_matrix(gsl_matrix_alloc(static_cast<std::size_t>(rows), static_cast<std::size_t>(columns))) {}
  MatrixGSL(const MatrixGSL&) = delete;
  MatrixGSL& operator=(const MatrixGSL&) = delete;
  ~MatrixGSL() { gsl_matrix_free(m_matrix); }
  operator gsl_matrix*() const { return m_matrix; }
  void Fill(const std::vector<double>& elements) { std::copy(elements.begin(), elements.end(), m_matrix->data); }

 private:
  gsl_matrix* m_matrix;
};

void ProductGSL(benchmark::State& state) {
  const std::int32_t n = Argument(state);
  MatrixGSL a(n, n), b(n, n), product(n, n);
  a.Fill(Elements(n, n, false));
  b.Fill(Elements(n, n, false));
  for (auto _ : state) gsl_blas_dgemm(CblasNoTrans, CblasNoTrans, 1, a, b, 0, product);
}
BENCHMARK(ProductGSL)->Arg(64)->Arg(256)->Arg(512);

void InverseGSL(benchmark::State& state) {
  const std::int32_t n = Argument(state);
  const std::vector<double> elements = Elements(n, n, false);
  MatrixGSL a(n, n), inverse(n, n);
  gsl_permutation* order = gsl_permutation_alloc(static_cast<std::size_t>(n));
  int sign = 0;
  for (auto _ : state) {
    a.Fill(elements);
    gsl_linalg_LU_decomp(a, order, &sign);
    gsl_linalg_LU_invert(a, order, inverse);
  }
  gsl_permutation_free(order);
}
BENCHMARK(InverseGSL)->Arg(16)->Arg(64);

void EigenvaluesGSL(benchmark::State& state) {
  const std::int32_t n = Argument(state);
  const std::vector<double> elements = Elements(n, n, true);
  MatrixGSL a(n, n), vectors(n, n);
  gsl_vector* values = gsl_vector_alloc(static_cast<std::size_t>(n));
  gsl_eigen_symmv_workspace* work = gsl_eigen_symmv_alloc(static_cast<std::size_t>(n));
  for (auto _ : state) {
    a.Fill(elements);
    gsl_eigen_symmv(a, values, vectors, work);
  }
  gsl_eigen_symmv_free(work);
  gsl_vector_free(values);
}
BENCHMARK(EigenvaluesGSL)->Arg(3)->Arg(16)->Arg(64)->Arg(128);

void SingularValuesGSL(benchmark::State& state) {
  const std::int32_t rows = Argument(state), columns = Argument(state, 1);
  const std::vector<double> elements = Elements(rows, columns, false);
  MatrixGSL a(rows, columns), v(columns, columns);
  gsl_vector* values = gsl_vector_alloc(static_cast<std::size_t>(columns));
  gsl_vector* work = gsl_vector_alloc(static_cast<std::size_t>(columns));
  for (auto _ : state) {
    a.Fill(elements);
    gsl_linalg_SV_decomp(a, v, values, work);
  }
  gsl_vector_free(work);
  gsl_vector_free(values);
}
BENCHMARK(SingularValuesGSL)->Args({4, 4})->Args({16, 16})->Args({64, 64})->Args({128, 64});
#endif

#ifdef QX_HAS_LAPACKE
void InverseLAPACK(benchmark::State& state) {
  const std::int32_t n = Argument(state);
  const std::vector<double> elements = Elements(n, n, false);
  std::vector<double> a;
  std::vector<lapack_int> pivots(static_cast<std::size_t>(n));
  for (auto _ : state) {
    a = elements;
    LAPACKE_dgetrf(LAPACK_COL_MAJOR, n, n, a.data(), n, pivots.data());
    LAPACKE_dgetri(LAPACK_COL_MAJOR, n, a.data(), n, pivots.data());
  }
}
BENCHMARK(InverseLAPACK)->Arg(16)->Arg(64);

void EigenvaluesLAPACK(benchmark::State& state) {
  const std::int32_t n = Argument(state);
  const std::vector<double> elements = Elements(n, n, true);
  std::vector<double> a, values(static_cast<std::size_t>(n));
  for (auto _ : state) {
    a = elements;
    LAPACKE_dsyev(LAPACK_COL_MAJOR, 'V', 'U', n, a.data(), n, values.data());
  }
}
BENCHMARK(EigenvaluesLAPACK)->Arg(3)->Arg(16)->Arg(64)->Arg(128);

void SingularValuesLAPACK(benchmark::State& state) {
  const std::int32_t rows = Argument(state), columns = Argument(state, 1);
  const std::vector<double> elements = Elements(rows, columns, false);
  const auto size = [](std::int32_t n) { return static_cast<std::size_t>(n); };
  std::vector<double> a, values(size(columns)), u(size(rows) * size(columns)), vt(size(columns) * size(columns));
  std::vector<double> work(size(columns));
  for (auto _ : state) {
    a = elements;
    LAPACKE_dgesvd(LAPACK_COL_MAJOR, 'S', 'S', rows, columns, a.data(), rows, values.data(), u.data(), rows, vt.data(),
                   columns, work.data());
  }
}
BENCHMARK(SingularValuesLAPACK)->Args({4, 4})->Args({16, 16})->Args({64, 64})->Args({128, 64});
#endif

}  // namespace
