#include <qx/kernels/array_kernels.h>
#include <qx/wavelets/channel.h>
#include <qx/wavelets/internal/band_geometry.h>

#include <algorithm>
#include <cstring>
#include <utility>

using qxInternal::BandRect;
using qxInternal::BandsCount;
using qxInternal::Rect;

template <qxReal T>
CQXChannel<T>::CQXChannel(std::int32_t columns, std::int32_t rows, std::int32_t offsetX, std::int32_t offsetY) noexcept
    : m_columns(columns), m_rows(rows), m_offsetX(offsetX), m_offsetY(offsetY) {}

template <qxReal T>
CQXChannel<T>::CQXChannel(std::int32_t columns, std::int32_t rows, const T* data, std::int32_t offsetX,
                          std::int32_t offsetY)
    : CQXChannel(columns, rows, offsetX, offsetY) {
  if (data == nullptr) return;
  TakeUninitialisedSamples();
  std::copy_n(data, Count(), m_data.get());
}

template <qxReal T>
CQXChannel<T>::CQXChannel(const CQXChannel& other) : CQXChannel() {
  std::unique_ptr<CQXChannel> clone = other.CloneDecomposedChannel();
  Swap(*clone);
}

template <qxReal T>
CQXChannel<T>& CQXChannel<T>::operator=(const CQXChannel& other) {
  CopyDecomposedChannel(other);
  return *this;
}

template <qxReal T>
void CQXChannel<T>::Swap(CQXChannel& other) noexcept {
  std::swap(m_columns, other.m_columns);
  std::swap(m_rows, other.m_rows);
  std::swap(m_offsetX, other.m_offsetX);
  std::swap(m_offsetY, other.m_offsetY);
  std::swap(m_subChannels, other.m_subChannels);
  std::swap(m_filter, other.m_filter);
  std::swap(m_type, other.m_type);
  std::swap(m_data, other.m_data);
  std::swap(m_normalization, other.m_normalization);
  std::swap(m_decomposed, other.m_decomposed);
}

template <qxReal T>
void CQXChannel<T>::TakeUninitialisedSamples() {
  m_data = qxMakeBlockOrThrow<T>(Count());
}

template <qxReal T>
void CQXChannel<T>::Initialize() {
  TakeUninitialisedSamples();
  std::fill_n(m_data.get(), Count(), T(0));
}

template <qxReal T>
void CQXChannel<T>::DestroyTree() noexcept {
  CQXChannel* pending = nullptr;
  const auto detachSubChannels = [&pending](CQXChannel& parent) {
    for (auto& subChannel : parent.m_subChannels) {
      if (subChannel == nullptr) continue;
      subChannel->m_nextToDestroy = pending;
      pending = subChannel.release();
    }
    parent.m_subChannels.clear();
  };
  detachSubChannels(*this);
  while (pending != nullptr) {
    const std::unique_ptr<CQXChannel> channel(pending);
    pending = channel->m_nextToDestroy;
    detachSubChannels(*channel);
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
  Destroy();
  m_offsetX = 0;
  m_offsetY = 0;
  m_filter = nullptr;
  m_type = QX_CHANNEL_RAW;
  m_normalization = QX_NORMALIZATION_NONE;
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
void CQXChannel<T>::SetSubChannelsNb(std::int32_t count) {
  DestroyTree();
  m_subChannels.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
}

template <qxReal T>
void CQXChannel<T>::SetSubChannel(std::unique_ptr<CQXChannel> channel, std::int32_t index) noexcept {
  if (index >= 0 && index < GetSubChannelsNb()) m_subChannels[static_cast<std::size_t>(index)] = std::move(channel);
}

template <qxReal T>
const CQXChannel<T>* CQXChannel<T>::SubChannel(std::int32_t index) const noexcept {
  return index >= 0 && index < GetSubChannelsNb() ? m_subChannels[static_cast<std::size_t>(index)].get() : nullptr;
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
CQXChannel<T>* CQXChannel<T>::LowestLow() noexcept {
  CQXChannel* channel = this;
  while (CQXChannel* low = channel->SubChannel(0)) channel = low;
  return channel;
}

/// Calls the visitor with every channel of the tree, in no order that matters; deep trees need no stack.
template <qxReal T>
template <typename Visitor>
void CQXChannel<T>::VisitTree(Visitor visit) {
  std::vector<CQXChannel*, qxBlockAllocator<CQXChannel*>> pending(1, this);
  while (!pending.empty()) {
    CQXChannel* channel = pending.back();
    pending.pop_back();
    visit(*channel);
    for (const auto& subChannel : channel->m_subChannels) {
      if (subChannel != nullptr) pending.push_back(subChannel.get());
    }
  }
}

template <qxReal T>
void CQXChannel<T>::Inherit() {
  VisitTree([this](CQXChannel& channel) {
    channel.m_filter = m_filter;
    channel.m_type = m_type;
    channel.m_normalization = m_normalization;
  });
}

template <qxReal T>
void CQXChannel<T>::Clean() {
  VisitTree([](CQXChannel& channel) {
    if (channel.m_data != nullptr) std::fill_n(channel.m_data.get(), channel.Count(), T(0));
  });
}

/// Makes the sub-channels of one level, with samples that are not set yet, and drops the samples of this channel.
template <qxReal T>
void CQXChannel<T>::CreateBands(qxChannelType type) {
  m_type = type;
  SetSubChannelsNb(BandsCount(type));
  for (std::int32_t band = 0; band < GetSubChannelsNb(); ++band) {
    const Rect rect = BandRect(type, band, qxInternal::Extent(*this));
    std::unique_ptr<CQXChannel> channel = qxInternal::MakeShell<CQXChannel>(rect);
    channel->TakeUninitialisedSamples();
    channel->m_filter = m_filter;
    channel->m_type = type;
    channel->m_normalization = m_normalization;
    SetSubChannel(std::move(channel), band);
  }
  m_decomposed = m_subChannels.empty() ? 0 : 1;
  if (m_decomposed != 0) m_data.reset();
}

template <qxReal T>
void CQXChannel<T>::CreateOneLevelSubChannels(const CQXWaveletFilter<T>* filter, qxChannelType type,
                                              qxWaveletNormalization normalization) {
  m_filter = filter;
  m_normalization = normalization;
  CreateBands(type);
  Clean();
}

template <qxReal T>
void CQXChannel<T>::CreateOneLevelSubChannels(const CQXChannel& source) {
  SubChannels subChannels(source.m_subChannels.size());
  for (std::size_t i = 0; i < subChannels.size(); ++i) {
    const CQXChannel* model = source.m_subChannels[i].get();
    if (model == nullptr) continue;
    subChannels[i] = std::make_unique<CQXChannel>(model->m_columns, model->m_rows, model->m_offsetX, model->m_offsetY);
    subChannels[i]->Initialize();
    subChannels[i]->SetDecompositionTypes(m_filter, source.m_type, m_normalization);
  }
  std::swap(m_subChannels, subChannels);
  m_type = source.m_type;
  m_decomposed = m_subChannels.empty() ? 0 : 1;
  if (m_decomposed != 0) m_data.reset();
}

template <qxReal T>
void CQXChannel<T>::DestroyLowestSubChannel() {
  CQXChannel* last = nullptr;
  for (CQXChannel* channel = this; channel->SubChannel(0) != nullptr; channel = channel->SubChannel(0)) last = channel;
  if (last == nullptr) return;
  last->Initialize();
  last->DestroyTree();
  last->m_decomposed = 0;
}

template <qxReal T>
std::unique_ptr<CQXChannel<T>> CQXChannel<T>::CloneRawChannel() const {
  auto clone = std::make_unique<CQXChannel>(m_columns, m_rows, m_data.get(), m_offsetX, m_offsetY);
  clone->m_filter = m_filter;
  clone->m_type = m_type;
  clone->m_normalization = m_normalization;
  return clone;
}

template <qxReal T>
void CQXChannel<T>::CloneOneLevelSubChannels(CQXChannel* target) const {
  if (target == nullptr) return;
  SubChannels clones(m_subChannels.size());
  for (std::size_t i = 0; i < clones.size(); ++i) {
    if (m_subChannels[i] != nullptr) clones[i] = m_subChannels[i]->CloneRawChannel();
  }
  target->DestroyTree();
  std::swap(target->m_subChannels, clones);
}

template <qxReal T>
std::unique_ptr<CQXChannel<T>> CQXChannel<T>::CloneDecomposedChannel() const {
  using Pair = std::pair<const CQXChannel*, CQXChannel*>;
  std::unique_ptr<CQXChannel> clone = CloneRawChannel();
  std::vector<Pair, qxBlockAllocator<Pair>> pending(1, Pair(this, clone.get()));
  while (!pending.empty()) {
    const auto [source, target] = pending.back();
    pending.pop_back();
    target->m_decomposed = source->m_decomposed;
    source->CloneOneLevelSubChannels(target);
    for (std::int32_t i = 0; i < source->GetSubChannelsNb(); ++i) {
      if (source->SubChannel(i) != nullptr) pending.emplace_back(source->SubChannel(i), target->SubChannel(i));
    }
  }
  return clone;
}

template <qxReal T>
void CQXChannel<T>::CopyRawChannel(const CQXChannel& source) {
  std::unique_ptr<CQXChannel> clone = source.CloneRawChannel();
  Swap(*clone);
}

template <qxReal T>
void CQXChannel<T>::CopyDecomposedChannel(const CQXChannel& source) {
  std::unique_ptr<CQXChannel> clone = source.CloneDecomposedChannel();
  Swap(*clone);
}

template <qxReal T>
std::int32_t CQXChannel<T>::RawChannelIsAlmostEqual(const CQXChannel& other, T tolerance) const noexcept {
  if (m_columns != other.m_columns || m_rows != other.m_rows || m_offsetX != other.m_offsetX ||
      m_offsetY != other.m_offsetY || (m_data == nullptr) != (other.m_data == nullptr)) {
    return 0;
  }
  if (m_data == nullptr) return 1;
  return qxKernels::AreWithin(Count(), m_data.get(), other.m_data.get(), tolerance);
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
std::int32_t qxAreChannelsAlmostEqual(const CQXChannel<T>& a, const CQXChannel<T>& b, qxNonDeduced<T> tolerance) {
  using Pair = std::pair<const CQXChannel<T>*, const CQXChannel<T>*>;
  std::vector<Pair, qxBlockAllocator<Pair>> pending(1, Pair(&a, &b));
  while (!pending.empty()) {
    const auto [left, right] = pending.back();
    pending.pop_back();
    if ((left == nullptr) != (right == nullptr)) return 0;
    if (left == nullptr) continue;
    if (left->GetSubChannelsNb() != right->GetSubChannelsNb() || left->IsDecomposed() != right->IsDecomposed() ||
        left->RawChannelIsAlmostEqual(*right, tolerance) == 0) {
      return 0;
    }
    for (std::int32_t i = 0; i < left->GetSubChannelsNb(); ++i) {
      pending.emplace_back(left->SubChannel(i), right->SubChannel(i));
    }
  }
  return 1;
}

#define QX_INSTANTIATE_CHANNEL_FUNCTIONS(T)                                                                \
  template void qxInsertPartRectData(const T*, T*, std::int32_t, std::int32_t, std::int32_t, std::int32_t, \
                                     std::int32_t, std::int32_t, std::int32_t, std::int32_t) noexcept;     \
  template std::int32_t qxAreChannelsAlmostEqual(const CQXChannel<T>&, const CQXChannel<T>&, qxNonDeduced<T>);

QX_INSTANTIATE_CHANNEL_FUNCTIONS(float)
QX_INSTANTIATE_CHANNEL_FUNCTIONS(double)

template class CQXChannel<float>;
template class CQXChannel<double>;
