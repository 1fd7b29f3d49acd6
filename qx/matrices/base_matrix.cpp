#include <qx/kernels/array_kernels.h>
#include <qx/kernels/matrix_kernels.h>
#include <qx/matrices/base_matrix.h>

#include <functional>
#include <iostream>

namespace {

/// Assigns elements that may lie among those to be written as if all were read first; targetStride >= sourceStride.
template <typename T>
void CopyStrided(std::size_t count, const T* source, std::size_t sourceStride, T* target, std::size_t targetStride) {
  // An element that is written before its place behind the target, or after its place ahead of it, was read before.
  std::size_t ahead = 0;
  while (ahead < count && !std::less<const T*>()(source + ahead * sourceStride, target + ahead * targetStride)) ++ahead;
  for (std::size_t i = 0; i < ahead; ++i) target[i * targetStride] = source[i * sourceStride];
  for (std::size_t i = count; i > ahead; --i) target[(i - 1) * targetStride] = source[(i - 1) * sourceStride];
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
CQXBaseMatrix<T>::CQXBaseMatrix(std::int32_t rows, std::int32_t columns) : CQXBaseMatrix(rows, columns, Unset()) {
  this->SetToZero();
}

template <typename T>
CQXBaseMatrix<T>::CQXBaseMatrix(const CQXBaseMatrix& other) = default;

template <typename T>
CQXBaseMatrix<T>::CQXBaseMatrix(CQXBaseMatrix&& other) noexcept = default;

template <typename T>
CQXBaseMatrix<T>::~CQXBaseMatrix() = default;

template <typename T>
CQXBaseMatrix<T>& CQXBaseMatrix<T>::operator=(const CQXBaseMatrix& other) {
  Array::Assign(other);
  return *this;
}

template <typename T>
CQXBaseMatrix<T>& CQXBaseMatrix<T>::operator=(CQXBaseMatrix&& other) noexcept {
  Array::Assign(static_cast<Array&&>(other));
  return *this;
}

template <typename T>
CQXBaseMatrix<T>& CQXBaseMatrix<T>::operator*=(T factor) noexcept {
  this->Mul(factor);
  return *this;
}

template <typename T>
void CQXBaseMatrix<T>::SetConstant(T value) noexcept {
  qxKernels::SetToConstant(Count(), value, Data());
}

template <typename T>
void CQXBaseMatrix<T>::SetDiagonal(T value) noexcept {
  this->SetToZero();
  for (std::int32_t i = 0; i < DiagonalCount(); ++i) (*this)(i, i) = value;
}

template <typename T>
CQXBaseVector<T> CQXBaseMatrix<T>::Diagonal() const {
  CQXBaseVector<T> diagonal(DiagonalCount());
  if (diagonal.Data() != nullptr) {
    for (std::int32_t i = 0; i < diagonal.Dim(); ++i) diagonal[i] = (*this)(i, i);
  };
  return diagonal;
}

template <typename T>
T CQXBaseMatrix<T>::Trace() const noexcept {
  T sum = T(0);
  for (std::int32_t i = 0; i < DiagonalCount(); ++i) sum += (*this)(i, i);
  return sum;
}

template <typename T>
void CQXBaseMatrix<T>::Row(std::int32_t r, T* target) const noexcept {
  if (Count() > 0) qxKernels::Copy(qxElementCount(m_columns), Data() + Position(r, 0), target);
}

template <typename T>
void CQXBaseMatrix<T>::Column(std::int32_t c, T* target) const noexcept {
  if (Count() == 0) return;
  for (std::int32_t r = 0; r < m_rows; ++r) target[r] = (*this)(r, c);
}

template <typename T>
void CQXBaseMatrix<T>::SetRow(std::int32_t r, const T* source) noexcept {
  if (Count() > 0) CopyStrided(qxElementCount(m_columns), source, 1, Data() + Position(r, 0), 1);
}

template <typename T>
void CQXBaseMatrix<T>::SetColumn(std::int32_t c, const T* source) noexcept {
  if (Count() > 0) CopyStrided(qxElementCount(m_rows), source, 1, Data() + c, qxElementCount(m_columns));
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
  CopyStrided(qxElementCount(count), &source(sourceRow, sourceColumn), 1, &(*this)(row, column), 1);
}

template <typename T>
void CQXBaseMatrix<T>::CopyPartColumn(std::int32_t column, std::int32_t row, std::int32_t count,
                                      std::int32_t sourceColumn, std::int32_t sourceRow,
                                      const CQXBaseMatrix& source) noexcept {
  if (count <= 0 || CountWith(source) == 0) return;
  const T* const from = &source(sourceRow, sourceColumn);
  T* const to = &(*this)(row, column);
  CopyStrided(qxElementCount(count), from, qxElementCount(source.m_columns), to, qxElementCount(m_columns));
}

template <typename T>
void CQXBaseMatrix<T>::SetPartRowVector(std::int32_t row, std::int32_t column, std::int32_t count,
                                        std::int32_t vectorStart, const CQXBaseVector<T>& vector) noexcept {
  if (count <= 0 || Count() == 0 || vector.Data() == nullptr) return;
  qxKernels::Copy(qxElementCount(count), vector.Data() + vectorStart, &(*this)(row, column));
}

template <typename T>
void CQXBaseMatrix<T>::SetPartColVector(std::int32_t column, std::int32_t row, std::int32_t count,
                                        std::int32_t vectorStart, const CQXBaseVector<T>& vector) noexcept {
  if (count <= 0 || Count() == 0 || vector.Data() == nullptr) return;
  CopyStrided(qxElementCount(count), vector.Data() + vectorStart, 1, &(*this)(row, column), qxElementCount(m_columns));
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
CQXBaseMatrix<T> CQXBaseMatrix<T>::Transpose() const {
  CQXBaseMatrix result(m_columns, m_rows, Unset());
  if (Count() > 0 && result.Count() > 0)
    qxKernels::Transpose(qxElementCount(m_rows), qxElementCount(m_columns), Data(), result.Data());
  return result;
}

template <typename T>
CQXBaseMatrix<T> CQXBaseMatrix<T>::operator*(const CQXBaseMatrix& m) const {
  CQXBaseMatrix result(m_rows, m.m_columns, Unset());
  if (result.Count() > 0) {
    const std::size_t depth = CountWith(m) > 0 && m.m_rows >= m_columns ? qxElementCount(m_columns) : 0;
    qxKernels::MultiplyMatrices(qxElementCount(m_rows), depth, qxElementCount(m.m_columns), Data(), m.Data(),
                                result.Data());
  }
  return result;
}

template <typename T>
CQXBaseVector<T> CQXBaseMatrix<T>::operator*(const CQXBaseVector<T>& v) const {
  CQXBaseVector<T> result(m_rows);
  if (result.Data() != nullptr) {
    const std::size_t depth =
        Count() > 0 && v.Data() != nullptr && v.Dim() >= m_columns ? qxElementCount(m_columns) : 0;
    qxKernels::MultiplyMatrixByVector(qxElementCount(m_rows), depth, Data(), v.Data(), result.Data());
  }
  return result;
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
