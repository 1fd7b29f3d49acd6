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

/// Deviation of the finest high band, or for two dimensions of the finest diagonal one, when the samples are white
/// noise of deviation 1.
template <qxReal T>
[[nodiscard]] double FinestNoiseGain(const CQXWaveletFilter<T>& filter, qxChannelType type,
                                     qxWaveletNormalization normalization);

}  // namespace qxInternal
