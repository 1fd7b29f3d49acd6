#pragma once

#include <qx/foundation/api.h>
#include <qx/foundation/scalar.h>
#include <qx/wavelets/wavelet_types.h>

#include <cstdint>

/// @file
/// Noise reduction by the coefficient, its parent and its neighbourhood, with a noise that is known: the rule behind
/// qxReduceImageNoise(). Everything here may be called from any thread; distinct channels are independent.

template <qxReal T>
class CQXChannel;

/// Standard deviation, in a high band of a two-dimensional transform with QX_NORMALIZATION_2, of white noise of
/// deviation 1 in the samples.
/// @param level 1 (the finest) to 16
/// @param band QX_SUBCHANNEL_HH, QX_SUBCHANNEL_LH or QX_SUBCHANNEL_HL
/// @return not a number for another level or band, and when memory was refused with null
[[nodiscard]] QX_API double qxFindNoiseGain(qxWaveletType wavelet, std::int32_t level, std::int32_t band);

/// Shrinks every high band of a two-dimensional tree in place: a coefficient x with the parent p (the coefficient of
/// the same place one level below, 0 at the lowest level) becomes
///
///     x max(0, r - sqrt(3) v / s) / r,    r = sqrt(x^2 + p^2),    s = sqrt(max(0, mean of x^2 - v)),
///
/// where v is the variance of the noise in the band, p is scaled to the noise of x, and the mean is that of the 5 x 5
/// coefficients about x, fewer at the edges; where s is 0, x becomes 0 (L. Sendur and I. W. Selesnick, Bivariate
/// shrinkage functions for wavelet-based denoising exploiting interscale dependency, IEEE Transactions on Signal
/// Processing 50, 2002; with local variance estimation, IEEE Signal Processing Letters 9, 2002).
///
/// @param tree a transform of type QX_CHANNEL_2D and at most 16 levels with QX_NORMALIZATION_2; a raw channel stays
/// @param noise deviation of the white noise in the samples that were transformed; with 0, less or not a number nothing
/// changes
/// @return 1; 0, and nothing has changed, when memory was refused with null
template <qxReal T>
[[nodiscard]] QX_API std::int32_t qxShrinkBivariate(CQXChannel<T>& tree, T noise);
