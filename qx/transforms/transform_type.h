#pragma once

#include <qx/foundation/api.h>

#include <cstdint>

/// Kind of a coordinate transform, as the virtual GetTypeOfTransform() of its class tells it.
enum qxTransformType : std::int32_t {
  QX_TRANSFORM_GENERAL = 0,     ///< a homogeneous matrix of any kind
  QX_TRANSFORM_AFFINE = 1,      ///< the bottom row is taken as 0, ..., 0, 1
  QX_TRANSFORM_PARALLEL = 2,    ///< parallel projection
  QX_TRANSFORM_PERSPECTIVE = 3  ///< perspective projection
};
