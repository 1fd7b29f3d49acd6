#pragma once

#include <qx/foundation/api.h>
#include <qx/foundation/rotations_order.h>
#include <qx/foundation/scalar.h>
#include <qx/foundation/tolerance.h>
#include <qx/matrices/matrix3.h>
#include <qx/matrices/matrix4.h>
#include <qx/transforms/base_3d_transform.h>
#include <qx/vectors/vector3.h>
#include <qx/vectors/vector4.h>

#include <cstdint>

/// Affine transform of space, p -> A p + d, with A the upper left 3x3 block of the matrix and d its last column.
///
/// Three vocabularies share one set of letters: T translation, R rotation, S scaling.
/// - Set operations overwrite the whole matrix. The letters of a composite give the order of action, the first letter
///   acting first: SetSRT() is the matrix product T R S.
/// - Add operations apply one more motion after what the object holds: M becomes E M.
/// - Extract operations take the matrix apart again into the same letters.
///
/// All angles are in degrees (quaternions measure theirs in radians). Rotations given by three angles take them about
/// X, Y and Z in this order of arguments; the order tells in which sequence they act, and one outside the enumeration
/// gives no rotation. Distinct transforms may be used from different threads; const operations on one transform may run
/// in parallel.
template <qxReal T>
class QX_API CQXAffine3DTransform : public CQXBase3DTransform<T> {
  using Base = CQXBase3DTransform<T>;

 public:
  /// The unit matrix.
  CQXAffine3DTransform() noexcept = default;
  /// Takes the matrix as it is; its bottom row is not tested.
  explicit CQXAffine3DTransform(const CQXMatrix4<T>& matrix) noexcept : Base(matrix) {}
  /// The map A p + d.
  CQXAffine3DTransform(const CQXMatrix3<T>& a, const CQXVector3<T>& d) noexcept { Set4DData(a, d); }
  CQXAffine3DTransform(const CQXAffine3DTransform& other) noexcept = default;

  ~CQXAffine3DTransform() override;

  /// Copies the matrix, of whatever kind the other transform is.
  CQXAffine3DTransform& operator=(const Base& other) noexcept override;
  /// QX_TRANSFORM_AFFINE.
  [[nodiscard]] qxTransformType GetTypeOfTransform() const noexcept override;
  /// Copies the matrix.
  virtual CQXAffine3DTransform& operator=(const CQXAffine3DTransform& other) noexcept;

  /// The last column d.
  [[nodiscard]] CQXVector3<T> GetTranslation() const noexcept { return m_matrix.ExtractTranslation(); }
  /// The same as GetTranslation().
  [[nodiscard]] CQXVector3<T> ExtractTranslation() const noexcept { return GetTranslation(); }
  /// The upper left 3x3 block A.
  [[nodiscard]] CQXMatrix3<T> Get3DMatrix() const noexcept { return m_matrix.GetMatrix(); }

  // ---- Elementary motions. The bottom row becomes 0, 0, 0, 1.

  /// p + t.
  void SetTranslation(const CQXVector3<T>& t) noexcept;
  /// Scaling by a factor for each axis, about the origin.
  void SetScaling(const CQXVector3<T>& s) noexcept;
  /// Scaling about the centre @p c, d = (1 - s) c for each axis. A centre whose guarded length is within 1e-6 of zero
  /// counts as the origin: d is exactly 0.
  void SetScaling(const CQXVector3<T>& s, const CQXVector3<T>& c) noexcept;
  /// A := @p r, which is not tested, and d := 0.
  void SetRotation(const CQXMatrix3<T>& r) noexcept;
  /// Rotation about the point @p c: A = @p r, d = c - r c.
  void SetRotation(const CQXMatrix3<T>& r, const CQXVector3<T>& c) noexcept;
  /// Right-handed rotation by an angle in degrees about an axis through the origin:
  /// CQXMatrix3::SetRotationByAngleAxis().
  void SetRotation(T angleInDegrees, const CQXVector3<T>& axis) noexcept;
  /// Rotation by three angles in degrees.
  void SetRotation(T axInDegrees, T ayInDegrees, T azInDegrees, qxRotationsOrder order) noexcept;
  /// Rotation by three angles in degrees about the point @p c.
  void SetRotation(T axInDegrees, T ayInDegrees, T azInDegrees, qxRotationsOrder order,
                   const CQXVector3<T>& c) noexcept;
  /// Point reflection through the origin, -p.
  void SetReflection() noexcept;
  /// (x + a z, y + b z, z): the letters are the coordinates that change.
  void SetShearXY(T a, T b) noexcept;
  /// (x + a y, y, z + b y).
  void SetShearXZ(T a, T b) noexcept;
  /// (x, y + a x, z + b x).
  void SetShearYZ(T a, T b) noexcept;

  // ---- Composite motions. t is the translation, r or the three angles the rotation, c a point that belongs to the
  // rotation, s the factors of scaling and cs the centre of scaling, always in this order of arguments.
  //
  // Where no scaling stands between translation and rotation, c is subtracted from the last column and the rotated c is
  // not added: RT is (r | t - c) and TR is (r | r t - c), so that a point c other than zero does not stay in place.
  // Where the scaling stands between them, and in SR and RS, the rotation is about c as SetRotation(r, c) builds it.
  // The scaling is always SetScaling(s, cs), with its test of the centre.

  /// Scaling, then translation: d = (1 - s) cs + t for each axis.
  void SetST(const CQXVector3<T>& t, const CQXVector3<T>& s, const CQXVector3<T>& cs) noexcept;
  /// Translation, then scaling: d = (1 - s) cs + s t for each axis.
  void SetTS(const CQXVector3<T>& t, const CQXVector3<T>& s, const CQXVector3<T>& cs) noexcept;
  /// Rotation, then translation: A = r, d = t - c. This is not SetRotation(r, c) followed by the translation.
  void SetRT(const CQXVector3<T>& t, const CQXMatrix3<T>& r, const CQXVector3<T>& c) noexcept;
  void SetRT(const CQXVector3<T>& t, T axInDegrees, T ayInDegrees, T azInDegrees, qxRotationsOrder order,
             const CQXVector3<T>& c) noexcept;
  /// Translation, then rotation: A = r, d = r t - c.
  void SetTR(const CQXVector3<T>& t, const CQXMatrix3<T>& r, const CQXVector3<T>& c) noexcept;
  void SetTR(const CQXVector3<T>& t, T axInDegrees, T ayInDegrees, T azInDegrees, qxRotationsOrder order,
             const CQXVector3<T>& c) noexcept;
  /// Scaling, then rotation about @p c.
  void SetSR(const CQXMatrix3<T>& r, const CQXVector3<T>& c, const CQXVector3<T>& s, const CQXVector3<T>& cs) noexcept;
  void SetSR(T axInDegrees, T ayInDegrees, T azInDegrees, qxRotationsOrder order, const CQXVector3<T>& c,
             const CQXVector3<T>& s, const CQXVector3<T>& cs) noexcept;
  /// Rotation about @p c, then scaling.
  void SetRS(const CQXMatrix3<T>& r, const CQXVector3<T>& c, const CQXVector3<T>& s, const CQXVector3<T>& cs) noexcept;
  void SetRS(T axInDegrees, T ayInDegrees, T azInDegrees, qxRotationsOrder order, const CQXVector3<T>& c,
             const CQXVector3<T>& s, const CQXVector3<T>& cs) noexcept;
  /// Scaling, rotation, translation: the product RT S.
  void SetSRT(const CQXVector3<T>& t, const CQXMatrix3<T>& r, const CQXVector3<T>& c, const CQXVector3<T>& s,
              const CQXVector3<T>& cs) noexcept;
  void SetSRT(const CQXVector3<T>& t, T axInDegrees, T ayInDegrees, T azInDegrees, qxRotationsOrder order,
              const CQXVector3<T>& c, const CQXVector3<T>& s, const CQXVector3<T>& cs) noexcept;
  /// Scaling, translation, rotation: the product TR S.
  void SetSTR(const CQXVector3<T>& t, const CQXMatrix3<T>& r, const CQXVector3<T>& c, const CQXVector3<T>& s,
              const CQXVector3<T>& cs) noexcept;
  void SetSTR(const CQXVector3<T>& t, T axInDegrees, T ayInDegrees, T azInDegrees, qxRotationsOrder order,
              const CQXVector3<T>& c, const CQXVector3<T>& s, const CQXVector3<T>& cs) noexcept;
  /// Rotation about @p c, then ST: the product ST R.
  void SetRST(const CQXVector3<T>& t, const CQXMatrix3<T>& r, const CQXVector3<T>& c, const CQXVector3<T>& s,
              const CQXVector3<T>& cs) noexcept;
  void SetRST(const CQXVector3<T>& t, T axInDegrees, T ayInDegrees, T azInDegrees, qxRotationsOrder order,
              const CQXVector3<T>& c, const CQXVector3<T>& s, const CQXVector3<T>& cs) noexcept;
  /// Rotation, translation, scaling: the product S RT.
  void SetRTS(const CQXVector3<T>& t, const CQXMatrix3<T>& r, const CQXVector3<T>& c, const CQXVector3<T>& s,
              const CQXVector3<T>& cs) noexcept;
  void SetRTS(const CQXVector3<T>& t, T axInDegrees, T ayInDegrees, T azInDegrees, qxRotationsOrder order,
              const CQXVector3<T>& c, const CQXVector3<T>& s, const CQXVector3<T>& cs) noexcept;
  /// TS, then rotation about @p c: the product R TS.
  void SetTSR(const CQXVector3<T>& t, const CQXMatrix3<T>& r, const CQXVector3<T>& c, const CQXVector3<T>& s,
              const CQXVector3<T>& cs) noexcept;
  void SetTSR(const CQXVector3<T>& t, T axInDegrees, T ayInDegrees, T azInDegrees, qxRotationsOrder order,
              const CQXVector3<T>& c, const CQXVector3<T>& s, const CQXVector3<T>& cs) noexcept;
  /// Translation, rotation, scaling: the product S TR.
  void SetTRS(const CQXVector3<T>& t, const CQXMatrix3<T>& r, const CQXVector3<T>& c, const CQXVector3<T>& s,
              const CQXVector3<T>& cs) noexcept;
  void SetTRS(const CQXVector3<T>& t, T axInDegrees, T ayInDegrees, T azInDegrees, qxRotationsOrder order,
              const CQXVector3<T>& c, const CQXVector3<T>& s, const CQXVector3<T>& cs) noexcept;

  // ---- One motion more, acting after everything that the object holds. The motion is that of the Set operation of the
  // same name; the bottom row may be any.

  void AddTranslation(const CQXVector3<T>& t) noexcept;
  void AddScaling(const CQXVector3<T>& s, const CQXVector3<T>& c) noexcept;
  void AddRotation(T angleInDegrees, const CQXVector3<T>& axis) noexcept;
  void AddRotation(const CQXMatrix3<T>& r) noexcept;
  void AddRotation(const CQXMatrix3<T>& r, const CQXVector3<T>& c) noexcept;
  void AddRotation(T axInDegrees, T ayInDegrees, T azInDegrees, qxRotationsOrder order) noexcept;
  void AddRotation(T axInDegrees, T ayInDegrees, T azInDegrees, qxRotationsOrder order,
                   const CQXVector3<T>& c) noexcept;
  void AddReflection() noexcept;
  void AddShearXY(T a, T b) noexcept;
  void AddShearXZ(T a, T b) noexcept;
  void AddShearYZ(T a, T b) noexcept;

  // ---- Geometry. Nothing is divided by a homogeneous coordinate, and the bottom row is never read.

  /// A p + d; each component is ((a0 x + a1 y) + a2 z) + d.
  [[nodiscard]] CQXVector3<T> TransformPoint(const CQXVector3<T>& p) const noexcept {
    return TransformVector(p) + m_matrix.ExtractTranslation();
  }
  /// A v; each component is (a0 x + a1 y) + a2 z.
  [[nodiscard]] CQXVector3<T> TransformVector(const CQXVector3<T>& v) const noexcept {
    const CQXMatrix4<T>& m = m_matrix;
    return {m[0] * v.X() + m[1] * v.Y() + m[2] * v.Z(), m[4] * v.X() + m[5] * v.Y() + m[6] * v.Z(),
            m[8] * v.X() + m[9] * v.Y() + m[10] * v.Z()};
  }
  /// p := A p + d.
  void TransformPointInPlace(CQXVector3<T>& p) const noexcept { p = TransformPoint(p); }
  /// v := A v.
  void TransformVectorInPlace(CQXVector3<T>& v) const noexcept { v = TransformVector(v); }
  /// TransformPoint() of @p n points; nothing happens when @p n < 1. The two arrays may be the same one; otherwise they
  /// must not overlap.
  void TransformPoints(std::int32_t n, const CQXVector3<T>* source, CQXVector3<T>* target) const noexcept;
  /// TransformVector() of @p n vectors; arrays as for TransformPoints().
  void TransformVectors(std::int32_t n, const CQXVector3<T>* source, CQXVector3<T>* target) const noexcept;
  /// TransformPointInPlace() of @p n points.
  void TransformPointsInPlace(std::int32_t n, CQXVector3<T>* points) const noexcept {
    TransformPoints(n, points, points);
  }
  /// TransformVectorInPlace() of @p n vectors.
  void TransformVectorsInPlace(std::int32_t n, CQXVector3<T>* vectors) const noexcept {
    TransformVectors(n, vectors, vectors);
  }
  /// A line given by a point and a direction, which is not normalised; the outputs may be the inputs.
  void TransformLine(const CQXVector3<T>& point, const CQXVector3<T>& direction, CQXVector3<T>& newPoint,
                     CQXVector3<T>& newDirection) const noexcept;
  /// The plane (a, b, c, e), where a x + b y + c z + e = 0; @p target may be @p plane.
  ///
  /// The normal n = (a, b, c) is transformed as a vector: the new normal is A n and not the inverse transpose of A
  /// times n, so that it stays perpendicular to the transformed points only under rotations, uniform scaling and
  /// reflections. The new plane goes through the image of CQXGeometry::GetPointOnPlane(), the foot of the perpendicular
  /// from the origin. For other maps transform three points of the plane instead. A zero normal gives (0, 0, 0, 0).
  void TransformPlane(const CQXVector4<T>& plane, CQXVector4<T>& target) const noexcept;

  // ---- Predicates: 1 or 0. Bounds are closed; not a number does not pass.

  /// CQXMatrix4::IsTranslation().
  [[nodiscard]] std::int32_t IsTranslation(T tolerance = QX_PREDICATE_TOLERANCE<T>) const noexcept {
    return m_matrix.IsTranslation(tolerance);
  }
  /// CQXMatrix4::IsRotation(): a translation other than zero does not pass.
  [[nodiscard]] std::int32_t IsRotation(T tolerance = QX_PREDICATE_TOLERANCE<T>) const noexcept {
    return m_matrix.IsRotation(tolerance);
  }
  /// CQXMatrix4::IsScaling(): a translation other than zero does not pass.
  [[nodiscard]] std::int32_t IsScaling(T tolerance = QX_PREDICATE_TOLERANCE<T>) const noexcept {
    return m_matrix.IsScaling(tolerance);
  }
  /// CQXMatrix4::IsScaling() with the fixed tolerance 1e-6, and abs(d) <= tolerance for each axis. As the first test
  /// refuses a translation above 1e-6 already, a larger tolerance does not admit one.
  [[nodiscard]] std::int32_t IsScalingByOrigin(T tolerance = QX_PREDICATE_TOLERANCE<T>) const noexcept;
  /// The bottom row is within 1e-6 of (0, 0, 0, 1) and A is orthogonal within the tolerance; d may be any.
  [[nodiscard]] std::int32_t IsEuclidean(T tolerance = QX_PREDICATE_TOLERANCE<T>) const noexcept;
  /// The bottom row and the last column are within the tolerance of the unit matrix and A is orthogonal within it.
  [[nodiscard]] std::int32_t IsOrthogonal(T tolerance = QX_PREDICATE_TOLERANCE<T>) const noexcept;

  /// The order with the same rotations in reverse sequence; QX_ROTATIONS_XYZ for QX_ROTATIONS_ZYX and for every value
  /// outside the enumeration.
  [[nodiscard]] static qxRotationsOrder GetOppositeRotationOrder(qxRotationsOrder order) noexcept;

  // ---- Taking apart. The bottom row is not read. Tolerances are 1e-6 for both element types.
  //
  // Each form finds t, s, R and U so that the named product of T, R and S, times the point reflection
  // diag(-1, -1, -1, 1) on the right when @p reflection is 1, is this matrix again. R is a proper rotation. S is
  // U diag(s) U^T: a scaling along the axes of the rotation U, which is the unit matrix when the scaling is along the
  // coordinate axes; then the Set operation of the same name with c = cs = 0 rebuilds the matrix.

  /// M = T R S. @return 1; 0 when the absolute determinant of A is below 1e-6, and the outputs are not specified.
  std::int32_t ExtractSRT(CQXVector3<T>& t, CQXVector3<T>& s, CQXMatrix3<T>& r, CQXMatrix3<T>& u,
                          std::int32_t& reflection) const;
  /// M = R T S. @return as ExtractSRT().
  std::int32_t ExtractSTR(CQXVector3<T>& t, CQXVector3<T>& s, CQXMatrix3<T>& r, CQXMatrix3<T>& u,
                          std::int32_t& reflection) const;
  /// M = T S R. @return as ExtractSRT().
  std::int32_t ExtractRST(CQXVector3<T>& t, CQXVector3<T>& s, CQXMatrix3<T>& r, CQXMatrix3<T>& u,
                          std::int32_t& reflection) const;
  /// M = S T R. A factor below 1e-6 makes t zero, since the scaling cannot be undone. @return as ExtractSRT().
  std::int32_t ExtractRTS(CQXVector3<T>& t, CQXVector3<T>& s, CQXMatrix3<T>& r, CQXMatrix3<T>& u,
                          std::int32_t& reflection) const;
  /// M = R S T. A factor below 1e-6 makes t zero. @return as ExtractSRT().
  std::int32_t ExtractTSR(CQXVector3<T>& t, CQXVector3<T>& s, CQXMatrix3<T>& r, CQXMatrix3<T>& u,
                          std::int32_t& reflection) const;
  /// M = S R T. A factor below 1e-6 makes t zero. @return as ExtractSRT().
  std::int32_t ExtractTRS(CQXVector3<T>& t, CQXVector3<T>& s, CQXMatrix3<T>& r, CQXMatrix3<T>& u,
                          std::int32_t& reflection) const;

  /// Chooses between A = R S (@p order 0, the scaling acts first) and A = S R (@p order 1), with S = U diag(s) U^T, and
  /// takes the translation d as it is. When @p reflection is 1 the product gives -A.
  ///
  /// A form without stretch wins, order 0 first; then @p hasStretch is 0 and U the unit matrix. Otherwise the form
  /// whose product is closer to A in the Euclidean norm, order 0 on a tie.
  /// @return 1; 0 when the absolute determinant of A is below 1e-6 or A holds not a number: the outputs are untouched.
  std::int32_t ExtractElementaryTransforms(CQXVector3<T>& t, CQXVector3<T>& s, CQXMatrix3<T>& r, CQXMatrix3<T>& u,
                                           std::int32_t& hasStretch, std::int32_t& order,
                                           std::int32_t& reflection) const;
  /// The factors s of ExtractElementaryTransforms(); the zero vector where that fails.
  [[nodiscard]] CQXVector3<T> ExtractClosestScaling() const;
  /// The rotation R and the reflection of ExtractElementaryTransforms(); the unit matrix and 0 where that fails.
  [[nodiscard]] CQXMatrix3<T> ExtractClosestRotation(std::int32_t& reflection) const;

 protected:
  using Base::m_matrix;

  /// M := (a | d) over the bottom row 0, 0, 0, 1.
  void Set4DData(const CQXMatrix3<T>& a, const CQXVector3<T>& d) noexcept;
  /// Reads the block A and the last column d.
  void Extract3DData(CQXMatrix3<T>& a, CQXVector3<T>& d) const noexcept;
};

extern template class QX_API CQXAffine3DTransform<float>;
extern template class QX_API CQXAffine3DTransform<double>;
