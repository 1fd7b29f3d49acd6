#pragma once

#include <qx/foundation/api.h>
#include <qx/foundation/scalar.h>
#include <qx/foundation/tolerance.h>
#include <qx/matrices/matrix2.h>
#include <qx/matrices/matrix3.h>
#include <qx/matrices/matrix4.h>
#include <qx/vectors/vector2.h>
#include <qx/vectors/vector3.h>
#include <qx/vectors/vector4.h>

#include <cstdint>

/// @file
/// Coordinate frames, and the transforms that carry given points to others.
///
/// A frame is a coordinate matrix, CQXMatrix3 in the plane and CQXMatrix4 in space: its axes in the columns, its origin
/// in the last column; the last row is not read. CQXProjective3DTransform::GetLocalCoordinates() is one. The axes need
/// be neither of length 1 nor orthogonal. A point of the frame's own coordinates is local, its place in the coordinates
/// in which the frame is given is its place in the world: world = A local + d.
///
/// Functions that must invert the frame return 1, or 0 when the absolute determinant of its axes is below the
/// tolerance: the output is untouched then. Outputs may be inputs. Everything here may be called from any thread.

/// The types that go with a frame.
template <typename Frame>
struct qxFrame;
template <qxReal T>
struct qxFrame<CQXMatrix3<T>> {
  using Element = T;             ///< type of the numbers
  using Vector = CQXVector2<T>;  ///< points and vectors
  using Plane = CQXVector3<T>;   ///< the line a x + b y + c = 0
  using Axes = CQXMatrix2<T>;    ///< the axes in the columns
  using Matrix = CQXMatrix3<T>;  ///< frames and transforms
  /// The axes of a frame.
  static constexpr Axes AxesOf(const Matrix& frame) noexcept { return qxMatrix3To2(frame); }
  /// The origin of a frame.
  static constexpr Vector OriginOf(const Matrix& frame) noexcept { return {frame[2], frame[5]}; }
  /// The normal of a line or plane.
  static constexpr Vector NormalOf(const Plane& line) noexcept { return {line.X(), line.Y()}; }
  /// The line or plane of a normal and a constant.
  static constexpr Plane MakePlane(const Vector& n, T c) noexcept { return {n.X(), n.Y(), c}; }
  /// The frame of its axes and origin.
  static constexpr Matrix Make(const Axes& a, const Vector& d) noexcept {
    return {a[0], a[1], d.X(), a[2], a[3], d.Y(), 0, 0, 1};
  }
};
template <qxReal T>
struct qxFrame<CQXMatrix4<T>> {
  using Element = T;             ///< type of the numbers
  using Vector = CQXVector3<T>;  ///< points and vectors
  using Plane = CQXVector4<T>;   ///< the plane a x + b y + c z + e = 0
  using Axes = CQXMatrix3<T>;    ///< the axes in the columns
  using Matrix = CQXMatrix4<T>;  ///< frames and transforms
  /// The axes of a frame.
  static constexpr Axes AxesOf(const Matrix& frame) noexcept { return frame.GetMatrix(); }
  /// The origin of a frame.
  static constexpr Vector OriginOf(const Matrix& frame) noexcept { return frame.ExtractTranslation(); }
  /// The normal of a line or plane.
  static constexpr Vector NormalOf(const Plane& plane) noexcept { return {plane.X(), plane.Y(), plane.Z()}; }
  /// The line or plane of a normal and a constant.
  static constexpr Plane MakePlane(const Vector& n, T e) noexcept { return {n.X(), n.Y(), n.Z(), e}; }
  /// The frame of its axes and origin.
  static constexpr Matrix Make(const Axes& a, const Vector& d) noexcept {
    return {a[0], a[1], a[2], d.X(), a[3], a[4], a[5], d.Y(), a[6], a[7], a[8], d.Z(), 0, 0, 0, 1};
  }
};

// ---- Points and vectors

/// The place in the world of a point of the frame: A p + d.
template <typename Frame>
[[nodiscard]] constexpr typename qxFrame<Frame>::Vector qxLocalToWorld(
    const Frame& frame, const typename qxFrame<Frame>::Vector& local) noexcept {
  return qxFrame<Frame>::AxesOf(frame) * local + qxFrame<Frame>::OriginOf(frame);
}
/// A vector of the frame in the world: A v.
template <typename Frame>
[[nodiscard]] constexpr typename qxFrame<Frame>::Vector qxLocalToWorldVector(
    const Frame& frame, const typename qxFrame<Frame>::Vector& local) noexcept {
  return qxFrame<Frame>::AxesOf(frame) * local;
}
/// A vector of the world in the frame: A^-1 v.
template <typename Frame>
inline std::int32_t qxWorldToLocalVector(
    const Frame& frame, const typename qxFrame<Frame>::Vector& world, typename qxFrame<Frame>::Vector& local,
    typename qxFrame<Frame>::Element tolerance = QX_PREDICATE_TOLERANCE<typename qxFrame<Frame>::Element>) noexcept {
  typename qxFrame<Frame>::Axes inverse;
  if (qxFrame<Frame>::AxesOf(frame).Inverse(inverse, tolerance) != 0) return 0;
  local = inverse * world;
  return 1;
}
/// The coordinates in the frame of a point of the world: A^-1 (p - d).
template <typename Frame>
inline std::int32_t qxWorldToLocal(
    const Frame& frame, const typename qxFrame<Frame>::Vector& world, typename qxFrame<Frame>::Vector& local,
    typename qxFrame<Frame>::Element tolerance = QX_PREDICATE_TOLERANCE<typename qxFrame<Frame>::Element>) noexcept {
  return qxWorldToLocalVector(frame, world - qxFrame<Frame>::OriginOf(frame), local, tolerance);
}

// ---- Planes of space, lines of the plane. The normal goes as normals do, by the transpose, and keeps no length.

/// A plane (a, b, c, e) of the world in the frame: (A^T n, n d + e). No inverse is needed.
template <typename Frame>
[[nodiscard]] constexpr typename qxFrame<Frame>::Plane qxWorldToLocalPlane(
    const Frame& frame, const typename qxFrame<Frame>::Plane& world) noexcept {
  constexpr std::int32_t last = qxFrame<Frame>::Vector::Dim();
  const typename qxFrame<Frame>::Vector normal = qxFrame<Frame>::NormalOf(world);
  return qxFrame<Frame>::MakePlane(qxFrame<Frame>::AxesOf(frame).Transpose() * normal,
                                   normal.Dot(qxFrame<Frame>::OriginOf(frame)) + world[last]);
}
/// A plane of the frame in the world: (m, e - m d) with m = A^-T n.
template <typename Frame>
inline std::int32_t qxLocalToWorldPlane(
    const Frame& frame, const typename qxFrame<Frame>::Plane& local, typename qxFrame<Frame>::Plane& world,
    typename qxFrame<Frame>::Element tolerance = QX_PREDICATE_TOLERANCE<typename qxFrame<Frame>::Element>) noexcept {
  constexpr std::int32_t last = qxFrame<Frame>::Vector::Dim();
  typename qxFrame<Frame>::Axes inverse;
  if (qxFrame<Frame>::AxesOf(frame).Inverse(inverse, tolerance) != 0) return 0;
  const typename qxFrame<Frame>::Vector normal = inverse.Transpose() * qxFrame<Frame>::NormalOf(local);
  world = qxFrame<Frame>::MakePlane(normal, local[last] - normal.Dot(qxFrame<Frame>::OriginOf(frame)));
  return 1;
}

// ---- Transforms, as coordinate matrices or homogeneous ones of any kind

/// The transform of the world that does what @p local does in the frame: F M F^-1.
template <typename Frame>
inline std::int32_t qxLocalToWorldMatrix(
    const Frame& frame, const typename qxFrame<Frame>::Matrix& local, typename qxFrame<Frame>::Matrix& world,
    typename qxFrame<Frame>::Element tolerance = QX_PREDICATE_TOLERANCE<typename qxFrame<Frame>::Element>) noexcept {
  Frame inverse;
  if (frame.InverseCoordinateMatrix(inverse, tolerance) != 0) return 0;
  world = qxFrame<Frame>::Make(qxFrame<Frame>::AxesOf(frame), qxFrame<Frame>::OriginOf(frame)) * local * inverse;
  return 1;
}
/// The transform of the frame that does what @p world does in the world: F^-1 M F.
template <typename Frame>
inline std::int32_t qxWorldToLocalMatrix(
    const Frame& frame, const typename qxFrame<Frame>::Matrix& world, typename qxFrame<Frame>::Matrix& local,
    typename qxFrame<Frame>::Element tolerance = QX_PREDICATE_TOLERANCE<typename qxFrame<Frame>::Element>) noexcept {
  Frame inverse;
  if (frame.InverseCoordinateMatrix(inverse, tolerance) != 0) return 0;
  local = inverse * world * qxFrame<Frame>::Make(qxFrame<Frame>::AxesOf(frame), qxFrame<Frame>::OriginOf(frame));
  return 1;
}

// ---- Transforms from pairs of points
//
// Each finds the coordinate matrix that carries source[i] to target[i], exactly or with the least sum of squared
// distances, O(n). What is refused is judged by the shape of the source points alone, whatever their unit. Each returns
// 1, or 0, and then the output is untouched. Not a number among the points is refused.

/// The affine transform: through 4 points of space (3 of the plane) that span it exactly, with more by least squares.
///
/// The equations are those of the points less their centroid; in the least squares their condition enters squared, so
/// that float points should span all directions alike within some 1 : 100.
/// @param tolerance what the determinant of the sum of p p^T over the centred source points is compared with, after
/// division by that of the sphere with the same mean square: 1 for points spread alike in all directions, 0 for points
/// in a plane
/// @return 0 for too few points, or points that do not span the space within the tolerance.
template <typename Frame>
QX_API std::int32_t qxFindAffineTransform(
    std::int32_t n, const typename qxFrame<Frame>::Vector* source, const typename qxFrame<Frame>::Vector* target,
    Frame& transform,
    typename qxFrame<Frame>::Element tolerance = QX_TOLERANCE<typename qxFrame<Frame>::Element>) noexcept;

/// The rigid transform, rotation and translation without reflection.
///
/// S. Umeyama, Least-squares estimation of transformation parameters between two point patterns (IEEE PAMI 13, 1991):
/// the rotation from the singular values of the sum of q p^T over the centred points, which is the one that B. K. P.
/// Horn finds by quaternions (J. Opt. Soc. Am. A 4, 1987); in the plane its closed form.
/// @param tolerance what the second singular value divided by the largest is compared with; in the plane the length of
/// (sum of p q, sum of p x q) divided by the root of the product of the sums of squares
/// @return 0 when the rotation is not determined: all points on one line (in the plane: equal), refused memory.
template <typename Frame>
QX_API std::int32_t qxFindRigidTransform(
    std::int32_t n, const typename qxFrame<Frame>::Vector* source, const typename qxFrame<Frame>::Vector* target,
    Frame& transform, typename qxFrame<Frame>::Element tolerance = QX_TOLERANCE<typename qxFrame<Frame>::Element>);

/// The similarity transform, a rigid one with one factor of scaling; otherwise as qxFindRigidTransform().
template <typename Frame>
QX_API std::int32_t qxFindSimilarityTransform(
    std::int32_t n, const typename qxFrame<Frame>::Vector* source, const typename qxFrame<Frame>::Vector* target,
    Frame& transform, typename qxFrame<Frame>::Element tolerance = QX_TOLERANCE<typename qxFrame<Frame>::Element>);
