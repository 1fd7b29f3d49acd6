#pragma once

#include <qx/foundation/api.h>
#include <qx/foundation/scalar.h>
#include <qx/foundation/tolerance.h>
#include <qx/geometry/rectangle_border.h>
#include <qx/geometry/relative_location.h>
#include <qx/vectors/vector2.h>
#include <qx/vectors/vector3.h>

#include <cstdint>
#include <type_traits>

/// Geometry of the plane on arrays of CQXVector2, and of lines and planes in space, for float and double.
///
/// A polygon is an array of vertices with their count; the last vertex is joined to the first. "Convex polygon" means
/// vertices in order, counter-clockwise or clockwise; a single point and a segment are polygons of one and two
/// vertices. Vertices are inside their polygon. Polygons that are written are counter-clockwise. Decisions are made in
/// 64-bit floats for both types.
///
/// Two points coincide when they differ by at most 1e-6 in x and in y: scale data whose details are of that size.
/// Points with a coordinate that is not a number are never vertices of a hull. Nothing is kept between calls: calls may
/// run in any number of threads.
class QX_API CQXGeometry {
 public:
  /// Builds the convex hull of @p n points, counter-clockwise, from the left end of the lowest run: the leftmost vertex
  /// less than 1e-6 above the lowest.
  ///
  /// Coincident points count once, by the lowest of them. A vertex v gives way to a farther one w when, from the vertex
  /// before, the slopes dy / dx to v and w are within 1e-6 of each other (or both directions are vertical within 1e-6)
  /// and v is within 1e-6 of the line to w: points on a line yield its two ends. The hull contains all points within
  /// some 1e-6. O(n log n); most points inside are put aside in one pass.
  /// @param points not changed
  /// @param[out] m number of vertices; 0 when there are no points, or no memory: the hull is untouched then
  /// @param[out] hull room for @p n vertices; may be @p points
  template <qxReal T>
  static void BuildConvexHull(std::int32_t n, const CQXVector2<T>* points, std::int32_t& m, CQXVector2<T>* hull);

  /// Tests whether all turns of a polygon have one sign. Turns that rounding of the coordinates can cause count as
  /// none.
  ///
  /// A polygon that goes round more than once with turns of one sign, a pentagram for instance, counts as convex.
  /// @return 1 when convex, and for 3 vertices and less; 0 otherwise.
  template <qxReal T>
  [[nodiscard]] static std::int32_t TestConvexity(std::int32_t n, const CQXVector2<T>* vertices);

  /// Extends a counter-clockwise hull by a point: it becomes the hull that BuildConvexHull() finds for its vertices and
  /// the point, with the same rule for points on a line. O(n) for a point inside, O(n log n) for others.
  /// @param[in,out] n number of vertices, at most one more afterwards; the hull may start with none
  /// @param[in,out] hull room for n + 1 vertices
  /// @return 1; 0 when the point is inside, on an edge by the rule of BuildConvexHull(), coincident with a vertex or
  ///         not a number, and when there is no memory: nothing changes.
  template <qxReal T>
  static std::int32_t AddPointToConvexHall(const CQXVector2<T>& point, std::int32_t& n, CQXVector2<T>* hull);

  /// Extends a counter-clockwise hull of at least 2 vertices by a point that lies outside of one known edge: puts it
  /// between the ends of the edge and takes out the vertices on both sides that no longer turn to the left.
  ///
  /// The edge is taken as seen; use AddPointToConvexHall() when it is not known.
  /// @param edge index of the vertex where the edge begins, from 0 to n - 1
  /// @param[in,out] n number of vertices, at most one more afterwards
  /// @param[in,out] hull room for n + 1 vertices; starts at the left end of the lowest run afterwards
  /// @return 1; 0 when the point is on the edge or on its inner side, or there is no such edge: nothing
  ///         changes.
  template <qxReal T>
  static std::int32_t UpdateConvexHallEdge(const CQXVector2<T>& point, std::int32_t edge, std::int32_t& n,
                                           CQXVector2<T>* hull);

  /// Tells whether a point is inside a convex polygon, open or closed by a copy of its first vertex.
  ///
  /// Vertices that rounding has moved off their edge do no harm: near the border, and where vertices lie so closely
  /// that rounding turns their edges, the point is counted by all edges. O(log n) for n vertices, O(n) there and for
  /// polygons that are hardly thicker than the rounding of their coordinates.
  /// @param tolerance a point outside at most this far from an edge counts as inside
  /// @return QX_LOCATION_INSIDE or QX_LOCATION_OUTSIDE; outside for no vertices and for a point that is not a number.
  template <qxReal T>
  [[nodiscard]] static qxRelativeLocation IsPointInConvexPolygon(const CQXVector2<T>& point, std::int32_t n,
                                                                 const CQXVector2<T>* vertices,
                                                                 qxNonDeduced<T> tolerance = QX_PREDICATE_TOLERANCE<T>);

  /// Hull of two polygons, as BuildConvexHull() writes it.
  /// @param[out] k number of vertices
  /// @param[out] result room for n + m vertices; may be one of the polygons
  template <qxReal T>
  static void UniteConvexPolygons(std::int32_t n, const CQXVector2<T>* a, std::int32_t m, const CQXVector2<T>* b,
                                  std::int32_t& k, CQXVector2<T>* result);

  /// Intersection of two convex polygons, counter-clockwise; a segment or a point where they touch. O(n m).
  ///
  /// One of the polygons must have an area; the other may be a segment or a point.
  /// @param[out] k number of vertices, at most n + m; 0 when nothing is common: the result is untouched then
  /// @param[out] result room for n + m vertices; may be one of the polygons
  /// @return 1 when something is common, else 0, also when neither polygon has an area.
  template <qxReal T>
  static std::int32_t IntersectConvexPolygons(std::int32_t n, const CQXVector2<T>* a, std::int32_t m,
                                              const CQXVector2<T>* b, std::int32_t& k, CQXVector2<T>* result);

  /// Intersection of a convex polygon with the closed rectangle of two opposite corners, counter-clockwise. A
  /// coordinate that is cut is exactly the one of the border.
  /// @param[out] k number of vertices, at most n + 4; 0 when nothing is common: the result is untouched then
  /// @param[out] result room for n + 4 vertices; may be @p vertices
  /// @return 1 when something is common, else 0.
  template <qxReal T>
  static std::int32_t ConvexPolygonRectangleIntersection(std::int32_t n, const CQXVector2<T>* vertices,
                                                         const CQXVector2<T>& corner, const CQXVector2<T>& opposite,
                                                         std::int32_t& k, CQXVector2<T>* result);

  /// Cuts a convex polygon by the horizontal line at @p y.
  /// @param[out] x1,x2 ends of the common segment, x1 <= x2; equal where the line touches a vertex
  /// @return 1; 0 when the line misses the polygon: the outputs are untouched.
  template <qxReal T>
  static std::int32_t HorizIntersectionConvexPolygon(std::int32_t n, const CQXVector2<T>* vertices, qxNonDeduced<T> y,
                                                     T& x1, T& x2);

  /// Cuts a convex polygon by the vertical line at @p x.
  /// @param[out] y1,y2 ends of the common segment, y1 <= y2; equal where the line touches a vertex
  /// @return 1; 0 when the line misses the polygon: the outputs are untouched.
  template <qxReal T>
  static std::int32_t VertIntersectionConvexPolygon(std::int32_t n, const CQXVector2<T>* vertices, qxNonDeduced<T> x,
                                                    T& y1, T& y2);

  /// Finds where a ray leaves a convex polygon of at least 3 vertices: the exit of the direction
  /// (cos angle, sin angle) from @p center, which may lie outside; the farthest crossing of an edge. The polygon may be
  /// closed by a copy of its first vertex.
  /// @param[out] exit the point on the boundary
  /// @return 1; 0 when the ray misses the polygon or the polygon has no area: the output is untouched.
  template <qxReal T>
  static std::int32_t PolarRayPolygonIntersection(const CQXVector2<T>& center, qxNonDeduced<T> angleInDegrees,
                                                  std::int32_t n, const CQXVector2<T>* vertices, CQXVector2<T>& exit);

  /// Mean of the vertices, formed with the weight 1 / n; (0, 0) for none. It is inside the polygon, and in general not
  /// the centroid of its area.
  template <qxReal T>
  [[nodiscard]] static CQXVector2<T> CalculatePolygonCenter(std::int32_t n, const CQXVector2<T>* vertices);

  /// Largest distance between two vertices of any polygon, by rotating calipers about its hull in O(n log n); O(n^2)
  /// when there is no memory. Vertices that are not numbers are passed over. The root is guarded: below 3.16e-5 (float:
  /// 3.16e-4) it is 0.
  template <qxReal T>
  [[nodiscard]] static T CalculatePolygonDiameter(std::int32_t n, const CQXVector2<T>* vertices);

  /// Least distance from CalculatePolygonCenter() to an edge of a convex polygon: the circle of this radius about the
  /// centre lies inside. 0 for less than 3 vertices; the root is guarded as that of the diameter.
  template <qxReal T>
  [[nodiscard]] static T CalculatePolygonInternalRadius(std::int32_t n, const CQXVector2<T>* vertices);

  // ---- Lines, planes and rectangles

  /// Cuts the line p + u v by the plane a x + b y + c z + d = 0.
  /// @param[out] point the common point; far away when the line is nearly parallel to the plane
  /// @return 1; 0 when a v.x + b v.y + c v.z is exactly 0, so that the line is parallel: the output is untouched.
  template <qxReal T>
  static std::int32_t LinePlaneIntersection(const CQXVector3<T>& p, const CQXVector3<T>& v, qxNonDeduced<T> a,
                                            qxNonDeduced<T> b, qxNonDeduced<T> c, qxNonDeduced<T> d,
                                            CQXVector3<T>& point);

  /// The foot of the perpendicular from the origin to the plane a x + b y + c z + d = 0, -d (a, b, c) / (a^2 + b^2 +
  /// c^2). The normal needs no unit length; for a zero normal, or one whose square underflows to 0, the origin.
  template <qxReal T>
  [[nodiscard]] static CQXVector3<T> GetPointOnPlane(T a, T b, T c, T d);

  /// Cuts a segment by the closed rectangle lo.x <= x <= hi.x, lo.y <= y <= hi.y (Liang and Barsky 1984).
  ///
  /// An end inside is copied exactly; a clipped coordinate is exactly the one of the border. A segment that is a point,
  /// and one that touches the rectangle in a point, is left as a point.
  /// @param[out] qa,qb ends of what is left, in the direction of the segment; may be @p a and @p b
  /// @return 1; 0 when nothing is left, also for ends that are not finite: the outputs are untouched.
  template <qxReal T>
  static std::int32_t ClipSegmentToRectangle(const CQXVector2<T>& a, const CQXVector2<T>& b, const CQXVector2<T>& lo,
                                             const CQXVector2<T>& hi, CQXVector2<T>& qa, CQXVector2<T>& qb);

  /// The edge of a rectangle on whose line a point lies: exactly, or else within 1e-6. At a corner the first of the
  /// order of testing wins.
  /// @param horizontalFirst 0 tests in the order left, right, top, bottom; another value top, bottom, left, right
  template <qxReal T>
  [[nodiscard]] static qxRectangleBorder PointRelativelyRectangleBorder(const CQXVector2<T>& p, const CQXVector2<T>& lo,
                                                                        const CQXVector2<T>& hi,
                                                                        std::int32_t horizontalFirst);

  /// The corner where two edges of a rectangle meet.
  /// @return 1; 0 for one edge twice, opposite edges and QX_BORDER_NONE: the output is untouched.
  template <qxReal T>
  static std::int32_t EncloseCornerPoint(qxRectangleBorder border1, qxRectangleBorder border2, const CQXVector2<T>& lo,
                                         const CQXVector2<T>& hi, CQXVector2<T>& corner);
};
