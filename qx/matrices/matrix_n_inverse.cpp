#include <qx/kernels/array_kernels.h>
#include <qx/kernels/matrix_kernels.h>
#include <qx/kernels/rotation_kernels.h>
#include <qx/matrices/internal/closed_form.h>
#include <qx/matrices/matrix_n.h>

#include <algorithm>
#include <cmath>

namespace {

/// What elements must be within to count as zero where a structure wants them to be, and the bound of the pivots in the
/// determinant.
template <qxReal T>
constexpr T fixedBound = T(1e-6);

/// Elimination with exchange of rows on n x n elements, and on as many right sides beside them when they are given.
/// @return the determinant; 0 when a pivot is below the bound, or zero
template <qxReal T>
T Eliminate(std::size_t n, T* a, T* right, T bound) {
  T det = 1;
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
    if (std::abs(value) < bound || value == 0) return 0;
    det *= value;
    for (std::size_t i = k + 1; i < n; ++i) {
      const T factor = -a[i * n + k] / value;
      qxKernels::AddMultiple(n - k - 1, factor, a + k * n + k + 1, a + i * n + k + 1);
      if (right != nullptr) qxKernels::AddMultiple(n, factor, right + k * n, right + i * n);
    }
  }
  return det;
}

/// Doolittle's factors of n x n elements; lowerT is the transpose of L, so that its columns lie along memory. Both
/// begin as zeros; sums is a work array of n elements.
/// @return 1; 0 when a pivot is below the tolerance
template <qxReal T>
std::int32_t Factor(std::size_t n, const T* a, T* lowerT, T* upper, T* sums, T tolerance) {
  for (std::size_t k = 0; k < n; ++k) {
    qxKernels::CombineRows(k, lowerT + k, n, upper + k, n, n - k, sums);
    const T pivot = a[k * n + k] - sums[0];
    if (std::abs(pivot) < tolerance) {
      if (k > 0) upper[k * n + k] = pivot;
      return 0;
    }
    for (std::size_t m = k; m < n; ++m) upper[k * n + m] = a[k * n + m] - sums[m - k];
    lowerT[k * n + k] = 1;
    qxKernels::CombineRows(k, upper + k, n, lowerT + k, n, n - k, sums);
    for (std::size_t m = k + 1; m < n; ++m) lowerT[k * n + m] = (a[m * n + k] - sums[m - k]) / pivot;
  }
  return 1;
}

/// Inverse of a triangular matrix of n x n elements; what lies on the other side of the diagonal is not read. The
/// inverse begins as zeros.
template <qxReal T>
void InvertTriangular(std::size_t n, const T* a, bool isLower, T* inverse) {
  for (std::size_t step = 0; step < n; ++step) {
    // Row i from the rows that are known already: those above it, or below it, as far as they are not zero.
    const std::size_t i = isLower ? step : n - 1 - step;
    const std::size_t first = isLower ? 0 : i + 1;
    const std::size_t count = isLower ? i : n - 1 - i;
    T* const row = inverse + i * n;
    qxKernels::CombineRows(count, a + i * n + first, 1, inverse + first * n + first, n, count, row + first);
    qxKernels::Divide(count, row + first, -a[i * n + i]);
    row[i] = 1 / a[i * n + i];
  }
}

/// Turns the right sides that Eliminate() left into the solutions.
template <qxReal T>
void SubstituteBack(std::size_t n, const T* a, T* right) {
  for (std::size_t i = n; i-- > 0;) {
    for (std::size_t j = i + 1; j < n; ++j) qxKernels::AddMultiple(n, -a[i * n + j], right + j * n, right + i * n);
    qxKernels::Divide(n, right + i * n, a[i * n + i]);
  }
}

}  // namespace

template <qxReal T>
std::int32_t CQXMatrixN<T>::LU_Decomposition(CQXMatrixN& L, CQXMatrixN& U, T tolerance) const {
  CQXMatrixN lowerT(m_size), upper(m_size);  // L or U may be this matrix
  const qxBlock<T> sums = qxMakeBlock<T>(Stride());
  const bool isHeld = IsHeld() && lowerT.IsHeld() && upper.IsHeld() && sums != nullptr;
  const std::int32_t code = isHeld ? Factor(Stride(), Data(), lowerT.Data(), upper.Data(), sums.get(), tolerance) : 0;
  L.SetToZero();
  U.SetToZero();
  if (!isHeld) return 0;
  L.TakeTransposedResult(m_size, m_size, lowerT.Data());
  U.TakeResult(m_size, m_size, upper.Data());
  return code;
}

template <qxReal T>
T CQXMatrixN<T>::Det() const {
  CQXMatrixN lower(m_size), upper(m_size);
  if (m_size <= 0) return 1;
  if (!IsHeld() || !lower.IsHeld() || !upper.IsHeld()) return 0;
  if (LU_Decomposition(lower, upper, fixedBound<T>) == 1) return upper.DetForTriangular();
  lower = static_cast<const CQXBaseMatrix<T>&>(*this);
  return Eliminate(Stride(), lower.Data(), static_cast<T*>(nullptr), T(1e-9));
}

template <qxReal T>
std::int32_t CQXMatrixN<T>::Inverse(CQXMatrixN& target, T tolerance) const {
  if (!IsHeld()) return CodeOfFailure();
  if (HasClosedForm()) {
    T inverse[16];
    const std::int32_t code = qxInvertInClosedForm(m_size, Data(), inverse, tolerance);
    if (IsInverted(code)) target.TakeResult(m_size, m_size, inverse);
    return code;
  }
  const std::size_t n = Stride();
  CQXMatrixN inverse(m_size);
  const qxBlock<T> work = qxMakeBlock<T>(5 * n * n + n);
  if (work == nullptr || !inverse.IsHeld()) return CodeOfFailure();
  std::fill_n(work.get(), 5 * n * n, T(0));
  T* const lowerT = work.get();
  T* const lower = lowerT + n * n;
  T* const upper = lower + n * n;
  T* const inverseOfLower = upper + n * n;
  T* const inverseOfUpper = inverseOfLower + n * n;
  if (Factor(n, Data(), lowerT, upper, inverseOfUpper + n * n, tolerance) == 0) {
    if (Base::Inverse(inverse, tolerance) == 0) return 0;
  } else {
    T pivots = 1;
    for (std::size_t i = 0; i < n; ++i) pivots *= upper[i * n + i];
    if (std::abs(pivots) < tolerance) return 3;
    qxKernels::Transpose(n, n, lowerT, lower);
    InvertTriangular(n, lower, true, inverseOfLower);
    InvertTriangular(n, upper, false, inverseOfUpper);
    qxKernels::MultiplyMatrices(n, n, n, inverseOfUpper, inverseOfLower, inverse.Data());
  }
  target.TakeResult(m_size, m_size, inverse.Data());
  return 1;
}

template <qxReal T>
std::int32_t CQXMatrixN<T>::Inverse(CQXMatrixN& target, qxMatrixNorm norm, T tolerance, T& conditionNumber) const {
  CQXMatrixN inverse(m_size);
  conditionNumber = QX_OVERFLOW_VALUE<T>;
  if (!inverse.IsHeld()) return CodeOfFailure();
  const std::int32_t code = Inverse(inverse, tolerance);
  if (IsInverted(code)) {
    conditionNumber = this->Norm(norm) * inverse.Norm(norm);
    target.TakeResult(m_size, m_size, inverse.Data());
  }
  return code;
}

template <qxReal T>
std::int32_t CQXMatrixN<T>::DiagInverse(CQXMatrixN& target, T tolerance) const {
  const CQXMatrixN a(*this);
  target.SetToZero();
  target.ForgetResults();
  if (!a.IsHeld() || a.IsDiagonal(fixedBound<T>) == 0) return 0;
  for (std::int32_t i = 0; i < m_size; ++i) {
    if (std::abs(a(i, i)) < tolerance) return 0;
  }
  for (std::int32_t i = 0; i < std::min(m_size, target.DiagonalCount()); ++i) target(i, i) = 1 / a(i, i);
  return 1;
}

template <qxReal T>
std::int32_t CQXMatrixN<T>::InverseOfTriangular(CQXMatrixN& target, T tolerance, bool isLower) const {
  const CQXMatrixN a(*this);
  CQXMatrixN inverse(m_size);
  target.SetToZero();
  target.ForgetResults();
  if (!a.IsHeld() || !inverse.IsHeld()) return 0;
  if ((isLower ? a.IsLLTriangular(fixedBound<T>) : a.IsURTriangular(fixedBound<T>)) == 0) return 0;
  for (std::int32_t i = 0; i < m_size; ++i) {
    if (std::abs(a(i, i)) < tolerance) return 0;
  }
  InvertTriangular(Stride(), a.Data(), isLower, inverse.Data());
  target.TakeResult(m_size, m_size, inverse.Data());
  return 1;
}

template <qxReal T>
std::int32_t CQXMatrixN<T>::LowLeftInverse(CQXMatrixN& target, T tolerance) const {
  return InverseOfTriangular(target, tolerance, true);
}

template <qxReal T>
std::int32_t CQXMatrixN<T>::UpperRightInverse(CQXMatrixN& target, T tolerance) const {
  return InverseOfTriangular(target, tolerance, false);
}

template <qxReal T>
std::int32_t CQXMatrixN<T>::InvPreconditioner(CQXMatrixN& target, T tolerance) const {
  CQXMatrixN kept(*this), inverse(m_size);
  if (!IsHeld() || !kept.IsHeld() || !inverse.IsHeld()) return 0;
  for (std::int32_t i = 0; i < m_size; ++i) {
    if (std::abs((*this)(i, i)) < QX_TOLERANCE<T>) return 0;
    inverse(i, i) = 1 / (*this)(i, i);
    for (std::int32_t j = 0; j < m_size; ++j) {
      const T bound = tolerance * std::sqrt(std::abs((*this)(i, i) * (*this)(j, j)));
      if (i != j && std::abs((*this)(i, j)) <= bound) kept(i, j) = 0;
    }
  }
  if (kept.IsDiagonal(T(0)) == 0) kept.Inverse(inverse, QX_TOLERANCE<T>);
  target.TakeResult(m_size, m_size, inverse.Data());
  return 1;
}

template <qxReal T>
std::int32_t CQXMatrixN<T>::SolveSystem(const CQXBaseVector<T>& b, CQXBaseVector<T>& x, T tolerance) const {
  CQXMatrixN inverse(m_size);
  return IsInverted(Inverse(inverse, tolerance)) && Base::MultiplyInto(inverse, b, x);
}

template <qxReal T>
std::int32_t CQXMatrixN<T>::SolveSystem(const CQXBaseVector<T>& b, CQXBaseVector<T>& x, qxMatrixNorm norm, T tolerance,
                                        T& conditionNumber) const {
  CQXMatrixN inverse(m_size);
  return IsInverted(Inverse(inverse, norm, tolerance, conditionNumber)) && Base::MultiplyInto(inverse, b, x);
}

template <qxReal T>
T CQXMatrixN<T>::ConditionNumber(qxMatrixNorm norm) const {
  if (norm == QX_MATRIX_NORM_SPECTRAL) {
    typename Base::SingularForm form;
    if (m_size <= 0 || this->Decompose({0, 0}, T(0), form) != 0) return QX_OVERFLOW_VALUE<T>;
    const T smallest = form.values[Stride() - 1];
    return smallest <= fixedBound<T> ? QX_OVERFLOW_VALUE<T> : form.values[0] / smallest;
  }
  CQXMatrixN inverse(m_size);
  T conditionNumber;
  Inverse(inverse, norm, fixedBound<T>, conditionNumber);
  return conditionNumber;
}

template <qxReal T>
std::int32_t CQXMatrixN<T>::PolarDecomposition(CQXMatrixN& R, CQXMatrixN& S, std::int32_t flag, T tolerance) const {
  const std::size_t n = Stride();
  if (!IsHeld() || !this->IsFinite() || std::abs(Det()) < tolerance) return 0;
  CQXMatrixN x(*this), inverse(m_size), work(m_size);
  if (!x.IsHeld() || !inverse.IsHeld() || !work.IsHeld()) return 0;
  bool isLast = false;
  for (int step = 0; step < 100; ++step) {
    work = static_cast<const CQXBaseMatrix<T>&>(x);
    inverse.Unit();
    if (Eliminate(n, work.Data(), inverse.Data(), T(0)) == 0) return 0;
    SubstituteBack(n, work.Data(), inverse.Data());
    qxKernels::Transpose(n, n, inverse.Data(), work.Data());
    x.Add(work);
    x.Mul(T(0.5));
    if (isLast) break;
    isLast = x.IsOrthogonal(tolerance) != 0;
  }
  qxKernels::Transpose(n, n, x.Data(), inverse.Data());
  if (flag != 0) {
    qxKernels::MultiplyMatrices(n, n, n, inverse.Data(), Data(), work.Data());
  } else {
    qxKernels::MultiplyMatrices(n, n, n, Data(), inverse.Data(), work.Data());
  }
  qxKernels::Transpose(n, n, work.Data(), inverse.Data());
  work.Add(inverse);
  work.Mul(T(0.5));
  R.TakeResult(m_size, m_size, x.Data());
  S.TakeResult(m_size, m_size, work.Data());
  return 1;
}

template class CQXMatrixN<float>;
template class CQXMatrixN<double>;
