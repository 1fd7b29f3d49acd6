#pragma once

#include <qx/foundation/owner.h>
#include <qx/foundation/scalar.h>
#include <qx/wavelets/channel.h>
#include <qx/wavelets/internal/band_geometry.h>

#include <cstdint>

/// @file
/// The tree of channels apart from what is done with it: walks, shapes and new trees. Nothing here needs a stack.

namespace qxInternal {

/// The channel that follows in a walk through a tree, each channel before its sub-channels; null at the end.
template <typename Channel>
[[nodiscard]] Channel* NextInTree(Channel* channel, const qxNonDeduced<Channel>* root) {
  for (std::int32_t i = 0; i < channel->GetSubChannelsNb(); ++i) {
    if (Channel* child = channel->SubChannel(i)) return child;
  }
  while (channel != root) {
    Channel* const parent = const_cast<Channel*>(channel->Parent());
    std::int32_t i = 0;
    while (parent->SubChannel(i) != channel) ++i;
    for (++i; i < parent->GetSubChannelsNb(); ++i) {
      if (Channel* sibling = parent->SubChannel(i)) return sibling;
    }
    channel = parent;
  }
  return nullptr;
}

/// The low band of the last level; the channel itself without levels.
template <typename Channel>
[[nodiscard]] Channel* LowestLow(Channel* channel) {
  while (Channel* low = channel->SubChannel(0)) channel = low;
  return channel;
}

/// The rectangle that a channel covers.
template <qxReal T>
[[nodiscard]] Rect Extent(const CQXChannel<T>& channel) {
  const std::int64_t left = channel.GetOffsetX();
  const std::int64_t top = channel.GetOffsetY();
  return {left, top, left + channel.GetColsNb(), top + channel.GetRowsNb()};
}

/// A rectangle that is given relative to the first sample of a channel.
template <qxReal T>
[[nodiscard]] Rect RectAt(const CQXChannel<T>& channel, std::int32_t x, std::int32_t y, std::int32_t width,
                          std::int32_t height) {
  const std::int64_t left = std::int64_t{channel.GetOffsetX()} + x;
  const std::int64_t top = std::int64_t{channel.GetOffsetY()} + y;
  return {left, top, left + width, top + height};
}

/// Number of samples of a channel.
template <qxReal T>
[[nodiscard]] std::size_t CountOf(const CQXChannel<T>& channel) {
  return qxElementCount(channel.GetRowsNb(), channel.GetColsNb());
}

/// Whether the sub-channels from @p firstBand on stand there with samples, in the places of one level of the channel.
template <qxReal T>
[[nodiscard]] bool HasRawBands(const CQXChannel<T>& level, std::int32_t firstBand);

/// Whether every band of every level is there, and every filter; a raw channel lacks none.
template <qxReal T>
[[nodiscard]] bool IsComplete(const CQXChannel<T>& tree);

/// Calls visit(level, i) for the levels of a tree from the top, numbered from 0.
/// @return the number of levels
template <typename Channel, typename Visit>
std::int32_t ForEachLevel(Channel& tree, Visit visit) {
  std::int32_t number = 0;
  for (Channel* level = &tree; level != nullptr && level->IsDecomposed() != 0; level = level->SubChannel(0)) {
    visit(*level, number++);
  }
  return number;
}

/// Calls visit(band, index) for the high bands of a level that have samples.
template <typename Channel, typename Visit>
void ForEachHighBand(Channel& level, Visit visit) {
  for (std::int32_t i = 1; i < level.GetSubChannelsNb(); ++i) {
    Channel* band = level.SubChannel(i);
    if (band != nullptr && band->GetData() != nullptr) visit(*band, i);
  }
}

/// A channel that covers a rectangle, without samples. Like all that makes channels here it gives null when the memory
/// was refused with null; an exception of `operator new[]` passes through.
template <qxReal T>
[[nodiscard]] qxOwner<CQXChannel<T>> MakeShell(const Rect& rect);

/// The same with samples that are not set yet.
template <qxReal T>
[[nodiscard]] qxOwner<CQXChannel<T>> MakeRaw(const Rect& rect);

/// Gives a channel the bands of one level. The samples are not set yet; the low band has none when @p isLast is false.
/// @return false when memory was refused: the channel then has some of the bands
template <qxReal T>
[[nodiscard]] bool MakeBands(CQXChannel<T>& level, const CQXWaveletFilter<T>* filter, qxChannelType type,
                             qxWaveletNormalization normalization, bool isLast);

/// A tree of @p depth levels over a rectangle, with samples that are not set yet; without levels a raw channel.
/// @return null also when a level is not allowed
template <qxReal T>
[[nodiscard]] qxOwner<CQXChannel<T>> MakeTree(const Rect& rect, const CQXWaveletFilter<T>* filter, qxChannelType type,
                                              std::int32_t depth, qxWaveletNormalization normalization);

/// A deep copy.
template <qxReal T>
[[nodiscard]] qxOwner<CQXChannel<T>> CloneTree(const CQXChannel<T>& source);

/// A copy of the fields and the samples without the tree.
template <qxReal T>
[[nodiscard]] qxOwner<CQXChannel<T>> CloneRaw(const CQXChannel<T>& source);

}  // namespace qxInternal
