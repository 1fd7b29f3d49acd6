#pragma once

#include <qx/foundation/scalar.h>
#include <qx/wavelets/wavelet_filter.h>
#include <qx/wavelets/wavelet_types.h>

#include <cmath>
#include <cstdint>

namespace qxInternal {

/// A factor this close to 1 is left out.
template <qxReal T>
[[nodiscard]] bool HasEffect(T factor) {
  return std::abs(factor - 1) > T(0.000001);
}

template <qxReal T>
[[nodiscard]] T LowNorm(const CQXWaveletFilter<T>& filter, qxWaveletNormalization normalization) {
  return normalization == QX_NORMALIZATION_NONE ? T(1) : filter.GetLowNorm(normalization == QX_NORMALIZATION_1 ? 1 : 0);
}

template <qxReal T>
[[nodiscard]] T HighNorm(const CQXWaveletFilter<T>& filter, qxWaveletNormalization normalization) {
  return normalization == QX_NORMALIZATION_NONE ? T(1)
                                                : filter.GetHighNorm(normalization == QX_NORMALIZATION_1 ? 1 : 0);
}

/// The factors of the bands of one level, and how they go on from level to level. Each level has its own type and
/// norms.
template <qxReal T>
class BandFactors {
 public:
  /// Goes to the next level; to the first one at the start.
  void GoDown(qxChannelType type, T low, T high) {
    const bool is2D = type == QX_CHANNEL_2D;
    if (type == m_type && low == m_low && high == m_high) {
      m_mixed *= m_step;
      m_twiceHigh *= m_step;
    } else {
      m_type = type;
      m_low = low;
      m_high = high;
      m_step = is2D ? low * low : low;
      m_mixed = (is2D ? low * high : high) * m_lowest;
      m_twiceHigh = (is2D ? high * high : high) * m_lowest;
    }
    m_lowest *= m_step;
  }

  /// Factor of a high band of the present level.
  [[nodiscard]] T Of(std::int32_t band) const { return band == QX_SUBCHANNEL_HH ? m_twiceHigh : m_mixed; }
  /// Factor of the low band when the present level is the last; 1 before the first level.
  [[nodiscard]] T OfLowest() const { return m_lowest; }

 private:
  qxChannelType m_type = QX_CHANNEL_RAW;
  T m_low = 1;
  T m_high = 1;
  T m_step = 1;
  T m_mixed = 1;
  T m_twiceHigh = 1;
  T m_lowest = 1;
};

}  // namespace qxInternal
