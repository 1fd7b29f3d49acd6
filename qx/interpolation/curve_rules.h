#pragma once

#include <qx/foundation/api.h>

#include <cstdint>

/// How the slopes of a curve at its keys are found: CQXInterpolation::FindSlopes().
enum qxSlopes : std::int32_t {
  QX_SLOPES_CATMULL_ROM = 0,  ///< that of the parabola through three neighbouring keys: local, continuous velocity
  QX_SLOPES_SPLINE = 1,       ///< the cubic spline: continuous velocity and acceleration, every key acts everywhere
  QX_SLOPES_MONOTONE = 2      ///< of the parabola, limited so that the curve rises and falls with its keys, no further
};

/// What holds at the two ends of a curve.
enum qxEnds : std::int32_t {
  QX_ENDS_NATURAL = 0,  ///< no acceleration
  QX_ENDS_CLAMPED = 1,  ///< slopes that the caller gives, zero for a motion that starts and ends at rest
  QX_ENDS_CLOSED = 2    ///< the last key is the first one again, one period later: slopes as inside
};
