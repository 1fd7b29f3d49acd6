#pragma once

#include <qx/foundation/owner.h>
#include <qx/foundation/scalar.h>
#include <qx/wavelets/channel.h>
#include <qx/wavelets/internal/band_geometry.h>

#include <cstdint>

/// @file
/// Rectangles of channels and the packed form of trees. What makes a channel gives null when memory was refused with
/// null; an exception of `operator new[]` passes through.

namespace qxInternal {

/// A raw channel over a rectangle in absolute coordinates, inside the source or not: what the source lacks is not set.
template <qxReal T>
[[nodiscard]] qxOwner<CQXChannel<T>> CutSamples(const CQXChannel<T>& source, const Rect& rect);

/// The samples of a rectangle with the fields of the source; null when the source is a tree, or the rectangle is empty
/// or not wholly inside.
template <qxReal T>
[[nodiscard]] qxOwner<CQXChannel<T>> CutRaw(const CQXChannel<T>& source, const Rect& rect);

/// The coefficients of a rectangle of a tree of the given type; null in the same cases.
template <qxReal T>
[[nodiscard]] qxOwner<CQXChannel<T>> CutTree(const CQXChannel<T>& source, qxChannelType type, const Rect& rect);

/// Copies what the rectangle holds of the source's samples to the same place in the target.
template <qxReal T>
void PasteRect(const CQXChannel<T>& source, CQXChannel<T>& target, const Rect& rect);

/// Copies the coefficients of a rectangle of a tree, level by level. Trees of another type, wavelet or depth than the
/// target's are left alone.
template <qxReal T>
void PasteTree(const CQXChannel<T>& source, CQXChannel<T>& target, qxChannelType type, Rect rect);

/// The packed form of a tree, as CQXChannel::PackDecomposedChannel() tells.
template <qxReal T>
[[nodiscard]] qxOwner<CQXChannel<T>> Packed(const CQXChannel<T>& tree);

/// The tree whose packed form a raw channel is.
template <qxReal T>
[[nodiscard]] qxOwner<CQXChannel<T>> Unpacked(const CQXChannel<T>& packed, const CQXWaveletFilter<T>* filter,
                                              qxChannelType type, std::int32_t depth,
                                              qxWaveletNormalization normalization);

}  // namespace qxInternal
