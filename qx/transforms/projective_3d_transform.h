#pragma once

#include <qx/foundation/api.h>
#include <qx/foundation/scalar.h>
#include <qx/geometry/rectangle_border.h>
#include <qx/geometry/relative_location.h>
#include <qx/matrices/matrix4.h>
#include <qx/transforms/back_front_location.h>
#include <qx/transforms/base_3d_transform.h>
#include <qx/transforms/clip_space.h>
#include <qx/vectors/vector2.h>
#include <qx/vectors/vector3.h>
#include <qx/vectors/vector4.h>

#include <cstdint>

/// A camera in world space: a view plane with a rectangular window on it, and on demand a front and a back plane. It
/// projects points into window coordinates and clips segments and triangles, first by the two planes in space, then by
/// the window. Base of CQXPerspective3DTransform and CQXParallel3DTransform, whose Initialize() forms the matrix.
///
///     (0, 0) --- axis 1 ---> (W, 0)     eye      front      view       back
///       |          top         |       (PRP)     plane     plane      plane
///     axis 2      window       |         o---------|---------|----------|----> axis 3, the normal of the view plane
///       v         bottom       |         0       d + f       d        d + b    depth: distance from the eye along it
///     (0, H) -------------- (W, H)
///
/// The normal points away from the viewer into the scene. Window coordinates run from 0 to the width W along axis 1 and
/// from 0 to the height H along axis 2; (0, 0) is the corner at the local origin and lies at the top left, as the names
/// of the edges say (qxRectangleBorder), and the window is the closed rectangle. The frame is right-handed, axis 1 x
/// axis 2 = axis 3: with the normal into the picture and x to the right, y runs down, so the perspective and the
/// parallel view lay axis 2 against the view-up vector and pictures are not mirrored. The front and the back distance
/// are measured from the view plane along the normal, and a point is before the front plane when its distance is
/// smaller than the front one.
///
/// Every setter makes the object not ready, and nothing is projected until Initialize() has succeeded again: nothing is
/// recomputed by itself. SetTransform(), AddTransform() and assignment from the base class change the matrix alone and
/// keep the ready flag.
///
/// A point whose homogeneous coordinate has an absolute value below 1e-6 has no projection.
///
/// Projecting writes its output arguments alone: a ready object may serve several threads. Distinct objects may be used
/// from different threads.
template <qxReal T>
class QX_API CQXProjective3DTransform : public CQXBase3DTransform<T> {
  using Base = CQXBase3DTransform<T>;

 public:
  /// All vectors and numbers zero, both flags 0, the unit matrix.
  CQXProjective3DTransform() noexcept { SetDefault(); }
  /// As Set(); the matrix is the unit matrix.
  CQXProjective3DTransform(const CQXVector3<T>& prp, const CQXVector3<T>& projectionDirection,
                           const CQXVector3<T>& viewUp, const CQXVector3<T>& projectionNormal, T distanceToPlane,
                           T windowWidth, T windowHeight, T frontDistance, T backDistance) noexcept {
    SetDefault();
    Set(prp, projectionDirection, viewUp, projectionNormal, distanceToPlane, windowWidth, windowHeight, frontDistance,
        backDistance);
  }
  CQXProjective3DTransform(const CQXProjective3DTransform& other) noexcept = default;

  ~CQXProjective3DTransform() override;

  /// Copies the matrix alone; the camera and the ready flag stay.
  CQXProjective3DTransform& operator=(const Base& other) noexcept override;
  /// Copies everything.
  virtual CQXProjective3DTransform& operator=(const CQXProjective3DTransform& other) noexcept;

  /// Computes the local frame, the planes and the matrix from what was set, and makes the object ready.
  /// @return 1; 0 when W or H is below 0.5 or the projection's own demands are not met: the object is not ready then.
  virtual std::int32_t Initialize() = 0;

  // ---- What was set. Every setter makes the object not ready; Set() and SetViewVolumeDistances() also switch the use
  // of the view volume on.

  /// @param prp projection reference point
  /// @param distanceToPlane distance to the view plane
  /// @param frontDistance,backDistance distances of the front and the back plane from the view plane along its normal
  void Set(const CQXVector3<T>& prp, const CQXVector3<T>& projectionDirection, const CQXVector3<T>& viewUp,
           const CQXVector3<T>& projectionNormal, T distanceToPlane, T windowWidth, T windowHeight, T frontDistance,
           T backDistance) noexcept;
  /// Sets the distances of the front and the back plane from the view plane along its normal.
  void SetViewVolumeDistances(T frontDistance, T backDistance) noexcept;
  void SetViewWindow(T width, T height) noexcept;
  /// @param flag 0: points before the front and behind the back plane, also those behind the camera, are projected.
  void UseBackFrontPlanes(std::int32_t flag) noexcept;
  void SetProjectionNormal(const CQXVector3<T>& normal) noexcept;
  void SetViewUpVector(const CQXVector3<T>& up) noexcept;
  void SetPRP(const CQXVector3<T>& prp) noexcept;
  void SetProjectionDirection(const CQXVector3<T>& direction) noexcept;
  void SetDistanceToPlane(T distance) noexcept;

  /// Looks from @p eye towards @p target: the PRP is the eye, the normal of the view plane target - eye, the projection
  /// direction zero, which stands for the normal. A target in the eye has no view: Initialize() returns 0.
  void LookAt(const CQXVector3<T>& eye, const CQXVector3<T>& target, const CQXVector3<T>& up) noexcept;
  /// Makes the part of the window from (x, y) to (x + width, y + height), in window coordinates, the window: for a
  /// picture drawn in tiles, or a detail. Central projections get a new projection direction, parallel ones a new PRP.
  /// @return 1; 0 when the object is not ready, and nothing is changed.
  std::int32_t SetWindowTile(T x, T y, T width, T height) noexcept;

  [[nodiscard]] const CQXVector3<T>& GetPRP() const noexcept { return m_prp; }
  [[nodiscard]] const CQXVector3<T>& GetProjectionDirection() const noexcept { return m_projectionDirection; }
  [[nodiscard]] const CQXVector3<T>& GetProjectionNormal() const noexcept { return m_projectionNormal; }
  [[nodiscard]] const CQXVector3<T>& GetViewUpVector() const noexcept { return m_viewUp; }
  [[nodiscard]] T GetDistanceToPlane() const noexcept { return m_distanceToPlane; }
  void GetViewWindowSizes(T& width, T& height) const noexcept {
    width = m_windowWidth;
    height = m_windowHeight;
  }
  void GetViewVolumeDistances(T& front, T& back) const noexcept {
    front = m_frontDistance;
    back = m_backDistance;
  }
  [[nodiscard]] std::int32_t IsUseViewVolume() const noexcept { return m_useViewVolume; }
  [[nodiscard]] std::int32_t IsReady() const noexcept { return m_isReady; }

  // ---- What Initialize() computed

  /// The view plane a x + b y + c z + d = 0.
  void GetProjectionPlane(T& a, T& b, T& c, T& d) const noexcept {
    a = m_planeA;
    b = m_planeB;
    c = m_planeC;
    d = m_planeD;
  }
  /// The constants of the front and the back plane, which share the normal of the view plane.
  void GetViewVolumeCoefficients(T& front, T& back) const noexcept {
    front = m_frontConstant;
    back = m_backConstant;
  }
  /// Origin and axes of the view frame; the third axis is the normal of the view plane.
  void GetLocalCoordinates(CQXVector3<T>& origin, CQXVector3<T>& axis1, CQXVector3<T>& axis2,
                           CQXVector3<T>& axis3) const noexcept;
  /// The view frame as a matrix: the axes in the columns 0 to 2, the origin in column 3, over 0, 0, 0, 1.
  [[nodiscard]] CQXMatrix4<T> GetLocalCoordinates() const noexcept;
  /// The centre of the window in space: the local origin plus W / 2 along the first axis and H / 2 along the second.
  [[nodiscard]] CQXVector3<T> GetViewWindowCenter() const noexcept;

  // ---- Projection

  /// Projects a point into window coordinates.
  /// @param[out] q written also for a point that projects beside the window; untouched when the object is not ready,
  /// the point is outside the used view volume or has no projection
  /// @return 1 when the point is inside the used view volume and projects into the closed window, else 0.
  std::int32_t ProjectPoint(const CQXVector3<T>& p, CQXVector2<T>& q) const noexcept;

  /// ProjectPoint() of @p n points, each with its result in @p flags.
  /// @return QX_LOCATION_INSIDE when all are in the window, QX_LOCATION_OUTSIDE when none is or the object is not ready
  /// (nothing is written then), else QX_LOCATION_CLIPPED. No points are all inside.
  qxRelativeLocation ProjectPoints(std::int32_t n, const CQXVector3<T>* points, CQXVector2<T>* projections,
                                   std::int32_t* flags) const noexcept;

  /// Projects the part of a segment that is inside the used view volume and the window.
  ///
  /// A segment with both ends outside the view volume is dropped, also when it crosses the whole volume from front to
  /// back: cut long segments into pieces beforehand.
  /// @param[out] q1,q2 untouched when the result is QX_LOCATION_OUTSIDE
  /// @return QX_LOCATION_INSIDE: all of it is left. 3 or 4, outside the enumeration: the first or the second end was
  /// cut by a plane and what was left is in the window. QX_LOCATION_CLIPPED: an end was cut by the window.
  /// QX_LOCATION_OUTSIDE: nothing is left, an end has no projection, or the object is not ready.
  qxRelativeLocation ProjectClippedSegment(const CQXVector3<T>& p1, const CQXVector3<T>& p2, CQXVector2<T>& q1,
                                           CQXVector2<T>& q2) const noexcept;

  /// Projects the part of a triangle that is inside the used view volume and the window, as a polygon.
  ///
  /// A triangle with all vertices outside the view volume is dropped, also when it reaches through it. One with
  /// vertices before the front and behind the back plane is cut by the front plane alone. The polygon takes in one
  /// corner of the window where the outline leaves through one edge and comes back through a neighbouring one; none
  /// where the two are opposite. A triangle that covers the whole window has no outline in it and gives
  /// QX_LOCATION_OUTSIDE: test the window's corners against the triangle where that can happen.
  /// @param in three vertices
  /// @param[out] out room for 16 points; at most 12 are written
  /// @param[out] count number of points; 0 when the result is QX_LOCATION_OUTSIDE
  /// @return QX_LOCATION_INSIDE: all of it, three points. QX_LOCATION_CLIPPED: a plane or the window cut it.
  /// QX_LOCATION_OUTSIDE: nothing is left, a vertex has no projection, or the object is not ready.
  qxRelativeLocation ProjectClippedTriangle(const CQXVector3<T>* in, CQXVector2<T>* out,
                                            std::int32_t& count) const noexcept;

  // ---- From the window back into space. Each returns 1, or 0 when the object is not ready: the outputs are untouched
  // then. q may be outside the window.

  /// The picking ray of a window point: all points that project to @p q.
  /// @param[out] origin on the front plane when the view volume is used; otherwise the PRP of a central projection and
  /// the point of the view plane for a parallel one
  /// @param[out] direction of length 1, into the scene
  std::int32_t FindPickingRay(const CQXVector2<T>& q, CQXVector3<T>& origin, CQXVector3<T>& direction) const noexcept;
  /// The point that projects to @p q and has the given distance from the view plane along its normal.
  /// @return 0 also when that is not before the eye of a central projection.
  std::int32_t Unproject(const CQXVector2<T>& q, T distance, CQXVector3<T>& p) const noexcept;
  /// The point of the plane (a, b, c, e), where a x + b y + c z + e = 0, that projects to @p q.
  /// @return 0 also when the plane is exactly parallel to the ray, or behind the eye of a central projection.
  std::int32_t UnprojectToPlane(const CQXVector2<T>& q, const CQXVector4<T>& plane, CQXVector3<T>& p) const noexcept;

  // ---- What can be seen. Each returns 1 for yes or success, 0 for no or when the object is not ready.

  /// The planes (a, b, c, e) that bound what is visible, at left, top, right, bottom, front and back: normals of length
  /// 1 that point inside, where a x + b y + c z + e >= 0. Without the view volume the front plane of a central
  /// projection goes through the eye; planes that there are not then are (0, 0, 0, 1), inside of which everything is.
  ///
  /// After G. Gribb and K. Hartmann, Fast extraction of viewing frustum planes from the world-view-projection matrix
  /// (2001): they are sums of rows of the matrix.
  /// @param[out] planes room for six
  std::int32_t GetFrustumPlanes(CQXVector4<T>* planes) const noexcept;
  /// The corners of what is visible, at (0, 0), (W, 0), (W, H), (0, H) of the window: four on the front plane, then
  /// four on the back plane.
  /// @param[out] corners room for eight
  /// @return 0 also when the view volume is not used, and then nothing is written.
  std::int32_t GetFrustumCorners(CQXVector3<T>* corners) const noexcept;
  /// 0 when the box from @p lo to @p hi along the axes is outside one of the frustum's planes, so that nothing of it is
  /// visible. 1 otherwise: a few boxes near an edge of the frustum pass although they are outside.
  [[nodiscard]] std::int32_t IsBoxVisible(const CQXVector3<T>& lo, const CQXVector3<T>& hi) const noexcept;
  /// The same for a sphere.
  [[nodiscard]] std::int32_t IsSphereVisible(const CQXVector3<T>& centre, T radius) const noexcept;

  /// The matrix of this view for a graphics interface: qxWindowToClip() of the window times GetMatrix(). When the view
  /// volume is not used, z runs from the view plane on as the class of the projection says.
  [[nodiscard]] CQXMatrix4<T> GetClipMatrix(qxClipSpace space) const noexcept {
    return qxWindowToClip(space, m_windowWidth, m_windowHeight) * m_matrix;
  }

 protected:
  /// All vectors and numbers zero and both flags 0; the matrix stays.
  void SetDefault() noexcept;

  // ---- For Initialize()

  /// The frame, the origin and all planes of a view that looks along its normal: the third axis is the normalised
  /// normal, the second the view-up vector turned down, and the centre of the window is where the line from the PRP
  /// along the projection direction meets the view plane.
  /// @return 0 when W or H is below 0.5, the normal or the view-up vector is zero by CQXVector3::Normalize(), the two
  /// are parallel, or the projection direction does not point to the side of the normal.
  std::int32_t FindViewFrame() noexcept;
  /// The projection direction; the third local axis in place of the zero vector.
  [[nodiscard]] const CQXVector3<T>& EffectiveDirection() const noexcept {
    return m_projectionDirection.NormInf() == 0 ? m_localAxis3 : m_projectionDirection;
  }
  /// Finds the first two local axes; the third one must be set. The second axis is the part of @p up orthogonal to the
  /// third, normalised; the first is the cross product of the second and the third. With an up vector along the third
  /// axis both are zero.
  /// @param normal not read: the third axis stands for it
  void FindLocalAxes(const CQXVector3<T>& up, const CQXVector3<T>& normal) noexcept;
  /// The origin of the frame whose window has the centre @p c: c minus w / 2 along the first axis and h / 2 along the
  /// second. The inverse of GetViewWindowCenter().
  [[nodiscard]] CQXVector3<T> FindCoordinatesCenter(const CQXVector3<T>& c, T w, T h) const noexcept;
  /// Sets the view plane: the third axis as its normal, through the point @p p.
  void CalculatePlanesCoefficients(const CQXVector3<T>& p) noexcept;
  /// Sets the constants of the front and the back plane: that of the view plane minus the distance.
  void CalculateFrontBackPlanes() noexcept;

  // ---- Clipping. A function that gives a qxRelativeLocation returns it as the public operations do.

  /// 1 when 0 <= q.x <= W and 0 <= q.y <= H, else 0.
  [[nodiscard]] std::int32_t IsInsideViewWindow(const CQXVector2<T>& q) const noexcept {
    return q.X() >= 0 && q.X() <= m_windowWidth && q.Y() >= 0 && q.Y() <= m_windowHeight;
  }
  /// The location of a point by the view volume; the front plane is tested first. QX_BETWEEN_PLANES when the volume is
  /// not used.
  [[nodiscard]] qxBackFrontLocation IsPointBetweenBackFrontPlanes(const CQXVector3<T>& p) const noexcept;
  /// The edge of the window on whose line a point lies: CQXGeometry::PointRelativelyRectangleBorder().
  [[nodiscard]] qxRectangleBorder FindBorderType(const CQXVector2<T>& q, std::int32_t horizontalFirst) const noexcept;
  /// The corner of the window where two edges meet: CQXGeometry::EncloseCornerPoint().
  /// @return 1; 0 for one edge twice, opposite edges and no edge: the output is untouched.
  std::int32_t EncloseCornerPoint(qxRectangleBorder border1, qxRectangleBorder border2,
                                  CQXVector2<T>& q) const noexcept;
  /// Clips a projected segment by the window.
  /// @param[out] clipped1,clipped2 1 when that end moved by more than QX_TOLERANCE, else 0
  /// @param[out] border1,border2 the edge of the window on which that end lies now
  /// @return QX_LOCATION_OUTSIDE when nothing is left: the outputs are untouched. QX_LOCATION_INSIDE when neither end
  /// moved, else QX_LOCATION_CLIPPED.
  qxRelativeLocation FindSegmentWindowIntersection(const CQXVector2<T>& a, const CQXVector2<T>& b, CQXVector2<T>& q1,
                                                   CQXVector2<T>& q2, std::int32_t& clipped1, std::int32_t& clipped2,
                                                   qxRectangleBorder& border1,
                                                   qxRectangleBorder& border2) const noexcept;
  /// Cuts a triangle by one plane of the view volume: the front plane when a location is QX_BEFORE_FRONT_PLANE, and
  /// then vertices behind the back plane count as inside; otherwise the back plane. The order of the vertices stays.
  /// @param locations of the three vertices
  /// @param[out] polygon room for four points; another array than @p triangle
  /// @return number of points: 3 for no vertex or two vertices outside, 4 for one, 0 for three.
  std::int32_t FindTrianglePlaneIntersection(const CQXVector3<T>* triangle, const qxBackFrontLocation* locations,
                                             CQXVector3<T>* polygon) const noexcept;

  // ---- Where the line through p along (dx, dy) meets the line of an edge of the window. A line parallel to the edge
  // gives what the division gives.

  /// y at x = 0.
  [[nodiscard]] T IntersectWithLeft(const CQXVector2<T>& p, T dx, T dy) const noexcept {
    return p.Y() - p.X() * dy / dx;
  }
  /// y at x = W.
  [[nodiscard]] T IntersectWithRight(const CQXVector2<T>& p, T dx, T dy) const noexcept {
    return p.Y() + (m_windowWidth - p.X()) * dy / dx;
  }
  /// x at y = 0.
  [[nodiscard]] T IntersectWithTop(const CQXVector2<T>& p, T dx, T dy) const noexcept {
    return p.X() - p.Y() * dx / dy;
  }
  /// x at y = H.
  [[nodiscard]] T IntersectWithBottom(const CQXVector2<T>& p, T dx, T dy) const noexcept {
    return p.X() + (m_windowHeight - p.Y()) * dx / dy;
  }

  using Base::m_matrix;

  CQXVector3<T> m_localOrigin;
  CQXVector3<T> m_localAxis1, m_localAxis2, m_localAxis3;
  CQXVector3<T> m_prp;
  CQXVector3<T> m_projectionDirection;
  CQXVector3<T> m_viewUp;
  CQXVector3<T> m_projectionNormal;
  T m_planeA, m_planeB, m_planeC, m_planeD;
  T m_frontConstant, m_backConstant;
  T m_distanceToPlane;
  T m_windowWidth, m_windowHeight;
  T m_frontDistance, m_backDistance;
  std::int32_t m_useViewVolume;
  std::int32_t m_isReady;

 private:
  /// The bottom row divides by more than a constant.
  [[nodiscard]] bool IsCentral() const noexcept { return m_matrix[12] != 0 || m_matrix[13] != 0 || m_matrix[14] != 0; }
  [[nodiscard]] CQXVector3<T> PointOfWindow(const CQXVector2<T>& q) const noexcept {
    return m_localOrigin + m_localAxis1 * q.X() + m_localAxis2 * q.Y();
  }
  /// The line of all points that project to @p q, from the PRP or from the window on.
  void FindProjector(const CQXVector2<T>& q, CQXVector3<T>& origin, CQXVector3<T>& direction) const noexcept;
  [[nodiscard]] bool Project(const CQXVector3<T>& p, CQXVector2<T>& q) const noexcept;
  [[nodiscard]] CQXVector2<T> WindowCorner() const noexcept { return {m_windowWidth, m_windowHeight}; }
};

extern template class QX_API CQXProjective3DTransform<float>;
extern template class QX_API CQXProjective3DTransform<double>;
