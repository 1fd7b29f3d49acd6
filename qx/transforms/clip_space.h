#pragma once

#include <qx/foundation/scalar.h>
#include <qx/matrices/matrix4.h>

#include <cstdint>

/// The clip space of a graphics interface: what the window and the view volume become. x runs from -w at the left edge
/// of the window to w at the right one everywhere.
enum qxClipSpace : std::int32_t {
  QX_CLIP_OPENGL = 0,    ///< y from -w at the bottom up to w at the top, z from -w at the front to w at the back plane
  QX_CLIP_DIRECT3D = 1,  ///< y from -w at the bottom up to w at the top, z from 0 at the front to w at the back plane
  QX_CLIP_VULKAN = 2     ///< y from -w at the top down to w at the bottom, z from 0 at the front to w at the back plane
};

/// The matrix K that takes homogeneous window coordinates, as CQXPerspective3DTransform and CQXParallel3DTransform
/// project to (x from 0 to W, y from 0 at the top to H, z from 0 at the front to 1 at the back plane), to a clip space:
/// K GetMatrix() is the matrix that a graphics interface wants, for column vectors; by rows here, so that interfaces
/// which read columns take its transpose.
///
/// Values outside the enumeration count as QX_CLIP_OPENGL. A width or height of 0 gives infinities.
template <qxReal T>
[[nodiscard]] constexpr CQXMatrix4<T> qxWindowToClip(qxClipSpace space, T width, qxNonDeduced<T> height) noexcept {
  const T up = space == QX_CLIP_VULKAN ? T(-1) : T(1);
  const bool isHalf = space == QX_CLIP_DIRECT3D || space == QX_CLIP_VULKAN;
  const T zScale = isHalf ? T(1) : T(2), zShift = isHalf ? T(0) : T(-1);
  return {2 / width, 0, 0, -1, 0, -up * 2 / height, 0, up, 0, 0, zScale, zShift, 0, 0, 0, 1};
}

/// The inverse of qxWindowToClip(): with it the matrix C of another program's camera, which takes points to a clip
/// space, becomes one that projects into a window of this library, qxClipToWindow(...) C.
template <qxReal T>
[[nodiscard]] constexpr CQXMatrix4<T> qxClipToWindow(qxClipSpace space, T width, qxNonDeduced<T> height) noexcept {
  const T up = space == QX_CLIP_VULKAN ? T(-1) : T(1);
  const bool isHalf = space == QX_CLIP_DIRECT3D || space == QX_CLIP_VULKAN;
  const T zScale = isHalf ? T(1) : T(0.5), zShift = isHalf ? T(0) : T(0.5);
  return {width / 2, 0, 0, width / 2, 0, -up * height / 2, 0, height / 2, 0, 0, zScale, zShift, 0, 0, 0, 1};
}
