#include <qx/foundation/internal/instantiate.h>
#include <qx/geometry/geometry.h>
#include <qx/transforms/internal/view_clipping.h>
#include <qx/vectors/vector_functions.h>

namespace qxViewClipping {

template <qxReal T>
CQXVector3<T> CutByPlane(const Volume<T>& volume, const CQXVector3<T>& p, const CQXVector3<T>& direction,
                         const CQXVector3<T>& outside, qxBackFrontLocation location) noexcept {
  const T speed = volume.normal.Dot(direction);
  if (speed == 0) return outside;
  const T constant = location == QX_BEFORE_FRONT_PLANE ? volume.front : volume.back;
  const T u = -(volume.normal.Dot(p) + constant) / speed;
  return p + direction * (u < 0 ? T(0) : u > 1 ? T(1) : u);
}

template <qxReal T>
std::int32_t CutTriangle(const Volume<T>& volume, const CQXVector3<T>* triangle, const qxBackFrontLocation* locations,
                         CQXVector3<T>* polygon) noexcept {
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
      polygon[count++] = CutByPlane(volume, inside, vertex - inside, vertex, side);
    }
  }
  return count;
}

template <qxReal T>
qxRelativeLocation ClipSegment(const CQXVector2<T>& corner, const CQXVector2<T>& a, const CQXVector2<T>& b,
                               Segment<T>& left) noexcept {
  CQXVector2<T> first, last;
  if (CQXGeometry::ClipSegmentToRectangle(a, b, CQXVector2<T>(), corner, first, last) == 0) return QX_LOCATION_OUTSIDE;
  left = {first,
          last,
          1 - qxAreAlmostEqual(first, a),
          1 - qxAreAlmostEqual(last, b),
          CQXGeometry::PointRelativelyRectangleBorder(first, CQXVector2<T>(), corner, 0),
          CQXGeometry::PointRelativelyRectangleBorder(last, CQXVector2<T>(), corner, 0)};
  return left.clipped1 != 0 || left.clipped2 != 0 ? QX_LOCATION_CLIPPED : QX_LOCATION_INSIDE;
}

template <qxReal T>
qxRelativeLocation ClipOutline(const CQXVector2<T>& corner, std::int32_t n, const CQXVector2<T>* vertices,
                               CQXVector2<T>* out, std::int32_t& count) noexcept {
  count = 0;
  bool isClipped = false;
  qxRectangleBorder firstEntry = QX_BORDER_NONE;
  qxRectangleBorder pendingExit = QX_BORDER_NONE;  // kept over edges outside until an entry uses it
  const auto appendCorner = [&](qxRectangleBorder entry) {
    count += CQXGeometry::EncloseCornerPoint(pendingExit, entry, CQXVector2<T>(), corner, out[count]);
    pendingExit = QX_BORDER_NONE;
  };
  for (std::int32_t i = 0; i < n; ++i) {
    Segment<T> edge;
    const qxRelativeLocation location = ClipSegment(corner, vertices[i], vertices[(i + 1) % n], edge);
    if (location != QX_LOCATION_INSIDE) isClipped = true;
    if (location == QX_LOCATION_OUTSIDE) continue;
    if (edge.clipped1 != 0) {
      if (firstEntry == QX_BORDER_NONE) firstEntry = edge.border1;
      appendCorner(edge.border1);
    }
    out[count++] = edge.q1;
    if (edge.clipped2 != 0) {
      out[count++] = edge.q2;
      pendingExit = edge.border2;
    }
  }
  appendCorner(firstEntry);
  if (count == 0) return QX_LOCATION_OUTSIDE;
  return isClipped ? QX_LOCATION_CLIPPED : QX_LOCATION_INSIDE;
}

#define QX_INSTANTIATE(T)                                                                                           \
  template CQXVector3<T> CutByPlane(const Volume<T>&, const CQXVector3<T>&, const CQXVector3<T>&,                   \
                                    const CQXVector3<T>&, qxBackFrontLocation) noexcept;                            \
  template std::int32_t CutTriangle(const Volume<T>&, const CQXVector3<T>*, const qxBackFrontLocation*,             \
                                    CQXVector3<T>*) noexcept;                                                       \
  template qxRelativeLocation ClipSegment(const CQXVector2<T>&, const CQXVector2<T>&, const CQXVector2<T>&,         \
                                          Segment<T>&) noexcept;                                                    \
  template qxRelativeLocation ClipOutline(const CQXVector2<T>&, std::int32_t, const CQXVector2<T>*, CQXVector2<T>*, \
                                          std::int32_t&) noexcept;
QX_FOR_FLOAT_AND_DOUBLE(QX_INSTANTIATE)
#undef QX_INSTANTIATE

}  // namespace qxViewClipping
