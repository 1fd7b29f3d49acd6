#include <qx/kernels/array_kernels.h>
#include <qx/vectors/base_vector.h>

#include <algorithm>
#include <utility>

template <typename T>
CQXBaseVector<T>::CQXBaseVector(std::int32_t dimension, Unset) : m_dimension(dimension) {
  if (dimension > 0) m_data = qxMakeBlock<T>(qxElementCount(dimension, 1));
}

template <typename T>
CQXBaseVector<T>::CQXBaseVector(std::int32_t dimension) : CQXBaseVector(dimension, Unset()) {
  SetToZero();
}

template <typename T>
CQXBaseVector<T>::CQXBaseVector(std::int32_t dimension, T value) : CQXBaseVector(dimension, Unset()) {
  qxKernels::SetToConstant(Count(), value, Data());
}

template <typename T>
CQXBaseVector<T> CQXBaseVector<T>::Shaped(std::size_t count) const {
  CQXBaseVector result;
  result.m_dimension = m_dimension;
  if (count > 0) result.m_data = qxMakeBlock<T>(count);
  return result;
}

template <typename T>
CQXBaseVector<T>::CQXBaseVector(const CQXBaseVector& other) : CQXBaseVector(other.Shaped(other.Count())) {
  qxKernels::Copy(Count(), other.Data(), Data());
}

template <typename T>
CQXBaseVector<T>::CQXBaseVector(CQXBaseVector&& other) noexcept
    : m_dimension(std::exchange(other.m_dimension, 0)), m_data(std::move(other.m_data)) {}

template <typename T>
CQXBaseVector<T>::~CQXBaseVector() = default;

template <typename T>
CQXBaseVector<T>& CQXBaseVector<T>::operator=(const CQXBaseVector& other) {
  if (this != &other) qxKernels::Copy(CountWith(other), other.Data(), Data());
  return *this;
}

template <typename T>
void CQXBaseVector<T>::SetToZero() noexcept {
  qxKernels::SetToZero(Count(), Data());
}

template <typename T>
void CQXBaseVector<T>::Fill(const T* source) noexcept {
  qxKernels::Copy(Count(), source, Data());
}

template <typename T>
std::size_t CQXBaseVector<T>::CountOfPart(std::int32_t start, std::int32_t count) const noexcept {
  if (start < 0 || start >= m_dimension || Count() == 0) return 0;
  return qxElementCount(std::min(count, m_dimension - start), 1);
}

template <typename T>
void CQXBaseVector<T>::FillPart(const T* source, std::int32_t start, std::int32_t count) noexcept {
  const std::size_t n = CountOfPart(start, count);
  if (n > 0) qxKernels::Copy(n, source, Data() + start);
}

template <typename T>
void CQXBaseVector<T>::Dump(T* target) const noexcept {
  qxKernels::Copy(Count(), Data(), target);
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
  qxKernels::Copy(qxElementCount(count, 1), source.Data() + sourceStart, Data() + start);
}

template <typename T>
void CQXBaseVector<T>::SetDimension(std::int32_t newDimension) {
  m_data.reset();
  m_dimension = 0;
  m_data = qxMakeBlock<T>(qxElementCount(newDimension, 1));
  m_dimension = newDimension;
  SetToZero();
}

template <typename T>
void CQXBaseVector<T>::Add(const CQXBaseVector& v) noexcept {
  qxKernels::Add(CountWith(v), Data(), v.Data());
}

template <typename T>
void CQXBaseVector<T>::Sub(const CQXBaseVector& v) noexcept {
  qxKernels::Subtract(CountWith(v), Data(), v.Data());
}

template <typename T>
void CQXBaseVector<T>::Mul(T factor) noexcept {
  qxKernels::Multiply(Count(), Data(), factor);
}

template <typename T>
void CQXBaseVector<T>::Div(T divisor) noexcept {
  qxKernels::Divide(Count(), Data(), divisor);
}

template <typename T>
CQXBaseVector<T>& CQXBaseVector<T>::operator+=(const CQXBaseVector& v) noexcept {
  Add(v);
  return *this;
}

template <typename T>
CQXBaseVector<T>& CQXBaseVector<T>::operator-=(const CQXBaseVector& v) noexcept {
  Sub(v);
  return *this;
}

template <typename T>
CQXBaseVector<T>& CQXBaseVector<T>::operator*=(const T& factor) noexcept {
  Mul(factor);
  return *this;
}

template <typename T>
CQXBaseVector<T>& CQXBaseVector<T>::operator/=(const T& divisor) noexcept {
  Div(divisor);
  return *this;
}

template <typename T>
CQXBaseVector<T> CQXBaseVector<T>::operator+(const CQXBaseVector& v) const {
  CQXBaseVector result = Shaped(CountWith(v));
  qxKernels::Sum(result.Count(), Data(), v.Data(), result.Data());
  return result;
}

template <typename T>
CQXBaseVector<T> CQXBaseVector<T>::operator-(const CQXBaseVector& v) const {
  CQXBaseVector result = Shaped(CountWith(v));
  qxKernels::Difference(result.Count(), Data(), v.Data(), result.Data());
  return result;
}

template <typename T>
CQXBaseVector<T> CQXBaseVector<T>::operator*(const T& factor) const {
  CQXBaseVector result = Shaped(Count());
  qxKernels::Product(result.Count(), Data(), T(factor), result.Data());
  return result;
}

template <typename T>
CQXBaseVector<T> CQXBaseVector<T>::operator/(const T& divisor) const {
  CQXBaseVector result = Shaped(Count());
  qxKernels::Quotient(result.Count(), Data(), T(divisor), result.Data());
  return result;
}

template <typename T>
CQXBaseVector<T> CQXBaseVector<T>::Negate() const {
  CQXBaseVector result = Shaped(Count());
  qxKernels::Negation(result.Count(), Data(), result.Data());
  return result;
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

template <typename T>
std::int32_t CQXBaseVector<T>::operator==(const CQXBaseVector& v) const noexcept {
  return m_dimension == v.m_dimension && !qxKernels::AreDifferent(CountWith(v), Data(), v.Data());
}

template <typename T>
std::int32_t CQXBaseVector<T>::operator!=(const CQXBaseVector& v) const noexcept {
  return 1 - (*this == v);
}

template class CQXBaseVector<std::int32_t>;
template class CQXBaseVector<float>;
template class CQXBaseVector<double>;
template class CQXBaseVector<CQXComplex<float>>;
template class CQXBaseVector<CQXComplex<double>>;
