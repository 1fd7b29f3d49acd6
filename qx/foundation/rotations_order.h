#pragma once

#include <qx/foundation/api.h>

#include <cstdint>

/// Sequence in which the three elementary rotations act on a column vector. Angles are always passed about X, about Y,
/// about Z, in this order of arguments, whatever the sequence.
enum qxRotationsOrder : std::int32_t {
  QX_ROTATIONS_XYZ = 0,  ///< X, then Y, then Z: the matrix is Rz Ry Rx
  QX_ROTATIONS_XZY = 1,  ///< X, then Z, then Y: Ry Rz Rx
  QX_ROTATIONS_YXZ = 2,  ///< Y, then X, then Z: Rz Rx Ry
  QX_ROTATIONS_YZX = 3,  ///< Y, then Z, then X: Rx Rz Ry
  QX_ROTATIONS_ZYX = 4,  ///< Z, then Y, then X: Rx Ry Rz
  QX_ROTATIONS_ZXY = 5   ///< Z, then X, then Y: Ry Rx Rz
};
