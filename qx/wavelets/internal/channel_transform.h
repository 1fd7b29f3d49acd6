#pragma once

#include <qx/foundation/owner.h>
#include <qx/foundation/scalar.h>
#include <qx/wavelets/channel.h>
#include <qx/wavelets/internal/channel_tree.h>
#include <qx/wavelets/internal/level_transform.h>

#include <cstdint>

/// @file
/// The transform between samples and trees. What makes something takes all the memory first: it gives null, or does
/// nothing, when memory was refused with null, and an exception of `operator new[]` passes through before any change.

namespace qxInternal {

/// What a forward or an inverse transform of several levels works on: the low bands on the way and a window of rows.
template <qxReal T>
class LevelBuffers {
 public:
  /// @param extent of the samples of level 1
  [[nodiscard]] bool Obtain(const Rect& extent, qxChannelType type, std::int32_t depth);

  [[nodiscard]] T* Work() const { return m_block.get(); }
  /// Room for the low band of a level, numbered from 0: consecutive levels take turns.
  [[nodiscard]] T* LowBand(std::int32_t level) const { return m_block.get() + m_begin[level % 2]; }

 private:
  qxBlock<T> m_block;
  std::size_t m_begin[2] = {};
};

/// The tree of the levels that the extent allows, up to @p depth, with the normalization applied.
/// @param rows the samples, by rows as LevelTransform reads them
/// @return null also when not one level is possible
template <qxReal T, typename Rows>
[[nodiscard]] qxOwner<CQXChannel<T>> ForwardTransform(const Rect& extent, const Rows& rows,
                                                      const CQXWaveletFilter<T>* filter, qxChannelType type,
                                                      std::int32_t depth, qxWaveletNormalization normalization);

/// The same from a raw channel, which stays as it is.
template <qxReal T>
[[nodiscard]] qxOwner<CQXChannel<T>> ForwardTransform(const CQXChannel<T>& raw, const CQXWaveletFilter<T>* filter,
                                                      qxChannelType type, std::int32_t depth,
                                                      qxWaveletNormalization normalization);

/// Writes the rows of the inverse transform of a tree that IsComplete() and has a level.
/// @param releases frees the bands of a level as soon as they are used; the tree is then good for nothing else
/// @return false when memory was refused with null: nothing has been written
template <qxReal T, typename Rows>
[[nodiscard]] bool InverseTransform(CQXChannel<T>& tree, const Rows& rows, bool releases);

/// The inverse transform as a new raw channel; a raw channel gives a copy.
/// @return null also when a band is missing
template <qxReal T>
[[nodiscard]] qxOwner<CQXChannel<T>> InverseTransform(const CQXChannel<T>& tree);

/// The same that frees the bands level by level; the tree is left to be cleared. A raw channel gives its samples away.
template <qxReal T>
[[nodiscard]] qxOwner<CQXChannel<T>> DestroyingInverseTransform(CQXChannel<T>& tree);

/// A rectangle of the inverse transform, from the parts of the bands that it depends on.
/// @return null also when a band is missing or the rectangle is empty or not wholly inside
template <qxReal T>
[[nodiscard]] qxOwner<CQXChannel<T>> InverseTransformOfRect(const CQXChannel<T>& tree, const Rect& rect);

/// Runs the lifting steps of a filter on two bands, or their inverse.
template <qxReal T>
void LiftBands(const CQXWaveletFilter<T>& filter, CQXChannel<T>* low, CQXChannel<T>* high, std::int32_t direction,
               bool inverse);

/// Multiplies the samples of every band of the first levels by its factor; the low band below them only when it is raw.
template <qxReal T>
void MultiplyLevels(CQXChannel<T>& tree, std::int32_t depth, T low, T high);

/// Multiplies the samples of one channel, apart from its tree.
template <qxReal T>
void MultiplySamples(CQXChannel<T>& channel, T factor);

/// The lowest low band, and a high band, as raw copies in the units of the samples.
template <qxReal T>
[[nodiscard]] qxOwner<CQXChannel<T>> ScaledLowBand(const CQXChannel<T>& tree);
template <qxReal T>
[[nodiscard]] qxOwner<CQXChannel<T>> ScaledHighBand(const CQXChannel<T>& tree, std::int32_t level, std::int32_t band);

// ---- The two that take rows are defined here for those who bring rows of their own.

template <qxReal T, typename Rows>
qxOwner<CQXChannel<T>> ForwardTransform(const Rect& extent, const Rows& rows, const CQXWaveletFilter<T>* filter,
                                        qxChannelType type, std::int32_t depth, qxWaveletNormalization normalization) {
  const std::int32_t levels = AllowedDepth(type, extent, depth);
  if (filter == nullptr || levels < 1) return nullptr;
  qxOwner<CQXChannel<T>> tree = MakeTree<T>(extent, filter, type, levels, normalization);
  LevelBuffers<T> buffers;
  if (tree == nullptr || !buffers.Obtain(extent, type, levels)) return nullptr;

  BandFactors<T> factors;
  ForEachLevel(*tree, [&](CQXChannel<T>& level, std::int32_t i) {
    factors.GoDown(type, LowNorm(*filter, normalization), HighNorm(*filter, normalization));
    ScaledBand<T, T> bands[4] = {{buffers.LowBand(i), T(1)}};
    if (i == levels - 1) bands[0] = {level.SubChannel(0)->GetData(), factors.OfLowest()};
    ForEachHighBand(level, [&](CQXChannel<T>& band, std::int32_t b) { bands[b] = {band.GetData(), factors.Of(b)}; });
    const LevelTransform<T> transform(Extent(level), type, *filter);
    if (i == 0) {
      transform.Forward(rows, bands, buffers.Work());
    } else {
      const auto columns = static_cast<std::size_t>(std::max(level.GetColsNb(), 0));
      transform.Forward(BlockRows<const T>{buffers.LowBand(i - 1), columns}, bands, buffers.Work());
    }
  });
  return tree;
}

/// One level of the inverse transform, in its bands or beside them.
template <qxReal T, typename Rows>
void InverseLevel(const CQXChannel<T>& level, const ScaledBand<T, T>* bands, const Rows& rows, T* work, bool destroys) {
  const LevelTransform<T> transform(Extent(level), level.GetType(), *level.GetFilter());
  if (destroys) {
    transform.DestroyingInverse(bands, rows, work);
  } else {
    ScaledBand<const T, T> readOnly[4];
    for (std::int32_t b = 0; b < 4; ++b) readOnly[b] = {bands[b].samples, bands[b].factor};
    transform.Inverse(readOnly, rows, work);
  }
}

template <qxReal T, typename Rows>
bool InverseTransform(CQXChannel<T>& tree, const Rows& rows, bool releases) {
  const std::int32_t depth = tree.GetDepth();
  const auto factors = qxMakeBlock<BandFactors<T>>(static_cast<std::size_t>(depth));
  LevelBuffers<T> buffers;
  if (factors == nullptr || !buffers.Obtain(Extent(tree), tree.GetType(), depth)) return false;

  CQXChannel<T>* level = nullptr;
  BandFactors<T> running;
  ForEachLevel(tree, [&](CQXChannel<T>& present, std::int32_t i) {
    const CQXWaveletFilter<T>& filter = *present.GetFilter();
    running.GoDown(present.GetType(), 1 / LowNorm(filter, tree.GetTypeOfNormalization()),
                   1 / HighNorm(filter, tree.GetTypeOfNormalization()));
    factors[static_cast<std::size_t>(i)] = running;
    level = &present;
  });
  for (std::int32_t i = depth - 1; i >= 0; --i, level = const_cast<CQXChannel<T>*>(level->Parent())) {
    const BandFactors<T>& own = factors[static_cast<std::size_t>(i)];
    ScaledBand<T, T> bands[4] = {{buffers.LowBand(i), T(1)}};
    if (i == depth - 1) bands[0] = {level->SubChannel(0)->GetData(), own.OfLowest()};
    ForEachHighBand(*level, [&](CQXChannel<T>& band, std::int32_t b) { bands[b] = {band.GetData(), own.Of(b)}; });
    if (i == 0) {
      InverseLevel(*level, bands, rows, buffers.Work(), releases);
    } else {
      const auto columns = static_cast<std::size_t>(std::max(level->GetColsNb(), 0));
      InverseLevel(*level, bands, BlockRows<T>{buffers.LowBand(i - 1), columns}, buffers.Work(), releases);
    }
    if (releases) ForEachHighBand(*level, [](CQXChannel<T>& band, std::int32_t) { band.SetData({}); });
  }
  return true;
}

}  // namespace qxInternal
