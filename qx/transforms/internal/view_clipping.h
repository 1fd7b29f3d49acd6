#pragma once

#include <qx/foundation/scalar.h>
#include <qx/geometry/rectangle_border.h>
#include <qx/geometry/relative_location.h>
#include <qx/transforms/back_front_location.h>
#include <qx/vectors/vector2.h>
#include <qx/vectors/vector3.h>

#include <cstdint>

/// @file
/// Clipping by the two planes of a view volume and by the window. Internal, not part of the interface.

namespace qxViewClipping {

/// Front and back plane n p + constant = 0 of a view volume.
template <qxReal T>
struct Volume {
  CQXVector3<T> normal;
  T front, back;
};

/// Moves the end of a segment that is beyond a plane of the volume onto it: p + u @p direction, with u clamped to
/// [0, 1], so that a segment in the plane whose ends rounding has put on both sides stays where it is.
/// @param p,direction the segment p, p + direction
/// @param outside the end beyond the plane, which is the result for a segment exactly parallel to the plane
template <qxReal T>
[[nodiscard]] CQXVector3<T> CutByPlane(const Volume<T>& volume, const CQXVector3<T>& p, const CQXVector3<T>& direction,
                                       const CQXVector3<T>& outside, qxBackFrontLocation location) noexcept;

/// Cuts a triangle by one plane: CQXProjective3DTransform::FindTrianglePlaneIntersection().
template <qxReal T>
std::int32_t CutTriangle(const Volume<T>& volume, const CQXVector3<T>* triangle, const qxBackFrontLocation* locations,
                         CQXVector3<T>* polygon) noexcept;

/// What a window leaves of a segment.
template <qxReal T>
struct Segment {
  CQXVector2<T> q1, q2;
  std::int32_t clipped1, clipped2;
  qxRectangleBorder border1, border2;
};

/// Clips a segment by the window from (0, 0) to @p corner: CQXProjective3DTransform::FindSegmentWindowIntersection().
template <qxReal T>
qxRelativeLocation ClipSegment(const CQXVector2<T>& corner, const CQXVector2<T>& a, const CQXVector2<T>& b,
                               Segment<T>& left) noexcept;

/// Clips the outline of a polygon by the window from (0, 0) to @p corner, with one corner of the window between an exit
/// and the next entry through a neighbouring edge.
/// @param[out] out room for three points a vertex
/// @return QX_LOCATION_INSIDE when all of it is left, QX_LOCATION_OUTSIDE when nothing is, else QX_LOCATION_CLIPPED.
template <qxReal T>
qxRelativeLocation ClipOutline(const CQXVector2<T>& corner, std::int32_t n, const CQXVector2<T>* vertices,
                               CQXVector2<T>* out, std::int32_t& count) noexcept;

}  // namespace qxViewClipping
