#include <qx/geometry/geometry.h>
#include <qx/transforms/projective_3d_transform.h>
#include <qx/vectors/vector_functions.h>

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
CQXVector3<T> CQXProjective3DTransform<T>::CutByPlane(const CQXVector3<T>& p, const CQXVector3<T>& direction,
                                                      const CQXVector3<T>& outside,
                                                      qxBackFrontLocation location) const noexcept {
  CQXVector3<T> cut = outside;
  CQXGeometry::LinePlaneIntersection(p, direction, m_planeA, m_planeB, m_planeC,
                                     location == QX_BEFORE_FRONT_PLANE ? m_frontConstant : m_backConstant, cut);
  return cut;
}

template <qxReal T>
qxRelativeLocation CQXProjective3DTransform<T>::FindSegmentWindowIntersection(
    const CQXVector2<T>& a, const CQXVector2<T>& b, CQXVector2<T>& q1, CQXVector2<T>& q2, std::int32_t& clipped1,
    std::int32_t& clipped2, qxRectangleBorder& border1, qxRectangleBorder& border2) const noexcept {
  CQXVector2<T> first, last;
  if (CQXGeometry::ClipSegmentToRectangle(a, b, CQXVector2<T>(), WindowCorner(), first, last) == 0) {
    return QX_LOCATION_OUTSIDE;
  }
  clipped1 = 1 - qxAreAlmostEqual(first, a);
  clipped2 = 1 - qxAreAlmostEqual(last, b);
  border1 = FindBorderType(first, 0);
  border2 = FindBorderType(last, 0);
  q1 = first;
  q2 = last;
  return clipped1 != 0 || clipped2 != 0 ? QX_LOCATION_CLIPPED : QX_LOCATION_INSIDE;
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
    end1 = CutByPlane(p1, p2 - p1, p1, location1);
    cutByPlane = 3;
  } else if (location2 != QX_BETWEEN_PLANES) {
    end2 = CutByPlane(p1, p2 - p1, p2, location2);
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
std::int32_t CQXProjective3DTransform<T>::FindTrianglePlaneIntersection(const CQXVector3<T>* triangle,
                                                                        const qxBackFrontLocation* locations,
                                                                        CQXVector3<T>* polygon) const noexcept {
  bool isFront = false;
  for (std::int32_t i = 0; i < 3; ++i) isFront = isFront || locations[i] == QX_BEFORE_FRONT_PLANE;
  const qxBackFrontLocation side = isFront ? QX_BEFORE_FRONT_PLANE : QX_BEHIND_BACK_PLANE;
  std::int32_t count = 0;
  for (std::int32_t i = 0; i < 3; ++i) {
    const CQXVector3<T>& vertex = triangle[i];
    if (locations[i] != side) {
      polygon[count++] = vertex;
      continue;
    }
    // Always from the inside end: triangles that share an edge get the same point.
    for (const std::int32_t neighbour : {(i + 2) % 3, (i + 1) % 3}) {
      if (locations[neighbour] == side) continue;
      const CQXVector3<T>& inside = triangle[neighbour];
      polygon[count++] = CutByPlane(inside, vertex - inside, vertex, side);
    }
  }
  return count;
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
  const std::int32_t verticesNb = FindTrianglePlaneIntersection(in, locations, polygon);
  CQXVector2<T> vertices[4];
  for (std::int32_t i = 0; i < verticesNb; ++i) {
    if (!Project(polygon[i], vertices[i])) return QX_LOCATION_OUTSIDE;
  }

  bool isClipped = outsideNb > 0;
  qxRectangleBorder firstEntry = QX_BORDER_NONE;
  qxRectangleBorder pendingExit = QX_BORDER_NONE;  // kept over edges outside until an entry uses it
  const auto appendCorner = [&](qxRectangleBorder entry) {
    if (EncloseCornerPoint(pendingExit, entry, out[count]) != 0) ++count;
    pendingExit = QX_BORDER_NONE;
  };
  for (std::int32_t i = 0; i < verticesNb; ++i) {
    CQXVector2<T> q1, q2;
    std::int32_t clipped1, clipped2;
    qxRectangleBorder border1, border2;
    const qxRelativeLocation location = FindSegmentWindowIntersection(vertices[i], vertices[(i + 1) % verticesNb], q1,
                                                                      q2, clipped1, clipped2, border1, border2);
    if (location != QX_LOCATION_INSIDE) isClipped = true;
    if (location == QX_LOCATION_OUTSIDE) continue;
    if (clipped1 != 0) {
      if (firstEntry == QX_BORDER_NONE) firstEntry = border1;
      appendCorner(border1);
    }
    out[count++] = q1;
    if (clipped2 != 0) {
      out[count++] = q2;
      pendingExit = border2;
    }
  }
  appendCorner(firstEntry);
  if (count == 0) return QX_LOCATION_OUTSIDE;
  return isClipped ? QX_LOCATION_CLIPPED : QX_LOCATION_INSIDE;
}

template class CQXProjective3DTransform<float>;
template class CQXProjective3DTransform<double>;
