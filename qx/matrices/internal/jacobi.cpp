#include <qx/foundation/block.h>
#include <qx/foundation/internal/instantiate.h>
#include <qx/foundation/tolerance.h>
#include <qx/kernels/array_kernels.h>
#include <qx/kernels/rotation_kernels.h>
#include <qx/kernels/sorting_kernels.h>
#include <qx/matrices/internal/bidiagonal.h>
#include <qx/matrices/internal/jacobi.h>
#include <qx/matrices/internal/workspace.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace qxMatrices {

namespace {

/// True when the value does not change by what is added.
template <qxReal T>
bool IsLostBeside(T g, T value) {
  return std::abs(value) + g == std::abs(value);
}

/// Tangent of the angle that clears @p element between the values whose difference is @p h.
template <qxReal T>
T TangentOfRotation(T element, T h) {
  if (IsLostBeside(100 * std::abs(element), h)) return element / h;
  const T theta = T(0.5) * h / element;
  const T t = 1 / (std::abs(theta) + qxGuardedSqrt(1 + theta * theta));
  return theta < 0 ? -t : t;
}

/// A symmetric matrix on its way to diagonal form.
///
/// While p stays, its row and column are held along memory in `current`; of row and column q, what lies in the row is
/// rotated in place, and what lies in the column is brought along memory first. Elements on the diagonal, and beside
/// it those of row and column p, are not used meanwhile: the values and `current` stand for them.
template <qxReal T>
struct JacobiSweeps {
  std::size_t n;
  T* a;  ///< the lower triangle
  T* values;
  T* vectors;  ///< in the rows
  T* b;        ///< values at the end of the last sweep
  T* z;        ///< what the rotations of this sweep add to them
  T* current;
  T* tail;
  std::int32_t rotations = 0;

  void Begin() {
    SetToUnit(n, n, vectors);
    for (std::size_t i = 0; i < n; ++i) {
      values[i] = b[i] = a[i * n + i];
      z[i] = 0;
    }
  }

  /// Sum of the absolute elements above the diagonal, by its rows.
  T SumOffDiagonal() const {
    T sum = 0;
    for (std::size_t p = 0; p < n; ++p) {
      for (std::size_t q = p + 1; q < n; ++q) sum += std::abs(a[q * n + p]);
    }
    return sum;
  }

  void Sweep(T threshold, bool dropsLost) {
    for (std::size_t p = 0; p < n; ++p) {
      std::copy_n(a + p * n, p + 1, current);
      for (std::size_t j = p + 1; j < n; ++j) current[j] = a[j * n + p];
      for (std::size_t q = p + 1; q < n; ++q) {
        const T g = 100 * std::abs(current[q]);
        if (dropsLost && IsLostBeside(g, values[p]) && IsLostBeside(g, values[q])) {
          current[q] = 0;
        } else if (std::abs(current[q]) > threshold) {
          Rotate(p, q);
        }
      }
      std::copy_n(current, p, a + p * n);
      for (std::size_t j = p + 1; j < n; ++j) a[j * n + p] = current[j];
    }
    for (std::size_t k = 0; k < n; ++k) {
      b[k] += z[k];
      values[k] = b[k];
      z[k] = 0;
    }
  }

  void Rotate(std::size_t p, std::size_t q) {
    const T t = TangentOfRotation(current[q], values[q] - values[p]);
    const T c = 1 / qxGuardedSqrt(1 + t * t);
    const T s = t * c;
    const T tau = s / (1 + c);
    const T h = t * current[q];
    z[p] -= h;
    z[q] += h;
    values[p] -= h;
    values[q] += h;
    qxKernels::JacobiRotate(q, s, tau, current, a + q * n);
    const std::size_t below = n - q - 1;
    for (std::size_t j = 0; j < below; ++j) tail[j] = a[(q + 1 + j) * n + q];
    qxKernels::JacobiRotate(below, s, tau, current + q + 1, tail);
    for (std::size_t j = 0; j < below; ++j) a[(q + 1 + j) * n + q] = tail[j];
    current[q] = 0;
    qxKernels::JacobiRotate(n, s, tau, vectors + p * n, vectors + q * n);
    ++rotations;
  }
};

}  // namespace

template <qxReal T>
bool IsSymmetric(std::size_t n, const T* a, T tolerance) noexcept {
  for (std::size_t i = 0; i < n; ++i) {
    for (std::size_t j = i + 1; j < n; ++j) {
      if (std::abs(a[i * n + j] - a[j * n + i]) > tolerance) return false;
    }
  }
  return true;
}

template <qxReal T>
qxStatus SweepByJacobi(std::size_t n, T* a, T* values, T* vectors, std::int32_t& sweeps, T tolerance) {
  Workspace<T, 16> work;
  if (!work.Reserve(4 * n)) return QX_STATUS_OUT_OF_MEMORY;
  T* const b = work.Take(n);
  T* const z = work.Take(n);
  T* const current = work.Take(n);
  JacobiSweeps<T> matrix{n, a, values, vectors, b, z, current, work.Take(n)};
  matrix.Begin();
  const T size = static_cast<T>(n);
  for (std::int32_t i = 1; i <= sweeps; ++i) {
    const T sum = matrix.SumOffDiagonal();
    if (sum < tolerance || sum == 0) break;
    matrix.Sweep(i < 4 ? T(0.2) * sum / (size * size) : T(0), i > 4);
  }
  sweeps = matrix.rotations;
  return QX_STATUS_OK;
}

template <qxReal T>
qxStatus SortAscending(std::size_t n, const T* values, const T* rows, T* sortedValues, T* sortedRows) {
  Workspace<std::int32_t, 4> order;
  if (!order.Reserve(n)) return QX_STATUS_OUT_OF_MEMORY;
  if (!qxKernels::SortWithIndices(n, values, sortedValues, order.Data(), true, false)) return QX_STATUS_OUT_OF_MEMORY;
  for (std::size_t i = 0; i < n; ++i) {
    std::copy_n(rows + static_cast<std::size_t>(order.Data()[i]) * n, n, sortedRows + i * n);
  }
  return QX_STATUS_OK;
}

template <qxReal T>
qxStatus FindSymmetricForm(std::size_t n, const T* a, T tolerance, T* values, T* vectors, std::int32_t& rotations) {
  if (!IsSymmetric(n, a, tolerance)) return QX_STATUS_NOT_SYMMETRIC;
  Workspace<T, 36> work;
  if (!work.Reserve(2 * n * n + n)) return QX_STATUS_OUT_OF_MEMORY;
  T* const lower = work.Take(n * n);
  T* const rows = work.Take(n * n);
  T* const found = work.Take(n);
  for (std::size_t r = 0; r < n; ++r) {
    for (std::size_t c = r; c < n; ++c) lower[c * n + r] = a[r * n + c];
  }
  rotations = 50;
  const qxStatus status = SweepByJacobi(n, lower, found, rows, rotations, tolerance);
  return status == QX_STATUS_OK ? SortAscending(n, found, rows, values, vectors) : status;
}

#define QX_INSTANTIATE(T)                                                     \
  template bool IsSymmetric(std::size_t, const T*, T) noexcept;               \
  template qxStatus SweepByJacobi(std::size_t, T*, T*, T*, std::int32_t&, T); \
  template qxStatus SortAscending(std::size_t, const T*, const T*, T*, T*);   \
  template qxStatus FindSymmetricForm(std::size_t, const T*, T, T*, T*, std::int32_t&);
QX_FOR_FLOAT_AND_DOUBLE(QX_INSTANTIATE)
#undef QX_INSTANTIATE

}  // namespace qxMatrices
