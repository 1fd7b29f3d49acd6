#pragma once

#include <qx/foundation/scalar.h>
#include <qx/matrices/fixed_matrix.h>
#include <qx/vectors/vector2.h>

#include <cmath>
#include <concepts>
#include <cstdint>
#include <type_traits>

template <qxReal T>
class CQXComplex;
template <typename T>
class CQXBaseVector;

/// 2x2 matrix: a plain value of four elements by rows, no heap and no virtual operation, with closed-form inverse,
/// eigenvalues, eigenvectors and polar decomposition.
///
/// Arithmetic, predicates and what is handed to the run-time-sized classes stand in CQXFixedMatrix and CQXFixedArray.
/// Distinct matrices may be used from different threads.
template <qxReal T>
class QX_API CQXMatrix2 : public CQXFixedMatrix<CQXMatrix2<T>, CQXVector2<T>, T, 2> {
  using Base = CQXFixedMatrix<CQXMatrix2<T>, CQXVector2<T>, T, 2>;

 public:
  /// Type of the rows and columns.
  using Vector = CQXVector2<T>;

  /// Zero matrix.
  constexpr CQXMatrix2() noexcept : m_c{} {}
  /// Zero matrix; both integers are ignored.
  template <std::integral Rows, std::integral Columns>
  explicit constexpr CQXMatrix2(Rows, Columns) noexcept : m_c{} {}
  /// The elements by rows.
  constexpr CQXMatrix2(T m00, T m01, T m10, T m11) noexcept : m_c{m00, m01, m10, m11} {}
  /// Reads four elements by rows.
  explicit constexpr CQXMatrix2(const T* source) noexcept : m_c{source[0], source[1], source[2], source[3]} {}

  /// The elements by rows.
  [[nodiscard]] constexpr T* Data() noexcept { return m_c; }
  /// The elements by rows.
  [[nodiscard]] constexpr const T* Data() const noexcept { return m_c; }

  /// Copies the two rows to arrays of two numbers.
  constexpr void Get2DMatrix(T* row0, T* row1) const noexcept {
    Base::Row(0, row0);
    Base::Row(1, row1);
  }

  /// Determinant.
  [[nodiscard]] constexpr T Det() const noexcept { return m_c[0] * m_c[3] - m_c[1] * m_c[2]; }

  using Base::Inverse;
  /// Inverse in closed form; @p target may be this matrix.
  /// @param tolerance what the absolute determinant is compared with
  /// @return 0; 3 when the determinant is below the tolerance, and @p target is untouched.
  [[nodiscard]] std::int32_t Inverse(CQXMatrix2& target, T tolerance = QX_PREDICATE_TOLERANCE<T>) const noexcept {
    const T det = Det();
    if (std::abs(det) < tolerance) return 3;
    const T d = 1 / det;
    target = {m_c[3] * d, -m_c[1] * d, -m_c[2] * d, m_c[0] * d};
    return 0;
  }

  /// Eigenvalues by CQXAlgebra::SolveReducedQuadratic. Each value with abs(x) <= tolerance becomes 0.
  /// @param tolerance also the band of the discriminant that counts as a double root
  /// @return 2: two real values; 1: a double value in both; 0: a complex pair, @p a the real and @p b the positive
  /// imaginary part.
  std::int32_t FindEigenvalues(T& a, T& b, T tolerance = QX_PREDICATE_TOLERANCE<T>) const noexcept;

  /// Eigenvectors of a real eigenvalue, not normalised: one component is 1.
  /// @param target room for two vectors
  /// @param tolerance elements of this - lambda I with a smaller absolute value count as 0
  /// @return number of vectors: 2, the unit vectors, when nothing is left of the matrix, otherwise 1.
  std::int32_t FindEigenvectorsReal(T lambda, T* target, T tolerance = QX_PREDICATE_TOLERANCE<T>) const noexcept;

  /// Eigenvector of a complex eigenvalue: (1, (lambda - a00) / a01) or ((lambda - a11) / a10, 1), whichever divides by
  /// the larger element.
  /// @param v is given two elements when it has another dimension (0 is returned when memory is refused); they are
  /// written exactly
  /// @param tolerance what abs(a01) and abs(a10) are compared with
  /// @return 1; 0 when both are below the tolerance, and @p v is (1, 0).
  std::int32_t FindEigenvectorComplex(const CQXComplex<T>& lambda, CQXBaseVector<CQXComplex<T>>& v,
                                      T tolerance = QX_PREDICATE_TOLERANCE<T>) const;

  /// Polar form in closed form: with @p side 0 this = U P, otherwise this = P U; U is orthogonal and P symmetric.
  ///
  /// CQXMatrix3, CQXMatrix4 and CQXMatrixN have the sides the other way round. A negative determinant gives a U that
  /// reflects. When the first column of the unscaled factor has the guarded length 0 the division is left to run.
  /// @param tolerance what the absolute determinant is compared with
  /// @return 1; 0 when the determinant is below the tolerance.
  [[nodiscard]] std::int32_t PolarDecomposition(CQXMatrix2& U, CQXMatrix2& P, std::int32_t side,
                                                T tolerance = QX_PREDICATE_TOLERANCE<T>) const noexcept;

 private:
  T m_c[4];
};

template <qxReal T>
inline constexpr bool qxIsFixedMatrix<CQXMatrix2<T>> = true;

extern template class QX_API CQXFixedMatrix<CQXMatrix2<float>, CQXVector2<float>, float, 2>;
extern template class QX_API CQXFixedMatrix<CQXMatrix2<double>, CQXVector2<double>, double, 2>;
extern template class QX_API CQXMatrix2<float>;
extern template class QX_API CQXMatrix2<double>;

static_assert(std::is_trivially_copyable_v<CQXMatrix2<float>> && std::is_standard_layout_v<CQXMatrix2<float>>);
static_assert(sizeof(CQXMatrix2<float>) == 4 * sizeof(float) && sizeof(CQXMatrix2<double>) == 4 * sizeof(double));
