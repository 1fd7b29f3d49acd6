#pragma once

#include <qx/foundation/api.h>
#include <qx/foundation/scalar.h>
#include <qx/foundation/tolerance.h>
#include <qx/matrices/matrix3.h>
#include <qx/transforms/transform_type.h>

#include <cstdint>

/// Transform of the plane held as one 3x3 matrix M of homogeneous coordinates, which acts on column vectors: a point p
/// becomes M (p, 1), and the translation is the last column. The plane's form of CQXBase3DTransform.
///
/// The object holds M alone; its kind is told by GetTypeOfTransform(). Distinct transforms may be used from different
/// threads; const operations on one transform may run in parallel.
template <qxReal T>
class QX_API CQXBase2DTransform {
 public:
  /// The unit matrix.
  CQXBase2DTransform() noexcept { SetToIdentity(); }
  explicit CQXBase2DTransform(const CQXMatrix3<T>& matrix) noexcept : m_matrix(matrix) {}
  CQXBase2DTransform(const CQXBase2DTransform& other) noexcept = default;

  virtual ~CQXBase2DTransform();

  /// Copies the matrix.
  virtual CQXBase2DTransform& operator=(const CQXBase2DTransform& other) noexcept;

  /// The inverse of the matrix; the object is unchanged.
  /// @param tolerance what the absolute determinant is compared with
  /// @return 1; 0 when the determinant is below the tolerance, and @p target is untouched.
  virtual std::int32_t Invert(CQXMatrix3<T>& target, T tolerance = QX_PREDICATE_TOLERANCE<T>) const noexcept;

  /// QX_TRANSFORM_GENERAL; derived classes return their own kind.
  [[nodiscard]] virtual qxTransformType GetTypeOfTransform() const noexcept;

  /// The matrix that acts on (x, y, 1).
  [[nodiscard]] const CQXMatrix3<T>& GetMatrix() const noexcept { return m_matrix; }
  /// M := @p matrix.
  void SetTransform(const CQXMatrix3<T>& matrix) noexcept { m_matrix = matrix; }
  /// M := the unit matrix.
  void SetToIdentity() noexcept { m_matrix.Unit(); }
  /// M := @p motion M: the motion acts after what the object holds. @p motion may be GetMatrix().
  void AddTransform(const CQXMatrix3<T>& motion) noexcept { m_matrix = motion * m_matrix; }
  /// The product M @p motion when @p flag is 0, so that the motion acts first; otherwise @p motion M.
  [[nodiscard]] CQXMatrix3<T> Combine(const CQXMatrix3<T>& motion, std::int32_t flag) const noexcept {
    return flag == 0 ? m_matrix * motion : motion * m_matrix;
  }
  /// 1 when the bottom row is within the tolerance of (0, 0, 1), bounds included, else 0.
  [[nodiscard]] std::int32_t IsAffine(T tolerance = QX_PREDICATE_TOLERANCE<T>) const noexcept {
    return m_matrix.IsCoordinateMatrix(tolerance);
  }

 protected:
  CQXMatrix3<T> m_matrix;
};

extern template class QX_API CQXBase2DTransform<float>;
extern template class QX_API CQXBase2DTransform<double>;
