#include <qx/arrays/random.h>
#include <qx/arrays/statistics.h>
#include <qx/kernels/array_kernels.h>
#include <qx/kernels/wavelet_kernels.h>
#include <qx/wavelets/channel.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace {

// Thresholds, variances and factors up to this have no effect.
constexpr double effectGuard = 0.000001;

constexpr double rootOfTwo = 1.4142135623730951;

template <qxReal T>
T BandVariance(const CQXChannel<T>& band) {
  return CQXStatistics<T>(static_cast<std::int32_t>(qxElementCount(band.GetRowsNb(), band.GetColsNb())),
                          const_cast<T*>(band.GetData()))
      .Variance(T(0));
}

/// Mean over the high bands of a level of noise variance over signal deviation; a band without signal counts 1000000.
template <qxReal T>
T SumOfBandThresholds(const CQXChannel<T>& level, T noiseVariance) {
  T sum = 0;
  for (std::int32_t band = 1; band < level.GetSubChannelsNb(); ++band) {
    if (level[band] == nullptr || level[band]->GetData() == nullptr) continue;
    const T signalVariance = BandVariance(*level[band]) - noiseVariance;
    sum += signalVariance >= T(effectGuard) ? noiseVariance / std::sqrt(signalVariance) : T(1000000);
  }
  return sum;
}

/// sigma sqrt(2 ln N), and the part of it that the level-dependent rule begins with at the finest of J levels.
template <qxReal T>
T UniversalThreshold(T sigma, T samples) {
  return sigma * T(rootOfTwo) * std::sqrt(std::log(std::max(samples, T(0.000000001))));
}

template <qxReal T>
T LevelDependentThreshold(T universal, std::int32_t depth) {
  return universal / std::sqrt(std::ldexp(T(1), depth - 1));
}

/// The threshold of one band by the rules that look at its variance.
template <qxReal T>
T VarianceThreshold(const CQXChannel<T>& band, T noiseVariance, std::int32_t depth, qxWaveletDenoising method) {
  const std::size_t samples = qxElementCount(band.GetRowsNb(), band.GetColsNb());
  const float share = static_cast<float>(samples) / static_cast<float>(depth);
  const T logarithm = std::log(static_cast<T>(share <= 0.0000001f ? 0.0000001f : share));
  const T spread = logarithm < T(0.0000001) ? T(0) : std::sqrt(logarithm);
  T variance = BandVariance(band);
  bool isSignal = variance > T(effectGuard);
  if (method != QX_DENOISING_BAND_VARIANCE) {
    variance -= noiseVariance;
    isSignal = variance >= T(effectGuard);
  }
  if (isSignal) return spread * noiseVariance / std::sqrt(variance);
  return qxKernels::LargestMagnitude(band.GetData(), samples);
}

/// Clears or shrinks in place, so that the mask sees the neighbours above and to the left as they were left.
template <qxReal T>
void CleanMasked(CQXChannel<T>& band, T threshold, bool shrink) {
  T* data = band.GetData();
  const auto samples = static_cast<std::int32_t>(qxElementCount(band.GetRowsNb(), band.GetColsNb()));
  for (std::int32_t i = 0; i < samples; ++i) {
    const T largest = band.GetAbsMaxInMask(data, i, band.GetColsNb(), band.GetRowsNb());
    T& x = data[i];
    if (shrink && x >= threshold) {
      x -= threshold;
    } else if (shrink && x <= -threshold) {
      x += threshold;
    } else if (largest < threshold) {
      x = 0;
    }
  }
}

/// Visits a plane that is turned round: what stands at (row, column) of the source belongs to (row + downwards, column
/// + rightwards) of the target, each row in two pieces. Distances are at most the sizes.
template <typename T, typename Move>
void Rotate(const T* source, T* target, std::int32_t columns, std::int32_t rows, std::int32_t downwards,
            std::int32_t rightwards, Move move) {
  const std::ptrdiff_t wrapped = rightwards;
  const std::ptrdiff_t straight = columns - wrapped;
  for (std::int32_t row = 0; row < rows; ++row, source += columns) {
    T* to = target + ((std::ptrdiff_t{row} + downwards) % rows) * columns;
    move(static_cast<std::size_t>(straight), to + wrapped, source);
    move(static_cast<std::size_t>(wrapped), to, source + straight);
  }
}

}  // namespace

template <qxReal T>
T CQXChannel<T>::EstimateNoise() const {
  const CQXChannel* band = m_decomposed != 0 ? SubChannel(1) : nullptr;
  if (band == nullptr || band->m_data == nullptr) return 0;
  const std::size_t samples = band->Count();
  const qxBlock<T> magnitudes = qxMakeBlockOrThrow<T>(samples);
  qxKernels::Magnitudes(band->m_data.get(), magnitudes.get(), samples);
  return CQXStatistics<T>(static_cast<std::int32_t>(samples), magnitudes.get()).Median() / T(0.6745);
}

template <qxReal T>
void CQXChannel<T>::EstimateThreshold(T& threshold, T& ratio) const {
  threshold = 0;
  ratio = 0;
  if (m_decomposed == 0) return;
  const T sigma = EstimateNoise();
  const T highBands = static_cast<T>(GetSubChannelsNb() - 1);
  threshold = SumOfBandThresholds(*this, sigma * sigma) / highBands;
  const CQXChannel* second = SubChannel(0);
  const T divisor = highBands * threshold;
  if (second != nullptr && second->m_decomposed != 0 && divisor != 0) {
    ratio = SumOfBandThresholds(*second, sigma * sigma) / divisor;
  }
}

/// CleanBelowThreshold() of this channel itself.
template <qxReal T>
void CQXChannel<T>::CleanInPlace(T& threshold, T& ratio, bool soft, qxWaveletDenoising method) {
  if (m_decomposed == 0 || method < QX_DENOISING_GIVEN || method > QX_DENOISING_BAND_SIGNAL_MASKED) return;
  const std::int32_t depth = GetDepth();
  const bool byVariance = method >= QX_DENOISING_BAND_VARIANCE;
  const T sigma = method == QX_DENOISING_GIVEN ? T(0) : EstimateNoise();
  const T ratioPerLevel = ratio;
  if (method == QX_DENOISING_UNIVERSAL || method == QX_DENOISING_LEVEL_DEPENDENT) {
    threshold = UniversalThreshold(sigma, static_cast<T>(Count()));
    if (method == QX_DENOISING_LEVEL_DEPENDENT) threshold = LevelDependentThreshold(threshold, depth);
  }

  T working = byVariance ? T(0) : threshold;
  CQXChannel* level = this;
  for (std::int32_t l = 0; l < depth && level != nullptr; ++l, level = level->SubChannel(0)) {
    for (std::int32_t b = 1; b < level->GetSubChannelsNb(); ++b) {
      CQXChannel* band = level->SubChannel(b);
      if (band == nullptr || band->m_data == nullptr) continue;
      if (byVariance) {
        working = VarianceThreshold(*band, sigma * sigma, depth, method);
        if (l == 0) threshold += working;
      }
      if (!(working > T(effectGuard))) continue;
      if (method == QX_DENOISING_BAND_SIGNAL_MASKED) {
        CleanMasked(*band, working, soft);
      } else {
        qxKernels::Threshold(band->m_data.get(), band->Count(), working, true, soft);
      }
    }
    if (byVariance && l == 0) {
      threshold /= static_cast<T>(level->GetSubChannelsNb() - 1);
    } else if (l == 1) {
      if (method == QX_DENOISING_UNIVERSAL) {
        ratio = 1;
      } else if (method == QX_DENOISING_LEVEL_DEPENDENT) {
        ratio = T(rootOfTwo);
      } else if (threshold != 0) {
        ratio = working / threshold;
      }
    }
    if (method == QX_DENOISING_LEVEL_DEPENDENT) working *= T(rootOfTwo);
    if (method == QX_DENOISING_GIVEN) working *= ratioPerLevel;
  }
}

template <qxReal T>
std::unique_ptr<CQXChannel<T>> CQXChannel<T>::CleanBelowThreshold(T& threshold, T& ratio, std::int32_t soft,
                                                                  qxWaveletDenoising method) const {
  std::unique_ptr<CQXChannel> clean = CloneDecomposedChannel();
  clean->CleanInPlace(threshold, ratio, soft != 0, method);
  return clean;
}

template <qxReal T>
std::unique_ptr<CQXChannel<T>> CQXChannel<T>::CleanDirectly(T threshold, T ratio, std::int32_t soft) const {
  std::unique_ptr<CQXChannel> clean = CloneDecomposedChannel();
  T working = threshold;
  for (CQXChannel* level = clean.get(); level != nullptr && level->m_decomposed != 0; level = level->SubChannel(0)) {
    for (std::int32_t b = 1; b < level->GetSubChannelsNb() && working > T(effectGuard); ++b) {
      CQXChannel* band = level->SubChannel(b);
      if (band == nullptr || band->m_data == nullptr) continue;
      qxKernels::Threshold(band->m_data.get(), band->Count(), working, false, soft != 0);
    }
    working = threshold * ratio;
  }
  return clean;
}

template <qxReal T>
std::unique_ptr<CQXChannel<T>> CQXChannel<T>::CleanWithCircularShifts(T& threshold, T& ratio, std::int32_t shifts,
                                                                      const CQXWaveletFilter<T>* filter,
                                                                      std::int32_t depth, std::int32_t soft,
                                                                      qxWaveletDenoising method,
                                                                      const qxProgress& progress) const {
  if (m_decomposed != 0 || m_data == nullptr || filter == nullptr) return nullptr;
  if (Count() == 0) return CloneRawChannel();
  const std::int32_t rounds = std::clamp(shifts, 0, std::numeric_limits<std::int32_t>::max() - 1);
  const T factor = 1 / (static_cast<T>(rounds) + 1);
  T thresholds = 0;
  T ratios = 0;
  // One pass from the caller's two values; the raw result stands in the place of the picture that went in.
  const auto clean = [&](std::unique_ptr<CQXChannel> picture) {
    T a = threshold;
    T b = ratio;
    std::unique_ptr<CQXChannel> tree = picture->FWT(filter, QX_CHANNEL_2D, depth);
    tree->CleanInPlace(a, b, soft != 0, method);
    thresholds += a;
    ratios += b;
    return tree->DestroyingIFWT();
  };

  std::unique_ptr<CQXChannel> sum = clean(CloneRawChannel());
  if (!progress.Report(1, rounds + 1)) return nullptr;
  CQXRandom<T> random;
  random.SetUniform(0, 1);
  random.Initialize();
  const auto distance = [&random](std::int32_t size) {
    // The generator may step one beyond its ends.
    return static_cast<std::int32_t>((std::int64_t{random.GetIntegerNumber32(0, size / 4)} + size) % size);
  };
  for (std::int32_t round = 1; round <= rounds; ++round) {
    const std::int32_t down = distance(m_rows);
    const std::int32_t right = distance(m_columns);
    auto picture = std::make_unique<CQXChannel>(m_columns, m_rows, m_offsetX, m_offsetY);
    picture->TakeUninitialisedSamples();
    picture->m_normalization = QX_NORMALIZATION_2;
    Rotate(m_data.get(), picture->m_data.get(), m_columns, m_rows, down, right,
           [](std::size_t count, T* to, const T* from) { std::copy_n(from, count, to); });
    picture = clean(std::move(picture));
    Rotate(picture->m_data.get(), sum->m_data.get(), m_columns, m_rows, m_rows - down, m_columns - right,
           [](std::size_t count, T* to, const T* from) { qxKernels::Add(count, to, from); });
    if (!progress.Report(round + 1, rounds + 1)) return nullptr;
  }
  sum->EnhanceRawData(factor);
  sum->SetDecompositionTypes(m_filter, m_type, m_normalization);
  threshold = thresholds * factor;
  ratio = ratios * factor;
  return sum;
}

template <qxReal T>
T CQXChannel<T>::GetAbsMaxInMask(const T* data, std::int32_t index, std::int32_t columns,
                                 std::int32_t rows) const noexcept {
  if (columns <= 0) return 0;
  const std::int32_t row = index / columns;
  const std::int32_t column = index % columns;
  T largest = data[index];
  const auto take = [&largest](T x) {
    if (std::abs(x) > largest) largest = std::abs(x);
  };
  if (row >= 1) take(data[index - columns]);
  if (column >= 1) take(data[index - 1]);
  if (column + 1 < columns) take(data[index + 1]);
  if (std::int64_t{index} + columns + 1 < std::int64_t{columns} * rows) take(data[index + columns + 1]);
  return largest;
}

template class CQXChannel<float>;
template class CQXChannel<double>;
