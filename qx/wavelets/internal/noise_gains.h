#pragma once

#include <qx/wavelets/wavelet_types.h>

#include <array>
#include <cstddef>
#include <cstdint>

/// What a wavelet makes of white noise: the variance of each band, with QX_NORMALIZATION_2, when the picture is white
/// noise of variance 1. Internal, not part of the interface.
class NoiseGains {
 public:
  static constexpr std::int32_t deepest = 16;

  /// @return false when memory was refused with null
  [[nodiscard]] bool Find(qxWaveletType wavelet);

  /// Variance of a band of a two-dimensional transform; levels count from 1, the finest one, to `deepest`.
  [[nodiscard]] double Variance(std::int32_t level, std::int32_t band) const noexcept;

 private:
  /// Along one direction: of the low and of the high band of each level.
  std::array<double, deepest + 1> m_low = {}, m_high = {};
};
