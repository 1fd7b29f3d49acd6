#pragma once

#include <qx/foundation/scalar.h>
#include <qx/foundation/status.h>
#include <qx/matrices/matrix_mn.h>

/// Run-time-sized square matrix of float or double: LU factors, determinant, inverse, eigenvalues of symmetric
/// matrices, spectral and polar form.
///
/// What it remembers, and how results are received, is told at CQXMatrixMN; results may be the operands themselves.
/// Distinct matrices may be used from different threads.
///
/// The codes of Inverse() depend on the size: for 2 to 4 they are those of the fixed classes (0 for success, 3 for
/// singular), for other sizes 1 stands for success. SolveSystem() gives 1 or 0 for every size.
template <qxReal T>
class QX_API CQXMatrixN : public CQXMatrixMN<T> {
 public:
  using Base = CQXMatrixMN<T>;
  using Base::Data;

  /// Zero matrix with rank 0.
  explicit CQXMatrixN(std::int32_t size) : Base(size), m_size(size) {}
  /// Copies size x size elements of @p source, row-major.
  template <std::same_as<T> Element>
  CQXMatrixN(std::int32_t size, const Element* source) : Base(size, source), m_size(size) {}
  /// Copies a square matrix; of any other its leading square.
  CQXMatrixN(const CQXBaseMatrix<T>& other);
  /// Takes the block of a square matrix over; of any other copies its leading square.
  CQXMatrixN(CQXBaseMatrix<T>&& other);
  CQXMatrixN(const CQXMatrixN& other) = default;
  CQXMatrixN(CQXMatrixN&& other) noexcept;

  ~CQXMatrixN() override;

  /// Copies the elements; the size stays.
  CQXMatrixN& operator=(const CQXBaseMatrix<T>& other) override;
  using Base::operator*=;
  /// Copies the elements and what is remembered; the size stays.
  CQXMatrixN& operator=(const CQXMatrixMN<T>& other) override;
  /// Copies the elements and what is remembered; the size stays.
  virtual CQXMatrixN& operator=(const CQXMatrixN& other);
  // A matrix that was moved from takes everything over, of a matrix that is not square the leading square; any other
  // one copies.
  CQXMatrixN& operator=(CQXBaseMatrix<T>&& other) noexcept override;
  CQXMatrixN& operator=(CQXMatrixMN<T>&& other) noexcept override;
  CQXMatrixN& operator=(CQXMatrixN&& other) noexcept;

  /// Determinant: the product of the pivots of LU_Decomposition(); when a pivot is below 1e-6, of elimination with
  /// exchange of rows, and 0 when a pivot is below 1e-9 there too. 1 for size 0. Not a
  /// number when memory was refused.
  [[nodiscard]] virtual T Det() const;

  /// Number of rows, and of columns.
  [[nodiscard]] std::int32_t Size() const noexcept { return m_size; }

  using Base::operator*;
  /// The sum, element by element.
  [[nodiscard]] CQXMatrixN operator+(const CQXBaseMatrix<T>& m) const { return CQXBaseMatrix<T>::operator+(m); }
  /// The difference, element by element.
  [[nodiscard]] CQXMatrixN operator-(const CQXBaseMatrix<T>& m) const { return CQXBaseMatrix<T>::operator-(m); }
  /// The product, with a number element by element.
  [[nodiscard]] CQXMatrixN operator*(T factor) const { return CQXBaseMatrix<T>::operator*(factor); }
  /// Every element divided by @p divisor.
  [[nodiscard]] CQXMatrixN operator/(T divisor) const { return CQXBaseMatrix<T>::operator/(divisor); }
  /// The product, with a number element by element.
  [[nodiscard]] CQXMatrixN operator*(const CQXMatrixN& m) const { return CQXBaseMatrix<T>::operator*(m); }
  /// Every element with the opposite sign.
  [[nodiscard]] CQXMatrixN Negate() const { return CQXBaseMatrix<T>::Negate(); }
  /// Rows and columns exchanged.
  [[nodiscard]] CQXMatrixN Transpose() const { return CQXBaseMatrix<T>::Transpose(); }

  /// this := this @p m, which must have the same size.
  void PostMultiply(const CQXMatrixN& m);
  /// this := @p m this.
  void PreMultiply(const CQXMatrixN& m);
  /// this := this @p m.
  CQXMatrixN& operator*=(const CQXMatrixN& m);
  /// Power by repeated squaring. The power 0 is the unit matrix; a negative one inverts first, and is the zero matrix
  /// when the matrix is singular. When memory is refused the result holds no elements, and `^=` leaves the matrix as it
  /// was. Mind the low precedence of the operator.
  [[nodiscard]] CQXMatrixN operator^(std::int32_t n) const;
  /// Replaces this by its power, as operator^().
  CQXMatrixN& operator^=(std::int32_t n);

  /// Sets the unit matrix.
  void Unit() noexcept { this->SetDiagonal(1); }
  /// This minus @p lambda on the diagonal.
  [[nodiscard]] CQXMatrixN GetCharacteristicsMatrix(T lambda) const;
  /// Copies the diagonal to @p target.
  void GetDiagElements(T* target) const noexcept;
  /// Product of the diagonal elements; 1 for size 0.
  [[nodiscard]] T DetForTriangular() const noexcept;

  /// 1 when every element is within @p tolerance of the unit matrix.
  [[nodiscard]] std::int32_t IsUnit(T tolerance = QX_PREDICATE_TOLERANCE<T>) const noexcept;
  /// 1 when abs(a_ij - a_ji) <= @p tolerance for all pairs.
  [[nodiscard]] std::int32_t IsSymmetric(T tolerance = QX_PREDICATE_TOLERANCE<T>) const noexcept;
  /// 1 when the transpose times this is the unit matrix within @p tolerance, element by element.
  [[nodiscard]] std::int32_t IsOrthogonal(T tolerance = QX_PREDICATE_TOLERANCE<T>) const;
  /// 1 when the matrix is positive definite: the pivots of the elimination of its symmetric part are above
  /// @p tolerance.
  [[nodiscard]] std::int32_t IsPositive(T tolerance = QX_PREDICATE_TOLERANCE<T>) const;
  /// 1 when abs(Det()) < @p tolerance; -1 when the determinant cannot be had although all elements are finite: memory
  /// was refused, or a product left the range.
  [[nodiscard]] std::int32_t IsSingular(T tolerance = QX_PREDICATE_TOLERANCE<T>) const;

  /// Doolittle's factors this = @p L @p U without exchange of rows; the diagonal of L is 1.
  /// @param tolerance bound of the absolute pivots
  /// @return 1; 0 when a pivot is below the tolerance: rows and columns before it are filled, so is the pivot itself
  ///         unless it is the first, and the rest is zero.
  [[nodiscard]] std::int32_t LU_Decomposition(CQXMatrixN& L, CQXMatrixN& U,
                                              T tolerance = QX_PREDICATE_TOLERANCE<T>) const;

  /// Inverse: sizes 2 to 4 in closed form, others by LU_Decomposition(); where that fails, through the singular values.
  ///
  /// Without exchange of rows small pivots cost accuracy. CQXMatrixMN::Inverse(), called by its qualified name, goes
  /// through the singular values always.
  /// @param tolerance bound of the pivots and of their product; sizes 2 to 4: of the absolute determinant
  /// @return sizes 2 to 4: 0; 3 for a singular matrix. Others: 1; 3 when the product of the pivots is below the
  ///         tolerance, 0 when the elimination failed and the matrix is singular by CQXMatrixMN::Inverse().
  [[nodiscard]] std::int32_t Inverse(CQXMatrixN& target, T tolerance = QX_PREDICATE_TOLERANCE<T>) const;
  /// The same, and the condition number: norm times norm of the inverse, QX_OVERFLOW_VALUE without an inverse.
  [[nodiscard]] std::int32_t Inverse(CQXMatrixN& target, qxMatrixNorm norm, T tolerance, T& conditionNumber) const;

  // Inverses of simple structures. The elements that have to be zero must be within 1e-6 of it and are taken for zero.
  // Result 1; 0 when the structure is another or a diagonal element is below the tolerance: the target is then zero.

  [[nodiscard]] std::int32_t DiagInverse(CQXMatrixN& target, T tolerance = QX_PREDICATE_TOLERANCE<T>) const;
  [[nodiscard]] std::int32_t LowLeftInverse(CQXMatrixN& target, T tolerance = QX_PREDICATE_TOLERANCE<T>) const;
  [[nodiscard]] std::int32_t UpperRightInverse(CQXMatrixN& target, T tolerance = QX_PREDICATE_TOLERANCE<T>) const;

  /// Inverse of the matrix without its small elements off the diagonal, for use as a preconditioner.
  /// @param tolerance elements with abs(a_ij) <= tolerance sqrt(abs(a_ii a_jj)) are dropped; 1 leaves the diagonal of a
  ///        positive definite matrix
  /// @return 1; 0 when a diagonal element is below QX_TOLERANCE. What cannot be inverted gives way to the diagonal.
  [[nodiscard]] std::int32_t InvPreconditioner(CQXMatrixN& target, T tolerance) const;

  /// Solves this x = b through Inverse().
  /// @return 1; 0 without an inverse, @p x untouched.
  [[nodiscard]] std::int32_t SolveSystem(const CQXBaseVector<T>& b, CQXBaseVector<T>& x,
                                         T tolerance = QX_PREDICATE_TOLERANCE<T>) const;
  /// The same, and the condition number as Inverse() gives it.
  [[nodiscard]] std::int32_t SolveSystem(const CQXBaseVector<T>& b, CQXBaseVector<T>& x, qxMatrixNorm norm, T tolerance,
                                         T& conditionNumber) const;

  /// Condition number. Spectral: the largest over the smallest singular number, QX_OVERFLOW_VALUE when the smallest is
  /// not above 1e-6. Other norms: norm times norm of the inverse, QX_OVERFLOW_VALUE when Inverse() with the tolerance
  /// 1e-6 fails.
  [[nodiscard]] T ConditionNumber(qxMatrixNorm norm) const;

  /// Eigenvalues, ascending, and orthonormal eigenvectors, in the columns, of a symmetric matrix, by cyclic Jacobi
  /// rotations, 50 sweeps at most.
  ///
  /// H. Rutishauser, The Jacobi method for real symmetric matrices, Numer. Math. 9 (1966).
  /// @param tolerance bound of the symmetry, and of the sum of the absolute elements above the diagonal at which the
  ///        iteration ends; an absolute bound, so pass one that is small beside the elements
  /// Cost: some 20 n^3 multiplications for each of 6 to 10 sweeps; SymmetricEigensolveQL() is several times as fast
  /// from size 16 up. Take this one for small matrices, and where small eigenvalues of a positive definite matrix must
  /// keep their digits.
  /// @return QX_STATUS_OK, also when the sweeps were exhausted. QX_STATUS_NOT_SYMMETRIC. QX_STATUS_TOO_MANY_ROTATIONS
  ///         when the number of rotations is exactly 50, converged or not: any other tolerance may help.
  ///         QX_STATUS_OUT_OF_MEMORY. Unless it is QX_STATUS_OK, the outputs are untouched.
  [[nodiscard]] qxStatus SymmetricEigensolve(CQXVectorN<T>& values, CQXMatrixN& vectors,
                                             T tolerance = QX_PREDICATE_TOLERANCE<T>) const;
  /// Eigenvalues, ascending, and orthonormal eigenvectors, in the columns, of a symmetric matrix, by Householder's
  /// reduction to tridiagonal form and the implicit QL iteration.
  ///
  /// The errors are some rounding errors of the largest eigenvalue. Cost: some 9 n^3 operations in all. The iteration
  /// ends when every element beside the diagonal is negligible beside its neighbours on it, or without success after 30
  /// steps for one eigenvalue.
  /// H. Bowdler, R. S. Martin, C. Reinsch, J. H. Wilkinson, The QR and QL algorithms for symmetric matrices, Numer.
  /// Math. 11 (1968).
  /// @param tolerance bound of the symmetry; the lower triangle is what counts
  /// @return QX_STATUS_OK. QX_STATUS_NOT_SYMMETRIC. QX_STATUS_TOO_MANY_ROTATIONS without convergence, when an element
  /// is
  ///         not finite or an eigenvalue is beyond the range. QX_STATUS_OUT_OF_MEMORY. Unless it is QX_STATUS_OK, the
  ///         outputs are untouched.
  [[nodiscard]] qxStatus SymmetricEigensolveQL(CQXVectorN<T>& values, CQXMatrixN& vectors,
                                               T tolerance = QX_PREDICATE_TOLERANCE<T>) const;
  /// The sweeps of SymmetricEigensolve() on the symmetric matrix that @p a holds in the rows and columns from 1 to
  /// Size(); row, column and element 0 of all arguments are not used. Only the upper triangle is read; it is destroyed.
  ///
  /// Values and vectors, in the columns, are not sorted. Arguments that have no room for a last row, column or element
  /// are refused.
  /// @param sweeps on input the limit of sweeps, on output the number of rotations
  /// @return QX_STATUS_OK, also when the limit was reached; QX_STATUS_OUT_OF_MEMORY when memory was refused, or an
  ///         argument has fewer than Size() + 1 rows, columns or elements: nothing is then touched
  [[nodiscard]] qxStatus DestructiveJacobiUnitOffset(CQXMatrixN& a, CQXVectorN<T>& values, CQXMatrixN& vectors,
                                                     std::int32_t& sweeps, T tolerance) const;
  /// Rotates the elements x = a(i, j) and y = a(k, l): x := x - s (y + x tau), y := y + s (x_old - y tau).
  void JacobiRotate(CQXMatrixN& a, std::int32_t i, std::int32_t j, std::int32_t k, std::int32_t l, T s,
                    T tau) const noexcept;

  /// Spectral form of a symmetric matrix, eigenvalues ascending on the diagonal of @p D: with @p flag 0 the
  /// eigenvectors are the columns of @p P, this = P D P^T; with any other flag its rows, this = P^T D P.
  /// @param tolerance as in SymmetricEigensolve()
  /// @return 1; 0 when the matrix is not symmetric within the tolerance or memory was refused.
  [[nodiscard]] std::int32_t SpectralDecomposition(CQXMatrixN& P, CQXMatrixN& D, std::int32_t flag,
                                                   T tolerance = QX_PREDICATE_TOLERANCE<T>) const;

  /// Polar form with @p R orthogonal and @p S symmetric and positive definite: this = R S, or this = S R for @p flag 0.
  /// The determinant of R has the sign of that of this.
  ///
  /// Averages the matrix with the inverse of its transpose, both scaled, until it is orthogonal within the root of the
  /// rounding error, and once more; 100 times at most.
  /// N. J. Higham, Computing the polar decomposition - with applications, SIAM J. Sci. Stat. Comput. 7 (1986).
  /// @param tolerance bound of the absolute determinant; 0 refuses singular matrices alone
  /// @return 1; 0 when the determinant is below the tolerance, the matrix is singular or not finite, the iteration did
  ///         not converge, or memory was refused.
  [[nodiscard]] std::int32_t PolarDecomposition(CQXMatrixN& R, CQXMatrixN& S, std::int32_t flag,
                                                T tolerance = QX_PREDICATE_TOLERANCE<T>) const;

 private:
  /// Ends every assignment: what a matrix that was moved from took over is cut to its leading square.
  CQXMatrixN& TakeSize() noexcept;
  /// The sizes that Inverse() leaves to the fixed classes, whose codes it hands through.
  [[nodiscard]] bool HasClosedForm() const noexcept { return m_size >= 2 && m_size <= 4; }
  /// The one place that knows which code of Inverse() stands for success.
  [[nodiscard]] bool IsInverted(std::int32_t code) const noexcept { return code == (HasClosedForm() ? 0 : 1); }
  /// The code of Inverse() when memory was refused.
  [[nodiscard]] std::int32_t CodeOfFailure() const noexcept { return HasClosedForm() ? 3 : 0; }
  std::int32_t InverseOfTriangular(CQXMatrixN& target, T tolerance, bool isLower) const;

  std::int32_t m_size;
};

extern template class QX_API CQXMatrixN<float>;
extern template class QX_API CQXMatrixN<double>;
