#pragma once

#include <qx/foundation/scalar.h>
#include <qx/wavelets/channel.h>

#include <cstddef>

namespace qxInternal {

/// Median of the magnitudes: the middle one, or half the sum of the two middle ones; not a number for no samples.
/// @return false when memory was refused with null
template <qxReal T>
[[nodiscard]] bool MedianMagnitude(const T* samples, std::size_t count, T& median);

/// Median of the magnitudes of the finest high band, divided by 0.6745; 0 for a raw channel.
/// @return false when memory was refused with null
template <qxReal T>
[[nodiscard]] bool EstimateBandNoise(const CQXChannel<T>& tree, T& noise);

/// The same of the samples of a raw channel, from second differences in both directions; what depends on a sample that
/// is not between the limits is left out. Not a number when nothing is left.
/// @return false when memory was refused with null
template <qxReal T>
[[nodiscard]] bool EstimateSampleNoise(const CQXChannel<T>& raw, T lowest, T highest, T& noise);

/// Deviations of the bands of one direction when the signal is white noise of deviation 1.
struct BandNoise {
  double low, high;
};

/// The deviations at a level, numbered from 1, away from the ends.
template <qxReal T>
[[nodiscard]] BandNoise BandNoiseOf(const CQXWaveletFilter<T>& filter, qxWaveletNormalization normalization,
                                    std::int32_t level);

}  // namespace qxInternal
