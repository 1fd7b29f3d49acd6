#pragma once

#include <qx/foundation/owner.h>
#include <qx/foundation/progress.h>
#include <qx/foundation/scalar.h>
#include <qx/wavelets/channel.h>

#include <cstdint>

/// @file
/// Noise reduction of trees. A result of false, or null, says that memory was refused with null or that the listener
/// cancelled; numbers that are handed in by reference are then as they were.

namespace qxInternal {

/// CQXChannel::EstimateThreshold().
template <qxReal T>
[[nodiscard]] bool EstimateThreshold(const CQXChannel<T>& tree, T& threshold, T& ratio);

/// A rule of qxWaveletDenoising with what it is given.
template <qxReal T>
struct ThresholdCleaning {
  qxWaveletDenoising method;
  bool soft;
  const T* noise;  // of the samples; null when every tree tells its own

  /// Clears or shrinks the coefficients of the high bands; reads and writes the threshold and the ratio.
  [[nodiscard]] bool Clean(CQXChannel<T>& tree, T& threshold, T& ratio) const;
};

/// Bivariate shrinkage for white noise of a known deviation in the samples.
///
/// Every coefficient y with the parent p, the coefficient at its place one level coarser, becomes
/// y max(0, 1 - sqrt(3) n^2 / (s sqrt(y^2 + p^2))) with the deviation n of the noise in the band and s^2, at least 0,
/// the mean square of the 7 x 7 coefficients around y less n^2 (L. Sendur and I. W. Selesnick, Bivariate shrinkage with
/// local variance estimation, IEEE Signal Processing Letters 9, 2002). The coarsest level has no parent: p is 0.
template <qxReal T>
struct BivariateCleaning {
  T noise;

  [[nodiscard]] bool Clean(CQXChannel<T>& tree) const;
};

/// CQXChannel::CleanDirectly() of the tree itself.
template <qxReal T>
void CleanDirectly(CQXChannel<T>& tree, T threshold, T ratio, bool soft);

/// CQXChannel::CleanWithCircularShifts() by a rule of thresholds.
template <qxReal T>
[[nodiscard]] qxOwner<CQXChannel<T>> CleanShifted(const CQXChannel<T>& picture, std::int32_t shifts,
                                                  const CQXWaveletFilter<T>* filter, std::int32_t depth,
                                                  const ThresholdCleaning<T>& cleaning, T& threshold, T& ratio,
                                                  const qxProgress& progress);
/// The same by bivariate shrinkage.
template <qxReal T>
[[nodiscard]] qxOwner<CQXChannel<T>> CleanShifted(const CQXChannel<T>& picture, std::int32_t shifts,
                                                  const CQXWaveletFilter<T>* filter, std::int32_t depth,
                                                  const BivariateCleaning<T>& cleaning, const qxProgress& progress);

/// CQXChannel::GetAbsMaxInMask().
template <qxReal T>
[[nodiscard]] T LargestInMask(const T* data, std::int32_t index, std::int32_t columns, std::int32_t rows) noexcept;

}  // namespace qxInternal
