#include <qx/kernels/array_kernels.h>
#include <qx/kernels/matrix_kernels.h>
#include <qx/matrices/matrix_mn.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace {

std::size_t Size(std::int32_t n) { return qxElementCount(n, 1); }

}  // namespace

template <qxReal T>
CQXMatrixMN<T>::CQXMatrixMN(const CQXMatrixMN& other) : Base(other), m_rank(other.m_rank) {
  CopySingularNumbers(other);
}

template <qxReal T>
CQXMatrixMN<T>::CQXMatrixMN(CQXMatrixMN&& other) noexcept
    : Base(std::move(other)),
      m_rank(std::exchange(other.m_rank, 0)),
      m_singularNumbers(std::move(other.m_singularNumbers)),
      m_singularFlag(std::exchange(other.m_singularFlag, 0)) {}

template <qxReal T>
CQXMatrixMN<T>::~CQXMatrixMN() = default;

template <qxReal T>
CQXMatrixMN<T>& CQXMatrixMN<T>::operator=(const Base& other) {
  if (this == &other) return *this;
  Base::operator=(other);
  ForgetResults();
  return *this;
}

template <qxReal T>
CQXMatrixMN<T>& CQXMatrixMN<T>::operator=(const CQXMatrixMN& other) {
  if (this == &other) return *this;
  Base::operator=(other);
  ForgetResults();
  if (this->RowsNb() == other.RowsNb() && this->ColsNb() == other.ColsNb()) {
    CopySingularNumbers(other);
    m_rank = other.m_rank;
  }
  return *this;
}

template <qxReal T>
CQXMatrixMN<T>& CQXMatrixMN<T>::operator=(Base&& other) noexcept {
  if (this == &other) return *this;
  Base::operator=(std::move(other));
  ForgetResults();
  return *this;
}

template <qxReal T>
CQXMatrixMN<T>& CQXMatrixMN<T>::operator=(CQXMatrixMN&& other) noexcept {
  if (this == &other) return *this;
  const bool hasSameShape = this->RowsNb() == other.RowsNb() && this->ColsNb() == other.ColsNb();
  const bool takesResults = this->IsMovedFrom() || hasSameShape;
  Base::operator=(static_cast<Base&&>(other));
  ForgetResults();
  if (takesResults) {
    m_rank = other.m_rank;
    m_singularNumbers = std::move(other.m_singularNumbers);
    m_singularFlag = std::exchange(other.m_singularFlag, 0);
  }
  return *this;
}

template <qxReal T>
void CQXMatrixMN<T>::GetSingularNumbers(T* target) const noexcept {
  if (m_singularFlag != 0) qxKernels::Copy(Size(SingularCount()), m_singularNumbers.get(), target);
}

template <qxReal T>
void CQXMatrixMN<T>::CopySingularNumbers(const CQXMatrixMN& other) {
  if (other.m_singularFlag == 0) return;
  m_singularNumbers = qxMakeBlock<T>(Size(SingularCount()));
  if (m_singularNumbers == nullptr) return;
  other.GetSingularNumbers(m_singularNumbers.get());
  m_singularFlag = 1;
}

template <qxReal T>
void CQXMatrixMN<T>::ForgetResults() const noexcept {
  m_rank = unknownRank;
  m_singularNumbers.reset();
  m_singularFlag = 0;
}

template <qxReal T>
void CQXMatrixMN<T>::TakeResult(std::int32_t rows, std::int32_t columns, const T* source) noexcept {
  ForgetResults();
  if (this->Count() == 0) return;
  const std::size_t width = Size(std::min(columns, this->ColsNb()));
  for (std::int32_t r = 0; r < std::min(rows, this->RowsNb()); ++r) {
    qxKernels::Copy(width, source + Size(r) * Size(columns), Data() + this->Position(r, 0));
  }
}

template <qxReal T>
void CQXMatrixMN<T>::TakeTransposedResult(std::int32_t rows, std::int32_t columns, const T* source) noexcept {
  ForgetResults();
  if (this->Count() == 0) return;
  for (std::int32_t r = 0; r < std::min(columns, this->RowsNb()); ++r) {
    for (std::int32_t c = 0; c < std::min(rows, this->ColsNb()); ++c) {
      (*this)(r, c) = source[Size(c) * Size(columns) + Size(r)];
    }
  }
}

template <qxReal T>
void CQXMatrixMN<T>::TakeResult(std::int32_t count, const T* source, CQXBaseVector<T>& target) noexcept {
  if (target.Data() != nullptr) target.FillPart(source, 0, count);
}

template <qxReal T>
bool CQXMatrixMN<T>::IsFinite() const noexcept {
  return std::all_of(Data(), Data() + this->Count(), [](T x) { return std::isfinite(x); });
}

template <qxReal T>
void CQXMatrixMN<T>::InsertMatrix(const Base& source, std::int32_t row, std::int32_t column, std::int32_t rows,
                                  std::int32_t columns) noexcept {
  for (std::int32_t r = 0; r < rows; ++r) this->CopyPartRow(row + r, column, columns, r, 0, source);
}

template <qxReal T>
CQXMatrixMN<T> CQXMatrixMN<T>::ExtractMatrix(std::int32_t row, std::int32_t column, std::int32_t rows,
                                             std::int32_t columns) const {
  CQXMatrixMN result(rows, columns);
  result.m_rank = unknownRank;
  for (std::int32_t r = 0; r < rows; ++r) result.CopyPartRow(r, 0, columns, row + r, column, *this);
  return result;
}

template <qxReal T>
CQXMatrixMN<T> CQXMatrixMN<T>::ExtractLeftCornerMatrix(std::int32_t rows, std::int32_t columns) const {
  return ExtractMatrix(0, 0, rows, columns);
}

template <qxReal T>
void CQXMatrixMN<T>::SetElementTransposition(std::int32_t i, std::int32_t j) noexcept {
  if (this->Count() > 0) std::swap((*this)(i, j), (*this)(j, i));
}

template <qxReal T>
void CQXMatrixMN<T>::AnnulateSmallElements(T tolerance) noexcept {
  qxKernels::AnnulateSmall(this->Count(), Data(), tolerance);
}

template <qxReal T>
void CQXMatrixMN<T>::AnnulateRelativelyDiagonal(std::int32_t power) noexcept {
  const T factor = std::pow(T(10), static_cast<T>(power));
  const std::int32_t size = this->DiagonalCount();
  for (std::int32_t i = 0; i < size; ++i) {
    for (std::int32_t j = 0; j < size; ++j) {
      const T smaller = std::min(std::abs((*this)(i, i)), std::abs((*this)(j, j)));
      if (i != j && std::abs((*this)(i, j)) * factor < smaller) (*this)(i, j) = 0;
    }
  }
}

template <qxReal T>
std::int32_t CQXMatrixMN<T>::IsAlmostZero(T tolerance) const noexcept {
  return qxKernels::AreWithin(this->Count(), Data(), tolerance);
}

template <qxReal T>
std::int32_t CQXMatrixMN<T>::IsInBand(std::ptrdiff_t low, std::ptrdiff_t high, T tolerance) const noexcept {
  if (this->Count() == 0) return 1;
  return qxKernels::IsBand(Size(this->RowsNb()), Size(this->ColsNb()), Data(), low, high, tolerance);
}

template <qxReal T>
std::int32_t CQXMatrixMN<T>::IsDiagonal(T tolerance) const noexcept {
  return IsInBand(0, 0, tolerance);
}

template <qxReal T>
std::int32_t CQXMatrixMN<T>::IsBidiagonal(T tolerance) const noexcept {
  return IsInBand(0, 1, tolerance);
}

template <qxReal T>
std::int32_t CQXMatrixMN<T>::IsURTriangular(T tolerance) const noexcept {
  return IsInBand(0, std::numeric_limits<std::ptrdiff_t>::max(), tolerance);
}

template <qxReal T>
std::int32_t CQXMatrixMN<T>::IsLLTriangular(T tolerance) const noexcept {
  return IsInBand(std::numeric_limits<std::ptrdiff_t>::min(), 0, tolerance);
}

template <qxReal T>
T CQXMatrixMN<T>::Mean() const noexcept {
  return qxKernels::SumOfElements(this->Count(), Data()) / static_cast<T>(this->Count());
}

template <qxReal T>
T CQXMatrixMN<T>::InnerProduct(const Base& m) const noexcept {
  return qxKernels::Dot(this->CountWith(m), Data(), m.Data());
}

template <qxReal T>
T CQXMatrixMN<T>::CorrelationCoefficient(const Base& m) const noexcept {
  const std::size_t count = this->CountWith(m);
  const T mean = Mean();
  const T otherMean = qxKernels::SumOfElements(count, m.Data()) / static_cast<T>(count);
  T variance = 0, otherVariance = 0, covariance = 0;
  for (std::size_t i = 0; i < count; ++i) {
    const T x = Data()[i] - mean;
    const T y = m.Data()[i] - otherMean;
    variance += x * x;
    otherVariance += y * y;
    covariance += x * y;
  }
  const T scale = std::sqrt(variance) * std::sqrt(otherVariance);
  return scale == 0 ? T(0) : covariance / scale;
}

template <qxReal T>
std::int32_t qxAreAlmostEqual(const CQXMatrixMN<T>& a, const CQXMatrixMN<T>& b, qxNonDeduced<T> tolerance) noexcept {
  if (a.RowsNb() != b.RowsNb() || a.ColsNb() != b.ColsNb()) return 0;
  const std::size_t count = a.Data() != nullptr && b.Data() != nullptr ? qxElementCount(a.RowsNb(), a.ColsNb()) : 0;
  return qxKernels::AreWithin(count, a.Data(), b.Data(), tolerance);
}

template class CQXMatrixMN<float>;
template class CQXMatrixMN<double>;
template std::int32_t qxAreAlmostEqual(const CQXMatrixMN<float>&, const CQXMatrixMN<float>&, float) noexcept;
template std::int32_t qxAreAlmostEqual(const CQXMatrixMN<double>&, const CQXMatrixMN<double>&, double) noexcept;
