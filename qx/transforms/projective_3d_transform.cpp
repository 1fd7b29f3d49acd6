#include <qx/geometry/geometry.h>
#include <qx/transforms/projective_3d_transform.h>
#include <qx/vectors/vector_functions.h>

template <qxReal T>
CQXProjective3DTransform<T>::~CQXProjective3DTransform() = default;

template <qxReal T>
CQXProjective3DTransform<T>& CQXProjective3DTransform<T>::operator=(const Base& other) noexcept {
  Base::operator=(other);
  return *this;
}

template <qxReal T>
CQXProjective3DTransform<T>& CQXProjective3DTransform<T>::operator=(const CQXProjective3DTransform& other) noexcept =
    default;

// ---- Setting

template <qxReal T>
void CQXProjective3DTransform<T>::SetDefault() noexcept {
  m_localOrigin = m_localAxis1 = m_localAxis2 = m_localAxis3 = CQXVector3<T>();
  m_prp = m_projectionDirection = m_viewUp = m_projectionNormal = CQXVector3<T>();
  m_planeA = m_planeB = m_planeC = m_planeD = 0;
  m_frontConstant = m_backConstant = 0;
  m_distanceToPlane = 0;
  m_windowWidth = m_windowHeight = 0;
  m_frontDistance = m_backDistance = 0;
  m_useViewVolume = 0;
  m_isReady = 0;
}

template <qxReal T>
void CQXProjective3DTransform<T>::Set(const CQXVector3<T>& prp, const CQXVector3<T>& projectionDirection,
                                      const CQXVector3<T>& viewUp, const CQXVector3<T>& projectionNormal,
                                      T distanceToPlane, T windowWidth, T windowHeight, T frontDistance,
                                      T backDistance) noexcept {
  m_prp = prp;
  m_projectionDirection = projectionDirection;
  m_viewUp = viewUp;
  m_projectionNormal = projectionNormal;
  m_distanceToPlane = distanceToPlane;
  SetViewWindow(windowWidth, windowHeight);
  SetViewVolumeDistances(frontDistance, backDistance);
}

template <qxReal T>
void CQXProjective3DTransform<T>::SetViewVolumeDistances(T frontDistance, T backDistance) noexcept {
  m_frontDistance = frontDistance;
  m_backDistance = backDistance;
  m_useViewVolume = 1;
  m_isReady = 0;
}

template <qxReal T>
void CQXProjective3DTransform<T>::SetViewWindow(T width, T height) noexcept {
  m_windowWidth = width;
  m_windowHeight = height;
  m_isReady = 0;
}

template <qxReal T>
void CQXProjective3DTransform<T>::UseBackFrontPlanes(std::int32_t flag) noexcept {
  m_useViewVolume = flag;
  m_isReady = 0;
}

template <qxReal T>
void CQXProjective3DTransform<T>::SetProjectionNormal(const CQXVector3<T>& normal) noexcept {
  m_projectionNormal = normal;
  m_isReady = 0;
}

template <qxReal T>
void CQXProjective3DTransform<T>::SetViewUpVector(const CQXVector3<T>& up) noexcept {
  m_viewUp = up;
  m_isReady = 0;
}

// ---- The view frame

template <qxReal T>
void CQXProjective3DTransform<T>::GetLocalCoordinates(CQXVector3<T>& origin, CQXVector3<T>& axis1, CQXVector3<T>& axis2,
                                                      CQXVector3<T>& axis3) const noexcept {
  origin = m_localOrigin;
  axis1 = m_localAxis1;
  axis2 = m_localAxis2;
  axis3 = m_localAxis3;
}

template <qxReal T>
CQXMatrix4<T> CQXProjective3DTransform<T>::GetLocalCoordinates() const noexcept {
  CQXMatrix4<T> frame;
  frame.SetColVector(0, qxVector3To4(m_localAxis1, 0));
  frame.SetColVector(1, qxVector3To4(m_localAxis2, 0));
  frame.SetColVector(2, qxVector3To4(m_localAxis3, 0));
  frame.SetColVector(3, qxVector3To4(m_localOrigin, 1));
  return frame;
}

template <qxReal T>
CQXVector3<T> CQXProjective3DTransform<T>::GetViewWindowCenter() const noexcept {
  return m_localOrigin + m_localAxis1 * (m_windowWidth / 2) + m_localAxis2 * (m_windowHeight / 2);
}

template <qxReal T>
CQXVector3<T> CQXProjective3DTransform<T>::FindCoordinatesCenter(const CQXVector3<T>& c, T w, T h) const noexcept {
  return c - m_localAxis1 * (w / 2) - m_localAxis2 * (h / 2);
}

template <qxReal T>
void CQXProjective3DTransform<T>::FindLocalAxes(const CQXVector3<T>& up, const CQXVector3<T>&) noexcept {
  m_localAxis2 = up - m_localAxis3 * up.Dot(m_localAxis3);
  m_localAxis2.Normalize();
  m_localAxis1 = m_localAxis2.Cross(m_localAxis3);
}

template <qxReal T>
void CQXProjective3DTransform<T>::CalculatePlanesCoefficients(const CQXVector3<T>& p) noexcept {
  m_planeA = m_localAxis3.X();
  m_planeB = m_localAxis3.Y();
  m_planeC = m_localAxis3.Z();
  m_planeD = -m_localAxis3.Dot(p);
}

template <qxReal T>
void CQXProjective3DTransform<T>::CalculateFrontBackPlanes() noexcept {
  m_frontConstant = m_planeD - m_frontDistance;
  m_backConstant = m_planeD - m_backDistance;
}

// ---- Points

template <qxReal T>
qxBackFrontLocation CQXProjective3DTransform<T>::IsPointBetweenBackFrontPlanes(const CQXVector3<T>& p) const noexcept {
  if (m_useViewVolume == 0) return QX_BETWEEN_PLANES;
  const T g = m_planeA * p.X() + m_planeB * p.Y() + m_planeC * p.Z();
  if (g + m_frontConstant < 0) return QX_BEFORE_FRONT_PLANE;
  if (g + m_backConstant > 0) return QX_BEHIND_BACK_PLANE;
  return QX_BETWEEN_PLANES;
}

template <qxReal T>
bool CQXProjective3DTransform<T>::Project(const CQXVector3<T>& p, CQXVector2<T>& q) const noexcept {
  CQXVector3<T> projected;
  T weight;
  if (qxVector4To3(m_matrix * qxVector3To4(p, 1), T(1e-6), projected, weight) == 0) return false;
  q = qxCutVector3To2(projected);
  return true;
}

template <qxReal T>
std::int32_t CQXProjective3DTransform<T>::ProjectPoint(const CQXVector3<T>& p, CQXVector2<T>& q) const noexcept {
  if (m_isReady == 0 || IsPointBetweenBackFrontPlanes(p) != QX_BETWEEN_PLANES || !Project(p, q)) return 0;
  return IsInsideViewWindow(q);
}

template <qxReal T>
qxRelativeLocation CQXProjective3DTransform<T>::ProjectPoints(std::int32_t n, const CQXVector3<T>* points,
                                                              CQXVector2<T>* projections,
                                                              std::int32_t* flags) const noexcept {
  if (m_isReady == 0) return QX_LOCATION_OUTSIDE;
  std::int32_t insideNb = 0;
  for (std::int32_t i = 0; i < n; ++i) {
    flags[i] = ProjectPoint(points[i], projections[i]);
    insideNb += flags[i];
  }
  if (insideNb >= n) return QX_LOCATION_INSIDE;
  return insideNb == 0 ? QX_LOCATION_OUTSIDE : QX_LOCATION_CLIPPED;
}

template class CQXProjective3DTransform<float>;
template class CQXProjective3DTransform<double>;
