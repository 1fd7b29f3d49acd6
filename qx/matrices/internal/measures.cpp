#include <qx/foundation/internal/instantiate.h>
#include <qx/foundation/tolerance.h>
#include <qx/kernels/array_kernels.h>
#include <qx/matrices/internal/elimination.h>
#include <qx/matrices/internal/measures.h>
#include <qx/matrices/internal/singular_values.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace qxMatrices {

namespace {

/// Largest sum of absolute values of @p lines lines of @p count elements.
template <qxReal T>
T LargestSum(std::size_t lines, std::size_t lineStride, std::size_t count, std::size_t stride, const T* a) {
  T largest = 0;
  for (std::size_t i = 0; i < lines; ++i) {
    T sum = 0;
    for (std::size_t k = 0; k < count; ++k) sum += std::abs(a[i * lineStride + k * stride]);
    if (std::isnan(sum)) return sum;
    largest = std::max(largest, sum);
  }
  return largest;
}

}  // namespace

template <qxReal T>
T Norm(std::size_t rows, std::size_t columns, const T* a, qxMatrixNorm norm) {
  switch (norm) {
    case QX_MATRIX_NORM_COLUMN_SUM:
      return LargestSum(columns, 1, rows, columns, a);
    case QX_MATRIX_NORM_ROW_SUM:
      return LargestSum(rows, columns, columns, 1, a);
    case QX_MATRIX_NORM_SPECTRAL: {
      SingularForm<T> form;
      if (FindSingularForm(rows, columns, a, {0, 0}, T(0), form) != 0) return std::numeric_limits<T>::quiet_NaN();
      return rows > 0 && columns > 0 ? form.values.Data()[0] : T(0);
    }
    default:
      return qxGuardedSqrt(qxKernels::SumOfSquares(rows * columns, a), QX_TOLERANCE_SQUARED<T>);
  }
}

template <qxReal T>
T SpectralConditionNumber(std::size_t n, const T* a) {
  SingularForm<T> form;
  if (n == 0 || FindSingularForm(n, n, a, {0, 0}, T(0), form) != 0) return QX_OVERFLOW_VALUE<T>;
  const T smallest = form.values.Data()[n - 1];
  return smallest <= fixedBound<T> ? QX_OVERFLOW_VALUE<T> : form.values.Data()[0] / smallest;
}

template <qxReal T>
T Correlation(std::size_t count, const T* a, const T* b) noexcept {
  const T meanA = qxKernels::SumOfElements(count, a) / static_cast<T>(count);
  const T meanB = qxKernels::SumOfElements(count, b) / static_cast<T>(count);
  T varianceA = 0, varianceB = 0, covariance = 0;
  for (std::size_t i = 0; i < count; ++i) {
    const T x = a[i] - meanA;
    const T y = b[i] - meanB;
    varianceA += x * x;
    varianceB += y * y;
    covariance += x * y;
  }
  const T scale = std::sqrt(varianceA) * std::sqrt(varianceB);
  return scale == 0 ? T(0) : covariance / scale;
}

#define QX_INSTANTIATE(T)                                            \
  template T Norm(std::size_t, std::size_t, const T*, qxMatrixNorm); \
  template T SpectralConditionNumber(std::size_t, const T*);         \
  template T Correlation(std::size_t, const T*, const T*) noexcept;
QX_FOR_FLOAT_AND_DOUBLE(QX_INSTANTIATE)
#undef QX_INSTANTIATE

}  // namespace qxMatrices
