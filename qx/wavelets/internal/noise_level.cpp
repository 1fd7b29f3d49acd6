#include <qx/arrays/sorting.h>
#include <qx/foundation/internal/instantiate.h>
#include <qx/kernels/wavelet_kernels.h>
#include <qx/wavelets/internal/band_factors.h>
#include <qx/wavelets/internal/lifting_schedule.h>
#include <qx/wavelets/internal/noise_level.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>

namespace qxInternal {

namespace {

/// The median magnitude of a normal distribution of deviation 1.
constexpr double medianOfNormal = 0.6745;

/// The median of an array, which is left in another order.
template <qxReal T>
T MedianInPlace(T* begin, std::size_t count) {
  if (count == 0) return std::numeric_limits<T>::quiet_NaN();
  T* const end = begin + count;
  T* const middle = begin + (count - 1) / 2;
  if (std::any_of(begin, end, [](T x) { return x != x; })) {
    CQXSorting<T>(static_cast<std::int32_t>(count), begin, 1, 1, 0).Sort();
    return count % 2 == 0 ? T(0.5) * (middle[0] + middle[1]) : *middle;
  }
  std::nth_element(begin, middle, end);
  return count % 2 == 0 ? T(0.5) * (*middle + *std::min_element(middle + 1, end)) : *middle;
}

/// The response of the low and the high band at a level to one sample of 1, squared and summed over its places.
template <qxReal T>
class ResponseEnergy {
 public:
  ResponseEnergy(const CQXWaveletFilter<T>& filter, std::int32_t level) : m_schedule(filter, half, half, false, false) {
    const std::int32_t places = std::int32_t{1} << level;
    for (std::int32_t place = 0; place < places; ++place) Add(level, size / 2 + place);
  }

  [[nodiscard]] double Low() const { return m_low; }
  [[nodiscard]] double High() const { return m_high; }

 private:
  static constexpr std::int32_t size = 1024;
  static constexpr std::int32_t half = size / 2;

  void Add(std::int32_t level, std::int32_t place) {
    std::array<T, size> signal{};
    std::array<T, half> even{}, odd{};
    signal[static_cast<std::size_t>(place)] = 1;
    for (std::int32_t i = 0; i < level; ++i) {
      qxKernels::Deinterleave(signal.data(), even.data(), odd.data(), size);
      m_schedule.LiftRow(even.data(), odd.data(), false);
      // The next level keeps the response in the middle, away from the ends.
      signal.fill(0);
      std::copy(even.begin(), even.end(), signal.begin() + size / 4);
    }
    for (std::size_t i = 0; i < half; ++i) {
      m_low += static_cast<double>(even[i]) * even[i];
      m_high += static_cast<double>(odd[i]) * odd[i];
    }
  }

  LiftingSchedule<T> m_schedule;
  double m_low = 0;
  double m_high = 0;
};

}  // namespace

template <qxReal T>
bool MedianMagnitude(const T* samples, std::size_t count, T& median) {
  const qxBlock<T> magnitudes = qxMakeBlock<T>(count);
  if (magnitudes == nullptr) return false;
  qxKernels::Magnitudes(samples, magnitudes.get(), count);
  median = MedianInPlace(magnitudes.get(), count);
  return true;
}

template <qxReal T>
bool EstimateBandNoise(const CQXChannel<T>& tree, T& noise) {
  noise = 0;
  const CQXChannel<T>* band = tree.IsDecomposed() != 0 ? tree.SubChannel(1) : nullptr;
  if (band == nullptr || band->GetData() == nullptr) return true;
  if (!MedianMagnitude(band->GetData(), qxElementCount(band->GetRowsNb(), band->GetColsNb()), noise)) return false;
  noise /= T(medianOfNormal);
  return true;
}

template <qxReal T>
bool EstimateSampleNoise(const CQXChannel<T>& raw, T lowest, T highest, T& noise) {
  const std::ptrdiff_t columns = raw.GetColsNb();
  const std::size_t places = qxElementCount(raw.GetRowsNb() / 2, raw.GetColsNb() / 2);
  const qxBlock<T> magnitudes = qxMakeBlock<T>(places);
  if (magnitudes == nullptr) return false;
  std::size_t count = 0;
  const T* const data = raw.GetData();
  for (std::int32_t row = 1; data != nullptr && row + 1 < raw.GetRowsNb(); row += 2) {
    for (std::int32_t column = 1; column + 1 < raw.GetColsNb(); column += 2) {
      const T* const centre = data + row * columns + column;
      bool isInside = true;
      T sum = 0;
      for (std::int32_t i = 0; i < 9; ++i) {
        const T sample = centre[(i / 3 - 1) * columns + i % 3 - 1];
        isInside = isInside && sample > lowest && sample < highest;
        // The outer product of (1 -2 1) with itself.
        sum += sample * T(i == 4 ? 4 : i % 2 == 0 ? 1 : -2);
      }
      if (isInside) magnitudes[count++] = std::abs(sum);
    }
  }
  // The sum of the squared weights is 36.
  noise = MedianInPlace(magnitudes.get(), count) / T(6 * medianOfNormal);
  return true;
}

template <qxReal T>
BandNoise BandNoiseOf(const CQXWaveletFilter<T>& filter, qxWaveletNormalization normalization, std::int32_t level) {
  constexpr std::int32_t deepest = 6;
  const std::int32_t depth = std::clamp(level, std::int32_t{1}, deepest);
  const ResponseEnergy<T> energy(filter, depth);
  const auto low = static_cast<double>(LowNorm(filter, normalization));
  const auto high = static_cast<double>(HighNorm(filter, normalization));
  const double above = std::pow(low, depth - 1);
  return {std::sqrt(energy.Low()) * std::abs(above * low), std::sqrt(energy.High()) * std::abs(above * high)};
}

#define QX_INSTANTIATE(T)                                            \
  template bool MedianMagnitude(const T*, std::size_t, T&);          \
  template bool EstimateBandNoise(const CQXChannel<T>&, T&);         \
  template bool EstimateSampleNoise(const CQXChannel<T>&, T, T, T&); \
  template BandNoise BandNoiseOf(const CQXWaveletFilter<T>&, qxWaveletNormalization, std::int32_t);
QX_FOR_FLOAT_AND_DOUBLE(QX_INSTANTIATE)
#undef QX_INSTANTIATE

}  // namespace qxInternal
