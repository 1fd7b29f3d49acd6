#include <qx/transforms/perspective_3d_transform.h>
#include <qx/vectors/vector_functions.h>

#include <cmath>
#include <numbers>

template <qxReal T>
CQXPerspective3DTransform<T>::~CQXPerspective3DTransform() = default;

template <qxReal T>
CQXPerspective3DTransform<T>& CQXPerspective3DTransform<T>::operator=(const Base& other) noexcept {
  View::operator=(other);
  return *this;
}

template <qxReal T>
CQXPerspective3DTransform<T>& CQXPerspective3DTransform<T>::operator=(const View& other) noexcept {
  View::operator=(other);
  if (other.GetTypeOfTransform() != QX_TRANSFORM_PERSPECTIVE) this->m_isReady = 0;
  return *this;
}

template <qxReal T>
CQXPerspective3DTransform<T>& CQXPerspective3DTransform<T>::operator=(const CQXPerspective3DTransform& other) noexcept =
    default;

template <qxReal T>
qxTransformType CQXPerspective3DTransform<T>::GetTypeOfTransform() const noexcept {
  return QX_TRANSFORM_PERSPECTIVE;
}

template <qxReal T>
void CQXPerspective3DTransform<T>::SetFieldOfView(T verticalAngleInDegrees, T aspect, T windowHeight) noexcept {
  const T half = verticalAngleInDegrees * std::numbers::pi_v<T> / 360;
  View::SetViewWindow(aspect * windowHeight, windowHeight);
  View::SetDistanceToPlane(windowHeight / 2 / std::tan(half));
}

template <qxReal T>
void CQXPerspective3DTransform<T>::GetFieldOfView(T& verticalAngleInDegrees, T& aspect) const noexcept {
  verticalAngleInDegrees = std::atan2(this->m_windowHeight / 2, this->m_distanceToPlane) * 360 / std::numbers::pi_v<T>;
  aspect = this->m_windowWidth / this->m_windowHeight;
}

template <qxReal T>
void CQXPerspective3DTransform<T>::SetViewVolumeDepths(T frontDepth, T backDepth) noexcept {
  View::SetViewVolumeDistances(frontDepth - this->m_distanceToPlane, backDepth - this->m_distanceToPlane);
}

template <qxReal T>
std::int32_t CQXPerspective3DTransform<T>::SetOffAxisWindow(T left, T right, T bottom, T top, T distance) noexcept {
  CQXVector3<T> normal = this->m_projectionNormal;
  if (normal.Normalize() == 0) return 0;
  CQXVector3<T> toTheRight = normal.Cross(this->m_viewUp);
  if (toTheRight.Normalize() == 0) return 0;
  const CQXVector3<T> up = toTheRight.Cross(normal);
  View::SetProjectionDirection(normal * distance + toTheRight * ((left + right) / 2) + up * ((bottom + top) / 2));
  View::SetViewWindow(right - left, top - bottom);
  View::SetDistanceToPlane(distance);
  return 1;
}

template <qxReal T>
std::int32_t CQXPerspective3DTransform<T>::Initialize() {
  this->m_isReady = 0;
  const T d = this->m_distanceToPlane, front = d + this->m_frontDistance, back = d + this->m_backDistance;
  const bool isBounded = this->m_useViewVolume != 0;
  if (!(d > 0) || !std::isfinite(d) || (isBounded && !(front > 0 && front < back)) || View::FindViewFrame() == 0)
    return 0;
  // Each row acts on p - eye: d axis + (eye - origin) . axis times the depth, divided by the depth.
  const CQXVector3<T>& eye = this->m_prp;
  const CQXVector3<T>& depth = this->m_localAxis3;
  const CQXVector3<T> x = this->m_localAxis1 * d + depth * this->m_localAxis1.Dot(eye - this->m_localOrigin);
  const CQXVector3<T> y = this->m_localAxis2 * d + depth * this->m_localAxis2.Dot(eye - this->m_localOrigin);
  const T zScale = isBounded ? back / (back - front) : T(1);
  const T zShift = isBounded ? -front * zScale : -d;
  this->m_matrix.SetRowVector(0, qxVector3To4(x, -x.Dot(eye)));
  this->m_matrix.SetRowVector(1, qxVector3To4(y, -y.Dot(eye)));
  this->m_matrix.SetRowVector(2, qxVector3To4(depth * zScale, zShift - zScale * depth.Dot(eye)));
  this->m_matrix.SetRowVector(3, qxVector3To4(depth, -depth.Dot(eye)));
  return this->m_isReady = 1;
}

template class CQXPerspective3DTransform<float>;
template class CQXPerspective3DTransform<double>;
