#pragma once

#include <qx/foundation/api.h>

#include <cstdint>

/// Where a figure lies relative to another one.
enum qxRelativeLocation : std::int32_t {
  QX_LOCATION_INSIDE = 0,   ///< all of it is inside
  QX_LOCATION_OUTSIDE = 1,  ///< none of it is inside
  QX_LOCATION_CLIPPED = 2   ///< a part of it is inside
};
