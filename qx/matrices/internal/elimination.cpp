#include <qx/foundation/internal/instantiate.h>
#include <qx/kernels/array_kernels.h>
#include <qx/kernels/matrix_kernels.h>
#include <qx/kernels/rotation_kernels.h>
#include <qx/matrices/internal/elimination.h>
#include <qx/matrices/internal/workspace.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace qxMatrices {

template <qxReal T>
bool FactorLU(std::size_t n, const T* a, T* lowerT, T* upper, T* sums, T tolerance) noexcept {
  for (std::size_t k = 0; k < n; ++k) {
    qxKernels::CombineRows(k, lowerT + k, n, upper + k, n, n - k, sums);
    const T pivot = a[k * n + k] - sums[0];
    if (std::abs(pivot) < tolerance) {
      if (k > 0) upper[k * n + k] = pivot;
      return false;
    }
    for (std::size_t m = k; m < n; ++m) upper[k * n + m] = a[k * n + m] - sums[m - k];
    lowerT[k * n + k] = 1;
    qxKernels::CombineRows(k, upper + k, n, lowerT + k, n, n - k, sums);
    for (std::size_t m = k + 1; m < n; ++m) lowerT[k * n + m] = (a[m * n + k] - sums[m - k]) / pivot;
  }
  return true;
}

template <qxReal T>
bool Eliminate(std::size_t n, T* a, T* right, T bound, T& det) noexcept {
  det = 1;
  for (std::size_t k = 0; k < n; ++k) {
    std::size_t pivot = k;
    for (std::size_t i = k + 1; i < n; ++i) {
      if (std::abs(a[i * n + k]) > std::abs(a[pivot * n + k])) pivot = i;
    }
    if (pivot != k) {
      det = -det;
      std::swap_ranges(a + k * n, a + (k + 1) * n, a + pivot * n);
      if (right != nullptr) std::swap_ranges(right + k * n, right + (k + 1) * n, right + pivot * n);
    }
    const T value = a[k * n + k];
    if (std::abs(value) < bound || value == 0) return false;
    det *= value;
    for (std::size_t i = k + 1; i < n; ++i) {
      const T factor = -a[i * n + k] / value;
      qxKernels::AddMultiple(n - k - 1, factor, a + k * n + k + 1, a + i * n + k + 1);
      if (right != nullptr) qxKernels::AddMultiple(n, factor, right + k * n, right + i * n);
    }
  }
  return true;
}

template <qxReal T>
void SubstituteBack(std::size_t n, const T* a, T* right) noexcept {
  for (std::size_t i = n; i-- > 0;) {
    for (std::size_t j = i + 1; j < n; ++j) qxKernels::AddMultiple(n, -a[i * n + j], right + j * n, right + i * n);
    qxKernels::Divide(n, a[i * n + i], right + i * n);
  }
}

template <qxReal T>
T Determinant(std::size_t n, const T* a) {
  Workspace<T, 52> work;
  if (!work.Reserve(3 * n * n + n)) return std::numeric_limits<T>::quiet_NaN();
  T* const lowerT = work.Take(n * n);
  T* const upper = work.Take(n * n);
  T* const copy = work.Take(n * n);
  T det = 1;
  if (FactorLU(n, a, lowerT, upper, work.Take(n), fixedBound<T>)) {
    for (std::size_t i = 0; i < n; ++i) det *= upper[i * n + i];
    return det;
  }
  std::copy_n(a, n * n, copy);
  return Eliminate<T>(n, copy, nullptr, T(1e-9), det) ? det : T(0);
}

template <qxReal T>
bool IsPositiveDefinite(std::size_t n, const T* a, T tolerance) {
  Workspace<T, 16> work;
  if (!work.Reserve(n * n)) return false;
  T* const part = work.Data();
  for (std::size_t i = 0; i < n; ++i) {
    for (std::size_t j = 0; j < n; ++j) part[i * n + j] = T(0.5) * (a[i * n + j] + a[j * n + i]);
  }
  for (std::size_t k = 0; k < n; ++k) {
    const T* const pivot = part + k * n + k;
    if (!(*pivot > tolerance)) return false;
    for (std::size_t i = k + 1; i < n; ++i) {
      T* const row = part + i * n + k;
      qxKernels::AddMultiple(n - k - 1, -*row / *pivot, pivot + 1, row + 1);
    }
  }
  return true;
}

template <qxReal T>
Inversion InvertByLU(std::size_t n, const T* a, T tolerance, T* inverse) {
  Workspace<T, 4> work;
  if (!work.Reserve(4 * n * n + n)) return Inversion::outOfMemory;
  T* const lowerT = work.Take(n * n);
  T* const upper = work.Take(n * n);
  T* const inverseOfLower = work.Take(n * n);
  T* const inverseOfUpper = work.Take(n * n);
  if (!FactorLU(n, a, lowerT, upper, work.Take(n), tolerance)) return Inversion::smallPivot;
  T pivots = 1;
  for (std::size_t i = 0; i < n; ++i) pivots *= upper[i * n + i];
  if (std::abs(pivots) < tolerance) return Inversion::smallDeterminant;
  T* const lower = inverse;  // for as long as it is not written yet
  qxKernels::Transpose(n, n, lowerT, lower);
  InvertTriangular(n, lower, true, inverseOfLower);
  InvertTriangular(n, upper, false, inverseOfUpper);
  qxKernels::MultiplyMatrices(n, n, n, inverseOfUpper, inverseOfLower, inverse);
  return Inversion::done;
}

template <qxReal T>
void InvertTriangular(std::size_t n, const T* a, bool isLower, T* inverse) noexcept {
  std::fill_n(inverse, n * n, T(0));
  for (std::size_t step = 0; step < n; ++step) {
    // Row i from the rows that are known already: those above it, or below it, as far as they are not zero.
    const std::size_t i = isLower ? step : n - 1 - step;
    const std::size_t first = isLower ? 0 : i + 1;
    const std::size_t count = isLower ? i : n - 1 - i;
    T* const row = inverse + i * n;
    qxKernels::CombineRows(count, a + i * n + first, 1, inverse + first * n + first, n, count, row + first);
    qxKernels::Divide(count, -a[i * n + i], row + first);
    row[i] = 1 / a[i * n + i];
  }
}

template <qxReal T>
bool HasInvertibleDiagonal(std::size_t n, const T* a, T tolerance) noexcept {
  for (std::size_t i = 0; i < n; ++i) {
    if (std::abs(a[i * n + i]) < tolerance) return false;
  }
  return true;
}

template <qxReal T>
void AnnulateRelativelyDiagonal(std::size_t n, std::size_t stride, T* a, std::int32_t power) noexcept {
  const T factor = std::pow(T(10), static_cast<T>(power));
  for (std::size_t i = 0; i < n; ++i) {
    for (std::size_t j = 0; j < n; ++j) {
      const T smaller = std::min(std::abs(a[i * stride + i]), std::abs(a[j * stride + j]));
      if (i != j && std::abs(a[i * stride + j]) * factor < smaller) a[i * stride + j] = 0;
    }
  }
}

#define QX_INSTANTIATE(T)                                                   \
  template bool FactorLU(std::size_t, const T*, T*, T*, T*, T) noexcept;    \
  template bool Eliminate(std::size_t, T*, T*, T, T&) noexcept;             \
  template void SubstituteBack(std::size_t, const T*, T*) noexcept;         \
  template T Determinant(std::size_t, const T*);                            \
  template bool IsPositiveDefinite(std::size_t, const T*, T);               \
  template Inversion InvertByLU(std::size_t, const T*, T, T*);              \
  template void InvertTriangular(std::size_t, const T*, bool, T*) noexcept; \
  template bool HasInvertibleDiagonal(std::size_t, const T*, T) noexcept;   \
  template void AnnulateRelativelyDiagonal(std::size_t, std::size_t, T*, std::int32_t) noexcept;
QX_FOR_FLOAT_AND_DOUBLE(QX_INSTANTIATE)
#undef QX_INSTANTIATE

}  // namespace qxMatrices
