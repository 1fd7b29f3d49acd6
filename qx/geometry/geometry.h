#pragma once

#include <qx/foundation/api.h>
#include <qx/foundation/scalar.h>
#include <qx/foundation/tolerance.h>
#include <qx/geometry/fill_rule.h>
#include <qx/geometry/rectangle_border.h>
#include <qx/geometry/relative_location.h>
#include <qx/geometry/segments_intersection.h>
#include <qx/vectors/vector2.h>
#include <qx/vectors/vector3.h>
#include <qx/vectors/vector4.h>

#include <concepts>
#include <cstdint>

/// A vector of the plane or of space: CQXVector2 or CQXVector3, for float or double.
template <typename V>
concept qxGeometricVector =
    std::same_as<V, CQXVector2<typename V::Element>> || std::same_as<V, CQXVector3<typename V::Element>>;

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
  /// (cos angle, sin angle) from @p centre, which may lie outside; the farthest crossing of an edge. The polygon may be
  /// closed by a copy of its first vertex.
  /// @param[out] exit the point on the boundary
  /// @return 1; 0 when the ray misses the polygon or the polygon has no area: the output is untouched.
  template <qxReal T>
  static std::int32_t PolarRayPolygonIntersection(const CQXVector2<T>& centre, qxNonDeduced<T> angleInDegrees,
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

  // ---- Points, lines and segments, of the plane and of space

  /// The foot of the perpendicular from @p p to the line through @p a and @p b; a where both are one point.
  template <qxGeometricVector V>
  [[nodiscard]] static V ProjectOnLine(const V& p, const V& a, const V& b);

  /// The point of the segment from @p a to @p b that is nearest to @p p.
  template <qxGeometricVector V>
  [[nodiscard]] static V ClosestPointOnSegment(const V& p, const V& a, const V& b);

  /// Distance from the line through @p a and @p b, from a where both are one point. The root is guarded: below 3.16e-5
  /// (float: 3.16e-4) it is 0.
  template <qxGeometricVector V>
  [[nodiscard]] static typename V::Element DistanceToLine(const V& p, const V& a, const V& b);

  /// Distance from the segment from @p a to @p b; the root is guarded as that of DistanceToLine().
  template <qxGeometricVector V>
  [[nodiscard]] static typename V::Element DistanceToSegment(const V& p, const V& a, const V& b);

  /// The points of the line through @p a and @p b and of the line through @p c and @p d that are nearest to each other;
  /// in the plane both are the common point.
  /// @param[out] onFirst,onSecond may be arguments
  /// @return 1; 0 when the lines are parallel, the square of the sine of their angle within 16 eps of double of 0, or
  ///         one is a point: the outputs are untouched.
  template <qxGeometricVector V>
  static std::int32_t ClosestPointsOfLines(const V& a, const V& b, const V& c, const V& d, V& onFirst, V& onSecond);

  /// The points of the segments a b and c d that are nearest to each other; of parallel segments a pair with an end.
  /// @param[out] onFirst,onSecond may be arguments
  /// @return their distance; the root is guarded as that of DistanceToLine().
  template <qxGeometricVector V>
  static typename V::Element ClosestPointsOfSegments(const V& a, const V& b, const V& c, const V& d, V& onFirst,
                                                     V& onSecond);

  /// Finds what the closed segments a b and c d of the plane have in common. A segment may be a point.
  ///
  /// The kind is decided by the signs of four cross products in 64-bit floats, which are exact where the coordinates
  /// are whole numbers up to 2^25, and for floats of similar magnitude.
  /// @param[out] from,to ends of the common part in the direction of the first segment, ends of segments being copied;
  ///             equal unless it is QX_SEGMENTS_OVERLAP; untouched for QX_SEGMENTS_APART; may be arguments
  template <qxReal T>
  static qxSegmentsIntersection SegmentsIntersection(const CQXVector2<T>& a, const CQXVector2<T>& b,
                                                     const CQXVector2<T>& c, const CQXVector2<T>& d,
                                                     CQXVector2<T>& from, CQXVector2<T>& to);

  // ---- Planes (a, b, c, d), a x + b y + c z + d = 0, and triangles

  /// The plane through three points. Its normal has length 1 and sees the points counter-clockwise.
  /// @return 1; 0 when the points are on a line: the output is untouched.
  template <qxReal T>
  static std::int32_t PlaneThroughPoints(const CQXVector3<T>& a, const CQXVector3<T>& b, const CQXVector3<T>& c,
                                         CQXVector4<T>& plane);

  /// Signed distance, positive on the side of the normal, which needs no unit length; 0 for a zero normal.
  template <qxReal T>
  [[nodiscard]] static T DistanceToPlane(const CQXVector3<T>& p, const CQXVector4<T>& plane);

  /// The foot of the perpendicular from a point to a plane; the point itself for a zero normal.
  template <qxReal T>
  [[nodiscard]] static CQXVector3<T> ProjectOnPlane(const CQXVector3<T>& p, const CQXVector4<T>& plane);

  /// Cuts the closed segment from @p a to @p b by a plane. An end in the plane is copied; of a segment that lies in the
  /// plane it is the first one.
  /// @return 1; 0 when the segment does not reach the plane: the output is untouched.
  template <qxReal T>
  static std::int32_t SegmentPlaneIntersection(const CQXVector3<T>& a, const CQXVector3<T>& b,
                                               const CQXVector4<T>& plane, CQXVector3<T>& point);

  /// The line in which two planes meet.
  /// @param[out] point that of the line which is nearest to the origin
  /// @param[out] direction of length 1: first normal times second normal
  /// @return 1; 0 when the planes are parallel, the sine of their angle within 4 eps of the type of 0: the outputs are
  ///         untouched.
  template <qxReal T>
  static std::int32_t PlanesIntersection(const CQXVector4<T>& first, const CQXVector4<T>& second, CQXVector3<T>& point,
                                         CQXVector3<T>& direction);

  /// Cuts the line p + u v by the closed triangle a b c (Moeller and Trumbore 1997): its edges and vertices belong to
  /// it, seen from both sides. A ray or a segment asks for u >= 0, or u from 0 to 1, afterwards.
  /// @param[out] parameter u of the common point
  /// @param[out] weights its barycentric coordinates: it is weights.X a + weights.Y b + weights.Z c
  /// @return 1; 0 when the line misses the triangle or is parallel to it: the outputs are untouched.
  template <qxReal T>
  static std::int32_t LineTriangleIntersection(const CQXVector3<T>& p, const CQXVector3<T>& v, const CQXVector3<T>& a,
                                               const CQXVector3<T>& b, const CQXVector3<T>& c, T& parameter,
                                               CQXVector3<T>& weights);

  /// Barycentric coordinates of a point, in space of its foot on the plane of the triangle: the weights with sum 1 that
  /// make it weights.X a + weights.Y b + weights.Z c; all of them from 0 to 1 inside of the triangle.
  /// @return 1; 0 when the triangle has no area: the output is untouched.
  template <qxGeometricVector V>
  static std::int32_t BarycentricCoordinates(const V& p, const V& a, const V& b, const V& c,
                                             CQXVector3<typename V::Element>& weights);

  // ---- Polygons that need not be convex; they may be closed by a copy of the first vertex

  /// Area, positive for counter-clockwise vertices; of a polygon that crosses itself the sum over its winding numbers.
  template <qxReal T>
  [[nodiscard]] static T CalculatePolygonArea(std::int32_t n, const CQXVector2<T>* vertices);

  /// Length of the closed border.
  template <qxReal T>
  [[nodiscard]] static T CalculatePolygonPerimeter(std::int32_t n, const CQXVector2<T>* vertices);

  /// Centroid of the area. CalculatePolygonCenter() is the mean of the vertices.
  /// @return 1; 0 when the area is 0: the output is untouched.
  template <qxReal T>
  static std::int32_t CalculatePolygonCentroid(std::int32_t n, const CQXVector2<T>* vertices, CQXVector2<T>& centroid);

  /// How often a polygon goes round a point counter-clockwise, less the times that it does so clockwise; 0 for a point
  /// on an edge. O(n).
  template <qxReal T>
  [[nodiscard]] static std::int32_t FindWindingNumber(const CQXVector2<T>& point, std::int32_t n,
                                                      const CQXVector2<T>* vertices);

  /// Tells whether a point is inside a polygon; what is on an edge, exactly or within the tolerance, is inside. O(n).
  ///
  /// No quotient is formed: exact where SegmentsIntersection() is.
  /// @param tolerance a point outside at most this far from an edge counts as inside
  /// @return QX_LOCATION_INSIDE or QX_LOCATION_OUTSIDE; outside for no vertices and for a point that is not a number.
  template <qxReal T>
  [[nodiscard]] static qxRelativeLocation IsPointInPolygon(const CQXVector2<T>& point, std::int32_t n,
                                                           const CQXVector2<T>* vertices,
                                                           qxFillRule rule = QX_FILL_NON_ZERO,
                                                           qxNonDeduced<T> tolerance = 0);

  /// Tells whether the border of a polygon neither touches nor crosses itself: every two edges by
  /// SegmentsIntersection(). O(n log n) and the pairs of edges that are at one height; O(n^2) without memory.
  /// @return 1; 0 otherwise, also for less than 3 vertices, two equal ones in a row and coordinates that are not
  /// finite.
  template <qxReal T>
  [[nodiscard]] static std::int32_t IsPolygonSimple(std::int32_t n, const CQXVector2<T>* vertices);

  // ---- Bezier curves, of n control points and the degree n - 1, and polylines

  /// The point of a Bezier curve at @p t, from 0 to 1 for the curve itself; the zero vector for no control points.
  template <qxGeometricVector V>
  [[nodiscard]] static V BezierPoint(std::int32_t n, const V* controls, typename V::Element t);

  /// Cuts a Bezier curve at @p t into two of the same degree (de Casteljau).
  /// @param[out] left,right room for @p n control points each; right may be @p controls
  template <qxGeometricVector V>
  static void SplitBezier(std::int32_t n, const V* controls, typename V::Element t, V* left, V* right);

  /// Number of segments with equal steps of the parameter that keep a polyline within @p tolerance of a Bezier curve:
  /// ceil(sqrt(d (d - 1) M / (8 tolerance))), with the degree d and the longest second difference M of the control
  /// points (Wang 1984; Filip, Magedson and Markot 1986).
  /// @return at least 1; the largest integer where the tolerance is too small, 0, negative or not a number.
  template <qxGeometricVector V>
  [[nodiscard]] static std::int32_t CountBezierSegments(std::int32_t n, const V* controls,
                                                        typename V::Element tolerance);

  /// The polyline of a Bezier curve with equal steps of the parameter. Its ends are the first and the last control
  /// point exactly.
  /// @param segmentsNb for a tolerance from CountBezierSegments(); below 1 nothing is written
  /// @param[out] points room for segmentsNb + 1 points
  template <qxGeometricVector V>
  static void BezierPolyline(std::int32_t n, const V* controls, std::int32_t segmentsNb, V* points);

  /// Leaves out vertices of a polyline that are within the tolerance of what remains (Douglas and Peucker 1973). The
  /// ends stay. O(n log n) for most polylines, O(n^2) at worst.
  /// @param tolerance largest distance of a vertex from the segment that replaces it
  /// @param[out] m number of remaining points; 0 for none, and without memory: the result is untouched then
  /// @param[out] result room for @p n points; may be @p points
  template <qxGeometricVector V>
  static void SimplifyPolyline(std::int32_t n, const V* points, typename V::Element tolerance, std::int32_t& m,
                               V* result);
};
