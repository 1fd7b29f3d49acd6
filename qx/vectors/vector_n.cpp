#include <qx/kernels/array_kernels.h>
#include <qx/vectors/vector_n.h>

#include <cmath>
#include <utility>

template <qxReal T>
CQXVectorN<T>::~CQXVectorN() = default;

template <qxReal T>
CQXVectorN<T>& CQXVectorN<T>::operator=(const Base& other) {
  Base::operator=(other);
  return *this;
}

template <qxReal T>
CQXVectorN<T>& CQXVectorN<T>::operator=(const CQXVectorN& other) {
  Base::operator=(other);
  return *this;
}

template <qxReal T>
CQXVectorN<T>& CQXVectorN<T>::operator=(Base&& other) noexcept {
  Base::operator=(std::move(other));
  return *this;
}

template <qxReal T>
CQXVectorN<T>& CQXVectorN<T>::operator=(CQXVectorN&& other) noexcept {
  Base::operator=(static_cast<Base&&>(other));
  return *this;
}

template <qxReal T>
void CQXVectorN<T>::SetToConstant(T value) noexcept {
  qxKernels::SetToConstant(Count(), value, Data());
}

template <qxReal T>
void CQXVectorN<T>::AnnulateSmallComponents(T tolerance) noexcept {
  qxKernels::AnnulateSmall(Count(), tolerance, Data());
}

template <qxReal T>
std::int32_t CQXVectorN<T>::Normalize() noexcept {
  const T length = Length();
  if (length < QX_TOLERANCE<T>) return 0;
  this->Mul(1 / length);
  return 1;
}

template <qxReal T>
T CQXVectorN<T>::Length() const noexcept {
  return qxGuardedSqrt(SquareLength(), QX_TOLERANCE_SQUARED<T>);
}

template <qxReal T>
T CQXVectorN<T>::SquareLength() const noexcept {
  return qxKernels::SumOfSquares(Count(), Data());
}

template <qxReal T>
T CQXVectorN<T>::Norm1() const noexcept {
  return qxKernels::SumOfAbsolutes(Count(), Data());
}

template <qxReal T>
std::int32_t CQXVectorN<T>::IsAlmostZero(T tolerance) const noexcept {
  const T length = Length();
  return -tolerance <= length && length <= tolerance;
}

template <qxReal T>
std::int32_t CQXVectorN<T>::IsAlmostUnit(T tolerance) const noexcept {
  const T excess = Length() - 1;
  return -tolerance <= excess && excess <= tolerance;
}

template <qxReal T>
T CQXVectorN<T>::Component(std::int32_t index, std::int32_t flag) const noexcept {
  if (Count() == 0) return 0;
  return flag != 0 ? std::abs((*this)[index]) : (*this)[index];
}

template <qxReal T>
T CQXVectorN<T>::GetMinComponent(std::int32_t flag) const noexcept {
  return Component(GetIndexOfMinComponent(flag), flag);
}

template <qxReal T>
T CQXVectorN<T>::GetMaxComponent(std::int32_t flag) const noexcept {
  return Component(GetIndexOfMaxComponent(flag), flag);
}

template <qxReal T>
std::int32_t CQXVectorN<T>::GetIndexOfMinComponent(std::int32_t flag) const noexcept {
  return static_cast<std::int32_t>(qxKernels::IndexOfMin(Count(), Data(), flag != 0));
}

template <qxReal T>
std::int32_t CQXVectorN<T>::GetIndexOfMaxComponent(std::int32_t flag) const noexcept {
  return static_cast<std::int32_t>(qxKernels::IndexOfMax(Count(), Data(), flag != 0));
}

template class CQXVectorN<float>;
template class CQXVectorN<double>;
