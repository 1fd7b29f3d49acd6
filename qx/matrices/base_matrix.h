#pragma once

#include <qx/vectors/base_vector.h>
#include <qx/vectors/dynamic_array.h>

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <utility>

/// Run-time-sized matrix: storage and element-wise arithmetic, for float, double, CQXComplex<float> and
/// CQXComplex<double>.
///
/// A matrix owns one contiguous row-major block: element (r, c) lies at r x ColsNb() + c. CQXDynamicArray tells how
/// assignment, element-wise arithmetic and copies of complex numbers go: over the flat arrays, without comparing
/// shapes. The sizes of a matrix that was not moved from never change. Indices count from 0 and are not tested, except
/// where an operation says so.
///
/// Distinct matrices may be used from different threads.
template <typename T>
class QX_API CQXBaseMatrix : public CQXDynamicArray<T> {
  using Array = CQXDynamicArray<T>;

 public:
  using Array::Data;

  /// Zero matrix. When memory is refused by a null, the sizes are set and the matrix holds no elements: every operation
  /// but element access then does nothing; operations with it on the right find no elements there.
  CQXBaseMatrix(std::int32_t rows, std::int32_t columns);
  /// Square zero matrix.
  explicit CQXBaseMatrix(std::int32_t size) : CQXBaseMatrix(size, size) {}
  /// Copies rows x columns elements of @p source, row-major.
  template <std::same_as<T> Element>
  CQXBaseMatrix(std::int32_t rows, std::int32_t columns, const Element* source)
      : CQXBaseMatrix(rows, columns, Unset()) {
    this->Fill(source);
  }
  /// Copies size x size elements of @p source, row-major.
  template <std::same_as<T> Element>
  CQXBaseMatrix(std::int32_t size, const Element* source) : CQXBaseMatrix(size, size, source) {}
  /// Deep copy.
  CQXBaseMatrix(const CQXBaseMatrix& other);
  /// Takes the block over and leaves @p other with 0 rows and columns, ready to take those of what is next assigned to
  /// it.
  CQXBaseMatrix(CQXBaseMatrix&& other) noexcept;

  virtual ~CQXBaseMatrix();

  /// Copies as many elements as both have; the sizes stay. A matrix that was moved from becomes a deep copy.
  virtual CQXBaseMatrix& operator=(const CQXBaseMatrix& other);
  /// Multiplies every element by @p factor.
  virtual CQXBaseMatrix& operator*=(T factor) noexcept;
  /// As the copying assignment, and @p other keeps its elements. A matrix that was moved from takes sizes and block
  /// over.
  virtual CQXBaseMatrix& operator=(CQXBaseMatrix&& other) noexcept;

  /// Number of rows.
  [[nodiscard]] std::int32_t RowsNb() const noexcept { return m_rows; }
  /// Number of columns.
  [[nodiscard]] std::int32_t ColsNb() const noexcept { return m_columns; }
  /// 1 when there are as many rows as columns.
  [[nodiscard]] std::int32_t IsSquare() const noexcept { return m_rows == m_columns; }

  /// The element in row @p r and column @p c, from 0; neither is tested.
  [[nodiscard]] T& operator()(std::int32_t r, std::int32_t c) noexcept { return Data()[Position(r, c)]; }
  [[nodiscard]] const T& operator()(std::int32_t r, std::int32_t c) const noexcept { return Data()[Position(r, c)]; }

  /// Sets the element in row @p r and column @p c.
  void SetElement(std::int32_t r, std::int32_t c, T value) noexcept { (*this)(r, c) = value; }
  /// Multiplies the element in row @p r and column @p c by @p value.
  void MulElement(std::int32_t r, std::int32_t c, T value) noexcept { (*this)(r, c) *= value; }
  /// Adds @p value to the element in row @p r and column @p c.
  void AddToElement(std::int32_t r, std::int32_t c, T value) noexcept { (*this)(r, c) += value; }

  /// All elements := @p value.
  void SetConstant(T value) noexcept;
  /// All elements := 0, then the diagonal := @p value.
  void SetDiagonal(T value) noexcept;

  /// The elements (i, i), as many as the smaller of rows and columns.
  [[nodiscard]] CQXBaseVector<T> Diagonal() const;
  /// Sum of the diagonal; 0 if there is none.
  [[nodiscard]] T Trace() const noexcept;

  /// Copies row @p r to @p target, ColsNb() elements.
  void Row(std::int32_t r, T* target) const noexcept;
  /// Copies column @p c to @p target, RowsNb() elements.
  void Column(std::int32_t c, T* target) const noexcept;
  /// Takes row @p r from @p source, which may lie in this matrix: all of it is read before anything is written.
  void SetRow(std::int32_t r, const T* source) noexcept;
  /// Takes column @p c from @p source, RowsNb() elements, which may lie in this matrix as for SetRow().
  void SetColumn(std::int32_t c, const T* source) noexcept;
  /// Row @p r.
  [[nodiscard]] CQXBaseVector<T> RowVector(std::int32_t r) const;
  /// Column @p c.
  [[nodiscard]] CQXBaseVector<T> ColVector(std::int32_t c) const;
  /// Sets row @p r.
  void SetRowVector(std::int32_t r, const CQXBaseVector<T>& v) noexcept {
    if (v.Data() != nullptr) SetRow(r, v.Data());
  }
  /// Sets column @p c.
  void SetColVector(std::int32_t c, const CQXBaseVector<T>& v) noexcept {
    if (v.Data() != nullptr) SetColumn(c, v.Data());
  }

  // Parts of rows and columns. Nothing is tested; a count of 0 or less does nothing. Within one matrix all elements
  // are read before the first is written.

  /// this(row, column + i) := source(sourceRow, sourceColumn + i) for i from 0 below @p count.
  void CopyPartRow(std::int32_t row, std::int32_t column, std::int32_t count, std::int32_t sourceRow,
                   std::int32_t sourceColumn, const CQXBaseMatrix& source) noexcept;
  /// this(row + i, column) := source(sourceRow + i, sourceColumn) for i from 0 below @p count.
  void CopyPartColumn(std::int32_t column, std::int32_t row, std::int32_t count, std::int32_t sourceColumn,
                      std::int32_t sourceRow, const CQXBaseMatrix& source) noexcept;
  /// this(row, column + i) := vector[vectorStart + i] for i from 0 below @p count.
  void SetPartRowVector(std::int32_t row, std::int32_t column, std::int32_t count, std::int32_t vectorStart,
                        const CQXBaseVector<T>& vector) noexcept;
  /// this(row + i, column) := vector[vectorStart + i] for i from 0 below @p count.
  void SetPartColVector(std::int32_t column, std::int32_t row, std::int32_t count, std::int32_t vectorStart,
                        const CQXBaseVector<T>& vector) noexcept;

  // Rectangles, with inclusive ranges.

  /// Takes the elements of the rectangle from the flat array: column by column for @p byRows 0, row by row otherwise.
  ///
  /// The range is tested, and on a bad one nothing happens. The test is part of the contract: the last column is
  /// compared with the number of rows. So a rectangle of a wide matrix that goes beyond the row count is refused; in a
  /// tall matrix it may run past the end of a row into the next ones. What would lie outside the block is skipped,
  /// while the flat array still advances.
  void FillPart(std::int32_t firstRow, std::int32_t firstColumn, std::int32_t lastRow, std::int32_t lastColumn,
                const T* source, std::int32_t byRows) noexcept;
  /// Copies the elements of the rectangle to the flat array; range and order as in FillPart().
  void DumpPart(std::int32_t firstRow, std::int32_t firstColumn, std::int32_t lastRow, std::int32_t lastColumn,
                T* target, std::int32_t byRows) const noexcept;
  /// Prints the rectangle to the standard output: a line "( 1 2 )" for each row, and an empty line. The precision and
  /// width are those of the stream. On a range outside the matrix nothing is printed.
  void PrintPartOfMatrix(std::int32_t firstRow, std::int32_t firstColumn, std::int32_t lastRow,
                         std::int32_t lastColumn) const;

  /// Adds @p m, element by element.
  void Add(const CQXBaseMatrix& m) noexcept { Array::AddArray(m); }
  /// Subtracts @p m, element by element.
  void Sub(const CQXBaseMatrix& m) noexcept { Array::SubtractArray(m); }
  /// As Add().
  CQXBaseMatrix& operator+=(const CQXBaseMatrix& m) noexcept {
    Add(m);
    return *this;
  }
  /// As Sub().
  CQXBaseMatrix& operator-=(const CQXBaseMatrix& m) noexcept {
    Sub(m);
    return *this;
  }
  /// As Div(); @p divisor may be an element of this matrix.
  CQXBaseMatrix& operator/=(T divisor) noexcept {
    Array::Div(divisor);
    return *this;
  }

  /// The sum, element by element, as a new object.
  [[nodiscard]] CQXBaseMatrix operator+(const CQXBaseMatrix& m) const { return CQXBaseMatrix(Array::Sum(m)); }
  /// The difference, element by element, as a new object.
  [[nodiscard]] CQXBaseMatrix operator-(const CQXBaseMatrix& m) const { return CQXBaseMatrix(Array::Difference(m)); }
  /// Every element times @p factor, as a new matrix.
  [[nodiscard]] CQXBaseMatrix operator*(T factor) const { return CQXBaseMatrix(Array::Product(factor)); }
  /// Every element divided by @p divisor, as a new matrix; plain division, as Div().
  [[nodiscard]] CQXBaseMatrix operator/(T divisor) const { return CQXBaseMatrix(Array::Quotient(divisor)); }
  /// A new matrix of the negated elements; this one is unchanged.
  [[nodiscard]] CQXBaseMatrix Negate() const { return CQXBaseMatrix(Array::Negation()); }
  /// Rows and columns exchanged, as a new matrix.
  [[nodiscard]] CQXBaseMatrix Transpose() const;
  /// Matrix product, RowsNb() x m.ColsNb(). Each element is the sum over k, ascending, from zero, in the element type.
  /// @p m must have ColsNb() rows; with fewer of them the product is zero.
  [[nodiscard]] CQXBaseMatrix operator*(const CQXBaseMatrix& m) const;
  /// Product with a column vector of ColsNb() elements; each element is the sum over k, ascending, from zero. With a
  /// shorter vector the product is zero.
  [[nodiscard]] CQXBaseVector<T> operator*(const CQXBaseVector<T>& v) const;

  /// 1 when the sizes are the same and no pair of elements differs, by the rule of the same operator of CQXBaseVector.
  [[nodiscard]] std::int32_t operator==(const CQXBaseMatrix& m) const noexcept {
    return m_rows == m.m_rows && m_columns == m.m_columns && !Array::Differs(m);
  }
  /// 1 - (this == m).
  [[nodiscard]] std::int32_t operator!=(const CQXBaseMatrix& m) const noexcept { return 1 - (*this == m); }

 protected:
  using Array::Count;
  using Array::CountWith;
  using Array::m_columns;
  using Array::m_rows;
  using typename Array::Unset;

  CQXBaseMatrix(std::int32_t rows, std::int32_t columns, Unset) : Array(rows, columns, Unset()) {}

  [[nodiscard]] std::size_t Position(std::int32_t r, std::int32_t c) const noexcept {
    return static_cast<std::size_t>(r) * static_cast<std::size_t>(m_columns) + static_cast<std::size_t>(c);
  }
  /// Number of elements on the diagonal of the block.
  [[nodiscard]] std::int32_t DiagonalCount() const noexcept {
    return Count() == 0 ? 0 : (m_rows < m_columns ? m_rows : m_columns);
  }

 private:
  explicit CQXBaseMatrix(Array&& array) noexcept : Array(std::move(array)) {}
  template <typename Visitor>
  void VisitPart(std::int32_t firstRow, std::int32_t firstColumn, std::int32_t lastRow, std::int32_t lastColumn,
                 std::int32_t byRows, Visitor visit) const noexcept;
};

/// Writes the whole matrix in the form of PrintPartOfMatrix().
template <typename T>
QX_API std::ostream& operator<<(std::ostream& stream, const CQXBaseMatrix<T>& m);

extern template class QX_API CQXBaseMatrix<float>;
extern template class QX_API CQXBaseMatrix<double>;
extern template class QX_API CQXBaseMatrix<CQXComplex<float>>;
extern template class QX_API CQXBaseMatrix<CQXComplex<double>>;
extern template QX_API std::ostream& operator<<(std::ostream&, const CQXBaseMatrix<float>&);
extern template QX_API std::ostream& operator<<(std::ostream&, const CQXBaseMatrix<double>&);
extern template QX_API std::ostream& operator<<(std::ostream&, const CQXBaseMatrix<CQXComplex<float>>&);
extern template QX_API std::ostream& operator<<(std::ostream&, const CQXBaseMatrix<CQXComplex<double>>&);
