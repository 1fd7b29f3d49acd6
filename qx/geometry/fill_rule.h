#pragma once

#include <qx/foundation/api.h>

#include <cstdint>

/// What is inside of a polygon that crosses or surrounds itself.
enum qxFillRule : std::int32_t {
  QX_FILL_NON_ZERO = 0,  ///< what the border goes round, counter-clockwise and clockwise turns added, not 0 times
  QX_FILL_EVEN_ODD = 1   ///< what a ray leaves by an odd number of edges
};
