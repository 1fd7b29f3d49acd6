#pragma once

#include <qx/foundation/rotations_order.h>
#include <qx/foundation/scalar.h>
#include <qx/matrices/fixed_matrix.h>
#include <qx/matrices/internal/fixed_lanes.h>
#include <qx/matrices/matrix2.h>
#include <qx/vectors/vector3.h>

#include <cmath>
#include <concepts>
#include <cstdint>
#include <type_traits>

/// 3x3 matrix: a plain value of nine elements by rows, no heap and no virtual operation, with closed-form inverse and
/// eigenvalues, eigenvectors by elimination, and rotations.
///
/// It stands for a linear map of space, or for a 2D coordinate matrix with the translation in its last column
/// (Rotate(), Scale(), Translate()). Matrices act on column vectors. Arithmetic, predicates and what is handed to the
/// run-time-sized classes stand in CQXFixedMatrix and CQXFixedArray. Distinct matrices may be used from different
/// threads.
template <qxReal T>
class QX_API CQXMatrix3 : public CQXFixedMatrix<CQXMatrix3<T>, CQXVector3<T>, T, 3> {
  using Base = CQXFixedMatrix<CQXMatrix3<T>, CQXVector3<T>, T, 3>;

 public:
  /// Type of the rows and columns.
  using Vector = CQXVector3<T>;

  /// Zero matrix.
  constexpr CQXMatrix3() noexcept : m_c{} {}
  /// Zero matrix; both integers are ignored.
  template <std::integral Rows, std::integral Columns>
  explicit constexpr CQXMatrix3(Rows, Columns) noexcept : m_c{} {}
  /// The elements by rows.
  constexpr CQXMatrix3(T m00, T m01, T m02, T m10, T m11, T m12, T m20, T m21, T m22) noexcept
      : m_c{m00, m01, m02, m10, m11, m12, m20, m21, m22} {}
  /// Reads nine elements by rows.
  explicit constexpr CQXMatrix3(const T* source) noexcept
      : m_c{source[0], source[1], source[2], source[3], source[4], source[5], source[6], source[7], source[8]} {}

  /// The elements by rows.
  [[nodiscard]] constexpr T* Data() noexcept { return m_c; }
  /// The elements by rows.
  [[nodiscard]] constexpr const T* Data() const noexcept { return m_c; }

  using Base::operator*;
  /// Matrix product; each element is the sum over k, ascending, of this(r, k) m(k, c).
  [[nodiscard]] constexpr CQXMatrix3 operator*(const CQXMatrix3& m) const noexcept {
    if (std::is_constant_evaluated()) return Base::operator*(m);
    CQXMatrix3 product;
    qxFixedLanes::Multiply<3>(m_c, m.m_c, product.m_c);
    return product;
  }

  /// Determinant, expanded along the first row.
  [[nodiscard]] constexpr T Det() const noexcept {
    return m_c[0] * Minor(4, 5, 7, 8) - m_c[1] * Minor(3, 5, 6, 8) + m_c[2] * Minor(3, 4, 6, 7);
  }

  using Base::Inverse;
  /// Inverse in closed form: cofactors times 1 / det; @p target may be this matrix.
  /// @param tolerance what the absolute determinant is compared with
  /// @return 0; 3 when the determinant is below the tolerance, and @p target is untouched.
  [[nodiscard]] std::int32_t Inverse(CQXMatrix3& target, T tolerance = QX_PREDICATE_TOLERANCE<T>) const noexcept {
    const T c00 = Minor(4, 5, 7, 8);
    const T c01 = Minor(3, 5, 6, 8);
    const T c02 = Minor(3, 4, 6, 7);
    const T det = m_c[0] * c00 - m_c[1] * c01 + m_c[2] * c02;
    if (std::abs(det) < tolerance) return 3;
    const T d = 1 / det;
    target = {c00 * d,  Minor(2, 1, 8, 7) * d, Minor(1, 2, 4, 5) * d,
              -c01 * d, Minor(0, 2, 6, 8) * d, Minor(2, 0, 5, 3) * d,
              c02 * d,  Minor(1, 0, 7, 6) * d, Minor(0, 1, 3, 4) * d};
    return 0;
  }
  /// Inverse of a 2D coordinate matrix, (A^-1 | -A^-1 d) over the exact row (0, 0, 1); the last row is not read.
  /// @param tolerance what the absolute determinant of the upper left block A is compared with
  /// @return 0; 3 when the determinant is below the tolerance, and @p target is untouched.
  [[nodiscard]] std::int32_t InverseCoordinateMatrix(CQXMatrix3& target,
                                                     T tolerance = QX_PREDICATE_TOLERANCE<T>) const noexcept {
    CQXMatrix2<T> inverse;
    if (CQXMatrix2<T>(m_c[0], m_c[1], m_c[3], m_c[4]).Inverse(inverse, tolerance) != 0) return 3;
    const CQXVector2<T> d = inverse * CQXVector2<T>(m_c[2], m_c[5]);
    target = {inverse[0], inverse[1], -d.X(), inverse[2], inverse[3], -d.Y(), 0, 0, 1};
    return 0;
  }

  // Helpers of the eigenvectors.

  /// The two indices other than @p i, ascending.
  static constexpr void GetPairOfIndices(std::int32_t i, std::int32_t& a, std::int32_t& b) noexcept {
    a = i == 0 ? 1 : 0;
    b = i == 2 ? 1 : 2;
  }
  /// The index that is neither @p i nor @p j; 0 when the sum is neither 1 nor 2.
  [[nodiscard]] static constexpr std::int32_t GetThirdIndex(std::int32_t i, std::int32_t j) noexcept {
    return i + j == 1 ? 2 : i + j == 2 ? 1 : 0;
  }
  /// a(r1, c1) a(r2, c2) - a(r1, c2) a(r2, c1).
  [[nodiscard]] constexpr T CalculateMinor(std::int32_t r1, std::int32_t r2, std::int32_t c1,
                                           std::int32_t c2) const noexcept {
    return (*this)(r1, c1) * (*this)(r2, c2) - (*this)(r1, c2) * (*this)(r2, c1);
  }
  /// The minor less @p im squared: the real part of the minor when i @p im is subtracted on the diagonal.
  [[nodiscard]] constexpr T CalculateMinorSubtrIm(std::int32_t r1, std::int32_t r2, std::int32_t c1, std::int32_t c2,
                                                  T im) const noexcept {
    return CalculateMinor(r1, r2, c1, c2) - im * im;
  }
  /// The columns of the largest of the three absolute minors of two rows; of equal ones (0, 1) goes before (0, 2)
  /// before (1, 2).
  void GetMainMinorColumns(std::int32_t r1, std::int32_t r2, std::int32_t& c1, std::int32_t& c2) const noexcept;
  /// Two vectors orthogonal to a row: with k the index of its largest absolute element, of equal ones the lowest, and
  /// i < j the others, (1 at i, -a(row, i) / a(row, k) at k) and (1 at j, -a(row, j) / a(row, k) at k).
  /// @param target room for six numbers; not a number is among them when the row is zero
  void FindEigenvectorsFromRow(std::int32_t row, T* target) const noexcept;
  /// 1 when the rows are colinear by qxAreColinear() within the tolerance.
  [[nodiscard]] std::int32_t TestRowsForDependence(std::int32_t r1, std::int32_t r2,
                                                   T tolerance = QX_PREDICATE_TOLERANCE<T>) const noexcept;
  /// The same for the complex rows of this - i @p im I: 1 when the magnitudes of all three minors are below M times the
  /// tolerance, M being the largest absolute real or imaginary part in both rows, or when M is below the tolerance.
  [[nodiscard]] std::int32_t TestComplexRowsForDependence(std::int32_t r1, std::int32_t r2, T im,
                                                          T tolerance = QX_PREDICATE_TOLERANCE<T>) const noexcept;
  /// Writes the index of each row with all abs(x) <= tolerance to @p target, room for three.
  /// @return their number.
  std::int32_t FindZeroRows(std::int32_t* target, T tolerance = QX_PREDICATE_TOLERANCE<T>) const noexcept;
  /// The same with the indices as numbers of the element type.
  std::int32_t FindZeroRows(T* target, T tolerance = QX_PREDICATE_TOLERANCE<T>) const noexcept;

  /// Eigenvalues by CQXAlgebra::SolveReducedCubic. Each value with abs(x) <= tolerance becomes 0.
  /// @param tolerance also the bound of that function
  /// @return 3: three real values, not sorted; 2: @p a and a double value in @p b and @p c; 1: @p a is real, @p b and
  /// @p c are the real and the imaginary part of a complex pair.
  std::int32_t FindEigenvalues(T& a, T& b, T& c, T tolerance = QX_PREDICATE_TOLERANCE<T>) const noexcept;

  /// Eigenvectors of a real eigenvalue, not normalised: one component of each is 1.
  /// @param target room for nine numbers, vector after vector
  /// @param tolerance elements of this - lambda I with a smaller absolute value count as 0; also the tolerance of the
  /// tests for zero and colinear rows
  /// @return number of independent vectors that were written, from 1 to 3.
  std::int32_t FindEigenvectorsReal(T lambda, T* target, T tolerance = QX_PREDICATE_TOLERANCE<T>) const noexcept;

  /// Eigenvector of a complex eigenvalue: the largest of the three complex cross products of the rows of
  /// this - lambda I, not normalised.
  /// @param v is given three elements when it has another dimension (0 is returned when memory is refused); they are
  /// written exactly
  /// @param tolerance as in TestComplexRowsForDependence()
  /// @return 1; 0 when the rows are pairwise dependent within the tolerance, and @p v is untouched.
  std::int32_t FindEigenvectorComplex(const CQXComplex<T>& lambda, CQXBaseVector<CQXComplex<T>>& v,
                                      T tolerance = QX_PREDICATE_TOLERANCE<T>) const;

  /// A solution of this x = b by CQXAlgebra::Solve3x3System, also for a singular matrix.
  /// @param tolerance what the absolute determinant and the numerators of Cramer's rule are compared with
  /// @return 1: the solution; -2: one of many, equations that were not needed for it are not tested; -1: there is none,
  /// and @p x is zero.
  [[nodiscard]] std::int32_t FindAnySolution(const CQXVector3<T>& b, CQXVector3<T>& x,
                                             T tolerance = QX_PREDICATE_TOLERANCE<T>) const noexcept;

  // Rotations.

  /// Makes this the rotation by three angles in degrees, about X, Y and Z in this order of arguments; the order tells
  /// in which sequence they act on a column vector. A value outside the enumeration leaves the matrix as it is.
  void SetRotationByEulerAngles(T axInDegrees, T ayInDegrees, T azInDegrees, qxRotationsOrder order) noexcept;
  /// The angles in degrees, in [-180, 180), that rebuild this rotation in the given order.
  ///
  /// The angle of the middle rotation is an arc sine, from -90 to 90. Where it is at +-90 within 1e-6 of its cosine
  /// (the gimbal lock) only a sum or a difference of the other two is determined, and each gets half of it. For a
  /// matrix that is no rotation the sines and cosines are clamped to [-1, 1]. An order outside the enumeration leaves
  /// the outputs untouched.
  void ExtractEulerAngles(qxRotationsOrder order, T& axInDegrees, T& ayInDegrees, T& azInDegrees) const noexcept;
  /// Makes this the right-handed rotation by an angle in degrees about an axis. The axis needs no unit length; one that
  /// is too short to be normalised is used as it is, and gives no rotation.
  void SetRotationByAngleAxis(T angleInDegrees, const CQXVector3<T>& axis) noexcept;
  /// The angle in degrees, in [-180, 180), and the unit axis of this rotation. A rotation by almost nothing has the
  /// angle 0 and the zero vector as its axis.
  void ExtractRotationAngleAxis(T& angleInDegrees, CQXVector3<T>& axis) const noexcept;

  /// Takes this linear map apart into a rotation and a stretch S = V D V^T along orthogonal axes.
  ///
  /// @p side other than 0: this = Q S, out1 = Q, out2 = D, out3 = V; side 0: this = S Q, out1 = V, out2 = D, out3 = Q.
  /// V is a proper rotation and D diagonal; when S is diagonal within the tolerance already, D = S and V is the unit
  /// matrix. Q may reflect and is not negated: that is left to the caller.
  /// @param hasStretch 0 when S is diagonal: D then keeps the order of the axes; otherwise 1
  /// @param reflection 1 when det(Q) < 0, otherwise 0
  /// @return 1; 0 when the absolute determinant is below the tolerance, and all outputs are untouched.
  [[nodiscard]] std::int32_t ExtractScaleRotation(CQXMatrix3& out1, CQXMatrix3& out2, CQXMatrix3& out3,
                                                  std::int32_t side, T tolerance, std::int32_t& hasStretch,
                                                  std::int32_t& reflection) const;

  // 2D coordinate matrix. A flag other than 0 multiplies the motion from the left, so that it acts last; 0 from the
  // right, so that it acts first.

  /// Rotation by an angle in radians, counter-clockwise.
  void Rotate(T angleInRadians, std::int32_t flag) noexcept { Base::template RotatePlane<0, 1>(angleInRadians, flag); }
  /// Scaling.
  constexpr void Scale(T sx, T sy, std::int32_t flag) noexcept {
    Base::ScaleAxis(0, sx, flag);
    Base::ScaleAxis(1, sy, flag);
  }
  /// Translation. From the right, only the first two elements of the last column change.
  constexpr void Translate(T tx, T ty, std::int32_t flag) noexcept {
    if (flag != 0) {
      const CQXVector3<T> last = Base::RowVector(2);
      Base::SetRowVector(0, Base::RowVector(0) + last * tx);
      Base::SetRowVector(1, Base::RowVector(1) + last * ty);
    } else {
      m_c[2] = m_c[0] * tx + m_c[1] * ty + m_c[2];
      m_c[5] = m_c[3] * tx + m_c[4] * ty + m_c[5];
    }
  }

 private:
  /// The 2x2 determinant of four elements of the array.
  [[nodiscard]] constexpr T Minor(std::size_t a, std::size_t b, std::size_t c, std::size_t d) const noexcept {
    return m_c[a] * m_c[d] - m_c[b] * m_c[c];
  }

  T m_c[9];
};

/// @p m in the upper left of the unit matrix.
template <qxReal T>
[[nodiscard]] constexpr CQXMatrix3<T> qxMatrix2To3(const CQXMatrix2<T>& m) noexcept {
  return {m[0], m[1], 0, m[2], m[3], 0, 0, 0, 1};
}
/// The upper left 2x2 block.
template <qxReal T>
[[nodiscard]] constexpr CQXMatrix2<T> qxMatrix3To2(const CQXMatrix3<T>& m) noexcept {
  return {m[0], m[1], m[3], m[4]};
}

template <qxReal T>
inline constexpr bool qxIsFixedMatrix<CQXMatrix3<T>> = true;

extern template class QX_API CQXFixedMatrix<CQXMatrix3<float>, CQXVector3<float>, float, 3>;
extern template class QX_API CQXFixedMatrix<CQXMatrix3<double>, CQXVector3<double>, double, 3>;
extern template class QX_API CQXMatrix3<float>;
extern template class QX_API CQXMatrix3<double>;

static_assert(std::is_trivially_copyable_v<CQXMatrix3<float>> && std::is_standard_layout_v<CQXMatrix3<float>>);
static_assert(sizeof(CQXMatrix3<float>) == 9 * sizeof(float) && sizeof(CQXMatrix3<double>) == 9 * sizeof(double));
