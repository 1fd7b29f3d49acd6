#pragma once

#include <qx/foundation/scalar.h>
#include <qx/kernels/wavelet_kernels.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace qxInternal {

/// Whether two bands can be the even and odd samples of one signal: both hold samples, and even has as many as odd or
/// one more.
[[nodiscard]] constexpr bool AreInterleaving(std::int32_t evenSize, std::int32_t oddSize) {
  return oddSize > 0 && evenSize >= oddSize && evenSize - oddSize <= 1;
}

/// Folds an index that runs off either end of a band back into it; see qxSymExtension().
[[nodiscard]] constexpr std::int32_t FoldedIndex(std::int32_t index, std::int32_t size, bool leftHalf, bool rightHalf) {
  const std::int64_t left = leftHalf ? 1 : 0;
  const std::int64_t period = 2 * std::int64_t{size} - 2 + left + (rightHalf ? 1 : 0);
  if (period <= 0) return 0;
  std::int64_t folded = index;
  if (folded < 0) folded = -folded - left;
  folded %= period;
  if (folded >= size) folded = period - folded - left;
  return static_cast<std::int32_t>(folded);
}

/// One lifting step along one direction, apart from the samples: which source positions make the sum of a destination
/// position. The even band is one of the two, the odd band the other; even and odd sizes are equal or even has one
/// more.
template <qxReal T>
class LiftingStep {
 public:
  static constexpr std::int32_t maximumTaps = 6;

  /// What is added at one destination position: no taps where the step leaves the position out.
  struct Sum {
    std::int32_t taps = 0;
    std::int32_t index[maximumTaps];
    T coefficient[maximumTaps];
  };

  LiftingStep() = default;

  /// @param alongColumns whether the two-coefficient step has the gap at the last odd row
  LiftingStep(bool destinationIsOdd, const T* coefficients, std::int32_t taps, std::int32_t evenSize,
              std::int32_t oddSize, bool alongColumns)
      : m_destinationIsOdd(destinationIsOdd),
        m_alongColumns(alongColumns),
        m_endsAlike(evenSize == oddSize),
        m_taps(taps),
        m_sourceSize(destinationIsOdd ? evenSize : oddSize),
        m_destinationSize(destinationIsOdd ? oddSize : evenSize),
        m_first((destinationIsOdd ? 1 : 0) - taps / 2) {
    std::copy_n(coefficients, taps, m_coefficients);
  }

  [[nodiscard]] bool DestinationIsOdd() const { return m_destinationIsOdd; }
  [[nodiscard]] std::int32_t DestinationSize() const { return m_destinationSize; }

  /// No sum of a position from @p position on reads a source below the result.
  [[nodiscard]] std::int32_t LowestSourceFrom(std::int32_t position) const {
    if (position >= m_destinationSize) return m_sourceSize;
    // Near the right end the extension folds back by at most half the taps.
    return std::min(std::max(position + m_first, 0), m_sourceSize - 1 - m_taps / 2);
  }

  [[nodiscard]] Sum SumAt(std::int32_t position) const {
    return m_taps == 2 ? TwoTapSumAt(position) : FoldedSumAt(position);
  }

  /// Runs the step along one row of each band.
  void LiftRow(T* destination, const T* source, bool subtract) const {
    // Between begin and end no source position leaves the band.
    const std::int32_t begin = std::clamp(-m_first, 0, m_destinationSize);
    const std::int32_t end = std::clamp(m_sourceSize - m_first - m_taps + 1, begin, m_destinationSize);
    for (std::int32_t k = 0; k < begin; ++k) LiftSample(destination, source, k, subtract);
    if (begin < end) {
      const T* sources[maximumTaps];
      for (std::int32_t i = 0; i < m_taps; ++i) sources[i] = source + (begin + m_first + i);
      qxKernels::Lift(static_cast<std::size_t>(end - begin), sources, m_coefficients, m_taps, subtract,
                      destination + begin);
    }
    for (std::int32_t k = end; k < m_destinationSize; ++k) LiftSample(destination, source, k, subtract);
  }

  /// Adds the sum of one destination row that stands across the direction of the step; @p rowOf gives a source row.
  template <typename RowOf>
  static void LiftAcross(const Sum& sum, T* destination, RowOf rowOf, std::size_t columns, bool subtract) {
    const T* rows[maximumTaps];
    for (std::int32_t i = 0; i < sum.taps; ++i) rows[i] = rowOf(sum.index[i]);
    qxKernels::Lift(columns, rows, sum.coefficient, sum.taps, subtract, destination);
  }

 private:
  void LiftSample(T* destination, const T* source, std::int32_t position, bool subtract) const {
    LiftAcross(
        SumAt(position), destination + position, [source](std::int32_t k) { return source + k; }, 1, subtract);
  }

  [[nodiscard]] Sum TwoTapSumAt(std::int32_t position) const {
    const std::int32_t left = position + m_first;
    const bool hasLeft = left >= 0;
    const bool hasRight = left + 1 < m_sourceSize;
    Sum sum;
    if (hasLeft && hasRight && !(m_alongColumns && m_destinationIsOdd && position + 1 >= m_destinationSize)) {
      sum.taps = 2;
      sum.index[0] = left;
      sum.index[1] = left + 1;
      sum.coefficient[0] = m_coefficients[0];
      sum.coefficient[1] = m_coefficients[1];
    } else if (!m_destinationIsOdd || m_endsAlike) {
      sum.taps = 1;
      sum.index[0] = hasLeft ? m_sourceSize - 1 : 0;
      sum.coefficient[0] = m_coefficients[0] + m_coefficients[1];
    }
    return sum;
  }

  [[nodiscard]] Sum FoldedSumAt(std::int32_t position) const {
    const bool leftHalf = !m_destinationIsOdd;
    const bool rightHalf = m_endsAlike == m_destinationIsOdd;
    Sum sum;
    sum.taps = m_taps;
    for (std::int32_t i = 0; i < m_taps; ++i) {
      sum.index[i] = FoldedIndex(position + m_first + i, m_sourceSize, leftHalf, rightHalf);
      sum.coefficient[i] = m_coefficients[i];
    }
    return sum;
  }

  bool m_destinationIsOdd = false;
  bool m_alongColumns = false;
  bool m_endsAlike = false;
  std::int32_t m_taps = 0;
  std::int32_t m_sourceSize = 0;
  std::int32_t m_destinationSize = 0;
  std::int32_t m_first = 0;  // source position of the first tap, relative to the destination position
  T m_coefficients[maximumTaps] = {};
};

}  // namespace qxInternal
