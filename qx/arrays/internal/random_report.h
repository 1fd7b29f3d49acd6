#pragma once

#include <qx/foundation/scalar.h>

#include <cstdint>

/// @file
/// The reports about random numbers that CQXRandom writes to the standard output. Internal, not part of the interface.

namespace qxArrays {

/// The generator that the numbers are compared with, by the codes of CQXRandom.
template <qxReal T>
struct RandomLaw {
  std::int32_t algorithm;
  std::int32_t distribution;
  T lower;
  T range;
  T mean;
  T sigma;
  T rate;
};

/// Mean and standard deviation of the law beside those of the numbers; no more than @p n of the first are printed.
template <qxReal T>
void WriteRandomReport(const RandomLaw<T>& law, std::int32_t n, const T* data, std::int32_t firstToPrint);

/// The line with the two ends of the segment of whole numbers.
void WriteSegment(std::int64_t left, std::int64_t right);

}  // namespace qxArrays
