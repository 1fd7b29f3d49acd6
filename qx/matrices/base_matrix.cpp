#include <qx/kernels/array_kernels.h>
#include <qx/kernels/matrix_kernels.h>
#include <qx/matrices/base_matrix.h>

#include <iostream>
#include <utility>

namespace {

std::size_t Size(std::int32_t n) { return qxElementCount(n, 1); }

/// Assigns count elements with a stride, in ascending order.
template <typename T>
void CopyStrided(std::int32_t count, const T* source, std::size_t sourceStride, T* target, std::size_t targetStride) {
  for (std::size_t i = 0; i < Size(count); ++i) target[i * targetStride] = source[i * sourceStride];
}

/// Writes the rows of the inclusive range, which lies inside the matrix, and an empty line.
template <typename T>
void WritePart(std::ostream& stream, const CQXBaseMatrix<T>& m, std::int32_t firstRow, std::int32_t firstColumn,
               std::int32_t lastRow, std::int32_t lastColumn) {
  for (std::int32_t r = firstRow; r <= lastRow; ++r) {
    stream << "( ";
    for (std::int32_t c = firstColumn; c < lastColumn; ++c) stream << m(r, c) << " ";
    stream << m(r, lastColumn) << " )" << std::endl;
  }
  stream << std::endl;
}

}  // namespace

template <typename T>
CQXBaseMatrix<T>::CQXBaseMatrix(std::int32_t rows, std::int32_t columns, Unset) : m_rows(rows), m_columns(columns) {
  const std::size_t count = qxElementCount(rows, columns);
  if (count > 0) m_data = qxMakeBlock<T>(count);
}

template <typename T>
CQXBaseMatrix<T>::CQXBaseMatrix(std::int32_t rows, std::int32_t columns) : CQXBaseMatrix(rows, columns, Unset()) {
  SetToZero();
}

template <typename T>
CQXBaseMatrix<T> CQXBaseMatrix<T>::Shaped(std::size_t count) const {
  CQXBaseMatrix result(0, 0, Unset());
  result.m_rows = m_rows;
  result.m_columns = m_columns;
  if (count > 0) result.m_data = qxMakeBlock<T>(count);
  return result;
}

template <typename T>
CQXBaseMatrix<T>::CQXBaseMatrix(const CQXBaseMatrix& other) : CQXBaseMatrix(other.Shaped(other.Count())) {
  qxKernels::Copy(Count(), other.Data(), Data());
}

template <typename T>
CQXBaseMatrix<T>::CQXBaseMatrix(CQXBaseMatrix&& other) noexcept
    : m_rows(std::exchange(other.m_rows, 0)),
      m_columns(std::exchange(other.m_columns, 0)),
      m_data(std::move(other.m_data)) {}

template <typename T>
CQXBaseMatrix<T>::~CQXBaseMatrix() = default;

template <typename T>
CQXBaseMatrix<T>& CQXBaseMatrix<T>::operator=(const CQXBaseMatrix& other) {
  if (this != &other) qxKernels::Copy(CountWith(other), other.Data(), Data());
  return *this;
}

template <typename T>
CQXBaseMatrix<T>& CQXBaseMatrix<T>::operator*=(T factor) noexcept {
  Mul(factor);
  return *this;
}

template <typename T>
void CQXBaseMatrix<T>::SetToZero() noexcept {
  qxKernels::SetToZero(Count(), Data());
}

template <typename T>
void CQXBaseMatrix<T>::SetConstant(T value) noexcept {
  qxKernels::SetToConstant(Count(), value, Data());
}

template <typename T>
void CQXBaseMatrix<T>::SetDiagonal(T value) noexcept {
  SetToZero();
  for (std::int32_t i = 0; i < DiagonalCount(); ++i) (*this)(i, i) = value;
}

template <typename T>
CQXBaseVector<T> CQXBaseMatrix<T>::Diagonal() const {
  CQXBaseVector<T> diagonal(DiagonalCount());
  if (diagonal.Data() != nullptr) CopyStrided(diagonal.Dim(), Data(), Size(m_columns) + 1, diagonal.Data(), 1);
  return diagonal;
}

template <typename T>
T CQXBaseMatrix<T>::Trace() const noexcept {
  T sum = T(0);
  for (std::int32_t i = 0; i < DiagonalCount(); ++i) sum += (*this)(i, i);
  return sum;
}

template <typename T>
void CQXBaseMatrix<T>::Fill(const T* source) noexcept {
  qxKernels::Copy(Count(), source, Data());
}

template <typename T>
void CQXBaseMatrix<T>::Dump(T* target) const noexcept {
  qxKernels::Copy(Count(), Data(), target);
}

template <typename T>
void CQXBaseMatrix<T>::Row(std::int32_t r, T* target) const noexcept {
  if (Count() > 0) qxKernels::Copy(Size(m_columns), Data() + Position(r, 0), target);
}

template <typename T>
void CQXBaseMatrix<T>::Column(std::int32_t c, T* target) const noexcept {
  if (Count() > 0) CopyStrided(m_rows, Data() + c, Size(m_columns), target, 1);
}

template <typename T>
void CQXBaseMatrix<T>::SetRow(std::int32_t r, const T* source) noexcept {
  if (Count() > 0) qxKernels::Copy(Size(m_columns), source, Data() + Position(r, 0));
}

template <typename T>
void CQXBaseMatrix<T>::SetColumn(std::int32_t c, const T* source) noexcept {
  if (Count() > 0) CopyStrided(m_rows, source, 1, Data() + c, Size(m_columns));
}

template <typename T>
CQXBaseVector<T> CQXBaseMatrix<T>::RowVector(std::int32_t r) const {
  CQXBaseVector<T> row(m_columns);
  if (row.Data() != nullptr) Row(r, row.Data());
  return row;
}

template <typename T>
CQXBaseVector<T> CQXBaseMatrix<T>::ColVector(std::int32_t c) const {
  CQXBaseVector<T> column(m_rows);
  if (column.Data() != nullptr) Column(c, column.Data());
  return column;
}

template <typename T>
void CQXBaseMatrix<T>::CopyPartRow(std::int32_t row, std::int32_t column, std::int32_t count, std::int32_t sourceRow,
                                   std::int32_t sourceColumn, const CQXBaseMatrix& source) noexcept {
  if (count <= 0 || CountWith(source) == 0) return;
  qxKernels::Copy(Size(count), &source(sourceRow, sourceColumn), &(*this)(row, column));
}

template <typename T>
void CQXBaseMatrix<T>::CopyPartColumn(std::int32_t column, std::int32_t row, std::int32_t count,
                                      std::int32_t sourceColumn, std::int32_t sourceRow,
                                      const CQXBaseMatrix& source) noexcept {
  if (count <= 0 || CountWith(source) == 0) return;
  CopyStrided(count, &source(sourceRow, sourceColumn), Size(source.m_columns), &(*this)(row, column), Size(m_columns));
}

template <typename T>
void CQXBaseMatrix<T>::SetPartRowVector(std::int32_t row, std::int32_t column, std::int32_t count,
                                        std::int32_t vectorStart, const CQXBaseVector<T>& vector) noexcept {
  if (count <= 0 || Count() == 0 || vector.Data() == nullptr) return;
  qxKernels::Copy(Size(count), vector.Data() + vectorStart, &(*this)(row, column));
}

template <typename T>
void CQXBaseMatrix<T>::SetPartColVector(std::int32_t column, std::int32_t row, std::int32_t count,
                                        std::int32_t vectorStart, const CQXBaseVector<T>& vector) noexcept {
  if (count <= 0 || Count() == 0 || vector.Data() == nullptr) return;
  CopyStrided(count, vector.Data() + vectorStart, 1, &(*this)(row, column), Size(m_columns));
}

/// Calls visit(position in the block, index in the flat array) for the positions of the rectangle inside the block, in
/// the order of the flat array: where a rectangle wraps into the next row, the last to be visited counts.
template <typename T>
template <typename Visitor>
void CQXBaseMatrix<T>::VisitPart(std::int32_t firstRow, std::int32_t firstColumn, std::int32_t lastRow,
                                 std::int32_t lastColumn, std::int32_t byRows, Visitor visit) const noexcept {
  if (firstRow < 0 || firstRow > lastRow || lastRow >= m_rows) return;
  if (firstColumn < 0 || firstColumn > lastColumn || lastColumn >= m_rows) return;
  const std::size_t count = Count();
  if (count == 0) return;
  std::size_t i = 0;
  const auto visitElement = [&](std::int32_t r, std::int32_t c) {
    const std::size_t position = Position(r, c);
    if (position < count) visit(position, i);
    ++i;
  };
  if (byRows != 0) {
    for (std::int32_t r = firstRow; r <= lastRow; ++r) {
      for (std::int32_t c = firstColumn; c <= lastColumn; ++c) visitElement(r, c);
    }
  } else {
    for (std::int32_t c = firstColumn; c <= lastColumn; ++c) {
      for (std::int32_t r = firstRow; r <= lastRow; ++r) visitElement(r, c);
    }
  }
}

template <typename T>
void CQXBaseMatrix<T>::FillPart(std::int32_t firstRow, std::int32_t firstColumn, std::int32_t lastRow,
                                std::int32_t lastColumn, const T* source, std::int32_t byRows) noexcept {
  VisitPart(firstRow, firstColumn, lastRow, lastColumn, byRows,
            [this, source](std::size_t position, std::size_t i) { Data()[position] = source[i]; });
}

template <typename T>
void CQXBaseMatrix<T>::DumpPart(std::int32_t firstRow, std::int32_t firstColumn, std::int32_t lastRow,
                                std::int32_t lastColumn, T* target, std::int32_t byRows) const noexcept {
  VisitPart(firstRow, firstColumn, lastRow, lastColumn, byRows,
            [this, target](std::size_t position, std::size_t i) { target[i] = Data()[position]; });
}

template <typename T>
void CQXBaseMatrix<T>::PrintPartOfMatrix(std::int32_t firstRow, std::int32_t firstColumn, std::int32_t lastRow,
                                         std::int32_t lastColumn) const {
  if (firstRow < 0 || firstRow > lastRow || lastRow >= m_rows) return;
  if (firstColumn < 0 || firstColumn > lastColumn || lastColumn >= m_columns) return;
  if (Count() > 0) WritePart(std::cout, *this, firstRow, firstColumn, lastRow, lastColumn);
}

template <typename T>
void CQXBaseMatrix<T>::Add(const CQXBaseMatrix& m) noexcept {
  qxKernels::Add(CountWith(m), Data(), m.Data());
}

template <typename T>
void CQXBaseMatrix<T>::Sub(const CQXBaseMatrix& m) noexcept {
  qxKernels::Subtract(CountWith(m), Data(), m.Data());
}

template <typename T>
void CQXBaseMatrix<T>::Mul(T factor) noexcept {
  qxKernels::Multiply(Count(), Data(), factor);
}

template <typename T>
void CQXBaseMatrix<T>::Div(T divisor) noexcept {
  qxKernels::Divide(Count(), Data(), divisor);
}

template <typename T>
CQXBaseMatrix<T>& CQXBaseMatrix<T>::operator+=(const CQXBaseMatrix& m) noexcept {
  Add(m);
  return *this;
}

template <typename T>
CQXBaseMatrix<T>& CQXBaseMatrix<T>::operator-=(const CQXBaseMatrix& m) noexcept {
  Sub(m);
  return *this;
}

template <typename T>
CQXBaseMatrix<T>& CQXBaseMatrix<T>::operator/=(T divisor) noexcept {
  Div(divisor);
  return *this;
}

template <typename T>
CQXBaseMatrix<T> CQXBaseMatrix<T>::operator+(const CQXBaseMatrix& m) const {
  CQXBaseMatrix result = Shaped(CountWith(m));
  qxKernels::Sum(result.Count(), Data(), m.Data(), result.Data());
  return result;
}

template <typename T>
CQXBaseMatrix<T> CQXBaseMatrix<T>::operator-(const CQXBaseMatrix& m) const {
  CQXBaseMatrix result = Shaped(CountWith(m));
  qxKernels::Difference(result.Count(), Data(), m.Data(), result.Data());
  return result;
}

template <typename T>
CQXBaseMatrix<T> CQXBaseMatrix<T>::operator*(T factor) const {
  CQXBaseMatrix result = Shaped(Count());
  qxKernels::Product(result.Count(), Data(), factor, result.Data());
  return result;
}

template <typename T>
CQXBaseMatrix<T> CQXBaseMatrix<T>::operator/(T divisor) const {
  CQXBaseMatrix result = Shaped(Count());
  qxKernels::Quotient(result.Count(), Data(), divisor, result.Data());
  return result;
}

template <typename T>
CQXBaseMatrix<T> CQXBaseMatrix<T>::Negate() const {
  CQXBaseMatrix result = Shaped(Count());
  qxKernels::Negation(result.Count(), Data(), result.Data());
  return result;
}

template <typename T>
CQXBaseMatrix<T> CQXBaseMatrix<T>::Transpose() const {
  CQXBaseMatrix result(m_columns, m_rows, Unset());
  if (Count() > 0 && result.Count() > 0) qxKernels::Transpose(Size(m_rows), Size(m_columns), Data(), result.Data());
  return result;
}

template <typename T>
CQXBaseMatrix<T> CQXBaseMatrix<T>::operator*(const CQXBaseMatrix& m) const {
  CQXBaseMatrix result(m_rows, m.m_columns, Unset());
  if (result.Count() > 0) {
    const std::size_t depth = Data() != nullptr && m.Data() != nullptr ? Size(m_columns) : 0;
    qxKernels::MultiplyMatrices(Size(m_rows), depth, Size(m.m_columns), Data(), m.Data(), result.Data());
  }
  return result;
}

template <typename T>
CQXBaseVector<T> CQXBaseMatrix<T>::operator*(const CQXBaseVector<T>& v) const {
  CQXBaseVector<T> result(m_rows);
  if (result.Data() != nullptr) {
    const std::size_t depth = Data() != nullptr && v.Data() != nullptr ? Size(m_columns) : 0;
    qxKernels::MultiplyMatrixByVector(Size(m_rows), depth, Data(), v.Data(), result.Data());
  }
  return result;
}

template <typename T>
std::int32_t CQXBaseMatrix<T>::operator==(const CQXBaseMatrix& m) const noexcept {
  return m_rows == m.m_rows && m_columns == m.m_columns && !qxKernels::AreDifferent(CountWith(m), Data(), m.Data());
}

template <typename T>
std::int32_t CQXBaseMatrix<T>::operator!=(const CQXBaseMatrix& m) const noexcept {
  return 1 - (*this == m);
}

template <typename T>
std::ostream& operator<<(std::ostream& stream, const CQXBaseMatrix<T>& m) {
  if (m.Data() != nullptr) WritePart(stream, m, 0, 0, m.RowsNb() - 1, m.ColsNb() - 1);
  return stream;
}

template class CQXBaseMatrix<float>;
template class CQXBaseMatrix<double>;
template class CQXBaseMatrix<CQXComplex<float>>;
template class CQXBaseMatrix<CQXComplex<double>>;
template std::ostream& operator<<(std::ostream&, const CQXBaseMatrix<float>&);
template std::ostream& operator<<(std::ostream&, const CQXBaseMatrix<double>&);
template std::ostream& operator<<(std::ostream&, const CQXBaseMatrix<CQXComplex<float>>&);
template std::ostream& operator<<(std::ostream&, const CQXBaseMatrix<CQXComplex<double>>&);
