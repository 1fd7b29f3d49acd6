#include <qx/kernels/array_kernels.h>
#include <qx/kernels/rotation_kernels.h>
#include <qx/matrices/matrix_n.h>

#include <algorithm>
#include <cmath>
#include <utility>

template <qxReal T>
CQXMatrixN<T>::CQXMatrixN(const CQXBaseMatrix<T>& other)
    : Base(other.IsSquare() != 0 ? Base(other) : Base(std::min(other.RowsNb(), other.ColsNb()))),
      m_size(this->RowsNb()) {
  if (other.IsSquare() == 0) this->InsertMatrix(other, 0, 0, m_size, m_size);
}

template <qxReal T>
CQXMatrixN<T>::CQXMatrixN(CQXBaseMatrix<T>&& other)
    : Base(other.IsSquare() != 0 ? Base(std::move(other)) : Base(std::min(other.RowsNb(), other.ColsNb()))),
      m_size(this->RowsNb()) {
  if (other.IsSquare() == 0) this->InsertMatrix(other, 0, 0, m_size, m_size);
}

template <qxReal T>
CQXMatrixN<T>::CQXMatrixN(CQXMatrixN&& other) noexcept
    : Base(std::move(other)), m_size(std::exchange(other.m_size, 0)) {}

template <qxReal T>
CQXMatrixN<T>::~CQXMatrixN() = default;

template <qxReal T>
CQXMatrixN<T>& CQXMatrixN<T>::TakeSize() noexcept {
  m_size = std::min(this->RowsNb(), this->ColsNb());
  if (this->IsSquare() != 0) return *this;
  const std::size_t size = this->Count() > 0 ? Stride() : 0;
  for (std::int32_t r = 0; r < m_size; ++r) {
    qxKernels::Copy(size, this->Data() + this->Position(r, 0), this->Data() + qxElementCount(r, m_size));
  }
  this->Shrink(m_size, m_size);
  this->ForgetResults();
  return *this;
}

template <qxReal T>
CQXMatrixN<T>& CQXMatrixN<T>::operator=(const CQXBaseMatrix<T>& other) {
  Base::operator=(other);
  return TakeSize();
}

template <qxReal T>
CQXMatrixN<T>& CQXMatrixN<T>::operator=(const CQXMatrixMN<T>& other) {
  Base::operator=(other);
  return TakeSize();
}

template <qxReal T>
CQXMatrixN<T>& CQXMatrixN<T>::operator=(const CQXMatrixN& other) {
  Base::operator=(static_cast<const CQXMatrixMN<T>&>(other));
  return TakeSize();
}

template <qxReal T>
CQXMatrixN<T>& CQXMatrixN<T>::operator=(CQXBaseMatrix<T>&& other) noexcept {
  Base::operator=(std::move(other));
  return TakeSize();
}

template <qxReal T>
CQXMatrixN<T>& CQXMatrixN<T>::operator=(CQXMatrixMN<T>&& other) noexcept {
  Base::operator=(std::move(other));
  return TakeSize();
}

template <qxReal T>
CQXMatrixN<T>& CQXMatrixN<T>::operator=(CQXMatrixN&& other) noexcept {
  Base::operator=(static_cast<CQXMatrixMN<T>&&>(other));
  return TakeSize();
}

template <qxReal T>
void CQXMatrixN<T>::PostMultiply(const CQXMatrixN& m) {
  const CQXMatrixN product = *this * m;
  this->TakeResult(product.RowsNb(), product.Count() > 0 ? product.ColsNb() : 0, product.Data());
}

template <qxReal T>
void CQXMatrixN<T>::PreMultiply(const CQXMatrixN& m) {
  const CQXMatrixN product = m * *this;
  this->TakeResult(product.RowsNb(), product.Count() > 0 ? product.ColsNb() : 0, product.Data());
}

template <qxReal T>
CQXMatrixN<T>& CQXMatrixN<T>::operator*=(const CQXMatrixN& m) {
  PostMultiply(m);
  return *this;
}

template <qxReal T>
CQXMatrixN<T> CQXMatrixN<T>::operator^(std::int32_t n) const {
  CQXMatrixN result(m_size);
  CQXMatrixN factor(*this);
  if (n < 0 && !IsInverted(Inverse(factor))) return result;
  result.Unit();
  for (std::uint32_t rest = n < 0 ? 0u - static_cast<std::uint32_t>(n) : static_cast<std::uint32_t>(n); rest != 0;) {
    if (rest % 2 != 0) result.PostMultiply(factor);
    rest /= 2;
    if (rest != 0) factor.PostMultiply(factor);
  }
  return result;
}

template <qxReal T>
CQXMatrixN<T>& CQXMatrixN<T>::operator^=(std::int32_t n) {
  return *this = *this ^ n;
}

template <qxReal T>
CQXMatrixN<T> CQXMatrixN<T>::GetCharacteristicsMatrix(T lambda) const {
  CQXMatrixN result(*this);
  for (std::int32_t i = 0; i < result.DiagonalCount(); ++i) result(i, i) -= lambda;
  return result;
}

template <qxReal T>
void CQXMatrixN<T>::GetDiagElements(T* target) const noexcept {
  for (std::int32_t i = 0; i < this->DiagonalCount(); ++i) target[i] = (*this)(i, i);
}

template <qxReal T>
T CQXMatrixN<T>::DetForTriangular() const noexcept {
  T product = 1;
  for (std::int32_t i = 0; i < this->DiagonalCount(); ++i) product *= (*this)(i, i);
  return product;
}

template <qxReal T>
std::int32_t CQXMatrixN<T>::IsUnit(T tolerance) const noexcept {
  for (std::int32_t i = 0; i < this->DiagonalCount(); ++i) {
    if (!(std::abs((*this)(i, i) - 1) <= tolerance)) return 0;
  }
  return this->IsDiagonal(tolerance);
}

template <qxReal T>
std::int32_t CQXMatrixN<T>::IsSymmetric(T tolerance) const noexcept {
  for (std::int32_t i = 0; i < this->DiagonalCount(); ++i) {
    for (std::int32_t j = i + 1; j < m_size; ++j) {
      if (std::abs((*this)(i, j) - (*this)(j, i)) > tolerance) return 0;
    }
  }
  return 1;
}

template <qxReal T>
std::int32_t CQXMatrixN<T>::IsOrthogonal(T tolerance) const {
  const CQXMatrixN product = Transpose() * *this;
  return product.IsHeld() && product.IsUnit(tolerance) != 0;
}

template <qxReal T>
std::int32_t CQXMatrixN<T>::IsPositive(T tolerance) const {
  CQXMatrixN a(m_size);
  if (!IsHeld() || !a.IsHeld()) return 0;
  for (std::int32_t i = 0; i < m_size; ++i) {
    for (std::int32_t j = 0; j < m_size; ++j) a(i, j) = T(0.5) * ((*this)(i, j) + (*this)(j, i));
  }
  for (std::int32_t k = 0; k < m_size; ++k) {
    if (!(a(k, k) > tolerance)) return 0;
    const std::size_t count = qxElementCount(m_size - k - 1, 1);
    for (std::int32_t i = k + 1; i < m_size; ++i) {
      qxKernels::AddMultiple(count, -a(i, k) / a(k, k), &a(k, k) + 1, &a(i, k) + 1);
    }
  }
  return 1;
}

template <qxReal T>
std::int32_t CQXMatrixN<T>::IsSingular(T tolerance) const {
  return std::abs(Det()) < tolerance;
}

template class CQXMatrixN<float>;
template class CQXMatrixN<double>;
