#include <qx/arrays/sorting.h>
#include <qx/foundation/internal/instantiate.h>
#include <qx/kernels/wavelet_kernels.h>
#include <qx/wavelets/internal/band_factors.h>
#include <qx/wavelets/internal/lifting_schedule.h>
#include <qx/wavelets/internal/noise_level.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <type_traits>

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

/// How many magnitudes fall into each of 4096 classes. Magnitudes are ordered like their bits, of which the leading
/// ones are the class: the median is found among the few samples of its class, and no copy of the others is made.
template <qxReal T>
class MagnitudeClasses {
 public:
  MagnitudeClasses(const T* samples, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) ++m_counts[ClassOf(samples[i])];
  }

  [[nodiscard]] static std::size_t ClassOf(T x) {
    constexpr std::int32_t bits = std::numeric_limits<Word>::digits;
    return static_cast<std::size_t>(static_cast<Word>(std::bit_cast<Word>(x) << 1) >> (bits - classBits));
  }

  /// The class of the sample with a rank, and the number of samples in the classes below.
  [[nodiscard]] std::size_t ClassOfRank(std::size_t rank, std::size_t& below) const {
    std::size_t i = 0;
    for (below = 0; below + m_counts[i] <= rank; ++i) below += m_counts[i];
    return i;
  }

  /// Whether there may be samples that are not numbers: their class is that of infinity, or above.
  [[nodiscard]] bool MayHoldNotANumber() const {
    const auto infinity = m_counts.begin() + static_cast<std::ptrdiff_t>(ClassOf(std::numeric_limits<T>::infinity()));
    return std::any_of(infinity, m_counts.end(), [](std::size_t count) { return count != 0; });
  }

 private:
  using Word = std::conditional_t<sizeof(T) == sizeof(std::uint32_t), std::uint32_t, std::uint64_t>;
  static constexpr std::int32_t classBits = 12;

  std::array<std::size_t, std::size_t{1} << classBits> m_counts{};
};

}  // namespace

template <qxReal T>
bool MedianMagnitude(const T* samples, std::size_t count, T& median) {
  const MagnitudeClasses<T> classes(samples, count);
  std::size_t first = 0;
  std::size_t last = std::numeric_limits<std::size_t>::max();
  std::size_t below = 0;
  std::size_t ignored = 0;
  const bool isPlain = count != 0 && !classes.MayHoldNotANumber();
  if (isPlain) {
    first = classes.ClassOfRank((count - 1) / 2, below);
    last = classes.ClassOfRank(count / 2, ignored);
  }
  const auto isWanted = [&](T x) { return MagnitudeClasses<T>::ClassOf(x) - first <= last - first; };
  const auto wanted = static_cast<std::size_t>(std::count_if(samples, samples + count, isWanted));
  const qxBlock<T> magnitudes = qxMakeBlock<T>(wanted);
  if (magnitudes == nullptr) return false;
  T* end = magnitudes.get();
  for (std::size_t i = 0; i < count; ++i) {
    if (isWanted(samples[i])) *end++ = std::abs(samples[i]);
  }
  if (!isPlain) {
    median = MedianInPlace(magnitudes.get(), count);
    return true;
  }
  T* const middle = magnitudes.get() + ((count - 1) / 2 - below);
  std::nth_element(magnitudes.get(), middle, end);
  median = count % 2 == 0 ? T(0.5) * (*middle + *std::min_element(middle + 1, end)) : *middle;
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
double FinestNoiseGain(const CQXWaveletFilter<T>& filter, qxChannelType type, qxWaveletNormalization normalization) {
  // One sample of 1 in the middle, even and then odd: what it leaves in the high band are all coefficients of the
  // filter.
  constexpr std::int32_t half = 16;
  const LiftingSchedule<T> schedule(filter, half, half, false, false);
  double energy = 0;
  for (const bool isOdd : {false, true}) {
    T even[half] = {};
    T odd[half] = {};
    (isOdd ? odd : even)[half / 2] = 1;
    schedule.LiftRow(even, odd, false);
    for (const T x : odd) energy += static_cast<double>(x) * static_cast<double>(x);
  }
  const auto norm = static_cast<double>(HighNorm(filter, normalization));
  const double variance = energy * norm * norm;
  return type == QX_CHANNEL_2D ? variance : std::sqrt(variance);
}

#define QX_INSTANTIATE(T)                                            \
  template bool MedianMagnitude(const T*, std::size_t, T&);          \
  template bool EstimateBandNoise(const CQXChannel<T>&, T&);         \
  template bool EstimateSampleNoise(const CQXChannel<T>&, T, T, T&); \
  template double FinestNoiseGain(const CQXWaveletFilter<T>&, qxChannelType, qxWaveletNormalization);
QX_FOR_FLOAT_AND_DOUBLE(QX_INSTANTIATE)
#undef QX_INSTANTIATE

}  // namespace qxInternal
