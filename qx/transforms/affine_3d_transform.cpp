#include <qx/geometry/geometry.h>
#include <qx/kernels/transform_kernels.h>
#include <qx/transforms/affine_3d_transform.h>
#include <qx/vectors/vector_functions.h>

#include <cmath>
#include <cstddef>

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
  m_matrix = qxMatrix3To4(a);
  m_matrix.SetColVector(3, qxVector3To4(d, 1));
}

template <qxReal T>
void CQXAffine3DTransform<T>::Extract3DData(CQXMatrix3<T>& a, CQXVector3<T>& d) const noexcept {
  a = Get3DMatrix();
  d = GetTranslation();
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

template class CQXAffine3DTransform<float>;
template class CQXAffine3DTransform<double>;
