#include <qx/arrays/sorting.h>
#include <qx/kernels/array_kernels.h>
#include <qx/kernels/matrix_kernels.h>
#include <qx/kernels/rotation_kernels.h>
#include <qx/matrices/matrix_n.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

/// Sweeps of Jacobi rotations over a symmetric matrix, held in its lower triangle; the eigenvectors are the rows of
/// vectors.
///
/// While p stays, its row and column are held along memory in `current`; of row and column q, what lies in the row is
/// rotated in place, and what lies in the column is brought along memory first. Elements on the diagonal, and beside
/// it those of row and column p, are not used meanwhile: the values and `current` stand for them.
/// @param sweeps on input the limit, on output the number of rotations
template <qxReal T>
qxStatus Sweep(std::size_t n, T* a, T* values, T* vectors, std::int32_t& sweeps, T tolerance) {
  const qxBlock<T> work = qxMakeBlock<T>(4 * n);
  if (work == nullptr) return QX_STATUS_OUT_OF_MEMORY;
  const std::int32_t limit = std::exchange(sweeps, 0);
  T* const b = work.get();
  T* const z = b + n;
  T* const current = z + n;
  T* const tail = current + n;
  std::fill_n(vectors, n * n, T(0));
  for (std::size_t i = 0; i < n; ++i) {
    vectors[i * n + i] = 1;
    values[i] = b[i] = a[i * n + i];
    z[i] = 0;
  }
  const auto isLostBeside = [](T g, T value) { return std::abs(value) + g == std::abs(value); };
  for (std::int32_t i = 1; i <= limit; ++i) {
    T sum = 0;
    for (std::size_t p = 0; p < n; ++p) {
      for (std::size_t q = p + 1; q < n; ++q) sum += std::abs(a[q * n + p]);
    }
    if (sum < tolerance || sum == 0) return QX_STATUS_OK;
    const T size = static_cast<T>(n);
    const T threshold = i < 4 ? T(0.2) * sum / (size * size) : T(0);
    for (std::size_t p = 0; p < n; ++p) {
      std::copy_n(a + p * n, p + 1, current);
      for (std::size_t j = p + 1; j < n; ++j) current[j] = a[j * n + p];
      for (std::size_t q = p + 1; q < n; ++q) {
        const T element = current[q];
        const T g = 100 * std::abs(element);
        if (i > 4 && isLostBeside(g, values[p]) && isLostBeside(g, values[q])) {
          current[q] = 0;
          continue;
        }
        if (!(std::abs(element) > threshold)) continue;
        T h = values[q] - values[p];
        T t;
        if (isLostBeside(g, h)) {
          t = element / h;
        } else {
          const T theta = T(0.5) * h / element;
          t = 1 / (std::abs(theta) + qxGuardedSqrt(1 + theta * theta));
          if (theta < 0) t = -t;
        }
        const T c = 1 / qxGuardedSqrt(1 + t * t);
        const T s = t * c;
        const T tau = s / (1 + c);
        h = t * element;
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
        ++sweeps;
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
  return QX_STATUS_OK;
}

}  // namespace

template <qxReal T>
void CQXMatrixN<T>::JacobiRotate(CQXMatrixN& a, std::int32_t i, std::int32_t j, std::int32_t k, std::int32_t l, T s,
                                 T tau) const noexcept {
  qxKernels::JacobiRotate(1, s, tau, &a(i, j), &a(k, l));
}

template <qxReal T>
qxStatus CQXMatrixN<T>::DestructiveJacobiUnitOffset(CQXMatrixN& a, CQXVectorN<T>& values, CQXMatrixN& vectors,
                                                    std::int32_t& sweeps, T tolerance) const {
  const std::size_t n = Stride();
  CQXMatrixN matrix(m_size), rows(m_size);
  CQXVectorN<T> found(m_size);
  if (!matrix.IsHeld() || !rows.IsHeld() || (found.Data() == nullptr && n > 0)) return QX_STATUS_OUT_OF_MEMORY;
  for (std::int32_t r = 0; r < m_size; ++r) {
    for (std::int32_t c = r; c < m_size; ++c) matrix(c, r) = a(r + 1, c + 1);
  }
  const qxStatus status = Sweep(n, matrix.Data(), found.Data(), rows.Data(), sweeps, tolerance);
  if (status != QX_STATUS_OK) return status;
  for (std::int32_t r = 0; r < m_size; ++r) {
    for (std::int32_t c = r + 1; c < m_size; ++c) a(r + 1, c + 1) = matrix(c, r);
    for (std::int32_t c = 0; c < m_size; ++c) vectors(c + 1, r + 1) = rows(r, c);
  }
  values.ReplacePart(1, 0, m_size, found);
  return status;
}

template <qxReal T>
qxStatus CQXMatrixN<T>::SolveByJacobi(T tolerance, T* values, T* vectors, std::int32_t& rotations) const {
  const std::size_t n = Stride();
  CQXMatrixN a(m_size), rows(m_size);
  const qxBlock<std::int32_t> order = qxMakeBlock<std::int32_t>(n);
  if (!IsHeld() || !a.IsHeld() || !rows.IsHeld() || order == nullptr) return QX_STATUS_OUT_OF_MEMORY;
  for (std::int32_t r = 0; r < m_size; ++r) {
    for (std::int32_t c = r; c < m_size; ++c) a(c, r) = (*this)(r, c);
  }
  rotations = 50;
  const qxStatus status = Sweep(n, a.Data(), values, rows.Data(), rotations, tolerance);
  if (status != QX_STATUS_OK) return status;
  std::fill_n(order.get(), n, -1);
  CQXSorting<T> sorting(m_size, values, 1, 1, 0);
  sorting.Sort(values, order.get());
  if (n > 0 && order[0] < 0) return QX_STATUS_OUT_OF_MEMORY;  // the sorting got none and wrote nothing
  for (std::size_t i = 0; i < n; ++i) {
    std::copy_n(rows.Data() + qxElementCount(order[i], m_size), n, vectors + i * n);
  }
  return status;
}

template <qxReal T>
qxStatus CQXMatrixN<T>::SymmetricEigensolve(CQXVectorN<T>& values, CQXMatrixN& vectors, T tolerance) const {
  if (IsSymmetric(tolerance) == 0) return QX_STATUS_NOT_SYMMETRIC;
  const qxBlock<T> found = qxMakeBlock<T>(Stride());
  const qxBlock<T> rows = qxMakeBlock<T>(qxElementCount(m_size, m_size));
  if (found == nullptr || rows == nullptr) return QX_STATUS_OUT_OF_MEMORY;
  std::int32_t rotations = 0;
  const qxStatus status = SolveByJacobi(tolerance, found.get(), rows.get(), rotations);
  if (status != QX_STATUS_OK) return status;
  if (rotations == 50) return QX_STATUS_TOO_MANY_ROTATIONS;
  vectors.TakeTransposedResult(m_size, m_size, rows.get());
  Base::TakeResult(m_size, found.get(), values);
  return QX_STATUS_OK;
}

template <qxReal T>
std::int32_t CQXMatrixN<T>::SpectralDecomposition(CQXMatrixN& P, CQXMatrixN& D, std::int32_t flag, T tolerance) const {
  if (IsSymmetric(tolerance) == 0) return 0;
  const qxBlock<T> found = qxMakeBlock<T>(Stride());
  const qxBlock<T> rows = qxMakeBlock<T>(qxElementCount(m_size, m_size));
  std::int32_t rotations = 0;
  if (found == nullptr || rows == nullptr) return 0;
  if (SolveByJacobi(tolerance, found.get(), rows.get(), rotations) != QX_STATUS_OK) return 0;
  if (flag == 0) {
    P.TakeTransposedResult(m_size, m_size, rows.get());
  } else {
    P.TakeResult(m_size, m_size, rows.get());
  }
  D.SetToZero();
  D.ForgetResults();
  for (std::int32_t i = 0; i < std::min(m_size, D.DiagonalCount()); ++i) D(i, i) = found[qxElementCount(i, 1)];
  return 1;
}

template class CQXMatrixN<float>;
template class CQXMatrixN<double>;
