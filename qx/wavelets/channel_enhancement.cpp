#include <qx/kernels/array_kernels.h>
#include <qx/kernels/wavelet_kernels.h>
#include <qx/wavelets/channel.h>

#include <cmath>

template <qxReal T>
void CQXChannel<T>::EnhanceRawData(T factor) {
  if (m_data != nullptr) qxKernels::Multiply(Count(), m_data.get(), factor);
}

template <qxReal T>
void CQXChannel<T>::EnhanceSubLevel(T factor, std::int32_t level, std::int32_t band) {
  if (level < 1) return;
  if (CQXChannel* channel = SubChannel(level, band)) channel->EnhanceRawData(factor);
}

template <qxReal T>
void CQXChannel<T>::EnhanceHRLevel(T factor, std::int32_t level) {
  CQXChannel* channel = level < 1 ? nullptr : this;
  for (; level > 1 && channel != nullptr; --level) channel = channel->SubChannel(0);
  if (channel != nullptr) channel->ScaleHighBands(factor);
}

template <qxReal T>
void CQXChannel<T>::ScaleHighBands(T factor) {
  for (std::int32_t band = 1; band < GetSubChannelsNb(); ++band) {
    if (CQXChannel* channel = SubChannel(band)) channel->EnhanceRawData(factor);
  }
}

template <qxReal T>
void CQXChannel<T>::Enhance(T factor) {
  if (std::abs(factor - 1) < T(0.000001)) return;
  T working = factor;
  for (CQXChannel* channel = this; channel != nullptr && channel->m_decomposed != 0; channel = channel->SubChannel(0)) {
    channel->ScaleHighBands(working);
    working = factor <= 1 ? working * 2 : working / 2;
    if (factor <= 1 ? working >= 1 : working <= 1) return;
  }
}

template <qxReal T>
void CQXChannel<T>::EditByLevels(const T* factors) {
  if (m_decomposed == 0) return;
  CQXChannel* channel = this;
  for (; channel->m_decomposed != 0; channel = channel->SubChannel(0)) {
    channel->ScaleHighBands(*factors++);
    if (channel->SubChannel(0) == nullptr) return;
  }
  channel->EnhanceRawData(*factors);
}

/// A copy of this tree whose bands are blended with those of the other one; @p weights gives the two factors of a
/// level, numbered from 0, the lowest low band counting as the level after the last.
template <qxReal T>
template <typename Weights>
std::unique_ptr<CQXChannel<T>> CQXChannel<T>::BlendWith(const CQXChannel* other, Weights weights) const {
  std::unique_ptr<CQXChannel> blend = CloneDecomposedChannel();
  CQXChannel* target = blend.get();
  const CQXChannel* source = other;
  const auto blendBand = [&weights](CQXChannel& band, const CQXChannel* with, std::int32_t level) {
    if (band.m_data == nullptr || with == nullptr || with->m_data == nullptr) return;
    if (band.m_columns != with->m_columns || band.m_rows != with->m_rows) return;
    const auto [own, others] = weights(level);
    qxKernels::Blend(band.m_data.get(), band.m_data.get(), with->m_data.get(), own, others, band.Count());
  };
  std::int32_t level = 0;
  for (; target->m_decomposed != 0 && source != nullptr && source->m_decomposed != 0; ++level) {
    for (std::int32_t band = 1; band < target->GetSubChannelsNb(); ++band) {
      if (target->SubChannel(band) != nullptr) blendBand(*target->SubChannel(band), source->SubChannel(band), level);
    }
    target = target->SubChannel(0);
    source = source->SubChannel(0);
    if (target == nullptr) return blend;
  }
  blendBand(*target, source, level);
  return blend;
}

template <qxReal T>
std::unique_ptr<CQXChannel<T>> CQXChannel<T>::MixByLevels(CQXChannel* other, const T* weights,
                                                          CQXChannel* result) const {
  std::unique_ptr<CQXChannel> blend =
      BlendWith(other, [weights](std::int32_t level) { return std::pair<T, T>(1 - weights[level], weights[level]); });
  if (result == nullptr) return blend;
  result->Swap(*blend);
  return nullptr;
}

template <qxReal T>
std::unique_ptr<CQXChannel<T>> CQXChannel<T>::Combine(CQXChannel* other, T a, T b, CQXChannel* result) const {
  std::unique_ptr<CQXChannel> blend = BlendWith(other, [a, b](std::int32_t) { return std::pair<T, T>(a, b); });
  if (result == nullptr) return blend;
  result->Swap(*blend);
  return nullptr;
}

template class CQXChannel<float>;
template class CQXChannel<double>;
