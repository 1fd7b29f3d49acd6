#include <qx/foundation/conversion.h>
#include <qx/wavelets/wavelet_decomposition.h>

#include <algorithm>
#include <cstddef>
#include <utility>

template <qxReal T>
CQXWaveletDecomposition<T>::CQXWaveletDecomposition(qxWaveletType wavelet)
    : m_filter(std::make_unique<CQXWaveletFilter<T>>(wavelet)) {}

template <qxReal T>
CQXWaveletDecomposition<T>::CQXWaveletDecomposition(const CQXWaveletDecomposition& other) : CQXWaveletDecomposition() {
  Copy(other);
}

template <qxReal T>
CQXWaveletDecomposition<T>& CQXWaveletDecomposition<T>::operator=(const CQXWaveletDecomposition& other) {
  Copy(other);
  return *this;
}

/// A decomposition with a filter of its own and the channels that @p make gives for those of this one; null when one of
/// them is null.
template <qxReal T>
template <typename Make>
std::unique_ptr<CQXWaveletDecomposition<T>> CQXWaveletDecomposition<T>::MakeFromChannels(
    qxWaveletNormalization normalization, Make make) const {
  auto result = std::make_unique<CQXWaveletDecomposition>();
  if (m_filter != nullptr) result->m_filter = std::make_unique<CQXWaveletFilter<T>>(m_filter->GetWavelet());
  result->m_normalization = normalization;
  result->m_channels.resize(m_channels.size());
  for (std::size_t i = 0; i < m_channels.size(); ++i) {
    if (m_channels[i] != nullptr) result->m_channels[i] = make(*m_channels[i], i);
    if (result->m_channels[i] == nullptr) return nullptr;
    result->Adopt(*result->m_channels[i]);
  }
  return result;
}

template <qxReal T>
std::unique_ptr<CQXWaveletDecomposition<T>> CQXWaveletDecomposition<T>::CloneDecomposition() const {
  return std::make_unique<CQXWaveletDecomposition>(*this);
}

template <qxReal T>
void CQXWaveletDecomposition<T>::Copy(const CQXWaveletDecomposition& other) {
  CQXWaveletDecomposition copy;
  if (other.m_filter != nullptr) copy.m_filter = std::make_unique<CQXWaveletFilter<T>>(other.GetWaveletType());
  copy.m_normalization = other.m_normalization;
  copy.SetChannelsNb(other.GetChannelsNb());
  for (std::int32_t i = 0; i < other.GetChannelsNb(); ++i) {
    if (other[i] != nullptr) copy.SetChannel(other[i]->CloneDecomposedChannel(), i);
  }
  // The old channels go before the filter that they point to.
  std::swap(m_channels, copy.m_channels);
  std::swap(m_filter, copy.m_filter);
  m_normalization = copy.m_normalization;
}

template <qxReal T>
void CQXWaveletDecomposition<T>::Destroy() noexcept {
  m_channels.clear();
  m_filter.reset();
}

template <qxReal T>
qxWaveletType CQXWaveletDecomposition<T>::GetWaveletType() const noexcept {
  return m_filter != nullptr ? m_filter->GetWavelet() : static_cast<qxWaveletType>(-1);
}

template <qxReal T>
std::int32_t CQXWaveletDecomposition<T>::IsDecomposed() const noexcept {
  return std::any_of(m_channels.begin(), m_channels.end(),
                     [](const auto& channel) { return channel != nullptr && channel->IsDecomposed() != 0; });
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
  return index >= 0 && index < GetChannelsNb() ? m_channels[static_cast<std::size_t>(index)].get() : nullptr;
}

template <qxReal T>
CQXChannel<T>* CQXWaveletDecomposition<T>::operator[](std::int32_t index) noexcept {
  return const_cast<CQXChannel<T>*>(std::as_const(*this)[index]);
}

template <qxReal T>
std::int32_t CQXWaveletDecomposition<T>::HasCommonDepth(std::int32_t& depth) const noexcept {
  if ((*this)[0] == nullptr) return 0;
  const std::int32_t first = (*this)[0]->GetDepth();
  for (const auto& channel : m_channels) {
    if (channel == nullptr || channel->GetDepth() != first) return 0;
  }
  depth = first;
  return 1;
}

/// Calls the visitor with every channel that is there.
template <qxReal T>
template <typename Visitor>
void CQXWaveletDecomposition<T>::VisitChannels(Visitor visit) const {
  for (const auto& channel : m_channels) {
    if (channel != nullptr) visit(*channel);
  }
}

/// Hands filter and normalization to all levels of a channel. A tree of another wavelet or normalization is taken back.
template <qxReal T>
void CQXWaveletDecomposition<T>::Adopt(CQXChannel<T>& channel) const {
  const bool fits = m_filter != nullptr && channel.GetFilterType() == GetWaveletType() &&
                    channel.GetTypeOfNormalization() == m_normalization;
  if (!fits) channel.IFWTInPlace();
  channel.SetFilter(m_filter.get());
  channel.SetTypeOfNormalization(m_normalization);
  channel.Inherit();
}

/// Before a transform: the caller may have changed raw channels through operator[].
template <qxReal T>
void CQXWaveletDecomposition<T>::AdoptRawChannels() {
  VisitChannels([this](CQXChannel<T>& channel) {
    if (channel.IsDecomposed() == 0) Adopt(channel);
  });
}

template <qxReal T>
bool CQXWaveletDecomposition<T>::HasAllChannels() const noexcept {
  return !m_channels.empty() && std::find(m_channels.begin(), m_channels.end(), nullptr) == m_channels.end();
}

template <qxReal T>
template <typename Sample>
void CQXWaveletDecomposition<T>::SetPixels(std::int32_t width, std::int32_t height, std::int32_t channelsNb,
                                           const Sample* data) {
  const std::size_t planes = channelsNb > 0 ? static_cast<std::size_t>(channelsNb) : 0;
  const std::size_t count = qxElementCount(height, width);
  Channels channels(planes);
  for (std::size_t c = 0; c < planes; ++c) {
    qxBlock<T> plane = qxMakeBlockOrThrow<T>(count);
    for (std::size_t i = 0; i < count; ++i) plane[i] = static_cast<T>(data[i * planes + c]);
    channels[c] = std::make_unique<CQXChannel<T>>(width, height, 0, 0);
    channels[c]->SetData(std::move(plane));
    Adopt(*channels[c]);
  }
  // The samples may come from an old channel, so these go last.
  std::swap(m_channels, channels);
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
  const std::size_t planes = m_channels.size();
  const std::size_t count = qxElementCount(GetImageHeight(), GetImageWidth());
  for (std::size_t c = 0; c < planes; ++c) {
    const CQXChannel<T>* channel = m_channels[c].get();
    const T* plane = channel != nullptr ? channel->GetData() : nullptr;
    const std::size_t held =
        plane != nullptr ? std::min(count, qxElementCount(channel->GetRowsNb(), channel->GetColsNb())) : 0;
    for (std::size_t i = 0; i < held; ++i) data[i * planes + c] = convert(plane[i]);
    for (std::size_t i = held; i < count; ++i) data[i * planes + c] = convert(T(0));
  }
}

template <qxReal T>
void CQXWaveletDecomposition<T>::GetImageInPixelForm(T* data) {
  VisitChannels([this](CQXChannel<T>& channel) {
    channel.SetTypeOfNormalization(m_normalization);
    Adopt(channel);
    channel.IFWTInPlace();
  });
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
std::unique_ptr<CQXWaveletDecomposition<T>> CQXWaveletDecomposition<T>::GetImageInPackedForm() const {
  return MakeFromChannels(m_normalization,
                          [](const CQXChannel<T>& channel, std::size_t) { return channel.PackDecomposedChannel(); });
}

template <qxReal T>
void CQXWaveletDecomposition<T>::GetImageInPackedForm(T* data) const {
  if (const auto packed = GetImageInPackedForm()) packed->GetImageInPixelForm(data);
}

template <qxReal T>
std::unique_ptr<CQXWaveletDecomposition<T>> CQXWaveletDecomposition<T>::UnpackDecomposedImage(
    qxChannelType type, std::int32_t depth, qxWaveletNormalization normalization) const {
  return MakeFromChannels(normalization, [&](const CQXChannel<T>& channel, std::size_t) {
    return channel.UnpackDecomposedChannel(m_filter.get(), type, depth, normalization);
  });
}

template <qxReal T>
void CQXWaveletDecomposition<T>::SetFilter(qxWaveletType wavelet) {
  if (GetWaveletType() != wavelet) IFWTInPlace();
  // The filter stays the same object, so that no channel is ever left with a pointer to one that is gone.
  if (m_filter == nullptr) {
    m_filter = std::make_unique<CQXWaveletFilter<T>>(wavelet);
  } else if (GetWaveletType() != wavelet) {
    m_filter->Set(wavelet);
  }
  VisitChannels([this](CQXChannel<T>& channel) { Adopt(channel); });
}

template <qxReal T>
void CQXWaveletDecomposition<T>::SetTypeOfNormalization(qxWaveletNormalization normalization) {
  m_normalization = normalization;
  VisitChannels([this](CQXChannel<T>& channel) { Adopt(channel); });
}

template <qxReal T>
void CQXWaveletDecomposition<T>::SetDecompositionTypes(qxWaveletType wavelet, qxChannelType type,
                                                       qxWaveletNormalization normalization) {
  SetFilter(wavelet);
  SetTypeOfNormalization(normalization);
  SetDecompositionTypesToChannels(type);
}

template <qxReal T>
void CQXWaveletDecomposition<T>::SetDecompositionTypesToChannels(qxChannelType type) {
  VisitChannels([this, type](CQXChannel<T>& channel) {
    if (channel.GetType() != type) channel.IFWTInPlace();
    channel.SetType(type);
    Adopt(channel);
  });
}

template <qxReal T>
void CQXWaveletDecomposition<T>::CreateChannels(std::int32_t columns, std::int32_t rows, std::int32_t count) {
  SetChannelsNb(count);
  for (auto& channel : m_channels) {
    channel = std::make_unique<CQXChannel<T>>(columns, rows, 0, 0);
    channel->Initialize();
    Adopt(*channel);
  }
}

template <qxReal T>
void CQXWaveletDecomposition<T>::SetChannelsNb(std::int32_t count) {
  m_channels.clear();
  m_channels.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
}

template <qxReal T>
void CQXWaveletDecomposition<T>::SetChannel(std::unique_ptr<CQXChannel<T>> channel, std::int32_t index) {
  if (index < 0 || index >= GetChannelsNb()) return;
  if (channel != nullptr) Adopt(*channel);
  m_channels[static_cast<std::size_t>(index)] = std::move(channel);
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

template <qxReal T>
std::unique_ptr<CQXWaveletDecomposition<T>> CQXWaveletDecomposition<T>::FWT(std::int32_t depth, qxChannelType type) {
  if (m_filter == nullptr || !HasAllChannels()) return nullptr;
  AdoptRawChannels();
  return MakeFromChannels(
      m_normalization, [&](CQXChannel<T>& channel, std::size_t) { return channel.FWT(m_filter.get(), type, depth); });
}

template <qxReal T>
std::unique_ptr<CQXWaveletDecomposition<T>> CQXWaveletDecomposition<T>::FWT(const std::int32_t* depths,
                                                                            const qxChannelType* types) {
  if (m_filter == nullptr || !HasAllChannels()) return nullptr;
  AdoptRawChannels();
  return MakeFromChannels(m_normalization, [&](CQXChannel<T>& channel, std::size_t i) {
    return channel.FWT(m_filter.get(), types[i], depths[i]);
  });
}

template <qxReal T>
std::unique_ptr<CQXWaveletDecomposition<T>> CQXWaveletDecomposition<T>::FWTMaxDepth(qxChannelType type) {
  return FWT(MaximumDepth(type), type);
}

template <qxReal T>
std::unique_ptr<CQXWaveletDecomposition<T>> CQXWaveletDecomposition<T>::FWTMaxDepth(qxChannelType type,
                                                                                    std::int32_t& depth) {
  depth = MaximumDepth(type);
  return FWT(depth, type);
}

template <qxReal T>
void CQXWaveletDecomposition<T>::FWTInPlace(std::int32_t depth, qxChannelType type) {
  AdoptRawChannels();
  VisitChannels([&](CQXChannel<T>& channel) { channel.FWTInPlace(m_filter.get(), type, depth); });
}

template <qxReal T>
void CQXWaveletDecomposition<T>::FWTInPlace(const std::int32_t* depths, const qxChannelType* types) {
  AdoptRawChannels();
  for (std::size_t i = 0; i < m_channels.size(); ++i) {
    if (m_channels[i] != nullptr) m_channels[i]->FWTInPlace(m_filter.get(), types[i], depths[i]);
  }
}

template <qxReal T>
void CQXWaveletDecomposition<T>::FWTMaxDepthInPlace(qxChannelType type) {
  FWTInPlace(MaximumDepth(type), type);
}

template <qxReal T>
std::unique_ptr<CQXWaveletDecomposition<T>> CQXWaveletDecomposition<T>::IFWT() const {
  return MakeFromChannels(m_normalization, [](const CQXChannel<T>& channel, std::size_t) { return channel.IFWT(); });
}

template <qxReal T>
void CQXWaveletDecomposition<T>::IFWTInPlace() {
  VisitChannels([&](CQXChannel<T>& channel) { channel.IFWTInPlace(); });
}

template <qxReal T>
void CQXWaveletDecomposition<T>::EstimateThresholds(T* thresholds, T* ratios) const {
  for (std::size_t i = 0; i < m_channels.size(); ++i) {
    if (m_channels[i] != nullptr) m_channels[i]->EstimateThreshold(thresholds[i], ratios[i]);
  }
}

template <qxReal T>
std::unique_ptr<CQXWaveletDecomposition<T>> CQXWaveletDecomposition<T>::ReduceNoise(T* thresholds, T* ratios,
                                                                                    std::int32_t soft,
                                                                                    qxWaveletDenoising method) const {
  return MakeFromChannels(m_normalization, [&](const CQXChannel<T>& channel, std::size_t i) {
    return channel.CleanBelowThreshold(thresholds[i], ratios[i], soft, method);
  });
}

template <qxReal T>
std::unique_ptr<CQXWaveletDecomposition<T>> CQXWaveletDecomposition<T>::ReduceNoiseDirectly(const T* thresholds,
                                                                                            const T* ratios,
                                                                                            std::int32_t soft) const {
  return MakeFromChannels(m_normalization, [&](const CQXChannel<T>& channel, std::size_t i) {
    return channel.CleanDirectly(thresholds[i], ratios[i], soft);
  });
}

template <qxReal T>
std::unique_ptr<CQXWaveletDecomposition<T>> CQXWaveletDecomposition<T>::ReduceNoiseByCircularShifts(
    T* thresholds, T* ratios, std::int32_t shifts, std::int32_t depth, std::int32_t soft, qxWaveletDenoising method,
    const qxProgress& progress) const {
  return MakeFromChannels(m_normalization, [&](const CQXChannel<T>& channel, std::size_t i) {
    const auto ofAllChannels = [&](std::int32_t done, std::int32_t total) {
      return progress.Report(static_cast<std::int32_t>(i) * total + done, GetChannelsNb() * total);
    };
    return channel.CleanWithCircularShifts(thresholds[i], ratios[i], shifts, m_filter.get(), depth, soft, method,
                                           ofAllChannels);
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
std::unique_ptr<CQXWaveletDecomposition<T>> CQXWaveletDecomposition<T>::MixByLevels(
    const CQXWaveletDecomposition& other, const T* weights) const {
  if (GetChannelsNb() != other.GetChannelsNb()) return nullptr;
  return MakeFromChannels(m_normalization, [&](const CQXChannel<T>& channel, std::size_t i) {
    CQXChannel<T>* with = other.m_channels[i].get();
    return with != nullptr ? channel.MixByLevels(with, weights, nullptr) : nullptr;
  });
}

template <qxReal T>
std::unique_ptr<CQXWaveletDecomposition<T>> CQXWaveletDecomposition<T>::Combine(const CQXWaveletDecomposition& other,
                                                                                T a, T b) const {
  if (GetChannelsNb() != other.GetChannelsNb()) return nullptr;
  return MakeFromChannels(m_normalization, [&](const CQXChannel<T>& channel, std::size_t i) {
    CQXChannel<T>* with = other.m_channels[i].get();
    return with != nullptr ? channel.Combine(with, a, b, nullptr) : nullptr;
  });
}

template <qxReal T>
std::int32_t CQXWaveletDecomposition<T>::DecompositionsAreAlmostEqual(const CQXWaveletDecomposition& other,
                                                                      T tolerance) const {
  return std::equal(m_channels.begin(), m_channels.end(), other.m_channels.begin(), other.m_channels.end(),
                    [tolerance](const auto& a, const auto& b) {
                      if (a == nullptr || b == nullptr) return a == b;
                      return qxAreChannelsAlmostEqual(*a, *b, tolerance) != 0;
                    });
}

template <qxReal T>
std::unique_ptr<CQXWaveletDecomposition<T>> CQXWaveletDecomposition<T>::GetScaledHighImage(std::int32_t level,
                                                                                           std::int32_t band) const {
  return MakeFromChannels(m_normalization, [&](const CQXChannel<T>& channel, std::size_t) {
    return channel.GetScaledHighChannel(level, band);
  });
}

template <qxReal T>
std::unique_ptr<CQXWaveletDecomposition<T>> CQXWaveletDecomposition<T>::GetScaledLowImage() const {
  return MakeFromChannels(m_normalization,
                          [](const CQXChannel<T>& channel, std::size_t) { return channel.GetScaledLowChannel(); });
}

template class CQXWaveletDecomposition<float>;
template class CQXWaveletDecomposition<double>;
