#include <qx/foundation/internal/instantiate.h>
#include <qx/kernels/array_kernels.h>
#include <qx/wavelets/internal/channel_transform.h>
#include <qx/wavelets/internal/cut_and_paste.h>
#include <qx/wavelets/lifting.h>

#include <algorithm>
#include <utility>

namespace qxInternal {

namespace {

/// What the lifting steps make of the low band of a constant signal of ones.
template <qxReal T>
T LowGain(const CQXWaveletFilter<T>& filter) {
  T even[4] = {1, 1, 1, 1};
  T odd[4] = {1, 1, 1, 1};
  LiftingSchedule<T>(filter, 4, 4, false, false).LiftRow(even, odd, false);
  return even[2];
}

/// A rectangle widened so far that the ends of the cut do not reach back into it, inside the extent of its level. It
/// begins on the parity of the level, so that its samples fall into the same bands at the same places.
Rect Widened(const Rect& rect, const Rect& extent) {
  constexpr std::int64_t reach = 8;
  Rect wide = Rect{rect.left - reach, rect.top - reach, rect.right + reach, rect.bottom + reach}.ClippedTo(extent);
  wide.left -= (wide.left - extent.left) & 1;
  wide.top -= (wide.top - extent.top) & 1;
  return wide;
}

template <qxReal T>
BlockRows<T> RowsOf(CQXChannel<T>& channel) {
  return {channel.GetData(), static_cast<std::size_t>(std::max(channel.GetColsNb(), 0))};
}

/// What one level gives to a rectangle of the inverse transform.
template <qxReal T>
struct RectLevel {
  Rect wanted, wide;
  BandFactors<T> factors;
};

/// The wanted part of one level from the parts of its bands; @p low is that of the low band.
template <qxReal T>
qxOwner<CQXChannel<T>> InverseLevelOfRect(const CQXChannel<T>& level, const RectLevel<T>& part,
                                          qxOwner<CQXChannel<T>> low, T lowFactor) {
  const qxChannelType type = level.GetType();
  qxOwner<CQXChannel<T>> pieces[4];
  pieces[0] = std::move(low);
  ScaledBand<const T, T> bands[4];
  for (std::int32_t b = 0; b < BandsCount(type); ++b) {
    if (b > 0) pieces[b] = CutSamples(*level.SubChannel(b), BandRect(type, b, part.wide));
    if (pieces[b] == nullptr) return nullptr;
    bands[b] = {pieces[b]->GetData(), b > 0 ? part.factors.Of(b) : lowFactor};
  }
  qxOwner<CQXChannel<T>> raw = MakeRaw<T>(part.wide);
  LevelBuffers<T> buffers;
  if (raw == nullptr || !buffers.Obtain(part.wide, type, 1)) return nullptr;
  LevelTransform<T>(part.wide, type, *level.GetFilter()).Inverse(bands, RowsOf(*raw), buffers.Work());
  return CutSamples(*raw, part.wanted);
}

}  // namespace

template <qxReal T>
bool LevelBuffers<T>::Obtain(const Rect& extent, qxChannelType type, std::int32_t depth) {
  // The low band of the last level has a block of its own. A level below may have another type: it is no larger.
  const Rect first = BandRect(type, 0, extent);
  const std::size_t work = LevelTransform<T>::WorkSize(static_cast<std::size_t>(std::max(extent.Columns(), 0)));
  const std::size_t low = depth > 1 ? first.Count() : 0;
  m_begin[0] = work;
  m_begin[1] = work + low;
  m_block = qxMakeBlock<T>(work + low + (depth > 2 ? first.Count() : 0));
  return m_block != nullptr;
}

template <qxReal T>
qxOwner<CQXChannel<T>> ForwardTransform(const CQXChannel<T>& raw, const CQXWaveletFilter<T>* filter, qxChannelType type,
                                        std::int32_t depth, qxWaveletNormalization normalization) {
  if (raw.IsDecomposed() != 0 || raw.GetData() == nullptr) return nullptr;
  const auto columns = static_cast<std::size_t>(std::max(raw.GetColsNb(), 0));
  return ForwardTransform<T>(Extent(raw), BlockRows<const T>{raw.GetData(), columns}, filter, type, depth,
                             normalization);
}

/// The inverse transform of a complete tree that has a level.
template <qxReal T>
static qxOwner<CQXChannel<T>> MakeInverse(CQXChannel<T>& tree, bool releases) {
  qxOwner<CQXChannel<T>> raw = MakeRaw<T>(Extent(tree));
  if (raw == nullptr || !InverseTransform(tree, RowsOf(*raw), releases)) return nullptr;
  raw->SetDecompositionTypes(tree.GetFilter(), QX_CHANNEL_RAW, tree.GetTypeOfNormalization());
  return raw;
}

template <qxReal T>
qxOwner<CQXChannel<T>> InverseTransform(const CQXChannel<T>& tree) {
  if (!IsComplete(tree)) return nullptr;
  // Without releasing, the tree is only read.
  return tree.IsDecomposed() != 0 ? MakeInverse(const_cast<CQXChannel<T>&>(tree), false) : CloneTree(tree);
}

template <qxReal T>
qxOwner<CQXChannel<T>> DestroyingInverseTransform(CQXChannel<T>& tree) {
  if (!IsComplete(tree)) return nullptr;
  return tree.IsDecomposed() != 0 ? MakeInverse(tree, true) : qxMakeOwner<CQXChannel<T>>(std::move(tree));
}

template <qxReal T>
qxOwner<CQXChannel<T>> InverseTransformOfRect(const CQXChannel<T>& tree, const Rect& rect) {
  if (!IsComplete(tree) || rect.IsEmpty() || !Extent(tree).Contains(rect)) return nullptr;
  if (tree.IsDecomposed() == 0) return CutSamples(tree, rect);
  const qxBlock<RectLevel<T>> parts = qxMakeBlock<RectLevel<T>>(static_cast<std::size_t>(tree.GetDepth()));
  if (parts == nullptr) return nullptr;

  const CQXChannel<T>* level = nullptr;
  BandFactors<T> factors;
  Rect wanted = rect;
  const qxWaveletNormalization normalization = tree.GetTypeOfNormalization();
  std::int32_t depth = ForEachLevel(tree, [&](const CQXChannel<T>& present, std::int32_t i) {
    factors.GoDown(present.GetType(), 1 / LowNorm(*present.GetFilter(), normalization),
                   1 / HighNorm(*present.GetFilter(), normalization));
    const Rect wide = Widened(wanted, Extent(present));
    parts[static_cast<std::size_t>(i)] = {wanted, wide, factors};
    wanted = BandRect(present.GetType(), 0, wide);
    level = &present;
  });
  qxOwner<CQXChannel<T>> piece = CutSamples(*level->SubChannel(0), wanted);
  T lowFactor = factors.OfLowest();
  for (; depth > 0 && piece != nullptr; --depth, level = level->Parent()) {
    piece = InverseLevelOfRect(*level, parts[static_cast<std::size_t>(depth - 1)], std::move(piece), lowFactor);
    lowFactor = 1;
  }
  if (piece != nullptr) piece->SetDecompositionTypes(tree.GetFilter(), QX_CHANNEL_RAW, normalization);
  return piece;
}

template <qxReal T>
void LiftBands(const CQXWaveletFilter<T>& filter, CQXChannel<T>* low, CQXChannel<T>* high, std::int32_t direction,
               bool inverse) {
  using Lift = void (CQXLifting<T>::*)(std::int32_t, const T*, qxChannelType);
  constexpr Lift lifts[2][3] = {
      {&CQXLifting<T>::LiftUsing2Coef, &CQXLifting<T>::LiftUsing4Coef, &CQXLifting<T>::LiftUsing6Coef},
      {&CQXLifting<T>::InvLiftUsing2Coef, &CQXLifting<T>::InvLiftUsing4Coef, &CQXLifting<T>::InvLiftUsing6Coef}};
  CQXLifting<T> view(low, high, direction);
  const WaveletSteps<T> steps(filter);
  for (std::int32_t i = 0; i < steps.Count(); ++i) {
    const auto& [updatesLow, coefficients, taps] = steps.At(i, inverse);
    (view.*lifts[inverse][taps / 2 - 1])(updatesLow, coefficients,
                                         direction != 0 ? QX_CHANNEL_ROWS : QX_CHANNEL_COLUMNS);
  }
}

template <qxReal T>
void MultiplySamples(CQXChannel<T>& channel, T factor) {
  if (channel.GetData() != nullptr) qxKernels::Multiply(CountOf(channel), factor, channel.GetData());
}

template <qxReal T>
void MultiplyLevels(CQXChannel<T>& tree, std::int32_t depth, T low, T high) {
  BandFactors<T> factors;
  ForEachLevel(tree, [&](CQXChannel<T>& level, std::int32_t i) {
    if (i >= depth) return;
    factors.GoDown(level.GetType(), low, high);
    ForEachHighBand(level, [&factors](CQXChannel<T>& band, std::int32_t b) {
      if (HasEffect(factors.Of(b))) MultiplySamples(band, factors.Of(b));
    });
    CQXChannel<T>* const next = level.SubChannel(0);
    const bool isLast = next != nullptr && (i + 1 == depth || next->IsDecomposed() == 0);
    if (isLast && HasEffect(factors.OfLowest())) MultiplySamples(*next, factors.OfLowest());
  });
}

template <qxReal T>
qxOwner<CQXChannel<T>> ScaledLowBand(const CQXChannel<T>& tree) {
  const CQXChannel<T>* lowest = LowestLow(&tree);
  if (lowest->GetData() == nullptr) return nullptr;
  qxOwner<CQXChannel<T>> scaled = CloneRaw(*lowest);
  const CQXWaveletFilter<T>* filter = tree.GetFilter();
  if (scaled == nullptr || tree.IsDecomposed() == 0 || filter == nullptr) return scaled;
  const T gain = LowGain(*filter) * LowNorm(*filter, tree.GetTypeOfNormalization());
  const T factor = 1 / (tree.GetType() == QX_CHANNEL_2D ? gain * gain : gain);
  T product = 1;
  for (std::int32_t depth = tree.GetDepth(); depth > 0; --depth) product *= factor;
  if (HasEffect(product)) MultiplySamples(*scaled, product);
  return scaled;
}

template <qxReal T>
qxOwner<CQXChannel<T>> ScaledHighBand(const CQXChannel<T>& tree, std::int32_t level, std::int32_t band) {
  const CQXChannel<T>* channel = band >= 1 && level >= 1 ? tree.SubChannel(level, band) : nullptr;
  if (channel == nullptr || channel->GetData() == nullptr) return nullptr;
  qxOwner<CQXChannel<T>> scaled = CloneRaw(*channel);
  if (scaled == nullptr || tree.GetFilter() == nullptr) return scaled;
  const T low = 1 / LowNorm(*tree.GetFilter(), tree.GetTypeOfNormalization());
  const T high = 1 / HighNorm(*tree.GetFilter(), tree.GetTypeOfNormalization());
  BandFactors<T> factors;
  ForEachLevel(tree, [&](const CQXChannel<T>& present, std::int32_t i) {
    if (i < level) factors.GoDown(present.GetType(), low, high);
  });
  if (HasEffect(factors.Of(band))) MultiplySamples(*scaled, factors.Of(band));
  return scaled;
}

#define QX_INSTANTIATE(T)                                                                                           \
  template class LevelBuffers<T>;                                                                                   \
  template qxOwner<CQXChannel<T>> ForwardTransform(const CQXChannel<T>&, const CQXWaveletFilter<T>*, qxChannelType, \
                                                   std::int32_t, qxWaveletNormalization);                           \
  template qxOwner<CQXChannel<T>> InverseTransform(const CQXChannel<T>&);                                           \
  template qxOwner<CQXChannel<T>> DestroyingInverseTransform(CQXChannel<T>&);                                       \
  template qxOwner<CQXChannel<T>> InverseTransformOfRect(const CQXChannel<T>&, const Rect&);                        \
  template void LiftBands(const CQXWaveletFilter<T>&, CQXChannel<T>*, CQXChannel<T>*, std::int32_t, bool);          \
  template void MultiplyLevels(CQXChannel<T>&, std::int32_t, T, T);                                                 \
  template void MultiplySamples(CQXChannel<T>&, T);                                                                 \
  template qxOwner<CQXChannel<T>> ScaledLowBand(const CQXChannel<T>&);                                              \
  template qxOwner<CQXChannel<T>> ScaledHighBand(const CQXChannel<T>&, std::int32_t, std::int32_t);
QX_FOR_FLOAT_AND_DOUBLE(QX_INSTANTIATE)
#undef QX_INSTANTIATE

}  // namespace qxInternal
