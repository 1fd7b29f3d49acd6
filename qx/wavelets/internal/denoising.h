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

/// CQXChannel::CleanDirectly() of the tree itself.
template <qxReal T>
void CleanDirectly(CQXChannel<T>& tree, T threshold, T ratio, bool soft);

/// CQXChannel::CleanWithCircularShifts() by a rule of thresholds.
template <qxReal T>
[[nodiscard]] qxOwner<CQXChannel<T>> CleanShifted(const CQXChannel<T>& picture, std::int32_t shifts,
                                                  const CQXWaveletFilter<T>* filter, std::int32_t depth,
                                                  const ThresholdCleaning<T>& cleaning, T& threshold, T& ratio,
                                                  const qxProgress& progress);
/// CQXChannel::GetAbsMaxInMask().
template <qxReal T>
[[nodiscard]] T LargestInMask(const T* data, std::int32_t index, std::int32_t columns, std::int32_t rows) noexcept;

}  // namespace qxInternal
