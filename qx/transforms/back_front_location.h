#pragma once

#include <qx/foundation/api.h>

#include <cstdint>

/// Where a point lies relative to the two planes of a view volume.
enum qxBackFrontLocation : std::int32_t {
  QX_BETWEEN_PLANES = 0,      ///< between the planes or on one of them
  QX_BEFORE_FRONT_PLANE = 1,  ///< before the front plane
  QX_BEHIND_BACK_PLANE = 2    ///< behind the back plane
};
