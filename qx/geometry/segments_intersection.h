#pragma once

#include <qx/foundation/api.h>

#include <cstdint>

/// How two segments of the plane meet.
enum qxSegmentsIntersection : std::int32_t {
  QX_SEGMENTS_APART = 0,   ///< nothing is common
  QX_SEGMENTS_CROSS = 1,   ///< one point, inside of both
  QX_SEGMENTS_TOUCH = 2,   ///< one point, an end of at least one
  QX_SEGMENTS_OVERLAP = 3  ///< a part of a line
};
