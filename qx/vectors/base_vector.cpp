#include <qx/kernels/array_kernels.h>
#include <qx/vectors/base_vector.h>

#include <algorithm>

template <typename T>
CQXBaseVector<T>::CQXBaseVector(std::int32_t dimension) : CQXBaseVector(dimension, Unset()) {
  this->SetToZero();
}

template <typename T>
CQXBaseVector<T>::CQXBaseVector(std::int32_t dimension, T value) : CQXBaseVector(dimension, Unset()) {
  qxKernels::SetToConstant(Count(), value, Data());
}

template <typename T>
CQXBaseVector<T>::CQXBaseVector(const CQXBaseVector& other) = default;

template <typename T>
CQXBaseVector<T>::CQXBaseVector(CQXBaseVector&& other) noexcept = default;

template <typename T>
CQXBaseVector<T>::~CQXBaseVector() = default;

template <typename T>
CQXBaseVector<T>& CQXBaseVector<T>::operator=(const CQXBaseVector& other) {
  Array::Assign(other);
  return *this;
}

template <typename T>
CQXBaseVector<T>& CQXBaseVector<T>::operator=(CQXBaseVector&& other) noexcept {
  Array::Assign(static_cast<Array&&>(other));
  return *this;
}

template <typename T>
std::size_t CQXBaseVector<T>::CountOfPart(std::int32_t start, std::int32_t count) const noexcept {
  if (start < 0 || start >= m_rows || Count() == 0) return 0;
  return qxElementCount(std::min(count, m_rows - start));
}

template <typename T>
void CQXBaseVector<T>::FillPart(const T* source, std::int32_t start, std::int32_t count) noexcept {
  const std::size_t n = CountOfPart(start, count);
  if (n > 0) qxKernels::Copy(n, source, Data() + start);
}

template <typename T>
void CQXBaseVector<T>::DumpPart(std::int32_t start, std::int32_t count, T* target) const noexcept {
  const std::size_t n = CountOfPart(start, count);
  if (n > 0) qxKernels::Copy(n, Data() + start, target);
}

template <typename T>
void CQXBaseVector<T>::ReplacePart(std::int32_t start, std::int32_t sourceStart, std::int32_t count,
                                   const CQXBaseVector& source) noexcept {
  if (count <= 0 || CountWith(source) == 0) return;
  qxKernels::Copy(qxElementCount(count), source.Data() + sourceStart, Data() + start);
}

template <typename T>
void CQXBaseVector<T>::SetDimension(std::int32_t newDimension) {
  Array::Renew(newDimension, 1);
}

template <typename T>
T CQXBaseVector<T>::Dot(const CQXBaseVector& v) const noexcept {
  return qxKernels::Dot(CountWith(v), Data(), v.Data());
}

template <typename T>
T CQXBaseVector<T>::DotForPart(std::int32_t first, std::int32_t last, const CQXBaseVector& v) const noexcept {
  if (first > last || CountWith(v) == 0) return T(0);
  const std::int64_t count = std::int64_t{last} - first + 1;
  return qxKernels::Dot(static_cast<std::size_t>(count), Data() + first, v.Data() + first);
}

template class CQXBaseVector<std::int32_t>;
template class CQXBaseVector<float>;
template class CQXBaseVector<double>;
template class CQXBaseVector<CQXComplex<float>>;
template class CQXBaseVector<CQXComplex<double>>;
