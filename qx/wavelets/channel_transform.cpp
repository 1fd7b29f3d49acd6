#include <qx/wavelets/channel.h>
#include <qx/wavelets/internal/level_transform.h>

#include <algorithm>
#include <cmath>
#include <utility>

using qxInternal::BandFactors;
using qxInternal::BandRect;
using qxInternal::BandsCount;
using qxInternal::Extent;
using qxInternal::LevelTransform;
using qxInternal::LiftingSchedule;
using qxInternal::MakeShell;
using qxInternal::Rect;

namespace {

constexpr double factorGuard = 0.000001;

template <qxReal T>
bool HasEffect(T factor) {
  return std::abs(factor - 1) > static_cast<T>(factorGuard);
}

template <qxReal T>
T LowNorm(const CQXWaveletFilter<T>& filter, qxWaveletNormalization normalization) {
  if (normalization == QX_NORMALIZATION_NONE) return 1;
  return filter.GetLowNorm(normalization == QX_NORMALIZATION_1 ? 1 : 0);
}

template <qxReal T>
T HighNorm(const CQXWaveletFilter<T>& filter, qxWaveletNormalization normalization) {
  if (normalization == QX_NORMALIZATION_NONE) return 1;
  return filter.GetHighNorm(normalization == QX_NORMALIZATION_1 ? 1 : 0);
}

/// The factors that take the normalization of a tree away.
template <qxReal T>
BandFactors<T> InverseFactors(const CQXChannel<T>& tree) {
  const qxWaveletNormalization normalization = tree.GetTypeOfNormalization();
  return {tree.GetType(), 1 / LowNorm(*tree.GetFilter(), normalization),
          1 / HighNorm(*tree.GetFilter(), normalization)};
}

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

}  // namespace

template <qxReal T>
bool CQXChannel<T>::IsTransformedBy(const CQXWaveletFilter<T>* filter, qxChannelType type) const noexcept {
  return m_type == type && m_filter != nullptr && m_filter->GetWavelet() == filter->GetWavelet();
}

/// Whether the sub-channels from @p firstBand on stand there with samples, in the places of one level of this channel.
template <qxReal T>
bool CQXChannel<T>::HasRawBands(std::int32_t firstBand) const noexcept {
  if (m_decomposed == 0 || BandsCount(m_type) == 0 || GetSubChannelsNb() != BandsCount(m_type)) return false;
  for (std::int32_t band = firstBand; band < GetSubChannelsNb(); ++band) {
    const CQXChannel* channel = SubChannel(band);
    if (channel == nullptr || channel->m_data == nullptr) return false;
    if (Extent(*channel) != BandRect(m_type, band, Extent(*this))) return false;
  }
  return true;
}

/// Whether every band of every level is there, and every filter; a raw channel lacks none.
template <qxReal T>
bool CQXChannel<T>::IsComplete() const noexcept {
  const CQXChannel* channel = this;
  for (; channel->m_decomposed != 0; channel = channel->SubChannel(0)) {
    const CQXChannel* low = channel->SubChannel(0);
    if (low == nullptr || channel->m_filter == nullptr || !channel->HasRawBands(low->m_decomposed != 0 ? 1 : 0))
      return false;
    if (Extent(*low) != BandRect(channel->m_type, 0, Extent(*channel))) return false;
  }
  return channel == this || channel->m_data != nullptr;
}

/// The transform between a block of samples and the bands of this level; without a filter nothing is lifted.
template <qxReal T>
LevelTransform<T> CQXChannel<T>::MakeLevelTransform(const CQXWaveletFilter<T>* filter) const {
  T* bands[4] = {};
  for (std::int32_t band = 0; band < GetSubChannelsNb(); ++band) bands[band] = SubChannel(band)->m_data.get();
  return LevelTransform<T>(Extent(*this), m_type, filter, bands);
}

template <qxReal T>
void CQXChannel<T>::Split(const CQXChannel& source) {
  if (HasRawBands(0) && source.m_data != nullptr && source.m_columns == m_columns && source.m_rows == m_rows) {
    MakeLevelTransform(nullptr).Forward(source.m_data.get());
  }
}

template <qxReal T>
void CQXChannel<T>::Unite(CQXChannel* target) const {
  if (HasRawBands(0) && target != nullptr && target->m_data != nullptr && target->m_columns == m_columns &&
      target->m_rows == m_rows) {
    MakeLevelTransform(nullptr).Inverse(target->m_data.get());
  }
}

template <qxReal T>
void CQXChannel<T>::LiftDirect(CQXChannel* low, CQXChannel* high, std::int32_t direction) const {
  if (m_filter != nullptr) CQXLifting<T>(low, high, direction).Run(*m_filter, false);
}

template <qxReal T>
void CQXChannel<T>::LiftInverse(CQXChannel* low, CQXChannel* high, std::int32_t direction) const {
  if (m_filter != nullptr) CQXLifting<T>(low, high, direction).Run(*m_filter, true);
}

/// One level from a raw channel, which is consumed; null when the step is refused.
template <qxReal T>
std::unique_ptr<CQXChannel<T>> CQXChannel<T>::TransformOneLevel(const CQXWaveletFilter<T>* filter, qxChannelType type) {
  if (filter == nullptr || !qxInternal::AllowsLevel(type, m_columns, m_rows)) return nullptr;
  if (BandsCount(type) != 0 && m_data == nullptr) return nullptr;

  auto level = std::make_unique<CQXChannel>(m_columns, m_rows, m_offsetX, m_offsetY);
  level->m_filter = filter;
  level->m_normalization = m_normalization;
  level->CreateBands(type);
  if (level->m_decomposed != 0) {
    level->MakeLevelTransform(filter).Forward(m_data.get());
    Destroy();
  }
  return level;
}

template <qxReal T>
CQXChannel<T>* CQXChannel<T>::FWTStep(const CQXWaveletFilter<T>* filter, qxChannelType type) {
  if (m_decomposed == 0) return TransformOneLevel(filter, type).release();
  if (filter == nullptr || BandsCount(type) == 0 || !IsTransformedBy(filter, type)) return nullptr;
  CQXChannel* parent = this;
  while (parent->SubChannel(0) != nullptr && parent->SubChannel(0)->m_decomposed != 0) parent = parent->SubChannel(0);
  CQXChannel* low = parent->SubChannel(0);
  std::unique_ptr<CQXChannel> level = low != nullptr ? low->TransformOneLevel(filter, type) : nullptr;
  if (level == nullptr) return nullptr;
  parent->SetSubChannel(std::move(level), 0);
  return this;
}

template <qxReal T>
std::unique_ptr<CQXChannel<T>> CQXChannel<T>::IFWTStep() {
  if (m_filter == nullptr || !HasRawBands(0)) return nullptr;
  auto raw = std::make_unique<CQXChannel>(m_columns, m_rows, m_offsetX, m_offsetY);
  raw->m_filter = m_filter;
  raw->m_normalization = m_normalization;
  raw->TakeUninitialisedSamples();
  MakeLevelTransform(m_filter).Inverse(raw->m_data.get());
  return raw;
}

/// The levels that a raw channel allows, up to @p depth, not normalized; the channel is consumed. Null when not one
/// level is possible.
template <qxReal T>
std::unique_ptr<CQXChannel<T>> CQXChannel<T>::FWTRawChannel(const CQXWaveletFilter<T>* filter, qxChannelType type,
                                                            std::int32_t depth) {
  if (depth < 1 || BandsCount(type) == 0) return nullptr;
  std::unique_ptr<CQXChannel> tree = TransformOneLevel(filter, type);
  if (tree == nullptr) return nullptr;
  Clear();
  for (CQXChannel* last = tree.get(); depth > 1; --depth) {
    std::unique_ptr<CQXChannel> level = last->SubChannel(0)->TransformOneLevel(filter, type);
    if (level == nullptr) break;
    CQXChannel* next = level.get();
    last->SetSubChannel(std::move(level), 0);
    last = next;
  }
  return tree;
}

template <qxReal T>
std::unique_ptr<CQXChannel<T>> CQXChannel<T>::FWT(const CQXWaveletFilter<T>* filter, qxChannelType type,
                                                  std::int32_t depth) {
  if (filter == nullptr) return nullptr;
  if (m_decomposed == 0) {
    std::unique_ptr<CQXChannel> tree = FWTRawChannel(filter, type, depth);
    if (tree == nullptr) return CloneRawChannel();
    tree->Normalize();
    return tree;
  }
  std::unique_ptr<CQXChannel> tree = CloneDecomposedChannel();
  tree->FWTInPlace(filter, type, depth);
  return tree;
}

template <qxReal T>
void CQXChannel<T>::FWTInPlace(const CQXWaveletFilter<T>* filter, qxChannelType type, std::int32_t depth) {
  if (filter == nullptr || (m_decomposed != 0 && !IsTransformedBy(filter, type))) return;
  const qxWaveletNormalization normalization = m_normalization;
  CQXChannel* lowest = LowestLow();
  std::unique_ptr<CQXChannel> tree = lowest->FWTRawChannel(filter, type, depth);
  if (tree == nullptr) return;
  tree->Normalize(tree->GetDepth(), normalization);
  lowest->Swap(*tree);
  m_filter = filter;
  m_normalization = normalization;
  Inherit();
}

template <qxReal T>
std::unique_ptr<CQXChannel<T>> CQXChannel<T>::DestroyingIFWT() {
  if (!IsComplete()) return nullptr;
  std::vector<CQXChannel*, qxBlockAllocator<CQXChannel*>> levels;
  for (CQXChannel* level = this; level->m_decomposed != 0; level = level->SubChannel(0)) levels.push_back(level);
  Denormalize();
  while (levels.size() > 1) {
    std::unique_ptr<CQXChannel> low = levels.back()->IFWTStep();
    levels.pop_back();
    levels.back()->SetSubChannel(std::move(low), 0);
  }
  std::unique_ptr<CQXChannel> raw = m_decomposed != 0 ? IFWTStep() : std::make_unique<CQXChannel>(std::move(*this));
  Clear();
  return raw;
}

template <qxReal T>
std::unique_ptr<CQXChannel<T>> CQXChannel<T>::IFWT() const {
  return CloneDecomposedChannel()->DestroyingIFWT();
}

template <qxReal T>
void CQXChannel<T>::IFWTInPlace() {
  if (m_decomposed == 0) return;
  std::unique_ptr<CQXChannel> raw = DestroyingIFWT();
  if (raw != nullptr) Swap(*raw);
}

template <qxReal T>
std::unique_ptr<CQXChannel<T>> CQXChannel<T>::IFWT(std::int32_t x, std::int32_t y, std::int32_t width,
                                                   std::int32_t height) const {
  if (m_decomposed == 0) return Cut(x, y, width, height);
  const Rect wanted = qxInternal::RectAt(*this, x, y, width, height);
  if (!IsComplete() || wanted.IsEmpty() || !Extent(*this).Contains(wanted)) return nullptr;

  // Downwards: which rectangle each level has to give, and the factors of its bands.
  struct Level {
    const CQXChannel* channel;
    Rect wanted, wide;
    BandFactors<T> factors;
  };
  BandFactors<T> factors = InverseFactors(*this);
  T lowestFactor = 1;
  std::vector<Level, qxBlockAllocator<Level>> levels;
  const CQXChannel* lowest = this;
  Rect rect = wanted;
  for (; lowest->m_decomposed != 0; lowest = lowest->SubChannel(0)) {
    const Rect wide = Widened(rect, Extent(*lowest));
    levels.push_back({lowest, rect, wide, factors});
    rect = BandRect(lowest->m_type, 0, wide);
    lowestFactor = factors.OfLowest();
    factors.GoDown();
  }

  // Upwards: the low band from below, the high bands cut out of the tree.
  const auto cut = [](const CQXChannel& source, const Rect& r, T factor) {
    std::unique_ptr<CQXChannel> piece = MakeShell<CQXChannel>(r);
    piece->TakeUninitialisedSamples();
    piece->PasteRawChannel(source);
    if (HasEffect(factor)) piece->EnhanceRawData(factor);
    return piece;
  };
  std::unique_ptr<CQXChannel> piece = cut(*lowest, rect, lowestFactor);
  for (; !levels.empty(); levels.pop_back()) {
    const Level& level = levels.back();
    const std::unique_ptr<CQXChannel> shell = MakeShell<CQXChannel>(level.wide);
    shell->m_filter = level.channel->m_filter;
    shell->m_type = level.channel->m_type;
    shell->m_decomposed = 1;
    shell->SetSubChannelsNb(BandsCount(shell->m_type));
    shell->SetSubChannel(std::move(piece), 0);
    for (std::int32_t band = 1; band < shell->GetSubChannelsNb(); ++band) {
      const Rect r = BandRect(shell->m_type, band, level.wide);
      shell->SetSubChannel(cut(*level.channel->SubChannel(band), r, level.factors.Of(band)), band);
    }
    const std::unique_ptr<CQXChannel> raw = shell->IFWTStep();
    if (raw == nullptr) return nullptr;
    piece = cut(*raw, level.wanted, T(1));
  }
  piece->m_filter = m_filter;
  piece->m_normalization = m_normalization;
  return piece;
}

/// Multiplies the bands of the first levels; the low band below them only when it is raw.
template <qxReal T>
void CQXChannel<T>::MultiplyLevels(std::int32_t depth, T low, T high) {
  BandFactors<T> factors(m_type, low, high);
  CQXChannel* channel = this;
  for (std::int32_t level = 1; level <= depth && channel->m_decomposed != 0; ++level) {
    CQXChannel* next = channel->SubChannel(0);
    for (std::int32_t band = 1; band < channel->GetSubChannelsNb(); ++band) {
      if (channel->SubChannel(band) != nullptr && HasEffect(factors.Of(band))) {
        channel->SubChannel(band)->EnhanceRawData(factors.Of(band));
      }
    }
    if (next == nullptr) return;
    if ((level == depth || next->m_decomposed == 0) && HasEffect(factors.OfLowest())) {
      next->EnhanceRawData(factors.OfLowest());
    }
    factors.GoDown();
    channel = next;
  }
}

template <qxReal T>
void CQXChannel<T>::Normalize() {
  Normalize(GetDepth(), m_normalization);
}

template <qxReal T>
void CQXChannel<T>::Normalize(std::int32_t depth, qxWaveletNormalization normalization) {
  if (m_filter != nullptr) {
    Normalize(depth, normalization, LowNorm(*m_filter, normalization), HighNorm(*m_filter, normalization));
  }
}

template <qxReal T>
void CQXChannel<T>::Normalize(std::int32_t depth, qxWaveletNormalization normalization, T low, T high) {
  if (normalization != QX_NORMALIZATION_NONE) MultiplyLevels(depth, low, high);
}

template <qxReal T>
void CQXChannel<T>::Denormalize() {
  Denormalize(GetDepth(), m_normalization);
}

template <qxReal T>
void CQXChannel<T>::Denormalize(std::int32_t depth, qxWaveletNormalization normalization) {
  if (m_filter != nullptr) {
    Denormalize(depth, normalization, LowNorm(*m_filter, normalization), HighNorm(*m_filter, normalization));
  }
}

template <qxReal T>
void CQXChannel<T>::Denormalize(std::int32_t depth, qxWaveletNormalization normalization, T low, T high) {
  if (normalization != QX_NORMALIZATION_NONE) MultiplyLevels(depth, 1 / low, 1 / high);
}

template <qxReal T>
std::unique_ptr<CQXChannel<T>> CQXChannel<T>::GetScaledLowChannel() const {
  const CQXChannel* lowest = this;
  while (lowest->SubChannel(0) != nullptr) lowest = lowest->SubChannel(0);
  if (lowest->m_data == nullptr) return nullptr;
  std::unique_ptr<CQXChannel> scaled = lowest->CloneRawChannel();
  if (m_decomposed == 0 || m_filter == nullptr) return scaled;
  const T gain = LowGain(*m_filter) * LowNorm(*m_filter, m_normalization);
  const T factor = 1 / (m_type == QX_CHANNEL_2D ? gain * gain : gain);
  T product = 1;
  for (std::int32_t depth = GetDepth(); depth > 0; --depth) product *= factor;
  if (HasEffect(product)) scaled->EnhanceRawData(product);
  return scaled;
}

template <qxReal T>
std::unique_ptr<CQXChannel<T>> CQXChannel<T>::GetScaledHighChannel(std::int32_t level, std::int32_t band) const {
  const CQXChannel* channel = band >= 1 && level >= 1 ? SubChannel(level, band) : nullptr;
  if (channel == nullptr || channel->m_data == nullptr) return nullptr;
  std::unique_ptr<CQXChannel> scaled = channel->CloneRawChannel();
  if (m_filter == nullptr) return scaled;
  BandFactors<T> factors = InverseFactors(*this);
  for (; level > 1; --level) factors.GoDown();
  if (HasEffect(factors.Of(band))) scaled->EnhanceRawData(factors.Of(band));
  return scaled;
}

template class CQXChannel<float>;
template class CQXChannel<double>;
