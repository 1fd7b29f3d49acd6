#pragma once

#include <qx/foundation/scalar.h>
#include <qx/matrices/fixed_matrix.h>
#include <qx/matrices/internal/fixed_lanes.h>
#include <qx/matrices/matrix3.h>
#include <qx/vectors/vector3.h>
#include <qx/vectors/vector4.h>

#include <cmath>
#include <concepts>
#include <cstdint>
#include <type_traits>

/// 4x4 matrix of homogeneous coordinates: a plain value of sixteen elements by rows, no heap and no virtual operation.
///
/// Matrices act on column vectors; the last column of a coordinate matrix, whose last row is (0, 0, 0, 1), holds the
/// translation. Arithmetic, predicates and what is handed to the run-time-sized classes stand in CQXFixedMatrix and
/// CQXFixedArray. Distinct matrices may be used from different threads.
template <qxReal T>
class QX_API CQXMatrix4 : public CQXFixedMatrix<CQXMatrix4<T>, CQXVector4<T>, T, 4> {
  using Base = CQXFixedMatrix<CQXMatrix4<T>, CQXVector4<T>, T, 4>;

 public:
  /// Type of the rows and columns.
  using Vector = CQXVector4<T>;

  /// Zero matrix.
  constexpr CQXMatrix4() noexcept : m_c{} {}
  /// Zero matrix; both integers are ignored.
  template <std::integral Rows, std::integral Columns>
  explicit constexpr CQXMatrix4(Rows, Columns) noexcept : m_c{} {}
  /// The elements by rows.
  constexpr CQXMatrix4(T m00, T m01, T m02, T m03, T m10, T m11, T m12, T m13, T m20, T m21, T m22, T m23, T m30, T m31,
                       T m32, T m33) noexcept
      : m_c{m00, m01, m02, m03, m10, m11, m12, m13, m20, m21, m22, m23, m30, m31, m32, m33} {}
  /// Reads sixteen elements by rows.
  explicit constexpr CQXMatrix4(const T* source) noexcept : m_c{} { Base::Fill(source); }

  /// The elements by rows.
  [[nodiscard]] constexpr T* Data() noexcept { return m_c; }
  /// The elements by rows.
  [[nodiscard]] constexpr const T* Data() const noexcept { return m_c; }

  /// The upper left 3x3 block.
  [[nodiscard]] constexpr CQXMatrix3<T> GetMatrix() const noexcept {
    return {m_c[0], m_c[1], m_c[2], m_c[4], m_c[5], m_c[6], m_c[8], m_c[9], m_c[10]};
  }
  /// The first three elements of the last column.
  [[nodiscard]] constexpr CQXVector3<T> ExtractTranslation() const noexcept { return {m_c[3], m_c[7], m_c[11]}; }
  /// The first three elements of the diagonal.
  [[nodiscard]] constexpr CQXVector3<T> Diagonal3() const noexcept { return {m_c[0], m_c[5], m_c[10]}; }

  using Base::operator*;
  /// Matrix product; each element is the sum over k, ascending, of this(r, k) m(k, c).
  [[nodiscard]] constexpr CQXMatrix4 operator*(const CQXMatrix4& m) const noexcept {
    if (std::is_constant_evaluated()) return Base::operator*(m);
    CQXMatrix4 product;
    qxFixedLanes::Multiply<4>(m_c, m.m_c, product.m_c);
    return product;
  }
  /// The column vector this v.
  [[nodiscard]] constexpr CQXVector4<T> operator*(const CQXVector4<T>& v) const noexcept {
    if (std::is_constant_evaluated()) return Base::operator*(v);
    CQXVector4<T> product;
    qxFixedLanes::Apply4(m_c, v.Data(), product.Data());
    return product;
  }

  /// Determinant, expanded by the minors of the first two rows and their complements.
  [[nodiscard]] constexpr T Det() const noexcept {
    return qxFixedLanes::Determinant(qxFixedLanes::Minors(m_c), qxFixedLanes::Minors(m_c + 8));
  }

  using Base::Inverse;
  /// Inverse in closed form: cofactors times 1 / det; @p target may be this matrix.
  /// @param tolerance what the absolute determinant is compared with
  /// @return 0; 3 when the determinant is below the tolerance, and @p target is untouched.
  [[nodiscard]] std::int32_t Inverse(CQXMatrix4& target, T tolerance = QX_PREDICATE_TOLERANCE<T>) const noexcept {
    return qxFixedLanes::Invert4(m_c, tolerance, target.m_c) ? 0 : 3;
  }
  /// Inverse of a coordinate matrix, (A^-1 | -A^-1 d) over the exact row (0, 0, 0, 1); the last row is not read.
  /// @param tolerance what the absolute determinant of the upper left block A is compared with
  /// @return 0; 3 when the determinant is below the tolerance, and @p target is untouched.
  [[nodiscard]] std::int32_t InverseCoordinateMatrix(CQXMatrix4& target,
                                                     T tolerance = QX_PREDICATE_TOLERANCE<T>) const noexcept {
    CQXMatrix3<T> i;
    if (GetMatrix().Inverse(i, tolerance) != 0) return 3;
    const CQXVector3<T> d = i * ExtractTranslation();
    target = {i[0], i[1], i[2], -d.X(), i[3], i[4], i[5], -d.Y(), i[6], i[7], i[8], -d.Z(), 0, 0, 0, 1};
    return 0;
  }

  /// The upper left block is diagonal, the rest as the unit matrix: 1 or 0.
  [[nodiscard]] std::int32_t IsScaling(T tolerance = QX_PREDICATE_TOLERANCE<T>) const noexcept {
    return HasUnitBorder(tolerance) && GetMatrix().IsScaling(tolerance) != 0;
  }
  /// The upper left block is orthogonal with a positive determinant, the rest as the unit matrix: 1 or 0.
  [[nodiscard]] std::int32_t IsRotation(T tolerance = QX_PREDICATE_TOLERANCE<T>) const noexcept {
    return HasUnitBorder(tolerance) && GetMatrix().IsRotation(tolerance) != 0;
  }

  // Motions. A flag other than 0 multiplies from the left, so that the motion acts last; 0 from the right, so that it
  // acts first.

  /// Right-handed rotation about the x axis by an angle in radians.
  void RotateXAxis(T angleInRadians, std::int32_t flag) noexcept {
    Base::template RotatePlane<1, 2>(angleInRadians, flag);
  }
  /// Right-handed rotation about the y axis by an angle in radians.
  void RotateYAxis(T angleInRadians, std::int32_t flag) noexcept {
    Base::template RotatePlane<2, 0>(angleInRadians, flag);
  }
  /// Right-handed rotation about the z axis by an angle in radians.
  void RotateZAxis(T angleInRadians, std::int32_t flag) noexcept {
    Base::template RotatePlane<0, 1>(angleInRadians, flag);
  }
  /// Scaling.
  constexpr void Scale(T sx, T sy, T sz, std::int32_t flag) noexcept {
    Base::ScaleAxis(0, sx, flag);
    Base::ScaleAxis(1, sy, flag);
    Base::ScaleAxis(2, sz, flag);
  }
  /// Translation. From the right, the first three elements of the last column become
  /// m(r, 0) tx + m(r, 1) ty + m(r, 2) tz + m(r, 3) + m(3, 3).
  ///
  /// The added m(3, 3) is the contract: on a coordinate matrix it shifts each component by 1. Callers who want the
  /// plain motion multiply by a translation matrix, or subtract 1.
  constexpr void Translate(T tx, T ty, T tz, std::int32_t flag) noexcept {
    if (flag != 0) {
      const CQXVector4<T> last = Base::RowVector(3);
      Base::SetRowVector(0, Base::RowVector(0) + last * tx);
      Base::SetRowVector(1, Base::RowVector(1) + last * ty);
      Base::SetRowVector(2, Base::RowVector(2) + last * tz);
    } else {
      m_c[3] = m_c[0] * tx + m_c[1] * ty + m_c[2] * tz + m_c[3] + m_c[15];
      m_c[7] = m_c[4] * tx + m_c[5] * ty + m_c[6] * tz + m_c[7] + m_c[15];
      m_c[11] = m_c[8] * tx + m_c[9] * ty + m_c[10] * tz + m_c[11] + m_c[15];
    }
  }
  /// A new matrix with the first three rows negated and the last one copied.
  [[nodiscard]] constexpr CQXMatrix4 Reflect() const noexcept {
    return Base::Make([&](std::size_t i) { return i < 12 ? -m_c[i] : m_c[i]; });
  }
  /// The product this @p m when @p flag is 0, otherwise @p m this.
  [[nodiscard]] constexpr CQXMatrix4 Combine(const CQXMatrix4& m, std::int32_t flag) const noexcept {
    return flag == 0 ? *this * m : m * *this;
  }

  /// The point A local + d, with A the upper left block and d the translation; the last row is not read.
  [[nodiscard]] constexpr CQXVector3<T> GetObjectCoordinates(const CQXVector3<T>& local) const noexcept {
    return GetMatrix() * local + ExtractTranslation();
  }
  /// The point A^-1 (object - d), the inverse of GetObjectCoordinates().
  /// @param tolerance what the absolute determinant of A is compared with
  /// @return 1; 0 when the determinant is below the tolerance, and @p local is untouched.
  [[nodiscard]] std::int32_t GetLocalCoordinates(const CQXVector3<T>& object, CQXVector3<T>& local,
                                                 T tolerance = QX_PREDICATE_TOLERANCE<T>) const noexcept {
    return GetMatrix().SolveSystem(object - ExtractTranslation(), local, tolerance);
  }

 private:
  [[nodiscard]] bool HasUnitBorder(T tolerance) const noexcept {
    return Base::All([&](std::size_t i) { return (i % 4 < 3 && i / 4 < 3) || Base::IsLikeUnit(i, tolerance); });
  }

  T m_c[16];
};

/// @p m in the upper left of the unit matrix.
template <qxReal T>
[[nodiscard]] constexpr CQXMatrix4<T> qxMatrix3To4(const CQXMatrix3<T>& m) noexcept {
  return {m[0], m[1], m[2], 0, m[3], m[4], m[5], 0, m[6], m[7], m[8], 0, 0, 0, 0, 1};
}
/// The upper left 3x3 block.
template <qxReal T>
[[nodiscard]] constexpr CQXMatrix3<T> qxMatrix4To3(const CQXMatrix4<T>& m) noexcept {
  return m.GetMatrix();
}

template <qxReal T>
inline constexpr bool qxIsFixedMatrix<CQXMatrix4<T>> = true;

extern template class QX_API CQXFixedMatrix<CQXMatrix4<float>, CQXVector4<float>, float, 4>;
extern template class QX_API CQXFixedMatrix<CQXMatrix4<double>, CQXVector4<double>, double, 4>;
extern template class QX_API CQXMatrix4<float>;
extern template class QX_API CQXMatrix4<double>;

static_assert(std::is_trivially_copyable_v<CQXMatrix4<float>> && std::is_standard_layout_v<CQXMatrix4<float>>);
static_assert(sizeof(CQXMatrix4<float>) == 16 * sizeof(float) && sizeof(CQXMatrix4<double>) == 16 * sizeof(double));
