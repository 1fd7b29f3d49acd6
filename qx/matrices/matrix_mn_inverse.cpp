#include <qx/kernels/array_kernels.h>
#include <qx/kernels/rotation_kernels.h>
#include <qx/matrices/internal/closed_form.h>
#include <qx/matrices/matrix_mn.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

/// Below this a singular number counts as zero: absolute in the inverse, relative to the largest in the pseudo-inverse.
template <qxReal T>
constexpr T singularBound = T(1e-6);

}  // namespace

template <qxReal T>
std::int32_t CQXMatrixMN<T>::CalculateRank(T tolerance) const {
  SingularForm form;
  m_rank = unknownRank;
  if (Decompose({0, 0}, T(0), form) != 0) return m_rank;
  const T* const values = form.values.get();
  m_rank = static_cast<std::int32_t>(
      std::count_if(values, values + SingularCount(), [=](T value) { return value > tolerance; }));
  return m_rank;
}

template <qxReal T>
T CQXMatrixMN<T>::Norm(qxMatrixNorm norm) const {
  if (norm == QX_MATRIX_NORM_SPECTRAL) {
    SingularForm form;
    if (Decompose({0, 0}, T(0), form) != 0) return std::numeric_limits<T>::quiet_NaN();
    return SingularCount() > 0 ? form.values[0] : T(0);
  }
  const std::int32_t rows = this->Count() > 0 ? this->RowsNb() : 0;
  const std::int32_t columns = this->Count() > 0 ? this->ColsNb() : 0;
  if (norm != QX_MATRIX_NORM_COLUMN_SUM && norm != QX_MATRIX_NORM_ROW_SUM) {
    return qxGuardedSqrt(qxKernels::SumOfSquares(this->Count(), Data()), QX_TOLERANCE_SQUARED<T>);
  }
  T largest = 0;
  const bool byRows = norm == QX_MATRIX_NORM_ROW_SUM;
  for (std::int32_t i = 0; i < (byRows ? rows : columns); ++i) {
    T sum = 0;
    for (std::int32_t k = 0; k < (byRows ? columns : rows); ++k) {
      sum += std::abs(byRows ? (*this)(i, k) : (*this)(k, i));
    }
    if (std::isnan(sum)) return sum;
    largest = std::max(largest, sum);
  }
  return largest;
}

template <qxReal T>
void CQXMatrixMN<T>::MultiplyInverted(const SingularForm& form, std::int32_t count, T* target) const noexcept {
  const std::size_t rows = qxElementCount(this->RowsNb(), 1);
  const std::size_t columns = qxElementCount(this->ColsNb(), 1);
  qxKernels::SetToZero(rows * columns, target);
  for (std::size_t c = 0; c < columns; ++c) {
    for (std::size_t i = 0; i < qxElementCount(count, 1); ++i) {
      qxKernels::AddMultiple(rows, form.right[i * columns + c] / form.values[i], form.left.get() + i * rows,
                             target + c * rows);
    }
  }
}

template <qxReal T>
std::int32_t CQXMatrixMN<T>::InvertBySingularValues(T tolerance, T* target) const {
  const std::int32_t size = this->RowsNb();
  SingularForm form;
  if (Decompose({size, size}, T(0), form) != 0) return 0;
  if (size > 0) {
    const T rounding = static_cast<T>(size) * std::numeric_limits<T>::epsilon() * form.values[0];
    if (form.values[qxElementCount(size, 1) - 1] <= std::max({tolerance, singularBound<T>, rounding})) return 0;
  }
  MultiplyInverted(form, size, target);
  return 1;
}

template <qxReal T>
std::int32_t CQXMatrixMN<T>::Inverse(CQXMatrixMN& target, T tolerance) const {
  const std::int32_t size = this->RowsNb();
  if (this->IsSquare() == 0) return 0;
  const qxBlock<T> inverse = qxMakeBlock<T>(qxElementCount(size, size));
  if (inverse == nullptr || this->Count() != qxElementCount(size, size)) return 0;
  const bool inverted = size == 4 ? qxInvertInClosedForm(size, Data(), inverse.get(), tolerance) == 0
                                  : InvertBySingularValues(tolerance, inverse.get()) == 1;
  if (inverted) target.TakeResult(size, size, inverse.get());
  return inverted;
}

template <qxReal T>
std::int32_t CQXMatrixMN<T>::Inverse(CQXMatrixMN& target, qxMatrixNorm norm, T tolerance, T& conditionNumber) const {
  const std::int32_t size = this->RowsNb();
  conditionNumber = QX_OVERFLOW_VALUE<T>;
  if (this->IsSquare() == 0) return 0;
  CQXMatrixMN inverse(size);
  if (this->Count() != qxElementCount(size, size) || inverse.Count() != this->Count()) return 0;
  const bool inverted = size >= 2 && size <= 4 ? qxInvertInClosedForm(size, Data(), inverse.Data(), tolerance) == 0
                                               : Inverse(inverse, tolerance) == 1;
  if (!inverted) return 0;
  conditionNumber = Norm(norm) * inverse.Norm(norm);
  target.TakeResult(size, size, inverse.Data());
  return 1;
}

template <qxReal T>
std::int32_t CQXMatrixMN<T>::PseudoInverse(CQXMatrixMN& target, qxMatrixNorm, T& conditionNumber) const {
  const std::int32_t rows = this->RowsNb();
  const std::int32_t columns = this->ColsNb();
  const std::int32_t size = SingularCount();
  conditionNumber = QX_OVERFLOW_VALUE<T>;
  const qxBlock<T> inverse = qxMakeBlock<T>(this->Count());
  SingularForm form;
  if (inverse == nullptr || Decompose({size, size}, T(0), form) != 0) return 0;
  std::int32_t used = 0;
  while (used < size && form.values[qxElementCount(used, 1)] > singularBound<T> * form.values[0]) ++used;
  MultiplyInverted(form, used, inverse.get());
  if (used > 0) conditionNumber = form.values[0] / form.values[qxElementCount(used, 1) - 1];
  target.TakeResult(columns, rows, inverse.get());
  return 1;
}

template <qxReal T>
std::int32_t CQXMatrixMN<T>::PseudoSolveSystem(const CQXBaseVector<T>& b, CQXBaseVector<T>& x, qxMatrixNorm norm,
                                               T& conditionNumber) const {
  CQXMatrixMN inverse(this->ColsNb(), this->RowsNb());
  return PseudoInverse(inverse, norm, conditionNumber) == 1 && MultiplyInto(inverse, b, x);
}

template <qxReal T>
bool CQXMatrixMN<T>::MultiplyInto(const CQXMatrixMN& matrix, const CQXBaseVector<T>& b, CQXBaseVector<T>& x) {
  const CQXVectorN<T> product = matrix * b;
  const bool isHeld = matrix.Count() == qxElementCount(matrix.RowsNb(), matrix.ColsNb()) &&
                      (product.Data() != nullptr || matrix.RowsNb() <= 0);
  if (isHeld && x.Data() != nullptr) x.FillPart(product.Data(), 0, product.Dim());
  return isHeld;
}

template class CQXMatrixMN<float>;
template class CQXMatrixMN<double>;
