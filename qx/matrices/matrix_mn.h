#pragma once

#include <qx/foundation/scalar.h>
#include <qx/matrices/base_matrix.h>
#include <qx/matrices/matrix_norm.h>
#include <qx/vectors/vector_n.h>

#include <algorithm>

/// Run-time-sized rectangular matrix of float or double: orthogonal factorisations, singular values, rank,
/// pseudo-inverse.
///
/// Storage, assignment and element-wise arithmetic are those of CQXBaseMatrix. The matrix also remembers its rank and
/// its singular numbers once they were calculated. Changing elements does not clear what is remembered.
///
/// Matrices and vectors that receive a result keep their shape: what fits of the result is written, so give them the
/// shape that is told. They may be the operands themselves. On failure they stay untouched.
///
/// Operations that look like reads write these caches: a matrix must not be shared by threads during such a call.
/// Distinct matrices are independent.
template <qxReal T>
class QX_API CQXMatrixMN : public CQXBaseMatrix<T> {
 public:
  using Base = CQXBaseMatrix<T>;
  using Base::Data;

  /// Zero matrix with rank 0.
  CQXMatrixMN(std::int32_t rows, std::int32_t columns) : Base(rows, columns) {}
  /// Square zero matrix with rank 0.
  explicit CQXMatrixMN(std::int32_t size) : Base(size) {}
  /// Copies rows x columns elements of @p source, row-major; the rank is unknown.
  template <std::same_as<T> Element>
  CQXMatrixMN(std::int32_t rows, std::int32_t columns, const Element* source)
      : Base(rows, columns, source), m_rank(unknownRank) {}
  /// Copies size x size elements of @p source, row-major; the rank is unknown.
  template <std::same_as<T> Element>
  CQXMatrixMN(std::int32_t size, const Element* source) : Base(size, source), m_rank(unknownRank) {}
  /// Deep copy of the elements; the rank is unknown.
  CQXMatrixMN(const Base& other) : Base(other), m_rank(unknownRank) {}
  /// Takes the block over; the rank is unknown.
  CQXMatrixMN(Base&& other) noexcept : Base(static_cast<Base&&>(other)), m_rank(unknownRank) {}
  /// Deep copy of the elements, the rank and the singular numbers.
  CQXMatrixMN(const CQXMatrixMN& other);
  /// Takes everything over and leaves @p other with 0 rows and columns.
  CQXMatrixMN(CQXMatrixMN&& other) noexcept;

  ~CQXMatrixMN() override;

  /// Copies the elements; the sizes stay. The rank becomes unknown and the singular numbers are dropped.
  CQXMatrixMN& operator=(const Base& other) override;
  using Base::operator*=;
  /// Copies the elements; the sizes stay. Rank and singular numbers come along, unless the shapes differ: then the
  /// rank is unknown and the singular numbers are dropped.
  virtual CQXMatrixMN& operator=(const CQXMatrixMN& other);
  // A matrix that was moved from takes everything over; any other one copies.
  CQXMatrixMN& operator=(Base&& other) noexcept override;
  virtual CQXMatrixMN& operator=(CQXMatrixMN&& other) noexcept;

  /// The sum, element by element.
  [[nodiscard]] CQXMatrixMN operator+(const Base& m) const { return Base::operator+(m); }
  /// The difference, element by element.
  [[nodiscard]] CQXMatrixMN operator-(const Base& m) const { return Base::operator-(m); }
  /// The product, with a number element by element.
  [[nodiscard]] CQXMatrixMN operator*(T factor) const { return Base::operator*(factor); }
  /// Every element divided by @p divisor.
  [[nodiscard]] CQXMatrixMN operator/(T divisor) const { return Base::operator/(divisor); }
  /// The product, with a number element by element.
  [[nodiscard]] CQXMatrixMN operator*(const Base& m) const { return Base::operator*(m); }
  [[nodiscard]] CQXVectorN<T> operator*(const CQXBaseVector<T>& v) const { return Base::operator*(v); }
  /// Every element with the opposite sign.
  [[nodiscard]] CQXMatrixMN Negate() const { return Base::Negate(); }
  /// Rows and columns exchanged.
  [[nodiscard]] CQXMatrixMN Transpose() const { return Base::Transpose(); }

  /// The remembered rank; -1 means unknown.
  [[nodiscard]] std::int32_t GetRank() const noexcept { return m_rank; }
  /// Sets what GetRank() says.
  void SetRank(std::int32_t rank) noexcept { m_rank = rank; }
  /// 1 when the singular numbers are remembered.
  [[nodiscard]] std::int32_t IsSingCalculated() const noexcept { return m_singularFlag; }
  /// Copies the remembered singular numbers, as many as the smaller of rows and columns; does nothing without them.
  void GetSingularNumbers(T* target) const noexcept;

  /// Number of singular numbers above @p tolerance, calculated afresh and remembered: it writes the rank, so no other
  /// thread may use the matrix meanwhile.
  /// @return -1 when they cannot be had: an element is not finite, or memory was refused.
  std::int32_t CalculateRank(T tolerance = QX_PREDICATE_TOLERANCE<T>) const;

  /// Factors this = @p Q @p R by Householder's reflections: Q orthogonal, rows x rows; R rows x columns, with exact
  /// zeros below the diagonal. The diagonal of R has no particular sign.
  /// @param tolerance kept for callers of all decompositions alike; the reduction takes every element at its value
  /// @return 1 for every finite matrix with finite factors; 0 otherwise, and when memory was refused.
  [[nodiscard]] std::int32_t QR_Decomposition(CQXMatrixMN& Q, CQXMatrixMN& R,
                                              T tolerance = QX_PREDICATE_TOLERANCE<T>) const;

  /// Singular value decomposition this = @p U diag(@p singular) @p V^T.
  ///
  /// U is rows x rows and V columns x columns, both orthogonal; a narrower U or V receives the leading columns. The
  /// singular numbers, as many as the smaller of rows and columns, descend and are not negative. They are also
  /// remembered by the matrix, so no other thread may use it meanwhile; the rank is left for CalculateRank(). The
  /// iteration ends when every superdiagonal element is negligible, or without success after 30 sweeps for each column.
  ///
  /// G. H. Golub, C. Reinsch, Singular value decomposition and least squares solutions, Numer. Math. 14 (1970).
  /// @param tolerance what counts as zero beside the elements of the matrix; 0 for full accuracy. The result is that of
  ///        a matrix whose elements differ by no more than about this from the given one.
  /// @return 0; 1 when the iteration did not converge, an element is not finite or a singular number is beyond the
  /// range,
  ///         QX_STATUS_OUT_OF_MEMORY when memory was refused. The outputs and what the matrix remembers are then
  ///         untouched.
  [[nodiscard]] std::int32_t SV_Decomposition(CQXMatrixMN& U, CQXMatrixMN& V, CQXVectorN<T>& singular,
                                              T tolerance = QX_PREDICATE_TOLERANCE<T>) const;

  /// Singular value decomposition to full accuracy with the leading min(rows, columns) columns of @p U and @p V only.
  /// Nothing is remembered.
  /// @return 1, 0 on failure.
  [[nodiscard]] std::int32_t ThinSVD(CQXMatrixMN& U, CQXMatrixMN& V, CQXVectorN<T>& singular) const;

  /// ThinSVD() of the matrix held by @p a in the rows and columns from 1 on; row and column 0 of all arguments are not
  /// used. @p a becomes U in place; it must have no more columns than rows.
  /// @param a rows + 1 by columns + 1 elements, for the sizes of this matrix, whose own elements play no part
  /// @param singular columns + 1 elements
  /// @param v columns + 1 by columns + 1 elements
  /// @return 1; 0 on failure and for a matrix with more columns than rows.
  [[nodiscard]] std::int32_t ThinSVDUnitOffsetInPlace(CQXMatrixMN& a, CQXVectorN<T>& singular, CQXMatrixMN& v) const;

  /// Inverse of a square matrix: in closed form for size 4, otherwise through the singular values.
  ///
  /// @param tolerance size 4: bound of the absolute determinant. Other sizes: plays no part, the matrix is singular
  /// when
  ///        its smallest singular number is not above 1e-6
  /// @return 1; 0 when the matrix is singular, not square or not finite.
  [[nodiscard]] std::int32_t Inverse(CQXMatrixMN& target, T tolerance = QX_PREDICATE_TOLERANCE<T>) const;
  /// Inverse and condition number in the given norm: norm times norm of the inverse. Sizes 2, 3 and 4 in closed form,
  /// others as above.
  /// @return 1; 0 when there is no inverse: the condition number is then QX_OVERFLOW_VALUE.
  [[nodiscard]] std::int32_t Inverse(CQXMatrixMN& target, qxMatrixNorm norm, T tolerance, T& conditionNumber) const;

  /// Pseudo-inverse of Moore and Penrose, columns x rows. Singular numbers up to 1e-6 times the largest count as zero;
  /// a zero matrix gives a zero matrix.
  /// @param norm the condition number is the same for every kind
  /// @param conditionNumber largest over smallest singular number that was inverted; QX_OVERFLOW_VALUE for a zero
  ///        matrix and on failure
  /// @return 1; 0 when an element is not finite or memory was refused.
  [[nodiscard]] std::int32_t PseudoInverse(CQXMatrixMN& target, qxMatrixNorm norm, T& conditionNumber) const;
  /// The shortest of the vectors that minimise the length of this x - b: the pseudo-inverse times @p b.
  /// @param b,x vectors of rows and of columns elements
  /// @return as PseudoInverse()
  [[nodiscard]] std::int32_t PseudoSolveSystem(const CQXBaseVector<T>& b, CQXBaseVector<T>& x, qxMatrixNorm norm,
                                               T& conditionNumber) const;

  /// Norm of the given kind; not a number when an element is not. The spectral one is not a number either when the
  /// singular numbers cannot be had.
  [[nodiscard]] T Norm(qxMatrixNorm norm) const;

  /// Copies the leading rows x columns elements of @p source to the rectangle that begins at (row, column).
  void InsertMatrix(const Base& source, std::int32_t row, std::int32_t column, std::int32_t rows,
                    std::int32_t columns) noexcept;
  /// A new matrix of the rectangle that begins at (row, column).
  [[nodiscard]] CQXMatrixMN ExtractMatrix(std::int32_t row, std::int32_t column, std::int32_t rows,
                                          std::int32_t columns) const;
  /// A new matrix of the leading rows x columns elements.
  [[nodiscard]] CQXMatrixMN ExtractLeftCornerMatrix(std::int32_t rows, std::int32_t columns) const;
  /// Swaps the elements (i, j) and (j, i).
  void SetElementTransposition(std::int32_t i, std::int32_t j) noexcept;

  /// Sets each element with abs(x) < @p tolerance to 0.
  void AnnulateSmallElements(T tolerance) noexcept;
  /// Sets the element (i, j) off the diagonal to 0 when abs(a_ij) 10^power < min(abs(a_ii), abs(a_jj)). Rows and
  /// columns beyond the diagonal stay.
  void AnnulateRelativelyDiagonal(std::int32_t power) noexcept;

  // Structure: 1 when abs(x) <= tolerance for every element that the structure wants to be zero, else 0.

  [[nodiscard]] std::int32_t IsAlmostZero(T tolerance = QX_PREDICATE_TOLERANCE<T>) const noexcept;
  [[nodiscard]] std::int32_t IsDiagonal(T tolerance = QX_PREDICATE_TOLERANCE<T>) const noexcept;
  /// Only the diagonal and the one above it.
  [[nodiscard]] std::int32_t IsBidiagonal(T tolerance = QX_PREDICATE_TOLERANCE<T>) const noexcept;
  /// Nothing below the diagonal.
  [[nodiscard]] std::int32_t IsURTriangular(T tolerance = QX_PREDICATE_TOLERANCE<T>) const noexcept;
  /// Nothing above the diagonal.
  [[nodiscard]] std::int32_t IsLLTriangular(T tolerance = QX_PREDICATE_TOLERANCE<T>) const noexcept;

  /// Mean of all elements; not a number without elements.
  [[nodiscard]] T Mean() const noexcept;
  /// Sum of the products of corresponding elements; @p m must have as many. Not a number when memory was refused to
  /// one.
  [[nodiscard]] T InnerProduct(const Base& m) const noexcept;
  /// Pearson's coefficient of correlation of corresponding elements; 0 when the elements of one matrix do not vary. Not
  /// a number when memory was refused to one.
  [[nodiscard]] T CorrelationCoefficient(const Base& m) const noexcept;

 protected:
  static constexpr std::int32_t unknownRank = -1;

  /// abs(a) with the sign of @p b; 0 counts as positive.
  [[nodiscard]] static T SignA(T a, T b) noexcept;
  /// sqrt(a^2 + b^2) without overflow; 0 when @p b is the larger and within QX_TOLERANCE of zero.
  [[nodiscard]] static T Pythagoras(T a, T b) noexcept;

  /// Makes a Householder reflection from @p vector, whose elements pivot and first .. last - 1 count, and applies it.
  ///
  /// The pivot element becomes the signed length s, of the sign that it had; the others stay and, with @p up before
  /// them, are the reflection: unit + u u^T / (s up). It is applied to @p count columns of @p matrix, stored row-major
  /// with @p count elements a row; rows are numbered like the elements of the vector.
  /// @param up 0 for an element alone (pivot = last - 1); untouched when the vector is left alone
  /// @param tolerance a vector with all elements below it is left alone, and so is one with pivot >= last; a reflection
  ///        with s up > -tolerance is made but not applied
  /// @return 1 when columns were reflected, else 0.
  static std::int32_t Householder1(std::int32_t pivot, std::int32_t first, std::int32_t last, std::int32_t count, T& up,
                                   T* vector, T* matrix, T tolerance) noexcept;
  /// Applies the reflection of Householder1() to the first @p last columns of @p matrix. Nothing happens unless
  /// pivot < last, last is not 0 and vector[pivot] up < -tolerance.
  static void Householder2(std::int32_t pivot, std::int32_t first, std::int32_t last, T up, const T* vector,
                           CQXMatrixMN& matrix, T tolerance) noexcept;
  /// Rotation that turns (a, b) into (r, 0): c = a / r, s = b / r. An r below 1.5 tolerance gives c = 1, s = 0.
  static void Givens1(T a, T b, T& c, T& s, T& r, T tolerance) noexcept;
  /// (x, y) := (c x + s y, c y - s x).
  static void Givens2(T c, T s, T& x, T& y) noexcept;

  // The steps of SV_Decomposition(). A bidiagonal matrix of n columns is held in d, its diagonal, and e: e[i] joins
  // d[i - 1] and d[i], e[0] is unused. The columns of U and V lie in the rows of left and right, of leftLength and
  // rightLength elements; either is null where it is not wanted.

  /// Reduces @p a, which is not wider than high and is destroyed, to bidiagonal form, and collects the reflections as
  /// the first @p leftCount columns of U, and V. @return 0; 2 when memory was refused.
  static std::int32_t QRT_2D(std::int32_t rows, std::int32_t columns, T* a, std::int32_t leftCount, T* d, T* e, T* left,
                             T* right);
  /// Turns the bidiagonal into descending non-negative singular numbers. @return as Apply_QRBD()
  static std::int32_t SingDecomp2D(std::int32_t n, T* d, T* e, T* left, std::int32_t leftLength, T* right,
                                   std::int32_t rightLength, T tolerance);
  /// Drives QRBD() over the blocks between negligible superdiagonal elements.
  /// @return 0; 1 without convergence, 2 when memory was refused.
  static std::int32_t Apply_QRBD(std::int32_t n, T* d, T* e, T* left, std::int32_t leftLength, T* right,
                                 std::int32_t rightLength, T tolerance);
  /// Implicitly shifted QR sweeps over the block first .. last, until it splits before @p index.
  /// @param rotations work array of 4 n elements
  /// @return 0; 1 after 30 sweeps.
  static std::int32_t QRBD(std::int32_t n, T* d, T* e, T* left, std::int32_t leftLength, T* right,
                           std::int32_t rightLength, std::int32_t first, std::int32_t last, std::int32_t& index,
                           T* rotations, T tolerance) noexcept;
  /// Clears the row of a zero diagonal element: rotates its superdiagonal element out to the right.
  static void ZeroRightTransform(T* d, T* e, T* left, std::int32_t leftLength, std::int32_t zero,
                                 std::int32_t last) noexcept;
  /// Clears the column of a zero last diagonal element: rotates the superdiagonal element above it out upwards.
  static void ZeroUpperTransform(T* d, T* e, T* right, std::int32_t rightLength, std::int32_t first,
                                 std::int32_t zero) noexcept;

  /// Orders of rows and columns that put those with all abs(x) <= tolerance last and keep the others in sequence.
  /// @return 1 when the order is not the natural one.
  static std::int32_t TestZeroRowsColumns(std::int32_t rows, std::int32_t columns, const T* a, T tolerance,
                                          std::int32_t* rowOrder, std::int32_t* columnOrder) noexcept;
  /// target row i := source row order[i].
  static void MoveZeroRows(std::int32_t rows, std::int32_t columns, const T* source, const std::int32_t* order,
                           T* target) noexcept;
  /// Column i of each row := column order[i], through @p work of one row.
  static void MoveZeroColumns(std::int32_t rows, std::int32_t columns, T* a, const std::int32_t* order,
                              T* work) noexcept;

  /// Length of the array of singular numbers.
  [[nodiscard]] std::int32_t SingularCount() const noexcept {
    return std::max(std::min(this->RowsNb(), this->ColsNb()), 0);
  }
  /// Takes what fits of a rows x columns result and forgets rank and singular numbers.
  void TakeResult(std::int32_t rows, std::int32_t columns, const T* source) noexcept;
  /// The same from the transpose of the result, which has @p rows rows of @p columns elements.
  void TakeTransposedResult(std::int32_t rows, std::int32_t columns, const T* source) noexcept;
  /// Takes what fits of the result.
  static void TakeResult(std::int32_t count, const T* source, CQXBaseVector<T>& target) noexcept;
  /// The rank becomes unknown and the singular numbers go.
  void ForgetResults() const noexcept;
  /// Takes what fits of matrix b into @p x, which may be @p b. @return false when memory was refused.
  static bool MultiplyInto(const CQXMatrixMN& matrix, const CQXBaseVector<T>& b, CQXBaseVector<T>& x);
  /// False when memory was refused to the block.
  [[nodiscard]] bool IsHeld() const noexcept { return this->Count() == qxElementCount(this->RowsNb(), this->ColsNb()); }
  /// False when memory was refused to this block or to that of @p m, which must have as many elements.
  [[nodiscard]] bool AreHeldWith(const Base& m) const noexcept {
    return IsHeld() && this->CountWith(m) == this->Count();
  }
  /// Rows and columns for loops; 0 where the size is negative.
  [[nodiscard]] std::size_t Height() const noexcept { return qxElementCount(this->RowsNb(), 1); }
  [[nodiscard]] std::size_t Width() const noexcept { return qxElementCount(this->ColsNb(), 1); }

 private:
  void CopySingularNumbers(const CQXMatrixMN& other);
  [[nodiscard]] std::int32_t IsInBand(std::ptrdiff_t low, std::ptrdiff_t high, T tolerance) const noexcept;
  mutable std::int32_t m_rank = 0;
  mutable qxBlock<T> m_singularNumbers;
  mutable std::int32_t m_singularFlag = 0;
};

/// 1 when the sizes are the same and abs(a - b) <= @p tolerance for every pair of elements.
template <qxReal T>
QX_API std::int32_t qxAreAlmostEqual(const CQXMatrixMN<T>& a, const CQXMatrixMN<T>& b,
                                     qxNonDeduced<T> tolerance = QX_TOLERANCE<T>) noexcept;

extern template class QX_API CQXMatrixMN<float>;
extern template class QX_API CQXMatrixMN<double>;
extern template QX_API std::int32_t qxAreAlmostEqual(const CQXMatrixMN<float>&, const CQXMatrixMN<float>&,
                                                     float) noexcept;
extern template QX_API std::int32_t qxAreAlmostEqual(const CQXMatrixMN<double>&, const CQXMatrixMN<double>&,
                                                     double) noexcept;
