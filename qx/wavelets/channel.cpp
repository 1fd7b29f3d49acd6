#include <qx/foundation/conversion.h>
#include <qx/foundation/internal/instantiate.h>
#include <qx/kernels/array_kernels.h>
#include <qx/wavelets/channel.h>
#include <qx/wavelets/internal/blending.h>
#include <qx/wavelets/internal/channel_print.h>
#include <qx/wavelets/internal/channel_transform.h>
#include <qx/wavelets/internal/cut_and_paste.h>
#include <qx/wavelets/internal/denoising.h>
#include <qx/wavelets/internal/noise_level.h>
#include <qx/wavelets/internal/resampling.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <utility>

using qxInternal::CountOf;
using qxInternal::Extent;
using qxInternal::LowestLow;
using qxInternal::NextInTree;
using qxInternal::RectAt;

// ---- Construction, fields and tree

template <qxReal T>
CQXChannel<T>::CQXChannel(std::int32_t columns, std::int32_t rows, std::int32_t offsetX, std::int32_t offsetY) noexcept
    : m_columns(columns), m_rows(rows), m_offsetX(offsetX), m_offsetY(offsetY) {}

template <qxReal T>
CQXChannel<T>::CQXChannel(std::int32_t columns, std::int32_t rows, const T* data, std::int32_t offsetX,
                          std::int32_t offsetY)
    : CQXChannel(columns, rows, offsetX, offsetY) {
  if (data == nullptr) return;
  m_data = qxMakeBlock<T>(CountOf(*this));
  if (m_data != nullptr) std::copy_n(data, CountOf(*this), m_data.get());
}

template <qxReal T>
CQXChannel<T>::CQXChannel(const CQXChannel& other) : CQXChannel() {
  CopyDecomposedChannel(other);
}

template <qxReal T>
CQXChannel<T>& CQXChannel<T>::operator=(const CQXChannel& other) {
  if (this != &other) CopyDecomposedChannel(other);
  return *this;
}

template <qxReal T>
// NOLINTNEXTLINE(performance-noexcept-move-constructor): it may have to copy
CQXChannel<T>& CQXChannel<T>::operator=(CQXChannel&& other) {
  if (IsBelow(other) || other.IsBelow(*this)) {
    CopyDecomposedChannel(other);
  } else {
    Swap(other);
  }
  return *this;
}

/// Whether this is the other channel or stands in its tree.
template <qxReal T>
bool CQXChannel<T>::IsBelow(const CQXChannel& other) const noexcept {
  const CQXChannel* channel = this;
  while (channel != nullptr && channel != &other) channel = channel->m_parent;
  return channel != nullptr;
}

/// Exchanges everything but the places in the trees that the two stand in.
template <qxReal T>
void CQXChannel<T>::Swap(CQXChannel& other) noexcept {
  std::swap(m_columns, other.m_columns);
  std::swap(m_rows, other.m_rows);
  std::swap(m_offsetX, other.m_offsetX);
  std::swap(m_offsetY, other.m_offsetY);
  std::swap(m_filter, other.m_filter);
  std::swap(m_type, other.m_type);
  std::swap(m_data, other.m_data);
  std::swap(m_normalization, other.m_normalization);
  std::swap(m_decomposed, other.m_decomposed);
  SwapSubChannels(other);
}

template <qxReal T>
void CQXChannel<T>::SwapSubChannels(CQXChannel& other) noexcept {
  std::swap(m_subChannelsNb, other.m_subChannelsNb);
  std::swap(m_subChannels, other.m_subChannels);
  AdoptSubChannels();
  other.AdoptSubChannels();
}

template <qxReal T>
void CQXChannel<T>::AdoptSubChannels() noexcept {
  for (auto& subChannel : m_subChannels) {
    if (subChannel != nullptr) subChannel->m_parent = this;
  }
}

/// Becomes decomposed with the sub-channels of another channel. The samples and the tree that were here go.
template <qxReal T>
void CQXChannel<T>::TakeLevel(CQXChannel& level) noexcept {
  SwapSubChannels(level);
  level.DestroyTree();
  m_type = level.m_type;
  m_decomposed = m_subChannelsNb != 0 ? 1 : 0;
  if (m_decomposed != 0) m_data.reset();
}

template <qxReal T>
void CQXChannel<T>::Initialize() {
  qxBlock<T> zeros = qxMakeBlock<T>(CountOf(*this));
  if (zeros == nullptr) return;
  std::fill_n(zeros.get(), CountOf(*this), T(0));
  m_data = std::move(zeros);
}

/// From the leaves upwards, so that each channel goes without a tree of its own.
template <qxReal T>
void CQXChannel<T>::DestroyTree() noexcept {
  CQXChannel* channel = this;
  for (;;) {
    auto* const end = channel->m_subChannels + channel->m_subChannelsNb;
    auto* const slot = std::find_if(channel->m_subChannels, end, [](const auto& child) { return child != nullptr; });
    if (slot != end && (*slot)->m_subChannelsNb != 0) {
      channel = slot->get();
    } else if (slot != end) {
      slot->reset();
    } else {
      channel->m_subChannelsNb = 0;
      if (channel == this) return;
      channel = const_cast<CQXChannel*>(channel->m_parent);
    }
  }
}

template <qxReal T>
void CQXChannel<T>::Destroy() noexcept {
  DestroyTree();
  m_data.reset();
  m_columns = 0;
  m_rows = 0;
  m_decomposed = 0;
}

template <qxReal T>
void CQXChannel<T>::Clear() noexcept {
  CQXChannel empty;
  Swap(empty);
}

template <qxReal T>
qxWaveletType CQXChannel<T>::GetFilterType() const noexcept {
  return m_filter != nullptr ? m_filter->GetWavelet() : static_cast<qxWaveletType>(-1);
}

template <qxReal T>
void CQXChannel<T>::SetDecompositionTypes(const CQXWaveletFilter<T>* filter, qxChannelType type,
                                          qxWaveletNormalization normalization) noexcept {
  SetType(type);
  m_filter = filter;
  m_normalization = normalization;
}

template <qxReal T>
void CQXChannel<T>::SetFilter(const CQXWaveletFilter<T>* filter) noexcept {
  const bool changesWavelet =
      filter == nullptr || m_filter == nullptr || filter->GetWavelet() != m_filter->GetWavelet();
  if (m_decomposed != 0 && changesWavelet) Destroy();
  m_filter = filter;
}

template <qxReal T>
void CQXChannel<T>::SetType(qxChannelType type) noexcept {
  if (m_decomposed != 0 && m_type != QX_CHANNEL_RAW && m_type != type) Destroy();
  m_type = type;
}

template <qxReal T>
void CQXChannel<T>::SetSubChannelsNb(std::int32_t count) noexcept {
  DestroyTree();
  m_subChannelsNb = std::clamp(count, 0, largestSubChannelsNb);
}

template <qxReal T>
void CQXChannel<T>::SetSubChannel(qxOwner<CQXChannel> channel, std::int32_t index) noexcept {
  if (index < 0 || index >= m_subChannelsNb) return;
  if (channel != nullptr) channel->m_parent = this;
  m_subChannels[index] = std::move(channel);
}

template <qxReal T>
const CQXChannel<T>* CQXChannel<T>::SubChannel(std::int32_t index) const noexcept {
  return index >= 0 && index < GetSubChannelsNb() ? m_subChannels[index].get() : nullptr;
}

template <qxReal T>
CQXChannel<T>* CQXChannel<T>::SubChannel(std::int32_t index) noexcept {
  return const_cast<CQXChannel*>(std::as_const(*this).SubChannel(index));
}

template <qxReal T>
const CQXChannel<T>* CQXChannel<T>::SubChannel(std::int32_t level, std::int32_t index) const noexcept {
  const CQXChannel* channel = this;
  for (; level > 1 && channel != nullptr; --level) channel = channel->SubChannel(0);
  return channel != nullptr ? channel->SubChannel(index) : nullptr;
}

template <qxReal T>
CQXChannel<T>* CQXChannel<T>::SubChannel(std::int32_t level, std::int32_t index) noexcept {
  return const_cast<CQXChannel*>(std::as_const(*this).SubChannel(level, index));
}

template <qxReal T>
std::int32_t CQXChannel<T>::GetDepth() const noexcept {
  std::int32_t depth = 0;
  for (const CQXChannel* low = SubChannel(0); low != nullptr; low = low->SubChannel(0)) ++depth;
  return depth;
}

template <qxReal T>
void CQXChannel<T>::Inherit() noexcept {
  for (CQXChannel* channel = this; channel != nullptr; channel = NextInTree(channel, this)) {
    channel->m_filter = m_filter;
    channel->m_type = m_type;
    channel->m_normalization = m_normalization;
  }
}

template <qxReal T>
void CQXChannel<T>::Clean() noexcept {
  for (CQXChannel* channel = this; channel != nullptr; channel = NextInTree(channel, this)) {
    if (channel->m_data != nullptr) std::fill_n(channel->m_data.get(), CountOf(*channel), T(0));
  }
}

template <qxReal T>
void CQXChannel<T>::CreateOneLevelSubChannels(const CQXWaveletFilter<T>* filter, qxChannelType type,
                                              qxWaveletNormalization normalization) {
  CQXChannel level(m_columns, m_rows, m_offsetX, m_offsetY);
  if (!qxInternal::MakeBands(level, filter, type, normalization, true)) return;
  level.Clean();
  TakeLevel(level);
  m_filter = filter;
  m_normalization = normalization;
}

template <qxReal T>
void CQXChannel<T>::CreateOneLevelSubChannels(const CQXChannel& source) {
  CQXChannel level;
  level.SetSubChannelsNb(source.m_subChannelsNb);
  for (std::int32_t i = 0; i < source.m_subChannelsNb; ++i) {
    if (source.SubChannel(i) == nullptr) continue;
    qxOwner<CQXChannel> band = qxInternal::MakeRaw<T>(Extent(*source.SubChannel(i)));
    if (band == nullptr) return;
    band->SetDecompositionTypes(m_filter, source.m_type, m_normalization);
    level.SetSubChannel(std::move(band), i);
  }
  level.Clean();
  level.m_type = source.m_type;
  TakeLevel(level);
}

template <qxReal T>
void CQXChannel<T>::DestroyLowestSubChannel() {
  if (SubChannel(0) == nullptr) return;
  auto* const last = const_cast<CQXChannel*>(LowestLow(this)->m_parent);
  qxBlock<T> zeros = qxMakeBlock<T>(CountOf(*last));
  if (zeros == nullptr) return;
  std::fill_n(zeros.get(), CountOf(*last), T(0));
  last->DestroyTree();
  last->m_data = std::move(zeros);
  last->m_decomposed = 0;
}

template <qxReal T>
qxOwner<CQXChannel<T>> CQXChannel<T>::CloneRawChannel() const {
  return qxInternal::CloneRaw(*this);
}

template <qxReal T>
qxOwner<CQXChannel<T>> CQXChannel<T>::CloneDecomposedChannel() const {
  return qxInternal::CloneTree(*this);
}

template <qxReal T>
void CQXChannel<T>::CloneOneLevelSubChannels(CQXChannel* target) const {
  if (target == nullptr || m_subChannelsNb == 0) return;
  qxOwner<CQXChannel> clone = CloneDecomposedChannel();
  if (clone == nullptr) return;
  clone->m_data.reset();
  target->Swap(*clone);
}

template <qxReal T>
void CQXChannel<T>::CopyRawChannel(const CQXChannel& source) {
  if (qxOwner<CQXChannel> clone = source.CloneRawChannel()) Swap(*clone);
}

template <qxReal T>
void CQXChannel<T>::CopyDecomposedChannel(const CQXChannel& source) {
  if (qxOwner<CQXChannel> clone = source.CloneDecomposedChannel()) Swap(*clone);
}

template <qxReal T>
std::int32_t CQXChannel<T>::RawChannelIsAlmostEqual(const CQXChannel& other, T tolerance) const noexcept {
  if (m_columns != other.m_columns || m_rows != other.m_rows || m_offsetX != other.m_offsetX ||
      m_offsetY != other.m_offsetY || (m_data == nullptr) != (other.m_data == nullptr)) {
    return 0;
  }
  if (m_data == nullptr) return 1;
  return qxKernels::AreWithin(CountOf(*this), m_data.get(), other.m_data.get(), tolerance);
}

// ---- Packed form, rectangles

template <qxReal T>
qxOwner<CQXChannel<T>> CQXChannel<T>::PackDecomposedChannel() const {
  return qxInternal::Packed(*this);
}

template <qxReal T>
qxOwner<CQXChannel<T>> CQXChannel<T>::UnpackDecomposedChannel(const CQXWaveletFilter<T>* filter, qxChannelType type,
                                                              std::int32_t depth,
                                                              qxWaveletNormalization normalization) const {
  return qxInternal::Unpacked(*this, filter, type, depth, normalization);
}

template <qxReal T>
qxOwner<CQXChannel<T>> CQXChannel<T>::Cut(std::int32_t x, std::int32_t y, std::int32_t width,
                                          std::int32_t height) const {
  return m_decomposed != 0 ? CutFromDecomposedChannel(x, y, width, height) : CutFromRawChannel(x, y, width, height);
}

template <qxReal T>
qxOwner<CQXChannel<T>> CQXChannel<T>::CutFromRawChannel(std::int32_t x, std::int32_t y, std::int32_t width,
                                                        std::int32_t height) const {
  return qxInternal::CutRaw(*this, RectAt(*this, x, y, width, height));
}

template <qxReal T>
qxOwner<CQXChannel<T>> CQXChannel<T>::CutFromDecomposedChannel(std::int32_t x, std::int32_t y, std::int32_t width,
                                                               std::int32_t height) const {
  const bool isTransform = qxInternal::BandsCount(m_type) != 0;
  return isTransform ? qxInternal::CutTree(*this, m_type, RectAt(*this, x, y, width, height)) : nullptr;
}

template <qxReal T>
qxOwner<CQXChannel<T>> CQXChannel<T>::CutRectForRows(std::int32_t x, std::int32_t y, std::int32_t width,
                                                     std::int32_t height) const {
  return qxInternal::CutTree(*this, QX_CHANNEL_ROWS, RectAt(*this, x, y, width, height));
}

template <qxReal T>
qxOwner<CQXChannel<T>> CQXChannel<T>::CutRectForColumns(std::int32_t x, std::int32_t y, std::int32_t width,
                                                        std::int32_t height) const {
  return qxInternal::CutTree(*this, QX_CHANNEL_COLUMNS, RectAt(*this, x, y, width, height));
}

template <qxReal T>
qxOwner<CQXChannel<T>> CQXChannel<T>::CutRectFor2D(std::int32_t x, std::int32_t y, std::int32_t width,
                                                   std::int32_t height) const {
  return qxInternal::CutTree(*this, QX_CHANNEL_2D, RectAt(*this, x, y, width, height));
}

template <qxReal T>
void CQXChannel<T>::Paste(const CQXChannel& source) {
  source.m_decomposed != 0 ? PasteDecomposedChannel(source) : PasteRawChannel(source);
}

template <qxReal T>
void CQXChannel<T>::PasteRawChannel(const CQXChannel& source) {
  qxInternal::PasteRect(source, *this, Extent(source));
}

template <qxReal T>
void CQXChannel<T>::PasteDecomposedChannel(const CQXChannel& source) {
  qxInternal::PasteTree(source, *this, source.m_type, Extent(source));
}

template <qxReal T>
void CQXChannel<T>::PasteRectForRows(const CQXChannel& source) {
  qxInternal::PasteTree(source, *this, QX_CHANNEL_ROWS, Extent(source));
}

template <qxReal T>
void CQXChannel<T>::PasteRectForColumns(const CQXChannel& source) {
  qxInternal::PasteTree(source, *this, QX_CHANNEL_COLUMNS, Extent(source));
}

template <qxReal T>
void CQXChannel<T>::PasteRectFor2D(const CQXChannel& source) {
  qxInternal::PasteTree(source, *this, QX_CHANNEL_2D, Extent(source));
}

template <qxReal T>
void CQXChannel<T>::CutAndPasteRows(const CQXChannel& source, std::int32_t x, std::int32_t y, std::int32_t width,
                                    std::int32_t height) {
  qxInternal::PasteTree(source, *this, QX_CHANNEL_ROWS, RectAt(source, x, y, width, height));
}

template <qxReal T>
void CQXChannel<T>::CutAndPasteColumns(const CQXChannel& source, std::int32_t x, std::int32_t y, std::int32_t width,
                                       std::int32_t height) {
  qxInternal::PasteTree(source, *this, QX_CHANNEL_COLUMNS, RectAt(source, x, y, width, height));
}

template <qxReal T>
void CQXChannel<T>::CutAndPaste2D(const CQXChannel& source, std::int32_t x, std::int32_t y, std::int32_t width,
                                  std::int32_t height) {
  qxInternal::PasteTree(source, *this, QX_CHANNEL_2D, RectAt(source, x, y, width, height));
}

template <qxReal T>
void CQXChannel<T>::Print() const {
  qxInternal::PrintChannel(*this);
}

// ---- Resampling

template <qxReal T>
qxOwner<CQXChannel<T>> CQXChannel<T>::Resize(std::int32_t columns, std::int32_t rows, qxResampling method) const {
  return qxInternal::Resampled(*this, columns, rows, static_cast<double>(m_columns) / columns,
                               static_cast<double>(m_rows) / rows, method);
}

template <qxReal T>
qxOwner<CQXChannel<T>> CQXChannel<T>::Scale(double factorX, double factorY, qxResampling method) const {
  const auto scaled = [](std::int32_t size, double factor) { return qxToInt32(std::max(size * factor + 0.5, 1.0)); };
  if (!(factorX > 0) || !(factorY > 0)) return nullptr;
  return Resize(scaled(m_columns, factorX), scaled(m_rows, factorY), method);
}

template <qxReal T>
qxOwner<CQXChannel<T>> CQXChannel<T>::ScaleRawChannelTwiceDown(qxResampling method) const {
  return qxInternal::Resampled(*this, m_columns / 2 + m_columns % 2, m_rows / 2 + m_rows % 2, 2, 2, method);
}

template <qxReal T>
qxOwner<CQXChannel<T>> CQXChannel<T>::ScaleRawChannelTwiceUp(qxResampling method) const {
  const auto twice = [](std::int32_t size) { return qxToInt32(2.0 * size); };
  return qxInternal::Resampled(*this, twice(m_columns), twice(m_rows), 0.5, 0.5, method);
}

// ---- Transform

template <qxReal T>
bool CQXChannel<T>::IsTransformedBy(const CQXWaveletFilter<T>* filter, qxChannelType type) const noexcept {
  return m_type == type && m_filter != nullptr && m_filter->GetWavelet() == filter->GetWavelet();
}

template <qxReal T>
void CQXChannel<T>::Split(const CQXChannel& source) {
  if (!qxInternal::HasRawBands(*this, 0) || source.m_data == nullptr) return;
  if (source.m_columns != m_columns || source.m_rows != m_rows) return;
  T* bands[largestSubChannelsNb] = {};
  for (std::int32_t i = 0; i < m_subChannelsNb; ++i) bands[i] = SubChannel(i)->m_data.get();
  qxInternal::LevelTransform<T>::Split(Extent(*this), m_type, source.m_data.get(), bands);
}

template <qxReal T>
void CQXChannel<T>::Unite(CQXChannel* target) const {
  if (!qxInternal::HasRawBands(*this, 0) || target == nullptr || target->m_data == nullptr) return;
  if (target->m_columns != m_columns || target->m_rows != m_rows) return;
  T* bands[largestSubChannelsNb] = {};
  for (std::int32_t i = 0; i < m_subChannelsNb; ++i) bands[i] = m_subChannels[i]->m_data.get();
  qxInternal::LevelTransform<T>::Unite(Extent(*this), m_type, bands, target->m_data.get());
}

template <qxReal T>
void CQXChannel<T>::LiftDirect(CQXChannel* low, CQXChannel* high, std::int32_t direction) const {
  if (m_filter != nullptr) qxInternal::LiftBands(*m_filter, low, high, direction, false);
}

template <qxReal T>
void CQXChannel<T>::LiftInverse(CQXChannel* low, CQXChannel* high, std::int32_t direction) const {
  if (m_filter != nullptr) qxInternal::LiftBands(*m_filter, low, high, direction, true);
}

template <qxReal T>
CQXChannel<T>* CQXChannel<T>::FWTStep(const CQXWaveletFilter<T>* filter, qxChannelType type) {
  if (filter == nullptr) return nullptr;
  if (m_decomposed == 0 && qxInternal::BandsCount(type) == 0) {
    qxOwner<CQXChannel> level = qxInternal::MakeShell<T>(Extent(*this));
    if (level != nullptr) level->SetDecompositionTypes(filter, type, m_normalization);
    return level.release();
  }
  if (m_decomposed != 0 && !IsTransformedBy(filter, type)) return nullptr;
  CQXChannel* const raw = LowestLow(this);
  qxOwner<CQXChannel> level = qxInternal::ForwardTransform(*raw, filter, type, 1, QX_NORMALIZATION_NONE);
  if (level == nullptr) return nullptr;
  level->m_normalization = raw->m_normalization;
  level->Inherit();
  if (m_decomposed == 0) {
    Destroy();
    return level.release();
  }
  const_cast<CQXChannel*>(raw->m_parent)->SetSubChannel(std::move(level), 0);
  return this;
}

template <qxReal T>
qxOwner<CQXChannel<T>> CQXChannel<T>::IFWTStep() {
  if (m_filter == nullptr || !qxInternal::HasRawBands(*this, 0)) return nullptr;
  qxOwner<CQXChannel> raw = qxInternal::MakeRaw<T>(Extent(*this));
  if (raw == nullptr) return nullptr;
  raw->m_filter = m_filter;
  raw->m_normalization = m_normalization;
  if (m_type == QX_CHANNEL_2D) {
    LiftInverse(SubChannel(QX_SUBCHANNEL_LL), SubChannel(QX_SUBCHANNEL_HL), 0);
    LiftInverse(SubChannel(QX_SUBCHANNEL_LH), SubChannel(QX_SUBCHANNEL_HH), 0);
    LiftInverse(SubChannel(QX_SUBCHANNEL_LL), SubChannel(QX_SUBCHANNEL_LH), 1);
    LiftInverse(SubChannel(QX_SUBCHANNEL_HL), SubChannel(QX_SUBCHANNEL_HH), 1);
  } else {
    LiftInverse(SubChannel(QX_SUBCHANNEL_LOW), SubChannel(QX_SUBCHANNEL_HIGH), m_type == QX_CHANNEL_ROWS);
  }
  Unite(raw.get());
  return raw;
}

template <qxReal T>
qxOwner<CQXChannel<T>> CQXChannel<T>::FWT(const CQXWaveletFilter<T>* filter, qxChannelType type, std::int32_t depth) {
  if (filter == nullptr) return nullptr;
  if (m_decomposed == 0 && m_data != nullptr && qxInternal::AllowedDepth(type, Extent(*this), depth) > 0) {
    qxOwner<CQXChannel> tree = qxInternal::ForwardTransform(*this, filter, type, depth, m_normalization);
    if (tree != nullptr) Clear();
    return tree;
  }
  qxOwner<CQXChannel> tree = CloneDecomposedChannel();
  if (tree != nullptr && m_decomposed != 0 && !tree->Deepen(filter, type, depth)) return nullptr;
  return tree;
}

template <qxReal T>
void CQXChannel<T>::FWTInPlace(const CQXWaveletFilter<T>* filter, qxChannelType type, std::int32_t depth) {
  if (filter != nullptr) static_cast<void>(Deepen(filter, type, depth));
}

/// FWTInPlace(). @return false when memory was refused with null
template <qxReal T>
bool CQXChannel<T>::Deepen(const CQXWaveletFilter<T>* filter, qxChannelType type, std::int32_t depth) {
  if (m_decomposed != 0 && !IsTransformedBy(filter, type)) return true;
  CQXChannel* const lowest = LowestLow(this);
  if (lowest->m_decomposed != 0 || lowest->m_data == nullptr) return true;
  if (qxInternal::AllowedDepth(type, Extent(*lowest), depth) < 1) return true;
  qxOwner<CQXChannel> tree = qxInternal::ForwardTransform(*lowest, filter, type, depth, m_normalization);
  if (tree == nullptr) return false;
  lowest->Swap(*tree);
  m_filter = filter;
  Inherit();
  return true;
}

template <qxReal T>
qxOwner<CQXChannel<T>> CQXChannel<T>::IFWT() const {
  return qxInternal::InverseTransform(*this);
}

template <qxReal T>
qxOwner<CQXChannel<T>> CQXChannel<T>::IFWT(std::int32_t x, std::int32_t y, std::int32_t width,
                                           std::int32_t height) const {
  if (m_decomposed == 0) return Cut(x, y, width, height);
  return qxInternal::InverseTransformOfRect(*this, RectAt(*this, x, y, width, height));
}

template <qxReal T>
void CQXChannel<T>::IFWTInPlace() {
  if (m_decomposed == 0) return;
  if (qxOwner<CQXChannel> raw = DestroyingIFWT()) Swap(*raw);
}

template <qxReal T>
qxOwner<CQXChannel<T>> CQXChannel<T>::DestroyingIFWT() {
  qxOwner<CQXChannel> raw = qxInternal::DestroyingInverseTransform(*this);
  if (raw != nullptr) Clear();
  return raw;
}

template <qxReal T>
void CQXChannel<T>::Normalize() {
  Normalize(GetDepth(), m_normalization);
}

template <qxReal T>
void CQXChannel<T>::Normalize(std::int32_t depth, qxWaveletNormalization normalization) {
  if (m_filter == nullptr) return;
  Normalize(depth, normalization, qxInternal::LowNorm(*m_filter, normalization),
            qxInternal::HighNorm(*m_filter, normalization));
}

template <qxReal T>
void CQXChannel<T>::Normalize(std::int32_t depth, qxWaveletNormalization normalization, T low, T high) {
  if (normalization != QX_NORMALIZATION_NONE) qxInternal::MultiplyLevels(*this, depth, low, high);
}

template <qxReal T>
void CQXChannel<T>::Denormalize() {
  Denormalize(GetDepth(), m_normalization);
}

template <qxReal T>
void CQXChannel<T>::Denormalize(std::int32_t depth, qxWaveletNormalization normalization) {
  if (m_filter == nullptr) return;
  Denormalize(depth, normalization, qxInternal::LowNorm(*m_filter, normalization),
              qxInternal::HighNorm(*m_filter, normalization));
}

template <qxReal T>
void CQXChannel<T>::Denormalize(std::int32_t depth, qxWaveletNormalization normalization, T low, T high) {
  if (normalization != QX_NORMALIZATION_NONE) qxInternal::MultiplyLevels(*this, depth, 1 / low, 1 / high);
}

template <qxReal T>
qxOwner<CQXChannel<T>> CQXChannel<T>::GetScaledLowChannel() const {
  return qxInternal::ScaledLowBand(*this);
}

template <qxReal T>
qxOwner<CQXChannel<T>> CQXChannel<T>::GetScaledHighChannel(std::int32_t level, std::int32_t band) const {
  return qxInternal::ScaledHighBand(*this, level, band);
}

// ---- Noise reduction

template <qxReal T>
T CQXChannel<T>::EstimateNoise() const {
  T noise = 0;
  return qxInternal::EstimateBandNoise(*this, noise) ? noise : std::numeric_limits<T>::quiet_NaN();
}

template <qxReal T>
T CQXChannel<T>::EstimateNoiseOfSamples(T lowest, T highest) const {
  T noise = 0;
  return qxInternal::EstimateSampleNoise(*this, lowest, highest, noise) ? noise : std::numeric_limits<T>::quiet_NaN();
}

template <qxReal T>
void CQXChannel<T>::EstimateThreshold(T& threshold, T& ratio) const {
  if (!qxInternal::EstimateThreshold(*this, threshold, ratio)) threshold = ratio = std::numeric_limits<T>::quiet_NaN();
}

template <qxReal T>
qxOwner<CQXChannel<T>> CQXChannel<T>::CleanBelowThreshold(T& threshold, T& ratio, std::int32_t soft,
                                                          qxWaveletDenoising method) const {
  const qxInternal::ThresholdCleaning<T> cleaning{method, soft != 0, nullptr};
  qxOwner<CQXChannel> clean = CloneDecomposedChannel();
  return clean != nullptr && cleaning.Clean(*clean, threshold, ratio) ? std::move(clean) : nullptr;
}

template <qxReal T>
qxOwner<CQXChannel<T>> CQXChannel<T>::CleanBelowThreshold(T& threshold, T& ratio, std::int32_t soft,
                                                          qxWaveletDenoising method, T noise) const {
  const qxInternal::ThresholdCleaning<T> cleaning{method, soft != 0, &noise};
  qxOwner<CQXChannel> clean = CloneDecomposedChannel();
  return clean != nullptr && cleaning.Clean(*clean, threshold, ratio) ? std::move(clean) : nullptr;
}

template <qxReal T>
qxOwner<CQXChannel<T>> CQXChannel<T>::CleanDirectly(T threshold, T ratio, std::int32_t soft) const {
  qxOwner<CQXChannel> clean = CloneDecomposedChannel();
  if (clean != nullptr) qxInternal::CleanDirectly(*clean, threshold, ratio, soft != 0);
  return clean;
}

template <qxReal T>
qxOwner<CQXChannel<T>> CQXChannel<T>::CleanWithCircularShifts(T& threshold, T& ratio, std::int32_t shifts,
                                                              const CQXWaveletFilter<T>* filter, std::int32_t depth,
                                                              std::int32_t soft, qxWaveletDenoising method,
                                                              const qxProgress& progress) const {
  const qxInternal::ThresholdCleaning<T> cleaning{method, soft != 0, nullptr};
  return qxInternal::CleanShifted(*this, shifts, filter, depth, cleaning, threshold, ratio, progress);
}

template <qxReal T>
qxOwner<CQXChannel<T>> CQXChannel<T>::CleanWithCircularShifts(T& threshold, T& ratio, std::int32_t shifts,
                                                              const CQXWaveletFilter<T>* filter, std::int32_t depth,
                                                              std::int32_t soft, qxWaveletDenoising method, T noise,
                                                              const qxProgress& progress) const {
  const qxInternal::ThresholdCleaning<T> cleaning{method, soft != 0, &noise};
  return qxInternal::CleanShifted(*this, shifts, filter, depth, cleaning, threshold, ratio, progress);
}

template <qxReal T>
T CQXChannel<T>::GetAbsMaxInMask(const T* data, std::int32_t index, std::int32_t columns,
                                 std::int32_t rows) const noexcept {
  return qxInternal::LargestInMask(data, index, columns, rows);
}

// ---- Enhancement

template <qxReal T>
void CQXChannel<T>::Enhance(T factor) {
  qxInternal::EnhanceLevels(*this, factor);
}

template <qxReal T>
void CQXChannel<T>::EnhanceSubLevel(T factor, std::int32_t level, std::int32_t band) {
  if (level < 1) return;
  if (CQXChannel* channel = SubChannel(level, band)) qxInternal::MultiplyTree(*channel, factor);
}

template <qxReal T>
void CQXChannel<T>::EnhanceHRLevel(T factor, std::int32_t level) {
  CQXChannel* channel = level < 1 ? nullptr : this;
  for (; level > 1 && channel != nullptr; --level) channel = channel->SubChannel(0);
  if (channel != nullptr) qxInternal::MultiplyHighBands(*channel, factor);
}

template <qxReal T>
void CQXChannel<T>::EnhanceRawData(T factor) {
  qxInternal::MultiplySamples(*this, factor);
}

template <qxReal T>
void CQXChannel<T>::EditByLevels(const T* factors) {
  qxInternal::EditLevels(*this, factors);
}

template <qxReal T>
qxOwner<CQXChannel<T>> CQXChannel<T>::MixByLevels(const CQXChannel* other, const T* weights, CQXChannel* result) const {
  return Deliver(qxInternal::Blended(*this, other, {weights, T(0), T(0)}), result);
}

template <qxReal T>
qxOwner<CQXChannel<T>> CQXChannel<T>::Combine(const CQXChannel* other, T a, T b, CQXChannel* result) const {
  return Deliver(qxInternal::Blended(*this, other, {nullptr, a, b}), result);
}

/// Hands a blend to the caller, or makes it the content of @p result, which may be one of the operands.
template <qxReal T>
qxOwner<CQXChannel<T>> CQXChannel<T>::Deliver(qxOwner<CQXChannel> blend, CQXChannel* result) {
  if (result == nullptr || blend == nullptr) return blend;
  result->Swap(*blend);
  return nullptr;
}

// ---- Free functions

template <qxReal T>
T qxDiagonalNoiseGain(const CQXWaveletFilter<T>& filter, qxChannelType type,
                      qxWaveletNormalization normalization) noexcept {
  return static_cast<T>(qxInternal::FinestNoiseGain(filter, type, normalization));
}

std::int32_t qxCalculateMaximumDepth(std::int32_t size) noexcept {
  std::int32_t depth = 0;
  for (; size >= 4; size /= 2) ++depth;
  return depth;
}

std::int32_t qxCalculateMaximumDepth(std::int32_t a, std::int32_t b) noexcept {
  return std::min(qxCalculateMaximumDepth(a), qxCalculateMaximumDepth(b));
}

template <qxReal T>
void qxInsertPartRectData(const T* source, T* target, std::int32_t sourceColumns, std::int32_t sourceX,
                          std::int32_t sourceY, std::int32_t targetColumns, std::int32_t targetX, std::int32_t targetY,
                          std::int32_t width, std::int32_t height) noexcept {
  if (width <= 0) return;
  for (std::int32_t row = 0; row < height; ++row) {
    const std::ptrdiff_t from = (std::ptrdiff_t{sourceY} + row) * sourceColumns + sourceX;
    const std::ptrdiff_t to = (std::ptrdiff_t{targetY} + row) * targetColumns + targetX;
    std::memmove(target + to, source + from, static_cast<std::size_t>(width) * sizeof(T));
  }
}

template <qxReal T>
std::int32_t qxAreChannelsAlmostEqual(const CQXChannel<T>& a, const CQXChannel<T>& b,
                                      qxNonDeduced<T> tolerance) noexcept {
  // The two walks keep step for as long as both trees have the same sub-channels.
  const CQXChannel<T>* right = &b;
  for (const CQXChannel<T>* left = &a; left != nullptr; left = NextInTree(left, &a)) {
    if (left->GetSubChannelsNb() != right->GetSubChannelsNb() || left->IsDecomposed() != right->IsDecomposed() ||
        left->RawChannelIsAlmostEqual(*right, tolerance) == 0) {
      return 0;
    }
    for (std::int32_t i = 0; i < left->GetSubChannelsNb(); ++i) {
      if ((left->SubChannel(i) == nullptr) != (right->SubChannel(i) == nullptr)) return 0;
    }
    right = NextInTree(right, &b);
  }
  return 1;
}

#define QX_INSTANTIATE(T)                                                                                     \
  template T qxDiagonalNoiseGain(const CQXWaveletFilter<T>&, qxChannelType, qxWaveletNormalization) noexcept; \
  template void qxInsertPartRectData(const T*, T*, std::int32_t, std::int32_t, std::int32_t, std::int32_t,    \
                                     std::int32_t, std::int32_t, std::int32_t, std::int32_t) noexcept;        \
  template std::int32_t qxAreChannelsAlmostEqual(const CQXChannel<T>&, const CQXChannel<T>&,                  \
                                                 qxNonDeduced<T>) noexcept;                                   \
  template class CQXChannel<T>;
QX_FOR_FLOAT_AND_DOUBLE(QX_INSTANTIATE)
#undef QX_INSTANTIATE
