#pragma once

#include <qx/foundation/api.h>
#include <qx/foundation/status.h>
#include <qx/foundation/tolerance.h>
#include <qx/matrices/matrix_norm.h>
#include <qx/vectors/fixed_array.h>

#include <cmath>
#include <cstddef>
#include <cstdint>

/// The vocabulary that CQXMatrix2, CQXMatrix3 and CQXMatrix4 share; arithmetic stands in CQXFixedArray.
///
/// An empty base over the derived class, whose N x N elements stand by rows: element (r, c) at position N r + c.
/// Indices count from 0 and are not tested. Outputs may be the matrix itself or alias each other's inputs; they stay
/// untouched on every result that is no success, unless the declaration says otherwise. Decompositions give the same
/// results as those of CQXMatrixMN and CQXMatrixN. Nothing allocates but the sort of symmetric eigenvalues; refused
/// memory is no success there: 0, or QX_STATUS_OUT_OF_MEMORY where the result is a status.
template <typename Derived, typename Vector, typename T, std::size_t N>
class QX_API CQXFixedMatrix : public CQXFixedArray<Derived, T, N * N> {
  using Array = CQXFixedArray<Derived, T, N * N>;

 protected:
  using Array::At;
  using Array::Make;
  using Array::Self;

 public:
  /// Number of rows and columns, as a constant.
  static constexpr std::size_t dimension = N;

  /// Number of rows.
  [[nodiscard]] static constexpr std::int32_t RowsNb() noexcept { return static_cast<std::int32_t>(N); }
  /// Number of columns.
  [[nodiscard]] static constexpr std::int32_t ColsNb() noexcept { return static_cast<std::int32_t>(N); }
  /// 1.
  [[nodiscard]] static constexpr std::int32_t IsSquare() noexcept { return 1; }

  /// Element in row @p r and column @p c.
  [[nodiscard]] constexpr T& operator()(std::int32_t r, std::int32_t c) noexcept {
    return Self().Data()[Position(r, c)];
  }
  /// Element in row @p r and column @p c.
  [[nodiscard]] constexpr const T& operator()(std::int32_t r, std::int32_t c) const noexcept {
    return Self().Data()[Position(r, c)];
  }
  /// Element @p i of the row-major array.
  [[nodiscard]] constexpr T& operator[](std::int32_t i) noexcept { return Self().Data()[i]; }
  /// Element @p i of the row-major array.
  [[nodiscard]] constexpr const T& operator[](std::int32_t i) const noexcept { return Self().Data()[i]; }

  /// Sets the element in row @p r and column @p c.
  constexpr void SetElement(std::int32_t r, std::int32_t c, T value) noexcept { (*this)(r, c) = value; }
  /// Multiplies the element in row @p r and column @p c by @p value.
  constexpr void MulElement(std::int32_t r, std::int32_t c, T value) noexcept { (*this)(r, c) *= value; }
  /// Adds @p value to the element in row @p r and column @p c.
  constexpr void AddToElement(std::int32_t r, std::int32_t c, T value) noexcept { (*this)(r, c) += value; }

  /// Every element := @p value.
  constexpr void SetConstant(T value) noexcept {
    Self() = Make([&](std::size_t) { return value; });
  }
  /// @p value on the diagonal, 0 elsewhere.
  constexpr void SetDiagonal(T value) noexcept {
    Self() = Make([&](std::size_t i) { return IsOnDiagonal(i) ? value : T(0); });
  }
  /// Makes this the unit matrix.
  constexpr void Unit() noexcept { SetDiagonal(1); }

  /// The elements (i, i).
  [[nodiscard]] constexpr Vector Diagonal() const noexcept {
    return MakeVector([&](std::size_t i) { return At(i * N + i); });
  }
  /// Sum of the elements (i, i), from the first to the last.
  [[nodiscard]] constexpr T Trace() const noexcept {
    return qxUnrolledSum<N>([&](std::size_t i) { return At(i * N + i); });
  }

  /// Copies row @p r to an array of N numbers.
  constexpr void Row(std::int32_t r, T* target) const noexcept { RowVector(r).Dump(target); }
  /// Copies column @p c to an array of N numbers.
  constexpr void Column(std::int32_t c, T* target) const noexcept { ColVector(c).Dump(target); }
  /// Copies an array of N numbers, which may lie in this matrix, into row @p r.
  constexpr void SetRow(std::int32_t r, const T* source) noexcept {
    const Vector row = MakeVector([&](std::size_t i) { return source[i]; });
    qxUnroll<N>([&](std::size_t i) { (*this)(r, static_cast<std::int32_t>(i)) = row.Data()[i]; });
  }
  /// Copies an array of N numbers, which may lie in this matrix, into column @p c.
  constexpr void SetColumn(std::int32_t c, const T* source) noexcept {
    const Vector column = MakeVector([&](std::size_t i) { return source[i]; });
    qxUnroll<N>([&](std::size_t i) { (*this)(static_cast<std::int32_t>(i), c) = column.Data()[i]; });
  }
  /// Row @p r.
  [[nodiscard]] constexpr Vector RowVector(std::int32_t r) const noexcept {
    return MakeVector([&](std::size_t i) { return (*this)(r, static_cast<std::int32_t>(i)); });
  }
  /// Column @p c.
  [[nodiscard]] constexpr Vector ColVector(std::int32_t c) const noexcept {
    return MakeVector([&](std::size_t i) { return (*this)(static_cast<std::int32_t>(i), c); });
  }
  /// Sets row @p r.
  constexpr void SetRowVector(std::int32_t r, const Vector& v) noexcept { SetRow(r, v.Data()); }
  /// Sets column @p c.
  constexpr void SetColVector(std::int32_t c, const Vector& v) noexcept { SetColumn(c, v.Data()); }

  // Parts of rows and columns. Indices are not tested; a count of 0 or less does nothing.

  /// this(row, column + i) := source(sourceRow, sourceColumn + i) for i from 0 below @p count, in this order.
  void CopyPartRow(std::int32_t row, std::int32_t column, std::int32_t count, std::int32_t sourceRow,
                   std::int32_t sourceColumn, const Derived& source) noexcept;
  /// this(row + i, column) := source(sourceRow + i, sourceColumn) for i from 0 below @p count, in this order.
  void CopyPartColumn(std::int32_t column, std::int32_t row, std::int32_t count, std::int32_t sourceColumn,
                      std::int32_t sourceRow, const Derived& source) noexcept;
  /// this(row, column + i) := vector[vectorStart + i] for i from 0 below @p count.
  void SetPartRowVector(std::int32_t row, std::int32_t column, std::int32_t count, std::int32_t vectorStart,
                        const Vector& vector) noexcept;
  /// this(row + i, column) := vector[vectorStart + i] for i from 0 below @p count.
  void SetPartColVector(std::int32_t column, std::int32_t row, std::int32_t count, std::int32_t vectorStart,
                        const Vector& vector) noexcept;

  /// Takes the elements of a rectangle, both ends included, from the array @p source in the order of visiting: column
  /// by column when @p byRows is 0, otherwise row by row. A range that does not lie inside the matrix does nothing.
  void FillPart(std::int32_t firstRow, std::int32_t firstColumn, std::int32_t lastRow, std::int32_t lastColumn,
                const T* source, std::int32_t byRows) noexcept;
  /// Copies a rectangle to the array @p target; range and order as in FillPart().
  void DumpPart(std::int32_t firstRow, std::int32_t firstColumn, std::int32_t lastRow, std::int32_t lastColumn,
                T* target, std::int32_t byRows) const noexcept;

  using Array::operator*;
  using Array::operator*=;

  /// Matrix product; each element is the sum over k, ascending, of this(r, k) m(k, c).
  [[nodiscard]] constexpr Derived operator*(const Derived& m) const noexcept {
    return Make([&](std::size_t i) {
      return qxUnrolledSum<N>([&](std::size_t k) { return At(i / N * N + k) * m.Data()[k * N + i % N]; });
    });
  }
  /// this := this m; @p m may be this matrix.
  constexpr Derived& operator*=(const Derived& m) noexcept { return Self() = Self() * m; }
  /// The column vector this v.
  [[nodiscard]] constexpr Vector operator*(const Vector& v) const noexcept {
    return MakeVector(
        [&](std::size_t r) { return qxUnrolledSum<N>([&](std::size_t k) { return At(r * N + k) * v.Data()[k]; }); });
  }

  /// A new matrix with rows and columns exchanged.
  [[nodiscard]] constexpr Derived Transpose() const noexcept {
    return Make([&](std::size_t i) { return At(i % N * N + i / N); });
  }
  /// This minus @p lambda on the diagonal.
  [[nodiscard]] constexpr Derived GetCharacteristicsMatrix(T lambda) const noexcept {
    return Make([&](std::size_t i) { return IsOnDiagonal(i) ? At(i) - lambda : At(i); });
  }

  /// Sets each element with abs(x) < @p tolerance to 0.
  void AnnulateSmallElements(T tolerance = QX_PREDICATE_TOLERANCE<T>) noexcept { Array::AnnulateSmall(tolerance); }
  /// Sets each element off the diagonal to 0 when abs(x) 10^power is below the smaller of abs(a(i, i)) and
  /// abs(a(j, j)), the diagonal elements of its row and column.
  void AnnulateRelativelyDiagonal(std::int32_t power) noexcept;

  // Predicates: 1 or 0. The bounds are closed: a difference of exactly the tolerance passes; not a number does not.

  /// abs(x) <= tolerance for every element.
  [[nodiscard]] std::int32_t IsAlmostZero(T tolerance = QX_PREDICATE_TOLERANCE<T>) const noexcept {
    return Array::All([&](std::size_t i) { return std::abs(At(i)) <= tolerance; });
  }
  /// Every element is within the tolerance of the unit matrix.
  [[nodiscard]] std::int32_t IsUnit(T tolerance = QX_PREDICATE_TOLERANCE<T>) const noexcept {
    return Array::All([&](std::size_t i) { return IsLikeUnit(i, tolerance); });
  }
  /// abs(x) <= tolerance for every element off the diagonal.
  [[nodiscard]] std::int32_t IsDiagonal(T tolerance = QX_PREDICATE_TOLERANCE<T>) const noexcept {
    return Array::All([&](std::size_t i) { return IsOnDiagonal(i) || std::abs(At(i)) <= tolerance; });
  }
  /// abs(a(i, j) - a(j, i)) <= tolerance for i < j.
  [[nodiscard]] std::int32_t IsSymmetric(T tolerance = QX_PREDICATE_TOLERANCE<T>) const noexcept {
    return Array::All(
        [&](std::size_t i) { return i / N >= i % N || std::abs(At(i) - At(i % N * N + i / N)) <= tolerance; });
  }
  /// The transpose times this is within the tolerance of the unit matrix, element by element.
  [[nodiscard]] std::int32_t IsOrthogonal(T tolerance = QX_PREDICATE_TOLERANCE<T>) const noexcept {
    return (Transpose() * Self()).IsUnit(tolerance);
  }
  /// abs(Det()) < tolerance.
  [[nodiscard]] std::int32_t IsSingular(T tolerance = QX_PREDICATE_TOLERANCE<T>) const noexcept {
    return std::abs(Self().Det()) < tolerance;
  }
  /// The whole matrix is diagonal within the tolerance. CQXMatrix4 tests its upper left block.
  [[nodiscard]] std::int32_t IsScaling(T tolerance = QX_PREDICATE_TOLERANCE<T>) const noexcept {
    return IsDiagonal(tolerance);
  }
  /// The whole matrix is orthogonal within the tolerance and its determinant is positive. CQXMatrix4 tests its upper
  /// left block.
  [[nodiscard]] std::int32_t IsRotation(T tolerance = QX_PREDICATE_TOLERANCE<T>) const noexcept {
    return IsOrthogonal(tolerance) != 0 && Self().Det() > 0;
  }
  /// Every element outside the last column, and the last one of the diagonal, is within the tolerance of the unit
  /// matrix.
  [[nodiscard]] std::int32_t IsTranslation(T tolerance = QX_PREDICATE_TOLERANCE<T>) const noexcept requires(N > 2) {
    return Array::All([&](std::size_t i) { return (i % N == N - 1 && !IsOnDiagonal(i)) || IsLikeUnit(i, tolerance); });
  }
  /// The last row is within the tolerance of (0, ..., 0, 1).
  [[nodiscard]] std::int32_t IsCoordinateMatrix(T tolerance = QX_PREDICATE_TOLERANCE<T>) const noexcept
      requires(N > 2) {
    return Array::All([&](std::size_t i) { return i / N < N - 1 || IsLikeUnit(i, tolerance); });
  }

  /// Mean of all elements.
  [[nodiscard]] constexpr T Mean() const noexcept {
    return qxUnrolledSum<N * N>([&](std::size_t i) { return At(i); }) / T(N * N);
  }
  /// Sum of the products of corresponding elements.
  [[nodiscard]] constexpr T InnerProduct(const Derived& m) const noexcept {
    return qxUnrolledSum<N * N>([&](std::size_t i) { return At(i) * m.Data()[i]; });
  }
  /// Pearson's coefficient of correlation of corresponding elements, from -1 to 1; 0 when the elements of one matrix
  /// do not vary.
  [[nodiscard]] T CorrelationCoefficient(const Derived& m) const noexcept;

  /// The norm of the given kind; not a number when an element is not. The Euclidean one goes through the guarded root;
  /// the spectral one is not a number either when the singular numbers cannot be had.
  [[nodiscard]] T Norm(qxMatrixNorm norm) const noexcept;

  /// Solves this x = b through Inverse().
  /// @param tolerance what the absolute determinant is compared with
  /// @return 1; 0 when the matrix is singular within the tolerance, and @p x is untouched.
  [[nodiscard]] std::int32_t SolveSystem(const Vector& b, Vector& x,
                                         T tolerance = QX_PREDICATE_TOLERANCE<T>) const noexcept {
    Derived inverse;
    if (Self().Inverse(inverse, tolerance) != 0) return 0;
    x = inverse * b;
    return 1;
  }
  /// Solves this x = b, and gives the condition number in the given norm.
  /// @return 1; 0 when the matrix is singular: @p x is untouched and the condition number is QX_OVERFLOW_VALUE.
  [[nodiscard]] std::int32_t SolveSystem(const Vector& b, Vector& x, qxMatrixNorm norm, T tolerance,
                                         T& conditionNumber) const noexcept;

  /// Inverse and condition number in the given norm: norm times norm of the inverse.
  ///
  /// The results differ from those of the plain form, which gives 0 for success.
  /// @return 1; 0 when the matrix is singular: @p target is untouched and the condition number is QX_OVERFLOW_VALUE.
  [[nodiscard]] std::int32_t Inverse(Derived& target, qxMatrixNorm norm, T tolerance,
                                     T& conditionNumber) const noexcept;

  /// Inverse of a diagonal matrix; elements off the diagonal must be within 1e-6 of zero. The target is set to 0 first.
  /// @param tolerance what the absolute diagonal elements are compared with
  /// @return 1; 0 when the matrix is not diagonal or a diagonal element is below the tolerance: the target is zero.
  [[nodiscard]] std::int32_t DiagInverse(Derived& target, T tolerance = QX_PREDICATE_TOLERANCE<T>) const noexcept;

  /// Doolittle's factors this = L U without exchange of rows; the diagonal of L is 1. Both are set to 0 first.
  /// @param tolerance what the absolute pivots are compared with
  /// @return 1; 0 when a pivot is below the tolerance, and both factors are left half filled.
  [[nodiscard]] std::int32_t LU_Decomposition(Derived& L, Derived& U,
                                              T tolerance = QX_PREDICATE_TOLERANCE<T>) const noexcept;
  /// Householder's factors this = Q R: Q orthogonal, R upper triangular.
  /// @return 1 for every finite matrix.
  [[nodiscard]] std::int32_t QR_Decomposition(Derived& Q, Derived& R,
                                              T tolerance = QX_PREDICATE_TOLERANCE<T>) const noexcept;

  /// Singular values, this = U diag(singular) V^T, descending and not negative.
  /// @return 0; 1 when the iteration did not converge, an element is not finite or a singular number is beyond the
  /// range.
  [[nodiscard]] std::int32_t SV_Decomposition(Derived& U, Derived& V, Vector& singular,
                                              T tolerance = QX_PREDICATE_TOLERANCE<T>) const noexcept;
  /// The singular numbers alone; results as in SV_Decomposition().
  [[nodiscard]] std::int32_t CalculateSingularNumbers(Vector& singular,
                                                      T tolerance = QX_PREDICATE_TOLERANCE<T>) const noexcept;
  /// Number of singular numbers above the tolerance; -1 when they cannot be had.
  [[nodiscard]] std::int32_t CalculateRank(T tolerance = QX_PREDICATE_TOLERANCE<T>) const noexcept;
  /// Condition number in the given norm; QX_OVERFLOW_VALUE for a singular matrix.
  ///
  /// Spectral: the largest over the smallest singular number, singular when the smallest is not above 1e-6. Other
  /// norms: norm times norm of the inverse, singular when the absolute determinant is below 1e-6.
  [[nodiscard]] T ConditionNumber(qxMatrixNorm norm) const noexcept;

  /// Eigenvalues, ascending, and eigenvectors, in the columns, of a symmetric matrix.
  /// @param tolerance bound of the symmetry and of the sum of the elements off the diagonal
  /// @return status of CQXMatrixN::SymmetricEigensolve; the outputs are untouched unless it is QX_STATUS_OK.
  [[nodiscard]] qxStatus SymmetricEigensolve(Vector& values, Derived& vectors,
                                             T tolerance = QX_PREDICATE_TOLERANCE<T>) const;
  /// Spectral form of a symmetric matrix: with @p flag 0 this = P D P^T, the eigenvectors in the columns of P; with
  /// another flag they stand in its rows, this = P^T D P. Eigenvalues ascend along the diagonal of D.
  /// @param tolerance as in SymmetricEigensolve()
  /// @return 1; 0 when the matrix is not symmetric within the tolerance.
  [[nodiscard]] std::int32_t SpectralDecomposition(Derived& P, Derived& D, std::int32_t flag,
                                                   T tolerance = QX_PREDICATE_TOLERANCE<T>) const;

  /// Polar form: @p flag other than 0 gives this = Q S, flag 0 gives this = S Q, with Q orthogonal and S symmetric and
  /// positive definite. CQXMatrix2 has it the other way round.
  ///
  /// Q has the sign of the determinant of this: it may contain a reflection.
  /// @param tolerance what the absolute determinant is compared with
  /// @return as CQXMatrixN::PolarDecomposition()
  [[nodiscard]] std::int32_t PolarDecomposition(Derived& Q, Derived& S, std::int32_t flag,
                                                T tolerance = QX_PREDICATE_TOLERANCE<T>) const noexcept requires(N > 2);
  /// The orthogonal factor of the polar form.
  /// @return 1; 0 when the absolute determinant is below the tolerance.
  [[nodiscard]] std::int32_t ExtractOrthogonal(Derived& Q, T tolerance = QX_PREDICATE_TOLERANCE<T>) const noexcept;

 protected:
  [[nodiscard]] static constexpr std::size_t Position(std::int32_t r, std::int32_t c) noexcept {
    return static_cast<std::size_t>(r) * N + static_cast<std::size_t>(c);
  }
  [[nodiscard]] static constexpr bool IsOnDiagonal(std::size_t i) noexcept { return i / N == i % N; }
  [[nodiscard]] bool IsLikeUnit(std::size_t i, T tolerance) const noexcept {
    return std::abs(IsOnDiagonal(i) ? At(i) - 1 : At(i)) <= tolerance;
  }

  template <typename Function>
  [[nodiscard, gnu::always_inline]] static constexpr Vector MakeVector(Function component) noexcept {
    return [&]<std::size_t... I>(std::index_sequence<I...>) { return Vector(component(I)...); }
    (std::make_index_sequence<N>{});
  }

  /// Rotates by an angle in radians in the plane of the axes First and Second: from the left the two rows become
  /// c first - s second and s first + c second; from the right, with @p flag 0, the two columns become
  /// c first + s second and c second - s first.
  template <std::int32_t First, std::int32_t Second>
  void RotatePlane(T angleInRadians, std::int32_t flag) noexcept {
    const T c = std::cos(angleInRadians);
    const T s = std::sin(angleInRadians);
    // Sums alone: g++ makes fused operations of alternating sums and differences where it may, options regardless.
    if (flag != 0) {
      const Vector first = RowVector(First);
      const Vector second = RowVector(Second);
      SetRowVector(First, first * c + second * -s);  // sums alone, which no compiler fuses
      SetRowVector(Second, first * s + second * c);
    } else {
      const Vector first = ColVector(First);
      const Vector second = ColVector(Second);
      SetColVector(First, first * c + second * s);
      SetColVector(Second, second * c + first * -s);
    }
  }
  /// Multiplies row, with @p flag 0 column, @p i by @p factor.
  constexpr void ScaleAxis(std::int32_t i, T factor, std::int32_t flag) noexcept {
    if (flag != 0) {
      SetRowVector(i, RowVector(i) * factor);
    } else {
      SetColVector(i, ColVector(i) * factor);
    }
  }

 private:
  [[nodiscard]] static bool IsInside(std::int32_t firstRow, std::int32_t firstColumn, std::int32_t lastRow,
                                     std::int32_t lastColumn) noexcept;
};

/// True for CQXMatrix2, CQXMatrix3 and CQXMatrix4.
template <typename M>
inline constexpr bool qxIsFixedMatrix = false;

/// CQXMatrix2, CQXMatrix3 or CQXMatrix4.
template <typename M>
concept qxFixedMatrix = qxIsFixedMatrix<M>;

/// 1 when abs(a - b) <= tolerance for every pair of elements.
template <qxFixedMatrix M>
[[nodiscard]] inline std::int32_t qxAreAlmostEqual(
    const M& a, const M& b, typename M::Element tolerance = QX_TOLERANCE<typename M::Element>) noexcept {
  return (a - b).IsAlmostZero(tolerance);
}
