#include <qx/kernels/array_kernels.h>
#include <qx/vectors/dynamic_array.h>

#include <memory>

template <typename T>
CQXDynamicArray<T>::CQXDynamicArray(std::int32_t rows, std::int32_t columns, Unset) : m_rows(rows), m_columns(columns) {
  const std::size_t count = qxElementCount(rows, columns);
  if (count > 0) m_data = qxMakeBlock<T>(count);
}

template <typename T>
CQXDynamicArray<T> CQXDynamicArray<T>::Shaped(std::size_t count) const {
  CQXDynamicArray result;
  result.m_rows = m_rows;
  result.m_columns = m_columns;
  if (count > 0) result.m_data = qxMakeBlock<T>(count);
  return result;
}

template <typename T>
CQXDynamicArray<T>::CQXDynamicArray(const CQXDynamicArray& other) : CQXDynamicArray(other.Shaped(other.Count())) {
  qxKernels::Copy(Count(), other.Data(), Data());
}

template <typename T>
CQXDynamicArray<T>::CQXDynamicArray(CQXDynamicArray&& other) noexcept
    : m_rows(std::exchange(other.m_rows, 0)),
      m_columns(std::exchange(other.m_columns, 0)),
      m_data(std::move(other.m_data)),
      m_isMovedFrom(std::exchange(other.m_isMovedFrom, true)) {}

template <typename T>
void CQXDynamicArray<T>::Assign(const CQXDynamicArray& other) {
  if (this == &other) return;
  if (m_isMovedFrom) {
    Assign(CQXDynamicArray(other));
  } else {
    qxKernels::Copy(CountWith(other), other.Data(), Data());
  }
}

template <typename T>
void CQXDynamicArray<T>::Assign(CQXDynamicArray&& other) noexcept {
  if (this == &other) return;
  if (m_isMovedFrom) {
    m_rows = std::exchange(other.m_rows, 0);
    m_columns = std::exchange(other.m_columns, 0);
    m_data = std::move(other.m_data);
    m_isMovedFrom = std::exchange(other.m_isMovedFrom, true);
  } else {
    qxKernels::Copy(CountWith(other), other.Data(), Data());
  }
}

template <typename T>
void CQXDynamicArray<T>::Renew(std::int32_t rows, std::int32_t columns) {
  m_data.reset();
  m_rows = m_columns = 0;
  m_isMovedFrom = false;
  m_data = qxMakeBlock<T>(qxElementCount(rows, columns));
  m_rows = rows;
  m_columns = columns;
  SetToZero();
}

template <typename T>
void CQXDynamicArray<T>::Shrink(std::int32_t rows, std::int32_t columns) noexcept {
  m_rows = rows;
  m_columns = columns;
}

template <typename T>
void CQXDynamicArray<T>::SetToZero() noexcept {
  qxKernels::SetToZero(Count(), Data());
}

template <typename T>
void CQXDynamicArray<T>::Fill(const T* source) noexcept {
  qxKernels::Copy(Count(), source, Data());
}

template <typename T>
void CQXDynamicArray<T>::Dump(T* target) const noexcept {
  qxKernels::Copy(Count(), Data(), target);
}

template <typename T>
void CQXDynamicArray<T>::Mul(T factor) noexcept {
  qxKernels::Multiply(Count(), factor, Data());
}

template <typename T>
void CQXDynamicArray<T>::Div(T divisor) noexcept {
  qxKernels::Divide(Count(), divisor, Data());
}

template <typename T>
void CQXDynamicArray<T>::AddArray(const CQXDynamicArray& other) noexcept {
  qxKernels::Add(CountWith(other), other.Data(), Data());
}

template <typename T>
void CQXDynamicArray<T>::SubtractArray(const CQXDynamicArray& other) noexcept {
  qxKernels::Subtract(CountWith(other), other.Data(), Data());
}

template <typename T>
void CQXDynamicArray<T>::TakeRest(const CQXDynamicArray& source, std::size_t first) noexcept {
  for (std::size_t i = first; i < Count(); ++i) std::construct_at(Data() + i, source.Data()[i]);
}

template <typename T>
CQXDynamicArray<T> CQXDynamicArray<T>::Sum(const CQXDynamicArray& other) const {
  const std::size_t count = CountWith(other);
  CQXDynamicArray result = Shaped(count > 0 ? Count() : 0);
  if (result.Count() == 0) return result;
  qxKernels::Sum(count, Data(), other.Data(), result.Data());
  result.TakeRest(*this, count);
  return result;
}

template <typename T>
CQXDynamicArray<T> CQXDynamicArray<T>::Difference(const CQXDynamicArray& other) const {
  const std::size_t count = CountWith(other);
  CQXDynamicArray result = Shaped(count > 0 ? Count() : 0);
  if (result.Count() == 0) return result;
  qxKernels::Difference(count, Data(), other.Data(), result.Data());
  result.TakeRest(*this, count);
  return result;
}

template <typename T>
CQXDynamicArray<T> CQXDynamicArray<T>::Product(const T& factor) const {
  CQXDynamicArray result = Shaped(Count());
  qxKernels::Product(result.Count(), Data(), T(factor), result.Data());
  return result;
}

template <typename T>
CQXDynamicArray<T> CQXDynamicArray<T>::Quotient(const T& divisor) const {
  CQXDynamicArray result = Shaped(Count());
  qxKernels::Quotient(result.Count(), Data(), T(divisor), result.Data());
  return result;
}

template <typename T>
CQXDynamicArray<T> CQXDynamicArray<T>::Negation() const {
  CQXDynamicArray result = Shaped(Count());
  qxKernels::Negation(result.Count(), Data(), result.Data());
  return result;
}

template <typename T>
bool CQXDynamicArray<T>::Differs(const CQXDynamicArray& other) const noexcept {
  return qxKernels::AreDifferent(CountWith(other), Data(), other.Data());
}

template class CQXDynamicArray<std::int32_t>;
template class CQXDynamicArray<float>;
template class CQXDynamicArray<double>;
template class CQXDynamicArray<CQXComplex<float>>;
template class CQXDynamicArray<CQXComplex<double>>;
