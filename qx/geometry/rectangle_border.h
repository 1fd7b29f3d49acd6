#pragma once

#include <qx/foundation/api.h>

#include <cstdint>

/// Edge of a rectangle with the corners lo and hi.
enum qxRectangleBorder : std::int32_t {
  QX_BORDER_NONE = 0,   ///< on no edge
  QX_BORDER_LEFT = 1,   ///< x = lo.x
  QX_BORDER_TOP = 2,    ///< y = lo.y
  QX_BORDER_RIGHT = 3,  ///< x = hi.x
  QX_BORDER_BOTTOM = 4  ///< y = hi.y
};
