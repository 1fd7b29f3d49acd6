#include <qx/geometry/geometry.h>
#include <qx/transforms/internal/view_clipping.h>
#include <qx/transforms/projective_3d_transform.h>
#include <qx/vectors/vector_functions.h>

#include <cmath>

namespace {

/// The planes of a view's volume.
template <qxReal T>
qxViewClipping::Volume<T> VolumeOf(const CQXProjective3DTransform<T>& view) noexcept {
  qxViewClipping::Volume<T> volume;
  T d;
  view.GetProjectionPlane(volume.normal.X(), volume.normal.Y(), volume.normal.Z(), d);
  view.GetViewVolumeCoefficients(volume.front, volume.back);
  return volume;
}

}  // namespace

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

template <qxReal T>
void CQXProjective3DTransform<T>::SetPRP(const CQXVector3<T>& prp) noexcept {
  m_prp = prp;
  m_isReady = 0;
}

template <qxReal T>
void CQXProjective3DTransform<T>::SetProjectionDirection(const CQXVector3<T>& direction) noexcept {
  m_projectionDirection = direction;
  m_isReady = 0;
}

template <qxReal T>
void CQXProjective3DTransform<T>::SetDistanceToPlane(T distance) noexcept {
  m_distanceToPlane = distance;
  m_isReady = 0;
}

template <qxReal T>
void CQXProjective3DTransform<T>::LookAt(const CQXVector3<T>& eye, const CQXVector3<T>& target,
                                         const CQXVector3<T>& up) noexcept {
  SetProjectionNormal(target - eye);
  SetPRP(eye);
  SetProjectionDirection(CQXVector3<T>());
  SetViewUpVector(up);
}

template <qxReal T>
std::int32_t CQXProjective3DTransform<T>::SetWindowTile(T x, T y, T width, T height) noexcept {
  if (m_isReady == 0) return 0;
  const CQXVector3<T> centre = PointOfWindow({x + width / 2, y + height / 2});
  if (IsCentral()) {
    SetProjectionDirection(centre - m_prp);
  } else {
    SetPRP(m_prp + (centre - GetViewWindowCenter()));
  }
  SetViewWindow(width, height);
  return 1;
}

// ---- The view frame

template <qxReal T>
std::int32_t CQXProjective3DTransform<T>::FindViewFrame() noexcept {
  if (!(m_windowWidth >= T(0.5)) || !(m_windowHeight >= T(0.5))) return 0;
  m_localAxis3 = m_projectionNormal;
  CQXVector3<T> down = -m_viewUp;
  if (m_localAxis3.Normalize() == 0 || down.Normalize() == 0) return 0;
  FindLocalAxes(down, m_localAxis3);
  const T cosine = EffectiveDirection().Dot(m_localAxis3);
  if (m_localAxis2.IsAlmostUnit(T(1e-3)) == 0 || !(cosine > 0)) return 0;
  const CQXVector3<T> centre = m_prp + EffectiveDirection() * (m_distanceToPlane / cosine);
  m_localOrigin = FindCoordinatesCenter(centre, m_windowWidth, m_windowHeight);
  CalculatePlanesCoefficients(centre);
  CalculateFrontBackPlanes();
  return 1;
}

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

// ---- From the window back into space

template <qxReal T>
void CQXProjective3DTransform<T>::FindProjector(const CQXVector2<T>& q, CQXVector3<T>& origin,
                                                CQXVector3<T>& direction) const noexcept {
  const CQXVector3<T> point = PointOfWindow(q);
  origin = IsCentral() ? m_prp : point;
  direction = IsCentral() ? point - m_prp : EffectiveDirection();
}

template <qxReal T>
std::int32_t CQXProjective3DTransform<T>::FindPickingRay(const CQXVector2<T>& q, CQXVector3<T>& origin,
                                                         CQXVector3<T>& direction) const noexcept {
  if (m_isReady == 0) return 0;
  CQXVector3<T> start, along;
  FindProjector(q, start, along);
  if (m_useViewVolume != 0) {
    CQXGeometry::LinePlaneIntersection(start, along, m_planeA, m_planeB, m_planeC, m_frontConstant, start);
  }
  if (along.Normalize() == 0) return 0;
  origin = start;
  direction = along;
  return 1;
}

template <qxReal T>
std::int32_t CQXProjective3DTransform<T>::Unproject(const CQXVector2<T>& q, T distance,
                                                    CQXVector3<T>& p) const noexcept {
  return UnprojectToPlane(q, {m_planeA, m_planeB, m_planeC, m_planeD - distance}, p);
}

template <qxReal T>
std::int32_t CQXProjective3DTransform<T>::UnprojectToPlane(const CQXVector2<T>& q, const CQXVector4<T>& plane,
                                                           CQXVector3<T>& p) const noexcept {
  if (m_isReady == 0) return 0;
  CQXVector3<T> origin, direction, cut;
  FindProjector(q, origin, direction);
  if (CQXGeometry::LinePlaneIntersection(origin, direction, plane.X(), plane.Y(), plane.Z(), plane.W(), cut) == 0) {
    return 0;
  }
  if (IsCentral() && !(direction.Dot(cut - origin) > 0)) return 0;
  p = cut;
  return 1;
}

// ---- What can be seen

template <qxReal T>
std::int32_t CQXProjective3DTransform<T>::GetFrustumPlanes(CQXVector4<T>* planes) const noexcept {
  if (m_isReady == 0) return 0;
  const CQXVector4<T> x = m_matrix.RowVector(0), y = m_matrix.RowVector(1), weight = m_matrix.RowVector(3);
  const CQXVector4<T> none(0, 0, 0, 1);
  const bool isBounded = m_useViewVolume != 0;
  planes[0] = x;
  planes[1] = y;
  planes[2] = weight * m_windowWidth - x;
  planes[3] = weight * m_windowHeight - y;
  planes[4] = isBounded ? CQXVector4<T>(m_planeA, m_planeB, m_planeC, m_frontConstant) : IsCentral() ? weight : none;
  planes[5] = isBounded ? CQXVector4<T>(-m_planeA, -m_planeB, -m_planeC, -m_backConstant) : none;
  for (std::int32_t i = 0; i < 6; ++i) {
    const T square = qxCutVector4To3(planes[i]).SquareLength();
    if (square > 0) planes[i] /= std::sqrt(square);
  }
  return 1;
}

template <qxReal T>
std::int32_t CQXProjective3DTransform<T>::GetFrustumCorners(CQXVector3<T>* corners) const noexcept {
  if (m_isReady == 0 || m_useViewVolume == 0) return 0;
  const T w = m_windowWidth, h = m_windowHeight;
  const CQXVector2<T> window[] = {{0, 0}, {w, 0}, {w, h}, {0, h}};
  for (std::int32_t i = 0; i < 4; ++i) {
    Unproject(window[i], m_frontDistance, corners[i]);
    Unproject(window[i], m_backDistance, corners[4 + i]);
  }
  return 1;
}

template <qxReal T>
std::int32_t CQXProjective3DTransform<T>::IsBoxVisible(const CQXVector3<T>& lo,
                                                       const CQXVector3<T>& hi) const noexcept {
  CQXVector4<T> planes[6];
  if (GetFrustumPlanes(planes) == 0) return 0;
  for (const CQXVector4<T>& plane : planes) {
    // The corner that is farthest inside.
    const CQXVector3<T> corner(plane.X() < 0 ? lo.X() : hi.X(), plane.Y() < 0 ? lo.Y() : hi.Y(),
                               plane.Z() < 0 ? lo.Z() : hi.Z());
    if (plane.Dot(qxVector3To4(corner, 1)) < 0) return 0;
  }
  return 1;
}

template <qxReal T>
std::int32_t CQXProjective3DTransform<T>::IsSphereVisible(const CQXVector3<T>& centre, T radius) const noexcept {
  CQXVector4<T> planes[6];
  if (GetFrustumPlanes(planes) == 0) return 0;
  for (const CQXVector4<T>& plane : planes) {
    if (plane.Dot(qxVector3To4(centre, 1)) < -radius) return 0;
  }
  return 1;
}

// ---- Clipping

template <qxReal T>
qxRectangleBorder CQXProjective3DTransform<T>::FindBorderType(const CQXVector2<T>& q,
                                                              std::int32_t horizontalFirst) const noexcept {
  return CQXGeometry::PointRelativelyRectangleBorder(q, CQXVector2<T>(), WindowCorner(), horizontalFirst);
}

template <qxReal T>
std::int32_t CQXProjective3DTransform<T>::EncloseCornerPoint(qxRectangleBorder border1, qxRectangleBorder border2,
                                                             CQXVector2<T>& q) const noexcept {
  return CQXGeometry::EncloseCornerPoint(border1, border2, CQXVector2<T>(), WindowCorner(), q);
}

template <qxReal T>
qxRelativeLocation CQXProjective3DTransform<T>::FindSegmentWindowIntersection(
    const CQXVector2<T>& a, const CQXVector2<T>& b, CQXVector2<T>& q1, CQXVector2<T>& q2, std::int32_t& clipped1,
    std::int32_t& clipped2, qxRectangleBorder& border1, qxRectangleBorder& border2) const noexcept {
  qxViewClipping::Segment<T> left;
  const qxRelativeLocation location = qxViewClipping::ClipSegment(WindowCorner(), a, b, left);
  if (location == QX_LOCATION_OUTSIDE) return location;
  q1 = left.q1;
  q2 = left.q2;
  clipped1 = left.clipped1;
  clipped2 = left.clipped2;
  border1 = left.border1;
  border2 = left.border2;
  return location;
}

template <qxReal T>
std::int32_t CQXProjective3DTransform<T>::FindTrianglePlaneIntersection(const CQXVector3<T>* triangle,
                                                                        const qxBackFrontLocation* locations,
                                                                        CQXVector3<T>* polygon) const noexcept {
  return qxViewClipping::CutTriangle(VolumeOf(*this), triangle, locations, polygon);
}

template <qxReal T>
qxRelativeLocation CQXProjective3DTransform<T>::ProjectClippedSegment(const CQXVector3<T>& p1, const CQXVector3<T>& p2,
                                                                      CQXVector2<T>& q1,
                                                                      CQXVector2<T>& q2) const noexcept {
  if (m_isReady == 0) return QX_LOCATION_OUTSIDE;
  const qxBackFrontLocation location1 = IsPointBetweenBackFrontPlanes(p1);
  const qxBackFrontLocation location2 = IsPointBetweenBackFrontPlanes(p2);
  CQXVector3<T> end1 = p1, end2 = p2;
  std::int32_t cutByPlane = 0;
  if (location1 != QX_BETWEEN_PLANES && location2 != QX_BETWEEN_PLANES) return QX_LOCATION_OUTSIDE;
  if (location1 != QX_BETWEEN_PLANES) {
    end1 = qxViewClipping::CutByPlane(VolumeOf(*this), p1, p2 - p1, p1, location1);
    cutByPlane = 3;
  } else if (location2 != QX_BETWEEN_PLANES) {
    end2 = qxViewClipping::CutByPlane(VolumeOf(*this), p1, p2 - p1, p2, location2);
    cutByPlane = 4;
  }
  CQXVector2<T> a, b;
  if (!Project(end1, a) || !Project(end2, b)) return QX_LOCATION_OUTSIDE;
  if (IsInsideViewWindow(a) != 0 && IsInsideViewWindow(b) != 0) {
    q1 = a;
    q2 = b;
    return static_cast<qxRelativeLocation>(cutByPlane);
  }
  std::int32_t clipped1, clipped2;
  qxRectangleBorder border1, border2;
  return FindSegmentWindowIntersection(a, b, q1, q2, clipped1, clipped2, border1, border2);
}

template <qxReal T>
qxRelativeLocation CQXProjective3DTransform<T>::ProjectClippedTriangle(const CQXVector3<T>* in, CQXVector2<T>* out,
                                                                       std::int32_t& count) const noexcept {
  count = 0;
  if (m_isReady == 0) return QX_LOCATION_OUTSIDE;
  qxBackFrontLocation locations[3];
  std::int32_t outsideNb = 0;
  for (std::int32_t i = 0; i < 3; ++i) {
    locations[i] = IsPointBetweenBackFrontPlanes(in[i]);
    if (locations[i] != QX_BETWEEN_PLANES) ++outsideNb;
  }
  if (outsideNb == 3) return QX_LOCATION_OUTSIDE;
  CQXVector3<T> polygon[4];
  CQXVector2<T> vertices[4];
  const std::int32_t verticesNb = FindTrianglePlaneIntersection(in, locations, polygon);
  for (std::int32_t i = 0; i < verticesNb; ++i) {
    if (!Project(polygon[i], vertices[i])) return QX_LOCATION_OUTSIDE;
  }
  const qxRelativeLocation location = qxViewClipping::ClipOutline(WindowCorner(), verticesNb, vertices, out, count);
  return location == QX_LOCATION_INSIDE && outsideNb > 0 ? QX_LOCATION_CLIPPED : location;
}

template class CQXProjective3DTransform<float>;
template class CQXProjective3DTransform<double>;
