#include <qx/kernels/array_kernels.h>
#include <qx/matrices/matrix_mn.h>

#include <utility>

template <typename T>
CQXMatrixMN<T>::CQXMatrixMN(const CQXMatrixMN& other) : Base(other), m_rank(other.m_rank) {
  CopySingularNumbers(other);
}

template <typename T>
CQXMatrixMN<T>::CQXMatrixMN(CQXMatrixMN&& other) noexcept
    : Base(std::move(other)),
      m_rank(std::exchange(other.m_rank, 0)),
      m_singularNumbers(std::move(other.m_singularNumbers)),
      m_singularFlag(std::exchange(other.m_singularFlag, 0)) {}

template <typename T>
CQXMatrixMN<T>::~CQXMatrixMN() = default;

template <typename T>
CQXMatrixMN<T>& CQXMatrixMN<T>::operator=(const Base& other) {
  if (this == &other) return *this;
  Base::operator=(other);
  m_rank = unknownRank;
  DropSingularNumbers();
  return *this;
}

template <typename T>
CQXMatrixMN<T>& CQXMatrixMN<T>::operator=(const CQXMatrixMN& other) {
  if (this == &other) return *this;
  Base::operator=(other);
  m_rank = unknownRank;
  DropSingularNumbers();
  if (this->RowsNb() == other.RowsNb() && this->ColsNb() == other.ColsNb()) {
    CopySingularNumbers(other);
    m_rank = other.m_rank;
  }
  return *this;
}

template <typename T>
void CQXMatrixMN<T>::GetSingularNumbers(T* target) const noexcept {
  if (m_singularFlag != 0) qxKernels::Copy(SingularCount(), m_singularNumbers.get(), target);
}

template <typename T>
void CQXMatrixMN<T>::CopySingularNumbers(const CQXMatrixMN& other) {
  if (other.m_singularFlag == 0) return;
  m_singularNumbers = qxMakeBlock<T>(SingularCount());
  if (m_singularNumbers == nullptr) return;
  other.GetSingularNumbers(m_singularNumbers.get());
  m_singularFlag = 1;
}

template <typename T>
void CQXMatrixMN<T>::DropSingularNumbers() noexcept {
  m_singularNumbers.reset();
  m_singularFlag = 0;
}

template class CQXMatrixMN<float>;
template class CQXMatrixMN<double>;
