#pragma once

#include <qx/foundation/api.h>
#include <qx/foundation/scalar.h>
#include <qx/foundation/tolerance.h>
#include <qx/matrices/matrix2.h>
#include <qx/matrices/matrix3.h>
#include <qx/transforms/base_2d_transform.h>
#include <qx/vectors/vector2.h>

#include <cstdint>

/// Affine transform of the plane, p -> A p + d, with A the upper left 2x2 block of the matrix and d its last column.
/// The plane's form of CQXAffine3DTransform, with the same three vocabularies over T translation, R rotation, S
/// scaling:
///
/// - Set operations overwrite the whole matrix. The letters of a composite give the order of action, the first letter
///   acting first: SetSRT() is the matrix product T R S.
/// - Add operations apply one more motion after what the object holds: M becomes E M.
/// - Extract operations take the matrix apart again into the same letters.
///
/// In the plane a rotation is one angle, in degrees, counter-clockwise where y points up. Each Set operation gives the
/// upper left block and the last column that CQXAffine3DTransform gives for a rotation about Z by this angle and
/// scaling by 1 along Z. Distinct transforms may be used from different threads; const operations on one transform may
/// run in parallel.
template <qxReal T>
class QX_API CQXAffine2DTransform : public CQXBase2DTransform<T> {
  using Base = CQXBase2DTransform<T>;

 public:
  /// The unit matrix.
  CQXAffine2DTransform() noexcept = default;
  /// Takes the matrix as it is; its bottom row is not tested.
  explicit CQXAffine2DTransform(const CQXMatrix3<T>& matrix) noexcept : Base(matrix) {}
  /// The map A p + d.
  CQXAffine2DTransform(const CQXMatrix2<T>& a, const CQXVector2<T>& d) noexcept
      : Base({a[0], a[1], d.X(), a[2], a[3], d.Y(), 0, 0, 1}) {}
  CQXAffine2DTransform(const CQXAffine2DTransform& other) noexcept = default;

  ~CQXAffine2DTransform() override;

  /// Copies the matrix, of whatever kind the other transform is.
  CQXAffine2DTransform& operator=(const Base& other) noexcept override;
  /// QX_TRANSFORM_AFFINE.
  [[nodiscard]] qxTransformType GetTypeOfTransform() const noexcept override;
  /// Copies the matrix.
  virtual CQXAffine2DTransform& operator=(const CQXAffine2DTransform& other) noexcept;

  /// The last column d.
  [[nodiscard]] CQXVector2<T> GetTranslation() const noexcept { return {m_matrix[2], m_matrix[5]}; }
  /// The same as GetTranslation().
  [[nodiscard]] CQXVector2<T> ExtractTranslation() const noexcept { return GetTranslation(); }
  /// The upper left 2x2 block A.
  [[nodiscard]] CQXMatrix2<T> Get2DMatrix() const noexcept { return qxMatrix3To2(m_matrix); }

  // ---- Elementary motions. The bottom row becomes 0, 0, 1.

  /// p + t.
  void SetTranslation(const CQXVector2<T>& t) noexcept;
  /// Scaling by a factor for each axis, about the origin.
  void SetScaling(const CQXVector2<T>& s) noexcept;
  /// Scaling about the centre @p c, d = (1 - s) c for each axis. A centre whose guarded length is within 1e-6 of zero
  /// counts as the origin: d is exactly 0.
  void SetScaling(const CQXVector2<T>& s, const CQXVector2<T>& c) noexcept;
  /// Scaling by s along the axes that are turned by an angle: U diag(s) U^T with the rotation U.
  void SetStretch(const CQXVector2<T>& s, T angleInDegrees) noexcept;
  /// Rotation about the origin.
  void SetRotation(T angleInDegrees) noexcept;
  /// Rotation about the point @p c: d = c - r c.
  void SetRotation(T angleInDegrees, const CQXVector2<T>& c) noexcept;
  /// Point reflection through the origin, -p, which in the plane is half a turn.
  void SetReflection() noexcept;
  /// Reflection in the line through the origin that is turned by an angle from the x axis: 0 negates y, 90 negates x.
  void SetReflection(T angleInDegrees) noexcept;
  /// (x + a y, y): the letter is the coordinate that changes.
  void SetShearX(T a) noexcept;
  /// (x, y + a x).
  void SetShearY(T a) noexcept;

  // ---- Composite motions. t is the translation, the angle the rotation, c a point that belongs to the rotation, s the
  // factors of scaling and cs the centre of scaling, always in this order of arguments. As in space, c is subtracted
  // from the last column where no scaling stands between translation and rotation, RT is (r | t - c) and TR is (r | r t
  // - c); elsewhere the rotation is about c as SetRotation() builds it.

  /// Scaling, then translation.
  void SetST(const CQXVector2<T>& t, const CQXVector2<T>& s, const CQXVector2<T>& cs) noexcept;
  /// Translation, then scaling.
  void SetTS(const CQXVector2<T>& t, const CQXVector2<T>& s, const CQXVector2<T>& cs) noexcept;
  /// Rotation, then translation: A = r, d = t - c.
  void SetRT(const CQXVector2<T>& t, T angleInDegrees, const CQXVector2<T>& c) noexcept;
  /// Translation, then rotation: A = r, d = r t - c.
  void SetTR(const CQXVector2<T>& t, T angleInDegrees, const CQXVector2<T>& c) noexcept;
  /// Scaling, then rotation about @p c.
  void SetSR(T angleInDegrees, const CQXVector2<T>& c, const CQXVector2<T>& s, const CQXVector2<T>& cs) noexcept;
  /// Rotation about @p c, then scaling.
  void SetRS(T angleInDegrees, const CQXVector2<T>& c, const CQXVector2<T>& s, const CQXVector2<T>& cs) noexcept;
  /// Scaling, rotation, translation: the product RT S.
  void SetSRT(const CQXVector2<T>& t, T angleInDegrees, const CQXVector2<T>& c, const CQXVector2<T>& s,
              const CQXVector2<T>& cs) noexcept;
  /// Scaling, translation, rotation: the product TR S.
  void SetSTR(const CQXVector2<T>& t, T angleInDegrees, const CQXVector2<T>& c, const CQXVector2<T>& s,
              const CQXVector2<T>& cs) noexcept;
  /// Rotation about @p c, then ST: the product ST R.
  void SetRST(const CQXVector2<T>& t, T angleInDegrees, const CQXVector2<T>& c, const CQXVector2<T>& s,
              const CQXVector2<T>& cs) noexcept;
  /// Rotation, translation, scaling: the product S RT.
  void SetRTS(const CQXVector2<T>& t, T angleInDegrees, const CQXVector2<T>& c, const CQXVector2<T>& s,
              const CQXVector2<T>& cs) noexcept;
  /// TS, then rotation about @p c: the product R TS.
  void SetTSR(const CQXVector2<T>& t, T angleInDegrees, const CQXVector2<T>& c, const CQXVector2<T>& s,
              const CQXVector2<T>& cs) noexcept;
  /// Translation, rotation, scaling: the product S TR.
  void SetTRS(const CQXVector2<T>& t, T angleInDegrees, const CQXVector2<T>& c, const CQXVector2<T>& s,
              const CQXVector2<T>& cs) noexcept;

  // ---- One motion more, acting after everything that the object holds. The motion is that of the Set operation of the
  // same name; the bottom row may be any.

  void AddTranslation(const CQXVector2<T>& t) noexcept;
  void AddScaling(const CQXVector2<T>& s, const CQXVector2<T>& c) noexcept;
  void AddStretch(const CQXVector2<T>& s, T angleInDegrees) noexcept;
  void AddRotation(T angleInDegrees) noexcept;
  void AddRotation(T angleInDegrees, const CQXVector2<T>& c) noexcept;
  void AddReflection() noexcept;
  void AddReflection(T angleInDegrees) noexcept;
  void AddShearX(T a) noexcept;
  void AddShearY(T a) noexcept;

  // ---- Geometry. Nothing is divided by a homogeneous coordinate, and the bottom row is never read. Lines
  // a x + b y + c = 0 go through qxLocalToWorldPlane().

  /// A p + d; each component is (a0 x + a1 y) + d.
  [[nodiscard]] CQXVector2<T> TransformPoint(const CQXVector2<T>& p) const noexcept {
    return TransformVector(p) + GetTranslation();
  }
  /// A v.
  [[nodiscard]] CQXVector2<T> TransformVector(const CQXVector2<T>& v) const noexcept {
    const CQXMatrix3<T>& m = m_matrix;
    return {m[0] * v.X() + m[1] * v.Y(), m[3] * v.X() + m[4] * v.Y()};
  }
  /// p := A p + d.
  void TransformPointInPlace(CQXVector2<T>& p) const noexcept { p = TransformPoint(p); }
  /// v := A v.
  void TransformVectorInPlace(CQXVector2<T>& v) const noexcept { v = TransformVector(v); }
  /// TransformPoint() of @p n points; nothing happens when @p n < 1. The two arrays may be the same one; otherwise they
  /// must not overlap.
  void TransformPoints(std::int32_t n, const CQXVector2<T>* source, CQXVector2<T>* target) const noexcept;
  /// TransformVector() of @p n vectors; arrays as for TransformPoints().
  void TransformVectors(std::int32_t n, const CQXVector2<T>* source, CQXVector2<T>* target) const noexcept;
  /// TransformPointInPlace() of @p n points.
  void TransformPointsInPlace(std::int32_t n, CQXVector2<T>* points) const noexcept {
    TransformPoints(n, points, points);
  }
  /// TransformVectorInPlace() of @p n vectors.
  void TransformVectorsInPlace(std::int32_t n, CQXVector2<T>* vectors) const noexcept {
    TransformVectors(n, vectors, vectors);
  }
  /// A line given by a point and a direction, which is not normalised; the outputs may be the inputs.
  void TransformLine(const CQXVector2<T>& point, const CQXVector2<T>& direction, CQXVector2<T>& newPoint,
                     CQXVector2<T>& newDirection) const noexcept;

  // ---- Predicates: 1 or 0. Bounds are closed; not a number does not pass. Each wants the bottom row within the
  // tolerance of (0, 0, 1).

  /// A is the unit matrix within the tolerance.
  [[nodiscard]] std::int32_t IsTranslation(T tolerance = QX_PREDICATE_TOLERANCE<T>) const noexcept;
  /// A is a rotation and d zero within the tolerance.
  [[nodiscard]] std::int32_t IsRotation(T tolerance = QX_PREDICATE_TOLERANCE<T>) const noexcept;
  /// A is diagonal and d zero within the tolerance; the factors may be any, not a number too.
  [[nodiscard]] std::int32_t IsScaling(T tolerance = QX_PREDICATE_TOLERANCE<T>) const noexcept;
  /// A is orthogonal within the tolerance; d may be any.
  [[nodiscard]] std::int32_t IsEuclidean(T tolerance = QX_PREDICATE_TOLERANCE<T>) const noexcept;
  /// A is orthogonal and d zero within the tolerance.
  [[nodiscard]] std::int32_t IsOrthogonal(T tolerance = QX_PREDICATE_TOLERANCE<T>) const noexcept;

  // ---- Taking apart. The bottom row is not read. Tolerances are 1e-6 for both element types.
  //
  // Each form finds t, s, the rotation R by an angle in (-180, 180] and the stretch S = U diag(s) U^T, U being the
  // rotation by the stretch angle in (-90, 90], so that the named product of T, R and S, times the reflection
  // diag(1, -1, 1) on the right when @p reflection is 1, is this matrix again. The factors are positive; the stretch
  // angle is 0 when S is diagonal within the tolerance, and then the Set operation of the same name with c = cs = 0
  // rebuilds the matrix; otherwise the first factor is the larger one.

  /// M = T R S. @return 1; 0 when the absolute determinant of A is below 1e-6: the outputs are untouched.
  std::int32_t ExtractSRT(CQXVector2<T>& t, CQXVector2<T>& s, T& angleInDegrees, T& stretchAngleInDegrees,
                          std::int32_t& reflection) const noexcept;
  /// M = R T S. @return as ExtractSRT().
  std::int32_t ExtractSTR(CQXVector2<T>& t, CQXVector2<T>& s, T& angleInDegrees, T& stretchAngleInDegrees,
                          std::int32_t& reflection) const noexcept;
  /// M = T S R. @return as ExtractSRT().
  std::int32_t ExtractRST(CQXVector2<T>& t, CQXVector2<T>& s, T& angleInDegrees, T& stretchAngleInDegrees,
                          std::int32_t& reflection) const noexcept;
  /// M = S T R. @return as ExtractSRT().
  std::int32_t ExtractRTS(CQXVector2<T>& t, CQXVector2<T>& s, T& angleInDegrees, T& stretchAngleInDegrees,
                          std::int32_t& reflection) const noexcept;
  /// M = R S T. @return as ExtractSRT().
  std::int32_t ExtractTSR(CQXVector2<T>& t, CQXVector2<T>& s, T& angleInDegrees, T& stretchAngleInDegrees,
                          std::int32_t& reflection) const noexcept;
  /// M = S R T. @return as ExtractSRT().
  std::int32_t ExtractTRS(CQXVector2<T>& t, CQXVector2<T>& s, T& angleInDegrees, T& stretchAngleInDegrees,
                          std::int32_t& reflection) const noexcept;

 protected:
  using Base::m_matrix;
};

extern template class QX_API CQXAffine2DTransform<float>;
extern template class QX_API CQXAffine2DTransform<double>;
