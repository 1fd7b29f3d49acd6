#include <qx/arrays/statistics.h>
#include <qx/foundation/internal/instantiate.h>
#include <qx/kernels/wavelet_kernels.h>
#include <qx/wavelets/internal/channel_tree.h>
#include <qx/wavelets/internal/denoising.h>
#include <qx/wavelets/internal/noise_level.h>

#include <algorithm>
#include <cmath>

namespace qxInternal {

namespace {

// Thresholds, variances and factors up to this have no effect.
constexpr double effectGuard = 0.000001;

constexpr double rootOfTwo = 1.4142135623730951;

/// How a method finds its thresholds: one that goes on from level to level, or one of its own for every band.
struct ThresholdRule {
  double levelFactor;  // from level to level; 0: the caller's ratio
  bool needsNoise;
  bool isUniversal;     // begins with sigma sqrt(2 ln N)
  bool byBand;          // from the variance of the band
  bool subtractsNoise;  // less that of the noise
  bool looksAtNeighbours;
};

constexpr ThresholdRule rules[] = {
    {0, false, false, false, false, false},        // QX_DENOISING_GIVEN
    {1, true, true, false, false, false},          // QX_DENOISING_UNIVERSAL
    {rootOfTwo, true, true, false, false, false},  // QX_DENOISING_LEVEL_DEPENDENT
    {1, true, false, true, false, false},          // QX_DENOISING_BAND_VARIANCE
    {1, true, false, true, true, false},           // QX_DENOISING_BAND_SIGNAL
    {1, true, false, true, true, true},            // QX_DENOISING_BAND_SIGNAL_MASKED
};

template <qxReal T>
T BandVariance(const CQXChannel<T>& band) {
  return CQXStatistics<T>(static_cast<std::int32_t>(CountOf(band)), const_cast<T*>(band.GetData())).Variance(T(0));
}

/// Sum over the high bands of a level of noise variance over signal deviation; a band without signal counts 1000000.
template <qxReal T>
T SumOfBandThresholds(const CQXChannel<T>& level, T noiseVariance) {
  T sum = 0;
  ForEachHighBand(level, [&](const CQXChannel<T>& band, std::int32_t) {
    const T signalVariance = BandVariance(band) - noiseVariance;
    sum += signalVariance >= T(effectGuard) ? noiseVariance / std::sqrt(signalVariance) : T(1000000);
  });
  return sum;
}

/// The threshold that the finest of J levels begins with: sigma sqrt(2 ln N), or the part of it from which the
/// level-dependent rule reaches that value at the coarsest level.
template <qxReal T>
T UniversalThreshold(const ThresholdRule& rule, T sigma, T samples, std::int32_t depth) {
  const T universal = sigma * T(rootOfTwo) * std::sqrt(std::log(std::max(samples, T(0.000000001))));
  return rule.levelFactor == 1 ? universal : universal / std::sqrt(std::ldexp(T(1), depth - 1));
}

/// The threshold of one band by the rules that look at its variance.
template <qxReal T>
T VarianceThreshold(const ThresholdRule& rule, const CQXChannel<T>& band, T noiseVariance, std::int32_t depth) {
  const std::size_t samples = CountOf(band);
  const float share = static_cast<float>(samples) / static_cast<float>(depth);
  const T logarithm = std::log(static_cast<T>(share <= 0.0000001f ? 0.0000001f : share));
  const T spread = logarithm < T(0.0000001) ? T(0) : std::sqrt(logarithm);
  T variance = BandVariance(band);
  bool isSignal = variance > T(effectGuard);
  if (rule.subtractsNoise) {
    variance -= noiseVariance;
    isSignal = variance >= T(effectGuard);
  }
  if (isSignal) return spread * noiseVariance / std::sqrt(variance);
  return qxKernels::LargestMagnitude(samples, band.GetData());
}

/// Clears or shrinks in place, so that the mask sees the neighbours above and to the left as they were left.
template <qxReal T>
void CleanMasked(CQXChannel<T>& band, T threshold, bool shrink) {
  T* data = band.GetData();
  const auto samples = static_cast<std::int32_t>(CountOf(band));
  for (std::int32_t i = 0; i < samples; ++i) {
    const T largest = LargestInMask(data, i, band.GetColsNb(), band.GetRowsNb());
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

template <qxReal T>
void CleanBand(const ThresholdRule& rule, CQXChannel<T>& band, T threshold, bool soft) {
  if (!(threshold > T(effectGuard))) return;
  if (rule.looksAtNeighbours) {
    CleanMasked(band, threshold, soft);
  } else {
    qxKernels::Threshold(CountOf(band), threshold, true, soft, band.GetData());
  }
}

/// The noise of the finest diagonal band, which thresholds are compared with.
template <qxReal T>
bool FindBandNoise(const CQXChannel<T>& tree, const T* sampleNoise, T& sigma) {
  if (sampleNoise == nullptr) return EstimateBandNoise(tree, sigma);
  sigma = *sampleNoise;
  if (tree.GetFilter() == nullptr) return true;
  sigma *= qxDiagonalNoiseGain(*tree.GetFilter(), tree.GetType(), tree.GetTypeOfNormalization());
  return true;
}

}  // namespace

template <qxReal T>
bool EstimateThreshold(const CQXChannel<T>& tree, T& threshold, T& ratio) {
  T sigma = 0;
  if (!EstimateBandNoise(tree, sigma)) return false;
  threshold = 0;
  ratio = 0;
  if (tree.IsDecomposed() == 0) return true;
  const T highBands = static_cast<T>(tree.GetSubChannelsNb() - 1);
  threshold = SumOfBandThresholds(tree, sigma * sigma) / highBands;
  const CQXChannel<T>* second = tree.SubChannel(0);
  const T divisor = highBands * threshold;
  if (second != nullptr && second->IsDecomposed() != 0 && divisor != 0) {
    ratio = SumOfBandThresholds(*second, sigma * sigma) / divisor;
  }
  return true;
}

template <qxReal T>
bool ThresholdCleaning<T>::Clean(CQXChannel<T>& tree, T& threshold, T& ratio) const {
  if (tree.IsDecomposed() == 0 || method < QX_DENOISING_GIVEN || method > QX_DENOISING_BAND_SIGNAL_MASKED) return true;
  const ThresholdRule& rule = rules[method];
  T sigma = 0;
  if (rule.needsNoise && !FindBandNoise(tree, noise, sigma)) return false;

  const std::int32_t depth = tree.GetDepth();
  const T levelFactor = rule.levelFactor == 0 ? ratio : static_cast<T>(rule.levelFactor);
  if (rule.isUniversal) threshold = UniversalThreshold(rule, sigma, static_cast<T>(CountOf(tree)), depth);
  T working = rule.byBand ? T(0) : threshold;
  ForEachLevel(tree, [&](CQXChannel<T>& level, std::int32_t l) {
    ForEachHighBand(level, [&](CQXChannel<T>& band, std::int32_t) {
      if (rule.byBand) {
        working = VarianceThreshold(rule, band, sigma * sigma, depth);
        if (l == 0) threshold += working;
      }
      CleanBand(rule, band, working, soft);
    });
    if (l == 0 && rule.byBand) threshold /= static_cast<T>(level.GetSubChannelsNb() - 1);
    if (l == 1 && rule.isUniversal) ratio = levelFactor;
    if (l == 1 && !rule.isUniversal && threshold != 0) ratio = working / threshold;
    if (!rule.byBand) working *= levelFactor;
  });
  return true;
}

template <qxReal T>
void CleanDirectly(CQXChannel<T>& tree, T threshold, T ratio, bool soft) {
  ForEachLevel(tree, [&](CQXChannel<T>& level, std::int32_t l) {
    const T working = l == 0 ? threshold : threshold * ratio;
    if (!(working > T(effectGuard))) return;
    ForEachHighBand(level, [&](CQXChannel<T>& band, std::int32_t) {
      qxKernels::Threshold(CountOf(band), working, false, soft, band.GetData());
    });
  });
}

template <qxReal T>
T LargestInMask(const T* data, std::int32_t index, std::int32_t columns, std::int32_t rows) noexcept {
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

#define QX_INSTANTIATE(T)                                        \
  template bool EstimateThreshold(const CQXChannel<T>&, T&, T&); \
  template struct ThresholdCleaning<T>;                          \
  template void CleanDirectly(CQXChannel<T>&, T, T, bool);       \
  template T LargestInMask(const T*, std::int32_t, std::int32_t, std::int32_t) noexcept;
QX_FOR_FLOAT_AND_DOUBLE(QX_INSTANTIATE)
#undef QX_INSTANTIATE

}  // namespace qxInternal
