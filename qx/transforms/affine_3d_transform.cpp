#include <qx/geometry/geometry.h>
#include <qx/kernels/transform_kernels.h>
#include <qx/transforms/affine_3d_transform.h>
#include <qx/transforms/internal/affine_parts.h>
#include <qx/transforms/internal/motions.h>
#include <qx/vectors/vector_functions.h>

#include <cmath>
#include <cstddef>
#include <cstdint>

using qxAffineParts::UndoScaling;
using qxMotions::AxisRotation;
using qxMotions::EulerRotation;

namespace {

/// Row @p i of r times the first three rows of m.
template <qxReal T>
CQXVector4<T> RotatedRow(const CQXMatrix3<T>& r, std::int32_t i, const CQXMatrix4<T>& m) {
  return m.RowVector(0) * r(i, 0) + m.RowVector(1) * r(i, 1) + m.RowVector(2) * r(i, 2);
}

/// Row @p target += factor times row @p source.
template <qxReal T>
void AddRow(CQXMatrix4<T>& m, std::int32_t target, T factor, std::int32_t source) {
  m.SetRowVector(target, m.RowVector(target) + m.RowVector(source) * factor);
}

/// The parts of a transform; the translation is the last column as it is.
template <qxReal T>
bool ExtractParts(const CQXAffine3DTransform<T>& transform, qxAffineParts::Side side, CQXVector3<T>& t,
                  CQXVector3<T>& s, CQXMatrix3<T>& r, CQXMatrix3<T>& u, std::int32_t& reflection) {
  qxAffineParts::ScaleRotation<T> parts;
  if (!qxAffineParts::FindParts(transform.Get3DMatrix(), side, parts)) return false;
  t = transform.GetTranslation();
  s = parts.s;
  r = parts.r;
  u = parts.u;
  reflection = parts.reflection;
  return true;
}

template <qxReal T>
void UndoRotation(const CQXMatrix3<T>& r, CQXVector3<T>& t) {
  t = r.Transpose() * t;
}

}  // namespace

template <qxReal T>
CQXAffine3DTransform<T>::~CQXAffine3DTransform() = default;

template <qxReal T>
CQXAffine3DTransform<T>& CQXAffine3DTransform<T>::operator=(const Base& other) noexcept {
  Base::operator=(other);
  return *this;
}

template <qxReal T>
CQXAffine3DTransform<T>& CQXAffine3DTransform<T>::operator=(const CQXAffine3DTransform& other) noexcept = default;

template <qxReal T>
qxTransformType CQXAffine3DTransform<T>::GetTypeOfTransform() const noexcept {
  return QX_TRANSFORM_AFFINE;
}

template <qxReal T>
void CQXAffine3DTransform<T>::Set4DData(const CQXMatrix3<T>& a, const CQXVector3<T>& d) noexcept {
  m_matrix = qxMotions::Affine(a, d);
}

template <qxReal T>
void CQXAffine3DTransform<T>::Extract3DData(CQXMatrix3<T>& a, CQXVector3<T>& d) const noexcept {
  a = Get3DMatrix();
  d = GetTranslation();
}

// ---- Elementary motions

template <qxReal T>
void CQXAffine3DTransform<T>::SetTranslation(const CQXVector3<T>& t) noexcept {
  Set4DData(qxMotions::UnitMatrix<T>(), t);
}

template <qxReal T>
void CQXAffine3DTransform<T>::SetScaling(const CQXVector3<T>& s) noexcept {
  Set4DData(qxMotions::DiagonalMatrix(s), CQXVector3<T>());
}

template <qxReal T>
void CQXAffine3DTransform<T>::SetScaling(const CQXVector3<T>& s, const CQXVector3<T>& c) noexcept {
  m_matrix = qxMotions::Scaling(s, c);
}

template <qxReal T>
void CQXAffine3DTransform<T>::SetRotation(const CQXMatrix3<T>& r) noexcept {
  Set4DData(r, CQXVector3<T>());
}

template <qxReal T>
void CQXAffine3DTransform<T>::SetRotation(const CQXMatrix3<T>& r, const CQXVector3<T>& c) noexcept {
  m_matrix = qxMotions::Rotation(r, c);
}

template <qxReal T>
void CQXAffine3DTransform<T>::SetRotation(T angleInDegrees, const CQXVector3<T>& axis) noexcept {
  SetRotation(AxisRotation(angleInDegrees, axis));
}

template <qxReal T>
void CQXAffine3DTransform<T>::SetRotation(T axInDegrees, T ayInDegrees, T azInDegrees,
                                          qxRotationsOrder order) noexcept {
  SetRotation(EulerRotation(axInDegrees, ayInDegrees, azInDegrees, order));
}

template <qxReal T>
void CQXAffine3DTransform<T>::SetRotation(T axInDegrees, T ayInDegrees, T azInDegrees, qxRotationsOrder order,
                                          const CQXVector3<T>& c) noexcept {
  SetRotation(EulerRotation(axInDegrees, ayInDegrees, azInDegrees, order), c);
}

template <qxReal T>
void CQXAffine3DTransform<T>::SetReflection() noexcept {
  Set4DData(-qxMotions::UnitMatrix<T>(), CQXVector3<T>());
}

template <qxReal T>
void CQXAffine3DTransform<T>::SetShearXY(T a, T b) noexcept {
  Base::SetToIdentity();
  m_matrix(0, 2) = a;
  m_matrix(1, 2) = b;
}

template <qxReal T>
void CQXAffine3DTransform<T>::SetShearXZ(T a, T b) noexcept {
  Base::SetToIdentity();
  m_matrix(0, 1) = a;
  m_matrix(2, 1) = b;
}

template <qxReal T>
void CQXAffine3DTransform<T>::SetShearYZ(T a, T b) noexcept {
  Base::SetToIdentity();
  m_matrix(1, 0) = a;
  m_matrix(2, 0) = b;
}

// ---- Composite motions

template <qxReal T>
void CQXAffine3DTransform<T>::SetST(const CQXVector3<T>& t, const CQXVector3<T>& s, const CQXVector3<T>& cs) noexcept {
  m_matrix = qxMotions::ScalingTranslation(t, s, cs);
}

template <qxReal T>
void CQXAffine3DTransform<T>::SetTS(const CQXVector3<T>& t, const CQXVector3<T>& s, const CQXVector3<T>& cs) noexcept {
  m_matrix = qxMotions::TranslationScaling(t, s, cs);
}

template <qxReal T>
void CQXAffine3DTransform<T>::SetRT(const CQXVector3<T>& t, const CQXMatrix3<T>& r, const CQXVector3<T>& c) noexcept {
  m_matrix = qxMotions::RotationTranslation(t, r, c);
}

template <qxReal T>
void CQXAffine3DTransform<T>::SetRT(const CQXVector3<T>& t, T axInDegrees, T ayInDegrees, T azInDegrees,
                                    qxRotationsOrder order, const CQXVector3<T>& c) noexcept {
  SetRT(t, EulerRotation(axInDegrees, ayInDegrees, azInDegrees, order), c);
}

template <qxReal T>
void CQXAffine3DTransform<T>::SetTR(const CQXVector3<T>& t, const CQXMatrix3<T>& r, const CQXVector3<T>& c) noexcept {
  m_matrix = qxMotions::TranslationRotation(t, r, c);
}

template <qxReal T>
void CQXAffine3DTransform<T>::SetTR(const CQXVector3<T>& t, T axInDegrees, T ayInDegrees, T azInDegrees,
                                    qxRotationsOrder order, const CQXVector3<T>& c) noexcept {
  SetTR(t, EulerRotation(axInDegrees, ayInDegrees, azInDegrees, order), c);
}

template <qxReal T>
void CQXAffine3DTransform<T>::SetSR(const CQXMatrix3<T>& r, const CQXVector3<T>& c, const CQXVector3<T>& s,
                                    const CQXVector3<T>& cs) noexcept {
  m_matrix = qxMotions::Rotation(r, c) * qxMotions::Scaling(s, cs);
}

template <qxReal T>
void CQXAffine3DTransform<T>::SetSR(T axInDegrees, T ayInDegrees, T azInDegrees, qxRotationsOrder order,
                                    const CQXVector3<T>& c, const CQXVector3<T>& s, const CQXVector3<T>& cs) noexcept {
  SetSR(EulerRotation(axInDegrees, ayInDegrees, azInDegrees, order), c, s, cs);
}

template <qxReal T>
void CQXAffine3DTransform<T>::SetRS(const CQXMatrix3<T>& r, const CQXVector3<T>& c, const CQXVector3<T>& s,
                                    const CQXVector3<T>& cs) noexcept {
  m_matrix = qxMotions::Scaling(s, cs) * qxMotions::Rotation(r, c);
}

template <qxReal T>
void CQXAffine3DTransform<T>::SetRS(T axInDegrees, T ayInDegrees, T azInDegrees, qxRotationsOrder order,
                                    const CQXVector3<T>& c, const CQXVector3<T>& s, const CQXVector3<T>& cs) noexcept {
  SetRS(EulerRotation(axInDegrees, ayInDegrees, azInDegrees, order), c, s, cs);
}

template <qxReal T>
void CQXAffine3DTransform<T>::SetSRT(const CQXVector3<T>& t, const CQXMatrix3<T>& r, const CQXVector3<T>& c,
                                     const CQXVector3<T>& s, const CQXVector3<T>& cs) noexcept {
  m_matrix = qxMotions::RotationTranslation(t, r, c) * qxMotions::Scaling(s, cs);
}

template <qxReal T>
void CQXAffine3DTransform<T>::SetSRT(const CQXVector3<T>& t, T axInDegrees, T ayInDegrees, T azInDegrees,
                                     qxRotationsOrder order, const CQXVector3<T>& c, const CQXVector3<T>& s,
                                     const CQXVector3<T>& cs) noexcept {
  SetSRT(t, EulerRotation(axInDegrees, ayInDegrees, azInDegrees, order), c, s, cs);
}

template <qxReal T>
void CQXAffine3DTransform<T>::SetSTR(const CQXVector3<T>& t, const CQXMatrix3<T>& r, const CQXVector3<T>& c,
                                     const CQXVector3<T>& s, const CQXVector3<T>& cs) noexcept {
  m_matrix = qxMotions::TranslationRotation(t, r, c) * qxMotions::Scaling(s, cs);
}

template <qxReal T>
void CQXAffine3DTransform<T>::SetSTR(const CQXVector3<T>& t, T axInDegrees, T ayInDegrees, T azInDegrees,
                                     qxRotationsOrder order, const CQXVector3<T>& c, const CQXVector3<T>& s,
                                     const CQXVector3<T>& cs) noexcept {
  SetSTR(t, EulerRotation(axInDegrees, ayInDegrees, azInDegrees, order), c, s, cs);
}

template <qxReal T>
void CQXAffine3DTransform<T>::SetRST(const CQXVector3<T>& t, const CQXMatrix3<T>& r, const CQXVector3<T>& c,
                                     const CQXVector3<T>& s, const CQXVector3<T>& cs) noexcept {
  m_matrix = qxMotions::ScalingTranslation(t, s, cs) * qxMotions::Rotation(r, c);
}

template <qxReal T>
void CQXAffine3DTransform<T>::SetRST(const CQXVector3<T>& t, T axInDegrees, T ayInDegrees, T azInDegrees,
                                     qxRotationsOrder order, const CQXVector3<T>& c, const CQXVector3<T>& s,
                                     const CQXVector3<T>& cs) noexcept {
  SetRST(t, EulerRotation(axInDegrees, ayInDegrees, azInDegrees, order), c, s, cs);
}

template <qxReal T>
void CQXAffine3DTransform<T>::SetRTS(const CQXVector3<T>& t, const CQXMatrix3<T>& r, const CQXVector3<T>& c,
                                     const CQXVector3<T>& s, const CQXVector3<T>& cs) noexcept {
  m_matrix = qxMotions::Scaling(s, cs) * qxMotions::RotationTranslation(t, r, c);
}

template <qxReal T>
void CQXAffine3DTransform<T>::SetRTS(const CQXVector3<T>& t, T axInDegrees, T ayInDegrees, T azInDegrees,
                                     qxRotationsOrder order, const CQXVector3<T>& c, const CQXVector3<T>& s,
                                     const CQXVector3<T>& cs) noexcept {
  SetRTS(t, EulerRotation(axInDegrees, ayInDegrees, azInDegrees, order), c, s, cs);
}

template <qxReal T>
void CQXAffine3DTransform<T>::SetTSR(const CQXVector3<T>& t, const CQXMatrix3<T>& r, const CQXVector3<T>& c,
                                     const CQXVector3<T>& s, const CQXVector3<T>& cs) noexcept {
  m_matrix = qxMotions::Rotation(r, c) * qxMotions::TranslationScaling(t, s, cs);
}

template <qxReal T>
void CQXAffine3DTransform<T>::SetTSR(const CQXVector3<T>& t, T axInDegrees, T ayInDegrees, T azInDegrees,
                                     qxRotationsOrder order, const CQXVector3<T>& c, const CQXVector3<T>& s,
                                     const CQXVector3<T>& cs) noexcept {
  SetTSR(t, EulerRotation(axInDegrees, ayInDegrees, azInDegrees, order), c, s, cs);
}

template <qxReal T>
void CQXAffine3DTransform<T>::SetTRS(const CQXVector3<T>& t, const CQXMatrix3<T>& r, const CQXVector3<T>& c,
                                     const CQXVector3<T>& s, const CQXVector3<T>& cs) noexcept {
  m_matrix = qxMotions::Scaling(s, cs) * qxMotions::TranslationRotation(t, r, c);
}

template <qxReal T>
void CQXAffine3DTransform<T>::SetTRS(const CQXVector3<T>& t, T axInDegrees, T ayInDegrees, T azInDegrees,
                                     qxRotationsOrder order, const CQXVector3<T>& c, const CQXVector3<T>& s,
                                     const CQXVector3<T>& cs) noexcept {
  SetTRS(t, EulerRotation(axInDegrees, ayInDegrees, azInDegrees, order), c, s, cs);
}

// ---- One motion more

template <qxReal T>
void CQXAffine3DTransform<T>::AddTranslation(const CQXVector3<T>& t) noexcept {
  for (std::int32_t i = 0; i < 3; ++i) AddRow(m_matrix, i, t[i], 3);
}

template <qxReal T>
void CQXAffine3DTransform<T>::AddScaling(const CQXVector3<T>& s, const CQXVector3<T>& c) noexcept {
  for (std::int32_t i = 0; i < 3; ++i) {
    const CQXVector4<T> centre = m_matrix.RowVector(3) * c[i];
    m_matrix.SetRowVector(i, (m_matrix.RowVector(i) - centre) * s[i] + centre);
  }
}

template <qxReal T>
void CQXAffine3DTransform<T>::AddRotation(T angleInDegrees, const CQXVector3<T>& axis) noexcept {
  AddRotation(AxisRotation(angleInDegrees, axis));
}

template <qxReal T>
void CQXAffine3DTransform<T>::AddRotation(const CQXMatrix3<T>& r) noexcept {
  const CQXMatrix4<T> old = m_matrix;
  for (std::int32_t i = 0; i < 3; ++i) m_matrix.SetRowVector(i, RotatedRow(r, i, old));
}

template <qxReal T>
void CQXAffine3DTransform<T>::AddRotation(const CQXMatrix3<T>& r, const CQXVector3<T>& c) noexcept {
  const CQXVector3<T> d = c - r * c;
  AddRotation(r);
  AddTranslation(d);
}

template <qxReal T>
void CQXAffine3DTransform<T>::AddRotation(T axInDegrees, T ayInDegrees, T azInDegrees,
                                          qxRotationsOrder order) noexcept {
  AddRotation(EulerRotation(axInDegrees, ayInDegrees, azInDegrees, order));
}

template <qxReal T>
void CQXAffine3DTransform<T>::AddRotation(T axInDegrees, T ayInDegrees, T azInDegrees, qxRotationsOrder order,
                                          const CQXVector3<T>& c) noexcept {
  AddRotation(EulerRotation(axInDegrees, ayInDegrees, azInDegrees, order), c);
}

template <qxReal T>
void CQXAffine3DTransform<T>::AddReflection() noexcept {
  m_matrix = m_matrix.Reflect();
}

template <qxReal T>
void CQXAffine3DTransform<T>::AddShearXY(T a, T b) noexcept {
  AddRow(m_matrix, 0, a, 2);
  AddRow(m_matrix, 1, b, 2);
}

template <qxReal T>
void CQXAffine3DTransform<T>::AddShearXZ(T a, T b) noexcept {
  AddRow(m_matrix, 0, a, 1);
  AddRow(m_matrix, 2, b, 1);
}

template <qxReal T>
void CQXAffine3DTransform<T>::AddShearYZ(T a, T b) noexcept {
  AddRow(m_matrix, 1, a, 0);
  AddRow(m_matrix, 2, b, 0);
}

// ---- Geometry

template <qxReal T>
void CQXAffine3DTransform<T>::TransformPoints(std::int32_t n, const CQXVector3<T>* source,
                                              CQXVector3<T>* target) const noexcept {
  if (n < 1) return;
  qxKernels::TransformPoints(static_cast<std::size_t>(n), m_matrix.Data(), source->Data(), target->Data());
}

template <qxReal T>
void CQXAffine3DTransform<T>::TransformVectors(std::int32_t n, const CQXVector3<T>* source,
                                               CQXVector3<T>* target) const noexcept {
  if (n < 1) return;
  qxKernels::TransformVectors(static_cast<std::size_t>(n), m_matrix.Data(), source->Data(), target->Data());
}

template <qxReal T>
void CQXAffine3DTransform<T>::TransformLine(const CQXVector3<T>& point, const CQXVector3<T>& direction,
                                            CQXVector3<T>& newPoint, CQXVector3<T>& newDirection) const noexcept {
  const CQXVector3<T> p = TransformPoint(point);
  const CQXVector3<T> v = TransformVector(direction);
  newPoint = p;
  newDirection = v;
}

template <qxReal T>
void CQXAffine3DTransform<T>::TransformPlane(const CQXVector4<T>& plane, CQXVector4<T>& target) const noexcept {
  const CQXVector3<T> normal = TransformVector(qxCutVector4To3(plane));
  const CQXVector3<T> point = TransformPoint(CQXGeometry::GetPointOnPlane(plane.X(), plane.Y(), plane.Z(), plane.W()));
  target = qxVector3To4(normal, -normal.Dot(point));
}

// ---- Predicates

template <qxReal T>
std::int32_t CQXAffine3DTransform<T>::IsScalingByOrigin(T tolerance) const noexcept {
  const CQXVector3<T> d = GetTranslation();
  return m_matrix.IsScaling(T(1e-6)) != 0 && std::abs(d.X()) <= tolerance && std::abs(d.Y()) <= tolerance &&
         std::abs(d.Z()) <= tolerance;
}

template <qxReal T>
std::int32_t CQXAffine3DTransform<T>::IsEuclidean(T tolerance) const noexcept {
  return Base::IsAffine(T(1e-6)) != 0 && Get3DMatrix().IsOrthogonal(tolerance) != 0;
}

template <qxReal T>
std::int32_t CQXAffine3DTransform<T>::IsOrthogonal(T tolerance) const noexcept {
  const CQXVector3<T> d = GetTranslation();
  return Base::IsAffine(tolerance) != 0 && std::abs(d.X()) <= tolerance && std::abs(d.Y()) <= tolerance &&
         std::abs(d.Z()) <= tolerance && Get3DMatrix().IsOrthogonal(tolerance) != 0;
}

template <qxReal T>
qxRotationsOrder CQXAffine3DTransform<T>::GetOppositeRotationOrder(qxRotationsOrder order) noexcept {
  switch (order) {
    case QX_ROTATIONS_XYZ:
      return QX_ROTATIONS_ZYX;
    case QX_ROTATIONS_XZY:
      return QX_ROTATIONS_YZX;
    case QX_ROTATIONS_YXZ:
      return QX_ROTATIONS_ZXY;
    case QX_ROTATIONS_YZX:
      return QX_ROTATIONS_XZY;
    case QX_ROTATIONS_ZXY:
      return QX_ROTATIONS_YXZ;
    default:
      return QX_ROTATIONS_XYZ;
  }
}

// ---- Taking apart. The translation is freed from the motions that act after it, the last one first.

template <qxReal T>
std::int32_t CQXAffine3DTransform<T>::ExtractSRT(CQXVector3<T>& t, CQXVector3<T>& s, CQXMatrix3<T>& r, CQXMatrix3<T>& u,
                                                 std::int32_t& reflection) const {
  return ExtractParts(*this, qxAffineParts::scalingFirst, t, s, r, u, reflection);
}

template <qxReal T>
std::int32_t CQXAffine3DTransform<T>::ExtractSTR(CQXVector3<T>& t, CQXVector3<T>& s, CQXMatrix3<T>& r, CQXMatrix3<T>& u,
                                                 std::int32_t& reflection) const {
  if (!ExtractParts(*this, qxAffineParts::scalingFirst, t, s, r, u, reflection)) return 0;
  UndoRotation(r, t);
  return 1;
}

template <qxReal T>
std::int32_t CQXAffine3DTransform<T>::ExtractRST(CQXVector3<T>& t, CQXVector3<T>& s, CQXMatrix3<T>& r, CQXMatrix3<T>& u,
                                                 std::int32_t& reflection) const {
  return ExtractParts(*this, qxAffineParts::scalingLast, t, s, r, u, reflection);
}

template <qxReal T>
std::int32_t CQXAffine3DTransform<T>::ExtractRTS(CQXVector3<T>& t, CQXVector3<T>& s, CQXMatrix3<T>& r, CQXMatrix3<T>& u,
                                                 std::int32_t& reflection) const {
  if (!ExtractParts(*this, qxAffineParts::scalingLast, t, s, r, u, reflection)) return 0;
  UndoScaling(s, u, t);
  return 1;
}

template <qxReal T>
std::int32_t CQXAffine3DTransform<T>::ExtractTSR(CQXVector3<T>& t, CQXVector3<T>& s, CQXMatrix3<T>& r, CQXMatrix3<T>& u,
                                                 std::int32_t& reflection) const {
  if (!ExtractParts(*this, qxAffineParts::scalingFirst, t, s, r, u, reflection)) return 0;
  UndoRotation(r, t);
  UndoScaling(s, u, t);
  return 1;
}

template <qxReal T>
std::int32_t CQXAffine3DTransform<T>::ExtractTRS(CQXVector3<T>& t, CQXVector3<T>& s, CQXMatrix3<T>& r, CQXMatrix3<T>& u,
                                                 std::int32_t& reflection) const {
  if (!ExtractParts(*this, qxAffineParts::scalingLast, t, s, r, u, reflection)) return 0;
  UndoScaling(s, u, t);
  UndoRotation(r, t);
  return 1;
}

template <qxReal T>
std::int32_t CQXAffine3DTransform<T>::ExtractElementaryTransforms(CQXVector3<T>& t, CQXVector3<T>& s, CQXMatrix3<T>& r,
                                                                  CQXMatrix3<T>& u, std::int32_t& hasStretch,
                                                                  std::int32_t& order, std::int32_t& reflection) const {
  qxAffineParts::ScaleRotation<T> parts;
  if (!qxAffineParts::FindElementary(Get3DMatrix(), parts, order)) return 0;
  t = GetTranslation();
  s = parts.s;
  r = parts.r;
  u = parts.u;
  hasStretch = parts.hasStretch;
  reflection = parts.reflection;
  return 1;
}

template <qxReal T>
CQXVector3<T> CQXAffine3DTransform<T>::ExtractClosestScaling() const {
  qxAffineParts::ScaleRotation<T> parts;
  std::int32_t order;
  return qxAffineParts::FindElementary(Get3DMatrix(), parts, order) ? parts.s : CQXVector3<T>();
}

template <qxReal T>
CQXMatrix3<T> CQXAffine3DTransform<T>::ExtractClosestRotation(std::int32_t& reflection) const {
  qxAffineParts::ScaleRotation<T> parts;
  std::int32_t order;
  if (!qxAffineParts::FindElementary(Get3DMatrix(), parts, order)) {
    parts.r.Unit();
    parts.reflection = 0;
  }
  reflection = parts.reflection;
  return parts.r;
}

template class CQXAffine3DTransform<float>;
template class CQXAffine3DTransform<double>;
