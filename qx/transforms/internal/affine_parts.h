#pragma once

#include <qx/foundation/scalar.h>
#include <qx/matrices/matrix3.h>
#include <qx/vectors/vector3.h>

#include <cstdint>

/// @file
/// Takes the 3x3 block of an affine transform apart into scaling and rotation. Internal, not part of the interface.

namespace qxAffineParts {

/// Whether the scaling acts after the rotation or before it.
enum Side : std::int32_t { scalingLast = 0, scalingFirst = 1 };

/// Scaling U diag(s) U^T, rotation and reflection of a 3x3 block.
template <qxReal T>
struct ScaleRotation {
  CQXVector3<T> s;
  CQXMatrix3<T> r, u;
  std::int32_t hasStretch = 0;
  std::int32_t reflection = 0;
};

/// The parts of a block with the scaling on the given side.
/// @return false when the absolute determinant is below 1e-6: the parts are untouched.
template <qxReal T>
[[nodiscard]] bool FindParts(const CQXMatrix3<T>& a, Side side, ScaleRotation<T>& parts);

/// The parts on the side that suits the block better: the one without stretch, @p order 0 (the scaling first) before 1,
/// otherwise the one whose product is closer to the block.
/// @return false when neither is found: the parts are untouched.
template <qxReal T>
[[nodiscard]] bool FindElementary(const CQXMatrix3<T>& a, ScaleRotation<T>& parts, std::int32_t& order);

/// t := S^-1 t with S = U diag(s) U^T; zero where a factor is below 1e-6.
template <qxReal T>
void UndoScaling(const CQXVector3<T>& s, const CQXMatrix3<T>& u, CQXVector3<T>& t);

}  // namespace qxAffineParts
