#pragma once

#include <qx/foundation/api.h>

#include <concepts>
#include <type_traits>

/// @file
/// The element types of the library, as a constraint of its templates.

/// An element type for which the numerical classes are built: float or double. Any other type is refused where the
/// template is named.
template <typename T>
concept qxReal = std::same_as<T, float> || std::same_as<T, double>;

/// A parameter that takes no part in the deduction of T, so that a literal like 0.5 goes with vectors of float.
template <typename T>
using qxNonDeduced = std::type_identity_t<T>;
