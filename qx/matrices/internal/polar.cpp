#include <qx/foundation/internal/instantiate.h>
#include <qx/kernels/array_kernels.h>
#include <qx/kernels/matrix_kernels.h>
#include <qx/matrices/internal/bidiagonal.h>
#include <qx/matrices/internal/elimination.h>
#include <qx/matrices/internal/measures.h>
#include <qx/matrices/internal/polar.h>
#include <qx/matrices/internal/scaling.h>
#include <qx/matrices/internal/workspace.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace qxMatrices {

namespace {

/// True when the product of the diagonal elements and 2^exponent is below the tolerance; formed where it may be far
/// outside the range on its way.
template <qxReal T>
bool IsProductBelow(std::size_t n, const T* a, std::int64_t exponent, T tolerance) {
  T product = 1;
  for (std::size_t i = 0; i < n; ++i) {
    int shift;
    product = std::frexp(product * a[i * n + i], &shift);
    exponent += shift;
  }
  constexpr std::int64_t limit = 4 * std::numeric_limits<T>::max_exponent;
  return std::abs(std::ldexp(product, static_cast<int>(std::clamp(exponent, -limit, limit)))) < tolerance;
}

/// The factor that brings the singular numbers of @p x around 1: (norm(inverse) / norm(x))^(1/2), where the norm is the
/// geometric mean of the largest sums of columns and of rows.
template <qxReal T>
T ScaleOf(std::size_t n, const T* x, const T* inverse) {
  const auto root = [&](qxMatrixNorm norm) {
    return std::sqrt(std::sqrt(Norm(n, n, inverse, norm)) / std::sqrt(Norm(n, n, x, norm)));
  };
  return root(QX_MATRIX_NORM_COLUMN_SUM) * root(QX_MATRIX_NORM_ROW_SUM);
}

/// True when the transpose times this is the unit matrix within the bound, element by element.
template <qxReal T>
bool IsOrthogonal(std::size_t n, const T* x, T bound, T* transposed, T* product) {
  qxKernels::Transpose(n, n, x, transposed);
  qxKernels::MultiplyMatrices(n, n, n, transposed, x, product);
  for (std::size_t i = 0; i < n; ++i) product[i * n + i] -= 1;
  return qxKernels::AreWithin(n * n, product, bound);
}

/// x := (f x + transpose(inverse) / f) / 2.
template <qxReal T>
void Average(std::size_t n, T f, T* x, const T* inverse) {
  for (std::size_t r = 0; r < n; ++r) {
    for (std::size_t c = 0; c < n; ++c) x[r * n + c] = T(0.5) * (f * x[r * n + c] + inverse[c * n + r] / f);
  }
}

/// target := the symmetric part of transpose(r) a or of a transpose(r).
template <qxReal T>
void MultiplyByTransposed(std::size_t n, const T* r, const T* a, OrthogonalFactor side, T* transposed, T* product,
                          T* target) {
  qxKernels::Transpose(n, n, r, transposed);
  const bool isLeft = side == OrthogonalFactor::left;
  qxKernels::MultiplyMatrices(n, n, n, isLeft ? transposed : a, isLeft ? a : transposed, product);
  for (std::size_t i = 0; i < n; ++i) {
    for (std::size_t k = 0; k < n; ++k) target[i * n + k] = T(0.5) * (product[i * n + k] + product[k * n + i]);
  }
}

}  // namespace

template <qxReal T>
bool FindPolarForm(std::size_t n, const T* a, OrthogonalFactor side, T tolerance, T* r, T* s) {
  const T bound = std::sqrt(std::numeric_limits<T>::epsilon()) / 16;
  const std::size_t count = n * n;
  const std::optional<std::int32_t> exponent = ExponentOfLargest(count, a);
  Workspace<T, 64> work;
  if (!exponent || !work.Reserve(4 * count)) return false;
  T* const scaled = work.Take(count);
  T* const x = work.Take(count);
  T* const factors = work.Take(count);
  T* const inverse = work.Take(count);
  std::copy_n(a, count, scaled);
  qxKernels::MultiplyByPowerOfTwo(count, -*exponent, scaled);
  std::copy_n(scaled, count, x);
  bool isLast = false, isDone = false;
  for (int step = 0; step < 100 && !isDone; ++step) {
    std::copy_n(x, count, factors);
    SetToUnit(n, n, inverse);
    T det;
    if (!Eliminate(n, factors, inverse, T(0), det)) return false;
    if (step == 0 && IsProductBelow(n, factors, static_cast<std::int64_t>(n) * *exponent, tolerance)) return false;
    SubstituteBack(n, factors, inverse);
    Average(n, isLast ? T(1) : ScaleOf(n, x, inverse), x, inverse);
    isDone = isLast;
    isLast = isLast || IsOrthogonal(n, x, bound, inverse, factors);
  }
  if (!isDone) return false;
  MultiplyByTransposed(n, x, scaled, side, inverse, factors, s);
  qxKernels::MultiplyByPowerOfTwo(count, *exponent, s);
  std::copy_n(x, count, r);
  return true;
}

#define QX_INSTANTIATE(T) template bool FindPolarForm(std::size_t, const T*, OrthogonalFactor, T, T*, T*);
QX_FOR_FLOAT_AND_DOUBLE(QX_INSTANTIATE)
#undef QX_INSTANTIATE

}  // namespace qxMatrices
