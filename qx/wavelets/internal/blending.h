#pragma once

#include <qx/foundation/owner.h>
#include <qx/foundation/scalar.h>
#include <qx/wavelets/channel.h>

#include <cstdint>

/// @file
/// Factors on the bands of trees, and blends of two trees.

namespace qxInternal {

/// CQXChannel::Enhance() and EditByLevels().
template <qxReal T>
void EnhanceLevels(CQXChannel<T>& tree, T factor);
template <qxReal T>
void EditLevels(CQXChannel<T>& tree, const T* factors);

/// Multiplies the high bands of one level.
template <qxReal T>
void MultiplyHighBands(CQXChannel<T>& level, T factor);

/// Multiplies one channel, a whole tree that stands there.
template <qxReal T>
void MultiplyTree(CQXChannel<T>& tree, T factor);

/// The factors of two trees in a blend: by level, numbered from 0, when there are weights, else the same for all.
template <qxReal T>
struct BlendFactors {
  const T* weights;
  T own, others;

  [[nodiscard]] T Own(std::int32_t level) const { return weights != nullptr ? 1 - weights[level] : own; }
  [[nodiscard]] T Others(std::int32_t level) const { return weights != nullptr ? weights[level] : others; }
};

/// A copy of a tree whose bands are blended with those of the other one, which may be null; the lowest low band counts
/// as the level after the last. Null when memory was refused with null.
template <qxReal T>
[[nodiscard]] qxOwner<CQXChannel<T>> Blended(const CQXChannel<T>& tree, const CQXChannel<T>* other,
                                             const BlendFactors<T>& factors);

}  // namespace qxInternal
