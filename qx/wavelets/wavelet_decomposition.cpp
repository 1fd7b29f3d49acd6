#include <qx/foundation/conversion.h>
#include <qx/foundation/internal/instantiate.h>
#include <qx/kernels/wavelet_kernels.h>
#include <qx/wavelets/internal/channel_transform.h>
#include <qx/wavelets/internal/saturation.h>
#include <qx/wavelets/wavelet_decomposition.h>

#include <algorithm>
#include <cstddef>
#include <utility>

template <qxReal T>
CQXWaveletDecomposition<T>::CQXWaveletDecomposition(qxWaveletType wavelet)
    : m_filter(qxMakeOwner<CQXWaveletFilter<T>>(wavelet)) {}

template <qxReal T>
CQXWaveletDecomposition<T>::CQXWaveletDecomposition(const CQXWaveletDecomposition& other) : CQXWaveletDecomposition() {
  Copy(other);
}

template <qxReal T>
CQXWaveletDecomposition<T>& CQXWaveletDecomposition<T>::operator=(const CQXWaveletDecomposition& other) {
  Copy(other);
  return *this;
}

/// Makes a channel for each of this image by make(channel, index); a slot without channel gets none.
/// @return false when one could not be made
template <qxReal T>
template <typename Make>
bool CQXWaveletDecomposition<T>::MakeChannels(Channels& channels, Make make) const {
  if (!channels.Reset(m_channels.Count())) return false;
  for (std::size_t i = 0; i < m_channels.Count(); ++i) {
    if (m_channels[i] == nullptr) continue;
    channels.Set(i, make(*m_channels[i], i));
    if (channels[i] == nullptr) return false;
  }
  return true;
}

/// A decomposition with a filter of its own and the channels that @p make gives for those of this one; null when one is
/// missing.
template <qxReal T>
template <typename Make>
qxOwner<CQXWaveletDecomposition<T>> CQXWaveletDecomposition<T>::MakeFromChannels(qxWaveletNormalization normalization,
                                                                                 Make make) const {
  if (m_channels.Count() != 0 && !HasAllChannels()) return nullptr;
  auto result = m_filter != nullptr ? qxMakeOwner<CQXWaveletDecomposition>(m_filter->GetWavelet())
                                    : qxMakeOwner<CQXWaveletDecomposition>();
  if (result == nullptr || (m_filter != nullptr && result->m_filter == nullptr)) return nullptr;
  if (!MakeChannels(result->m_channels, make)) return nullptr;
  result->m_normalization = normalization;
  result->AdoptAll();
  return result;
}

template <qxReal T>
qxOwner<CQXWaveletDecomposition<T>> CQXWaveletDecomposition<T>::CloneDecomposition() const {
  qxOwner<CQXWaveletDecomposition> clone = qxMakeOwner<CQXWaveletDecomposition>();
  return clone != nullptr && clone->Become(*this) ? std::move(clone) : nullptr;
}

template <qxReal T>
void CQXWaveletDecomposition<T>::Copy(const CQXWaveletDecomposition& other) {
  static_cast<void>(Become(other));
}

/// Copy(). @return false when memory was refused with null
template <qxReal T>
bool CQXWaveletDecomposition<T>::Become(const CQXWaveletDecomposition& other) {
  qxOwner<CQXWaveletFilter<T>> filter;
  if (other.m_filter != nullptr) {
    filter = qxMakeOwner<CQXWaveletFilter<T>>(other.GetWaveletType());
    if (filter == nullptr) return false;
  }
  Channels channels;
  const auto clone = [](const CQXChannel<T>& channel, std::size_t) { return channel.CloneDecomposedChannel(); };
  if (!other.MakeChannels(channels, clone)) return false;
  // The old channels go before the filter that they point to.
  m_channels = std::move(channels);
  m_filter = std::move(filter);
  m_normalization = other.m_normalization;
  AdoptAll();
  return true;
}

template <qxReal T>
void CQXWaveletDecomposition<T>::Destroy() noexcept {
  m_channels.Clear();
  m_filter.reset();
}

template <qxReal T>
qxWaveletType CQXWaveletDecomposition<T>::GetWaveletType() const noexcept {
  return m_filter != nullptr ? m_filter->GetWavelet() : static_cast<qxWaveletType>(-1);
}

template <qxReal T>
std::int32_t CQXWaveletDecomposition<T>::IsDecomposed() const noexcept {
  std::int32_t isDecomposed = 0;
  VisitChannels([&isDecomposed](const CQXChannel<T>& channel) {
    if (channel.IsDecomposed() != 0) isDecomposed = 1;
  });
  return isDecomposed;
}

template <qxReal T>
std::int32_t CQXWaveletDecomposition<T>::GetImageWidth() const noexcept {
  return (*this)[0] != nullptr ? (*this)[0]->GetColsNb() : 0;
}

template <qxReal T>
std::int32_t CQXWaveletDecomposition<T>::GetImageHeight() const noexcept {
  return (*this)[0] != nullptr ? (*this)[0]->GetRowsNb() : 0;
}

template <qxReal T>
const CQXChannel<T>* CQXWaveletDecomposition<T>::operator[](std::int32_t index) const noexcept {
  return index >= 0 && index < GetChannelsNb() ? m_channels[static_cast<std::size_t>(index)] : nullptr;
}

template <qxReal T>
CQXChannel<T>* CQXWaveletDecomposition<T>::operator[](std::int32_t index) noexcept {
  return const_cast<CQXChannel<T>*>(std::as_const(*this)[index]);
}

template <qxReal T>
std::int32_t CQXWaveletDecomposition<T>::HasCommonDepth(std::int32_t& depth) const noexcept {
  if (!HasAllChannels()) return 0;
  const std::int32_t first = m_channels[0]->GetDepth();
  for (std::size_t i = 1; i < m_channels.Count(); ++i) {
    if (m_channels[i]->GetDepth() != first) return 0;
  }
  depth = first;
  return 1;
}

/// Calls the visitor with every channel that is there.
template <qxReal T>
template <typename Visitor>
void CQXWaveletDecomposition<T>::VisitChannels(Visitor visit) const {
  for (std::size_t i = 0; i < m_channels.Count(); ++i) {
    if (m_channels[i] != nullptr) visit(*m_channels[i]);
  }
}

template <qxReal T>
bool CQXWaveletDecomposition<T>::HasAllChannels() const noexcept {
  std::size_t count = 0;
  VisitChannels([&count](const CQXChannel<T>&) { ++count; });
  return count != 0 && count == m_channels.Count();
}

/// Whether the wavelet of every level and the normalization of a channel are those of this object.
template <qxReal T>
bool CQXWaveletDecomposition<T>::Fits(const CQXChannel<T>& channel) const noexcept {
  bool fits = m_filter != nullptr && channel.GetTypeOfNormalization() == m_normalization;
  qxInternal::ForEachLevel(channel, [&](const CQXChannel<T>& level, std::int32_t) {
    fits = fits && level.GetFilterType() == GetWaveletType();
  });
  return fits;
}

/// Hands filter and normalization to all levels of a channel, each of which keeps its own type.
template <qxReal T>
void CQXWaveletDecomposition<T>::Adopt(CQXChannel<T>& channel) const noexcept {
  for (CQXChannel<T>* level = &channel; level != nullptr; level = qxInternal::NextInTree(level, &channel)) {
    level->SetFilter(m_filter.get());
    level->SetTypeOfNormalization(m_normalization);
  }
}

template <qxReal T>
void CQXWaveletDecomposition<T>::AdoptAll() noexcept {
  VisitChannels([this](CQXChannel<T>& channel) { Adopt(channel); });
}

/// The inverse transform of the complete trees that select(channel) picks, all of them or none.
/// @return false when memory was refused with null: nothing has changed
template <qxReal T>
template <typename Select>
bool CQXWaveletDecomposition<T>::TakeBack(Select select) {
  Channels raws;
  if (!raws.Reset(m_channels.Count())) return false;
  for (std::size_t i = 0; i < m_channels.Count(); ++i) {
    const CQXChannel<T>* channel = m_channels[i];
    if (channel == nullptr || channel->IsDecomposed() == 0 || !select(*channel)) continue;
    if (!qxInternal::IsComplete(*channel)) continue;
    raws.Set(i, channel->IFWT());
    if (raws[i] == nullptr) return false;
  }
  for (std::size_t i = 0; i < m_channels.Count(); ++i) {
    if (raws[i] != nullptr) *m_channels[i] = std::move(*raws[i]);
  }
  return true;
}

template <qxReal T>
template <typename Sample>
void CQXWaveletDecomposition<T>::SetPixels(std::int32_t width, std::int32_t height, std::int32_t channelsNb,
                                           const Sample* data) {
  const std::size_t planes = channelsNb > 0 ? static_cast<std::size_t>(channelsNb) : 0;
  const std::size_t count = qxElementCount(height, width);
  Channels channels;
  if (!channels.Reset(planes)) return;
  for (std::size_t c = 0; c < planes; ++c) {
    channels.Set(c, qxInternal::MakeRaw<T>({0, 0, width, height}));
    if (channels[c] == nullptr) return;
    T* const plane = channels[c]->GetData();
    for (std::size_t i = 0; i < count; ++i) plane[i] = static_cast<T>(data[i * planes + c]);
  }
  // The samples may come from an old channel, so these go last.
  m_channels = std::move(channels);
  AdoptAll();
}

template <qxReal T>
void CQXWaveletDecomposition<T>::SetImage(std::int32_t width, std::int32_t height, std::int32_t channelsNb,
                                          const T* data) {
  SetPixels(width, height, channelsNb, data);
}

template <qxReal T>
void CQXWaveletDecomposition<T>::Set8BitsImage(std::int32_t width, std::int32_t height, std::int32_t channelsNb,
                                               const std::uint8_t* data) {
  SetPixels(width, height, channelsNb, data);
}

/// Interleaves the planes; what a plane does not hold is written as the conversion of 0.
template <qxReal T>
template <typename Sample, typename Convert>
void CQXWaveletDecomposition<T>::GetPixels(Sample* data, Convert convert) const {
  const std::size_t planes = m_channels.Count();
  const std::size_t count = qxElementCount(GetImageHeight(), GetImageWidth());
  for (std::size_t c = 0; c < planes; ++c) {
    const CQXChannel<T>* channel = m_channels[c];
    const T* plane = channel != nullptr ? channel->GetData() : nullptr;
    const std::size_t held =
        plane != nullptr ? std::min(count, qxElementCount(channel->GetRowsNb(), channel->GetColsNb())) : 0;
    for (std::size_t i = 0; i < held; ++i) data[i * planes + c] = convert(plane[i]);
    for (std::size_t i = held; i < count; ++i) data[i * planes + c] = convert(T(0));
  }
}

template <qxReal T>
void CQXWaveletDecomposition<T>::GetImageInPixelForm(T* data) {
  VisitChannels([this](CQXChannel<T>& channel) { channel.SetTypeOfNormalization(m_normalization); });
  if (!TakeBack([](const CQXChannel<T>&) { return true; })) return;
  AdoptAll();
  GetPixels(data, [](T sample) { return sample; });
}

template <qxReal T>
void CQXWaveletDecomposition<T>::GetImageIn8BitsFormat(std::uint8_t* data) const {
  GetPixels(data, [](T sample) {
    return static_cast<std::uint8_t>(qxToInt64(static_cast<double>(sample < 0 ? sample - T(0.5) : sample + T(0.5))) &
                                     0xFF);
  });
}

template <qxReal T>
void CQXWaveletDecomposition<T>::GetSaturatedImage(std::uint8_t* data) const {
  GetPixels(data, qxInternal::Saturated<std::uint8_t, T>);
}

template <qxReal T>
void CQXWaveletDecomposition<T>::GetSaturatedImage(std::uint16_t* data) const {
  GetPixels(data, qxInternal::Saturated<std::uint16_t, T>);
}

template <qxReal T>
std::int32_t CQXWaveletDecomposition<T>::RotateColours(bool forward) noexcept {
  if (m_channels.Count() != 3 || !HasAllChannels()) return 0;
  const auto isPlane = [this](const CQXChannel<T>& channel) {
    return channel.GetData() != nullptr && channel.GetColsNb() == GetImageWidth() &&
           channel.GetRowsNb() == GetImageHeight();
  };
  if (!isPlane(*m_channels[0]) || !isPlane(*m_channels[1]) || !isPlane(*m_channels[2])) return 0;
  qxKernels::RotateColours(qxInternal::CountOf(*m_channels[0]), 1, forward, m_channels[0]->GetData(),
                           m_channels[1]->GetData(), m_channels[2]->GetData());
  return 1;
}

template <qxReal T>
std::int32_t CQXWaveletDecomposition<T>::ToOpponentColours() noexcept {
  return RotateColours(true);
}

template <qxReal T>
std::int32_t CQXWaveletDecomposition<T>::FromOpponentColours() noexcept {
  return RotateColours(false);
}

template <qxReal T>
qxOwner<CQXWaveletDecomposition<T>> CQXWaveletDecomposition<T>::GetImageInPackedForm() const {
  return MakeFromChannels(m_normalization,
                          [](const CQXChannel<T>& channel, std::size_t) { return channel.PackDecomposedChannel(); });
}

template <qxReal T>
void CQXWaveletDecomposition<T>::GetImageInPackedForm(T* data) const {
  if (const auto packed = GetImageInPackedForm()) packed->GetImageInPixelForm(data);
}

template <qxReal T>
qxOwner<CQXWaveletDecomposition<T>> CQXWaveletDecomposition<T>::UnpackDecomposedImage(
    qxChannelType type, std::int32_t depth, qxWaveletNormalization normalization) const {
  return MakeFromChannels(normalization, [&](const CQXChannel<T>& channel, std::size_t) {
    return channel.UnpackDecomposedChannel(m_filter.get(), type, depth, normalization);
  });
}

template <qxReal T>
void CQXWaveletDecomposition<T>::SetFilter(qxWaveletType wavelet) {
  const bool changes = GetWaveletType() != wavelet;
  if (m_filter == nullptr) {
    m_filter = qxMakeOwner<CQXWaveletFilter<T>>(wavelet);
    if (m_filter == nullptr) return;
  }
  if (!TakeBack([&](const CQXChannel<T>& channel) { return changes || !Fits(channel); })) return;
  // The filter stays the same object, so that no channel is ever left with a pointer to one that is gone.
  if (changes) m_filter->Set(wavelet);
  AdoptAll();
}

template <qxReal T>
void CQXWaveletDecomposition<T>::SetTypeOfNormalization(qxWaveletNormalization normalization) {
  const bool changes = m_normalization != normalization;
  if (!TakeBack([&](const CQXChannel<T>& channel) { return changes || !Fits(channel); })) return;
  m_normalization = normalization;
  AdoptAll();
}

template <qxReal T>
void CQXWaveletDecomposition<T>::SetDecompositionTypes(qxWaveletType wavelet, qxChannelType type,
                                                       qxWaveletNormalization normalization) {
  if (m_filter == nullptr) SetFilter(wavelet);
  const bool changes = GetWaveletType() != wavelet || m_normalization != normalization;
  const auto select = [&](const CQXChannel<T>& channel) {
    return changes || !Fits(channel) || channel.GetType() != type;
  };
  if (m_filter == nullptr || !TakeBack(select)) return;
  if (GetWaveletType() != wavelet) m_filter->Set(wavelet);
  m_normalization = normalization;
  VisitChannels([type](CQXChannel<T>& channel) { channel.SetType(type); });
  AdoptAll();
}

template <qxReal T>
void CQXWaveletDecomposition<T>::SetDecompositionTypesToChannels(qxChannelType type) {
  const auto select = [&](const CQXChannel<T>& channel) { return !Fits(channel) || channel.GetType() != type; };
  if (!TakeBack(select)) return;
  VisitChannels([type](CQXChannel<T>& channel) { channel.SetType(type); });
  AdoptAll();
}

template <qxReal T>
void CQXWaveletDecomposition<T>::CreateChannels(std::int32_t columns, std::int32_t rows, std::int32_t count) {
  Channels channels;
  if (!channels.Reset(count > 0 ? static_cast<std::size_t>(count) : 0)) return;
  for (std::size_t i = 0; i < channels.Count(); ++i) {
    channels.Set(i, qxInternal::MakeRaw<T>({0, 0, columns, rows}));
    if (channels[i] == nullptr) return;
    channels[i]->Clean();
  }
  m_channels = std::move(channels);
  AdoptAll();
}

template <qxReal T>
void CQXWaveletDecomposition<T>::SetChannelsNb(std::int32_t count) {
  static_cast<void>(m_channels.Reset(count > 0 ? static_cast<std::size_t>(count) : 0));
}

template <qxReal T>
void CQXWaveletDecomposition<T>::SetChannel(qxOwner<CQXChannel<T>> channel, std::int32_t index) {
  if (index < 0 || index >= GetChannelsNb()) return;
  if (channel != nullptr) {
    if (!Fits(*channel) && qxInternal::IsComplete(*channel)) {
      channel->IFWTInPlace();
      if (channel->IsDecomposed() != 0) return;
    }
    Adopt(*channel);
  }
  m_channels.Set(static_cast<std::size_t>(index), std::move(channel));
}

template <qxReal T>
std::int32_t CQXWaveletDecomposition<T>::MaximumDepth(qxChannelType type) const noexcept {
  switch (type) {
    case QX_CHANNEL_ROWS:
      return qxCalculateMaximumDepth(GetImageWidth());
    case QX_CHANNEL_COLUMNS:
      return qxCalculateMaximumDepth(GetImageHeight());
    default:
      return qxCalculateMaximumDepth(GetImageWidth(), GetImageHeight());
  }
}

/// Makes the transformed channels with depth(i) levels of type(i), those that allow no level as copies.
template <qxReal T>
template <typename Depth, typename Type>
bool CQXWaveletDecomposition<T>::MakeTransformed(Channels& channels, Depth depth, Type type) {
  // The caller may have changed raw channels through operator[].
  VisitChannels([this](CQXChannel<T>& channel) {
    if (channel.IsDecomposed() == 0) Adopt(channel);
  });
  return MakeChannels(channels, [&](CQXChannel<T>& channel, std::size_t i) {
    if (IsConsumed(channel, depth(i), type(i))) {
      return qxInternal::ForwardTransform(channel, m_filter.get(), type(i), depth(i), m_normalization);
    }
    return channel.FWT(m_filter.get(), type(i), depth(i));
  });
}

/// Whether a raw channel allows a level: then its samples turn into a tree.
template <qxReal T>
bool CQXWaveletDecomposition<T>::IsConsumed(const CQXChannel<T>& channel, std::int32_t depth, qxChannelType type) {
  return channel.IsDecomposed() == 0 && channel.GetData() != nullptr &&
         qxInternal::AllowedDepth(type, qxInternal::Extent(channel), depth) > 0;
}

template <qxReal T>
template <typename Depth, typename Type>
qxOwner<CQXWaveletDecomposition<T>> CQXWaveletDecomposition<T>::Transformed(Depth depth, Type type) {
  if (m_filter == nullptr || !HasAllChannels()) return nullptr;
  auto result = qxMakeOwner<CQXWaveletDecomposition>(m_filter->GetWavelet());
  if (result == nullptr || result->m_filter == nullptr) return nullptr;
  if (!MakeTransformed(result->m_channels, depth, type)) return nullptr;
  for (std::size_t i = 0; i < m_channels.Count(); ++i) {
    if (IsConsumed(*m_channels[i], depth(i), type(i))) *m_channels[i] = CQXChannel<T>();
  }
  result->m_normalization = m_normalization;
  result->AdoptAll();
  return result;
}

template <qxReal T>
template <typename Depth, typename Type>
void CQXWaveletDecomposition<T>::TransformInPlace(Depth depth, Type type) {
  Channels channels;
  if (m_filter == nullptr || !MakeTransformed(channels, depth, type)) return;
  for (std::size_t i = 0; i < m_channels.Count(); ++i) {
    if (channels[i] != nullptr) *m_channels[i] = std::move(*channels[i]);
  }
}

template <qxReal T>
qxOwner<CQXWaveletDecomposition<T>> CQXWaveletDecomposition<T>::FWT(std::int32_t depth, qxChannelType type) {
  return Transformed([depth](std::size_t) { return depth; }, [type](std::size_t) { return type; });
}

template <qxReal T>
qxOwner<CQXWaveletDecomposition<T>> CQXWaveletDecomposition<T>::FWT(const std::int32_t* depths,
                                                                    const qxChannelType* types) {
  return Transformed([depths](std::size_t i) { return depths[i]; }, [types](std::size_t i) { return types[i]; });
}

template <qxReal T>
qxOwner<CQXWaveletDecomposition<T>> CQXWaveletDecomposition<T>::FWTMaxDepth(qxChannelType type) {
  return FWT(MaximumDepth(type), type);
}

template <qxReal T>
qxOwner<CQXWaveletDecomposition<T>> CQXWaveletDecomposition<T>::FWTMaxDepth(qxChannelType type, std::int32_t& depth) {
  depth = MaximumDepth(type);
  return FWT(depth, type);
}

template <qxReal T>
void CQXWaveletDecomposition<T>::FWTInPlace(std::int32_t depth, qxChannelType type) {
  TransformInPlace([depth](std::size_t) { return depth; }, [type](std::size_t) { return type; });
}

template <qxReal T>
void CQXWaveletDecomposition<T>::FWTInPlace(const std::int32_t* depths, const qxChannelType* types) {
  TransformInPlace([depths](std::size_t i) { return depths[i]; }, [types](std::size_t i) { return types[i]; });
}

template <qxReal T>
void CQXWaveletDecomposition<T>::FWTMaxDepthInPlace(qxChannelType type) {
  FWTInPlace(MaximumDepth(type), type);
}

template <qxReal T>
qxOwner<CQXWaveletDecomposition<T>> CQXWaveletDecomposition<T>::IFWT() const {
  return MakeFromChannels(m_normalization, [](const CQXChannel<T>& channel, std::size_t) { return channel.IFWT(); });
}

template <qxReal T>
void CQXWaveletDecomposition<T>::IFWTInPlace() {
  static_cast<void>(TakeBack([](const CQXChannel<T>&) { return true; }));
}

template <qxReal T>
void CQXWaveletDecomposition<T>::EstimateThresholds(T* thresholds, T* ratios) const {
  for (std::size_t i = 0; i < m_channels.Count(); ++i) {
    if (m_channels[i] != nullptr) m_channels[i]->EstimateThreshold(thresholds[i], ratios[i]);
  }
}

/// The channels that clean(channel, i, threshold, ratio) makes; the arrays are written when all are made.
template <qxReal T>
template <typename Clean>
qxOwner<CQXWaveletDecomposition<T>> CQXWaveletDecomposition<T>::Cleaned(T* thresholds, T* ratios, Clean clean) const {
  const std::size_t count = m_channels.Count();
  const qxBlock<T> written = qxMakeBlock<T>(2 * count);
  if (written == nullptr) return nullptr;
  std::copy_n(thresholds, count, written.get());
  std::copy_n(ratios, count, written.get() + count);
  auto result = MakeFromChannels(m_normalization, [&](const CQXChannel<T>& channel, std::size_t i) {
    return clean(channel, i, written[i], written[count + i]);
  });
  if (result == nullptr) return nullptr;
  std::copy_n(written.get(), count, thresholds);
  std::copy_n(written.get() + count, count, ratios);
  return result;
}

template <qxReal T>
qxOwner<CQXWaveletDecomposition<T>> CQXWaveletDecomposition<T>::ReduceNoise(T* thresholds, T* ratios, std::int32_t soft,
                                                                            qxWaveletDenoising method) const {
  return Cleaned(thresholds, ratios, [&](const CQXChannel<T>& channel, std::size_t, T& threshold, T& ratio) {
    return channel.CleanBelowThreshold(threshold, ratio, soft, method);
  });
}

template <qxReal T>
qxOwner<CQXWaveletDecomposition<T>> CQXWaveletDecomposition<T>::ReduceNoise(T* thresholds, T* ratios, std::int32_t soft,
                                                                            qxWaveletDenoising method,
                                                                            const T* noises) const {
  return Cleaned(thresholds, ratios, [&](const CQXChannel<T>& channel, std::size_t i, T& threshold, T& ratio) {
    return channel.CleanBelowThreshold(threshold, ratio, soft, method, noises[i]);
  });
}

template <qxReal T>
qxOwner<CQXWaveletDecomposition<T>> CQXWaveletDecomposition<T>::ReduceNoiseDirectly(const T* thresholds,
                                                                                    const T* ratios,
                                                                                    std::int32_t soft) const {
  return MakeFromChannels(m_normalization, [&](const CQXChannel<T>& channel, std::size_t i) {
    return channel.CleanDirectly(thresholds[i], ratios[i], soft);
  });
}

namespace {

/// Reports the rounds of one plane as a part of those of all planes.
auto OfAllPlanes(const qxProgress& progress, std::size_t plane, std::int32_t planes) {
  return [&progress, plane, planes](std::int32_t done, std::int32_t total) {
    return progress.Report(static_cast<std::int32_t>(plane) * total + done, planes * total);
  };
}

}  // namespace

template <qxReal T>
qxOwner<CQXWaveletDecomposition<T>> CQXWaveletDecomposition<T>::ReduceNoiseByCircularShifts(
    T* thresholds, T* ratios, std::int32_t shifts, std::int32_t depth, std::int32_t soft, qxWaveletDenoising method,
    const qxProgress& progress) const {
  return Cleaned(thresholds, ratios, [&](const CQXChannel<T>& channel, std::size_t i, T& threshold, T& ratio) {
    const auto report = OfAllPlanes(progress, i, GetChannelsNb());
    return channel.CleanWithCircularShifts(threshold, ratio, shifts, m_filter.get(), depth, soft, method, report);
  });
}

template <qxReal T>
qxOwner<CQXWaveletDecomposition<T>> CQXWaveletDecomposition<T>::ReduceNoiseByCircularShifts(
    T* thresholds, T* ratios, std::int32_t shifts, std::int32_t depth, std::int32_t soft, qxWaveletDenoising method,
    const T* noises, const qxProgress& progress) const {
  return Cleaned(thresholds, ratios, [&](const CQXChannel<T>& channel, std::size_t i, T& threshold, T& ratio) {
    const auto report = OfAllPlanes(progress, i, GetChannelsNb());
    return channel.CleanWithCircularShifts(threshold, ratio, shifts, m_filter.get(), depth, soft, method, noises[i],
                                           report);
  });
}

template <qxReal T>
void CQXWaveletDecomposition<T>::EnhanceSharpFeatures(T factor) {
  VisitChannels([&](CQXChannel<T>& channel) { channel.Enhance(factor); });
}

template <qxReal T>
void CQXWaveletDecomposition<T>::EnhanceSharpFeatures(T factor, std::int32_t level) {
  VisitChannels([&](CQXChannel<T>& channel) { channel.EnhanceHRLevel(factor, level); });
}

template <qxReal T>
void CQXWaveletDecomposition<T>::EnhanceSharpFeatures(T factor, std::int32_t level, std::int32_t band) {
  VisitChannels([&](CQXChannel<T>& channel) { channel.EnhanceSubLevel(factor, level, band); });
}

template <qxReal T>
void CQXWaveletDecomposition<T>::EditByLevels(const T* factors) {
  VisitChannels([&](CQXChannel<T>& channel) { channel.EditByLevels(factors); });
}

template <qxReal T>
qxOwner<CQXWaveletDecomposition<T>> CQXWaveletDecomposition<T>::MixByLevels(const CQXWaveletDecomposition& other,
                                                                            const T* weights) const {
  if (GetChannelsNb() != other.GetChannelsNb()) return nullptr;
  return MakeFromChannels(m_normalization, [&](const CQXChannel<T>& channel, std::size_t i) {
    const CQXChannel<T>* with = other.m_channels[i];
    return with != nullptr ? channel.MixByLevels(with, weights, nullptr) : nullptr;
  });
}

template <qxReal T>
qxOwner<CQXWaveletDecomposition<T>> CQXWaveletDecomposition<T>::Combine(const CQXWaveletDecomposition& other, T a,
                                                                        T b) const {
  if (GetChannelsNb() != other.GetChannelsNb()) return nullptr;
  return MakeFromChannels(m_normalization, [&](const CQXChannel<T>& channel, std::size_t i) {
    const CQXChannel<T>* with = other.m_channels[i];
    return with != nullptr ? channel.Combine(with, a, b, nullptr) : nullptr;
  });
}

template <qxReal T>
std::int32_t CQXWaveletDecomposition<T>::DecompositionsAreAlmostEqual(const CQXWaveletDecomposition& other,
                                                                      T tolerance) const noexcept {
  if (GetChannelsNb() != other.GetChannelsNb()) return 0;
  for (std::size_t i = 0; i < m_channels.Count(); ++i) {
    const CQXChannel<T>* a = m_channels[i];
    const CQXChannel<T>* b = other.m_channels[i];
    if ((a == nullptr) != (b == nullptr)) return 0;
    if (a != nullptr && qxAreChannelsAlmostEqual(*a, *b, tolerance) == 0) return 0;
  }
  return 1;
}

template <qxReal T>
qxOwner<CQXWaveletDecomposition<T>> CQXWaveletDecomposition<T>::GetScaledHighImage(std::int32_t level,
                                                                                   std::int32_t band) const {
  return MakeFromChannels(m_normalization, [&](const CQXChannel<T>& channel, std::size_t) {
    return channel.GetScaledHighChannel(level, band);
  });
}

template <qxReal T>
qxOwner<CQXWaveletDecomposition<T>> CQXWaveletDecomposition<T>::GetScaledLowImage() const {
  return MakeFromChannels(m_normalization,
                          [](const CQXChannel<T>& channel, std::size_t) { return channel.GetScaledLowChannel(); });
}

#define QX_INSTANTIATE(T) template class CQXWaveletDecomposition<T>;
QX_FOR_FLOAT_AND_DOUBLE(QX_INSTANTIATE)
#undef QX_INSTANTIATE
