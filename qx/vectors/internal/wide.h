#pragma once

#include <qx/foundation/scalar.h>
#include <qx/vectors/vector2.h>
#include <qx/vectors/vector3.h>

/// @file
/// Vectors in 64-bit floats and back, for algorithms that decide in them. Internal, not part of the interface.

namespace qxVectors {

template <qxReal T>
[[nodiscard]] inline CQXVector2<double> Wide(const CQXVector2<T>& v) {
  return {static_cast<double>(v.X()), static_cast<double>(v.Y())};
}
template <qxReal T>
[[nodiscard]] inline CQXVector3<double> Wide(const CQXVector3<T>& v) {
  return {static_cast<double>(v.X()), static_cast<double>(v.Y()), static_cast<double>(v.Z())};
}

template <qxReal T>
[[nodiscard]] inline CQXVector2<T> Narrow(const CQXVector2<double>& v) {
  return {static_cast<T>(v.X()), static_cast<T>(v.Y())};
}
template <qxReal T>
[[nodiscard]] inline CQXVector3<T> Narrow(const CQXVector3<double>& v) {
  return {static_cast<T>(v.X()), static_cast<T>(v.Y()), static_cast<T>(v.Z())};
}

}  // namespace qxVectors
