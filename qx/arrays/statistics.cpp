#include <qx/arrays/internal/goodness_of_fit.h>
#include <qx/arrays/random.h>
#include <qx/arrays/sorting.h>
#include <qx/arrays/statistics.h>
#include <qx/foundation/block.h>
#include <qx/foundation/tolerance.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

namespace {

/// Elements of the table go by the value of a probability; what is not listed counts as 99 percent.
double ByProbability(const double (&table)[4], qxProbability probability) noexcept {
  return table[probability >= QX_PROBABILITY_90 && probability <= QX_PROBABILITY_995 ? probability : QX_PROBABILITY_99];
}

/// Means and central sums of two arrays, taken relative to their first elements: those of a constant are exactly 0.
struct CentralSums {
  double meanX = 0;
  double meanY = 0;
  double xx = 0;
  double xy = 0;
  double yy = 0;
};

template <qxReal T>
CentralSums SumAboutMeans(std::int32_t n, const T* x, const T* y) noexcept {
  CentralSums sums;
  if (n <= 0) return sums;
  const double originX = x[0];
  const double originY = y[0];
  double meanX = 0;
  double meanY = 0;
  for (std::int32_t i = 0; i < n; ++i) {
    meanX += x[i] - originX;
    meanY += y[i] - originY;
  }
  meanX /= n;
  meanY /= n;
  for (std::int32_t i = 0; i < n; ++i) {
    const double dx = x[i] - originX - meanX;
    const double dy = y[i] - originY - meanY;
    sums.xx += dx * dx;
    sums.xy += dx * dy;
    sums.yy += dy * dy;
  }
  sums.meanX = originX + meanX;
  sums.meanY = originY + meanY;
  return sums;
}

constexpr qxSignificanceLevel allLevels[] = {QX_SIGNIFICANCE_20, QX_SIGNIFICANCE_10, QX_SIGNIFICANCE_5};

/// 0, 1 or 3 for the first level that the test passes, 10 for none.
template <typename Test>
std::int32_t Score(Test passes) {
  constexpr std::int32_t scores[] = {0, 1, 3};
  for (const qxSignificanceLevel level : allLevels) {
    if (passes(level)) return scores[level];
  }
  return 10;
}

qxStatisticalTest Grade(std::int32_t sum, std::int32_t doubtfulFrom) noexcept {
  if (sum == 0) return QX_TEST_PASSED_STRICT;
  if (sum < doubtfulFrom) return QX_TEST_PASSED;
  return sum < 10 ? QX_TEST_DOUBTFUL : QX_TEST_FAILED;
}

}  // namespace

template <qxReal T>
double CQXStatistics<T>::MeanInDouble() const noexcept {
  double sum = 0;
  for (std::int32_t i = 0; i < m_size; ++i) sum += m_data[i];
  return sum / m_size;
}

template <qxReal T>
double CQXStatistics<T>::SumOfProducts(std::int32_t n, const T* other) const noexcept {
  double sum = 0;
  for (std::int32_t i = 0; i < n; ++i) sum += static_cast<double>(m_data[i]) * other[i];
  return sum;
}

template <qxReal T>
double CQXStatistics<T>::VarianceInDouble(double mean) const noexcept {
  const double n = m_size;
  return (SumOfProducts(m_size, m_data) - n * (mean * mean)) / (n - 1);
}

template <qxReal T>
double CQXStatistics<T>::DeviationInDouble(double mean) const noexcept {
  const double variance = VarianceInDouble(mean);
  return variance >= QX_PREDICATE_TOLERANCE<double> ? std::sqrt(variance) : 0;
}

template <qxReal T>
T CQXStatistics<T>::Mean() const noexcept {
  return static_cast<T>(MeanInDouble());
}

template <qxReal T>
T CQXStatistics<T>::Median() const {
  constexpr T notANumber = std::numeric_limits<T>::quiet_NaN();
  if (m_size <= 0) return notANumber;
  const qxBlock<T> copy = qxMakeBlock<T>(qxElementCount(m_size));
  if (copy == nullptr) return notANumber;
  T* const begin = copy.get();
  T* const end = std::copy_n(m_data, m_size, begin);
  T* const middle = begin + (m_size - 1) / 2;
  const bool isEven = m_size % 2 == 0;
  if (std::any_of(begin, end, [](T x) { return x != x; })) {
    CQXSorting<T>(m_size, begin, 1, 1, 0).Sort();
    return isEven ? T(0.5) * (middle[0] + middle[1]) : *middle;
  }
  std::nth_element(begin, middle, end);
  return isEven ? T(0.5) * (*middle + *std::min_element(middle + 1, end)) : *middle;
}

template <qxReal T>
T CQXStatistics<T>::Variance() const noexcept {
  return static_cast<T>(VarianceInDouble(MeanInDouble()));
}

template <qxReal T>
T CQXStatistics<T>::Variance(T mean) const noexcept {
  return static_cast<T>(VarianceInDouble(mean));
}

template <qxReal T>
T CQXStatistics<T>::StandardDeviation() const noexcept {
  return static_cast<T>(DeviationInDouble(MeanInDouble()));
}

template <qxReal T>
T CQXStatistics<T>::StandardDeviation(T mean) const noexcept {
  return static_cast<T>(DeviationInDouble(mean));
}

template <qxReal T>
T CQXStatistics<T>::Momentum2() const noexcept {
  return MixMomentum(m_size, m_data);
}

template <qxReal T>
T CQXStatistics<T>::MixMomentum(std::int32_t n, const T* other) const noexcept {
  return static_cast<T>(SumOfProducts(std::min(m_size, n), other));
}

template <qxReal T>
void CQXStatistics<T>::MeanConfidenceInterval(qxProbability probability, T mean, T standardDeviation, T& low,
                                              T& high) const noexcept {
  const double half = ByProbability({1.645, 1.96, 2.58, 2.81}, probability) / std::sqrt(static_cast<double>(m_size)) *
                      standardDeviation;
  low = static_cast<T>(mean - half);
  high = static_cast<T>(mean + half);
}

template <qxReal T>
void CQXStatistics<T>::VarianceConfidenceInterval(qxProbability probability, T variance, T& low,
                                                  T& high) const noexcept {
  const double z = ByProbability({1.28, 1.645, 2.33, 2.58}, probability);
  const double n = m_size;
  const double s = std::sqrt(2 * n - 3);
  const double scaled = (n - 1) * variance;
  low = static_cast<T>(scaled / (0.5 * ((z + s) * (z + s))));
  high = static_cast<T>(scaled / (0.5 * ((s - z) * (s - z))));
}

template <qxReal T>
void CQXStatistics<T>::ChebyshevLimits(T p, T mean, T standardDeviation, T& low, T& high) noexcept {
  const double k = p <= T(0.999999) ? std::sqrt(1 / (1 - static_cast<double>(p))) : 999.9999999999998;
  const double half = k * standardDeviation;
  low = static_cast<T>(mean - half);
  high = static_cast<T>(mean + half);
}

template <qxReal T>
T CQXStatistics<T>::CorrelationCoefficient(std::int32_t n, const T* other) const noexcept {
  const CentralSums sums = SumAboutMeans(std::min(m_size, n), m_data, other);
  if (sums.xx == 0 || sums.yy == 0) return 0;
  return static_cast<T>(sums.xy / std::sqrt(sums.xx) / std::sqrt(sums.yy));
}

template <qxReal T>
std::int32_t CQXStatistics<T>::LinearRegression(std::int32_t n, const T* other, std::int32_t withVariance, T& a,
                                                T& b) noexcept {
  const std::int32_t count = std::min(m_size, n);
  if (count < 3) {
    *this = CQXStatistics();
    return 0;
  }
  const CentralSums sums = SumAboutMeans(count, m_data, other);
  const double slope = sums.xx == 0 ? 0 : sums.xy / sums.xx;
  const double intercept = sums.meanY - slope * sums.meanX;
  m_hasResidualVariance = withVariance != 0;
  if (withVariance != 0) {
    double squares = 0;
    for (std::int32_t i = 0; i < count; ++i) {
      const double residual = other[i] - (slope * m_data[i] + intercept);
      squares += residual * residual;
    }
    m_residualVariance = static_cast<T>(squares / (count - 2));
  }
  a = static_cast<T>(slope);
  b = static_cast<T>(intercept);
  return 1;
}

template <qxReal T>
std::int32_t CQXStatistics<T>::GetResidualVariance(T& variance) const noexcept {
  if (m_hasResidualVariance == 0) return 0;
  variance = m_residualVariance;
  return 1;
}

template <qxReal T>
template <typename Weight>
void CQXStatistics<T>::Smooth(std::int32_t width, std::int32_t first, std::int32_t last, Weight weight) {
  first = std::max(first, 0);
  const std::ptrdiff_t n = std::min(std::ptrdiff_t{last} + 1, std::ptrdiff_t{m_size}) - first;
  if (width <= 1 || n <= 1) return;
  const std::ptrdiff_t reach = std::min<std::ptrdiff_t>(width / 2, n - 1);
  const qxBlock<T> copy = qxMakeBlock<T>(static_cast<std::size_t>(n));
  const qxBlock<double> weights = qxMakeBlock<double>(static_cast<std::size_t>(reach + 1));
  if (copy == nullptr || weights == nullptr) return;
  const T* const source = copy.get();
  const double* const weightAt = weights.get();
  T* const target = m_data + first;
  std::copy_n(target, n, copy.get());
  for (std::ptrdiff_t d = 0; d <= reach; ++d) weights.get()[d] = weight(static_cast<double>(d));
  for (std::ptrdiff_t i = 0; i < n; ++i) {
    double sum = 0;
    double total = 0;
    const std::ptrdiff_t end = std::min(i + reach, n - 1);
    for (std::ptrdiff_t k = std::max<std::ptrdiff_t>(i - reach, 0); k <= end; ++k) {
      const double w = weightAt[std::abs(k - i)];
      sum += w * source[k];
      total += w;
    }
    target[i] = static_cast<T>(sum / total);
  }
}

template <qxReal T>
void CQXStatistics<T>::AverageFiltering(std::int32_t width) {
  AverageFiltering(width, 0, m_size);
}

template <qxReal T>
void CQXStatistics<T>::AverageFiltering(std::int32_t width, std::int32_t first, std::int32_t last) {
  Smooth(width, first, last, [](double) { return 1.0; });
}

template <qxReal T>
void CQXStatistics<T>::GaussFiltering(std::int32_t width) {
  GaussFiltering(width, 0, m_size);
}

template <qxReal T>
void CQXStatistics<T>::GaussFiltering(std::int32_t width, std::int32_t first, std::int32_t last) {
  const double sigma = (width / 2) / 3.0;  // NOLINT(bugprone-integer-division): a third of the whole half width
  Smooth(width, first, last, [sigma](double d) { return std::exp(-0.5 * (d / sigma) * (d / sigma)); });
}

template <qxReal T>
std::int32_t CQXStatistics<T>::KolmogorovSmirnovTest(T a, T b, qxSignificanceLevel level, std::int32_t kind) const {
  const double c = level >= QX_SIGNIFICANCE_20 && level <= QX_SIGNIFICANCE_5 ? qxArrays::KolmogorovFactor(level) : 0;
  return !(qxArrays::KolmogorovDistance(m_size, m_data, a, b, kind) > qxArrays::KolmogorovLimit(m_size, c));
}

template <qxReal T>
std::int32_t CQXStatistics<T>::TestEquidistribution(T a, T b, qxSignificanceLevel level) const noexcept {
  return !(qxArrays::EquidistributionChiSquare(m_size, m_data, a, b) > qxArrays::EquidistributionLimit(level));
}

template <qxReal T>
std::int32_t CQXStatistics<T>::RunsUpAndDownTest(qxSignificanceLevel level) const noexcept {
  return !(qxArrays::CountRuns(m_size, m_data) <= qxArrays::RunsLimit(m_size, level));
}

template <qxReal T>
std::int32_t CQXStatistics<T>::TestNormalMean(T mean, qxSignificanceLevel level) const noexcept {
  const double ownMean = MeanInDouble();
  return !(std::abs(ownMean - mean) / DeviationInDouble(ownMean) > qxArrays::NormalQuantile(level));
}

template <qxReal T>
std::int32_t CQXStatistics<T>::TestNormalVariance(T variance, qxSignificanceLevel level) const noexcept {
  const double ownVariance = VarianceInDouble(MeanInDouble());
  const double wz = std::sqrt(2 / (static_cast<double>(m_size) - 1)) * qxArrays::NormalQuantile(level);
  return (1 - wz) * variance <= ownVariance && ownVariance <= (1 + wz) * variance;
}

template <qxReal T>
std::int32_t CQXStatistics<T>::PermutationValue(std::int32_t k, const T* block) {
  const std::int32_t count = std::max(k, 0);
  const qxBlock<T> copy = qxMakeBlock<T>(qxElementCount(count));
  if (copy == nullptr) return 0;
  std::copy_n(block, count, copy.get());
  return qxArrays::RankOrdering(count, copy.get());
}

template <qxReal T>
std::int32_t CQXStatistics<T>::PermutationTest(std::int32_t k, qxSignificanceLevel level) const {
  const double chiSquare = qxArrays::PermutationChiSquare(m_size, m_data, k);
  return chiSquare == std::numeric_limits<double>::infinity() ? 0 : !(chiSquare > qxArrays::PermutationLimit(k, level));
}

template <qxReal T>
qxStatisticalTest CQXStatistics<T>::TestNormality(T mean, T variance) const {
  const double distance = qxArrays::KolmogorovDistance(m_size, m_data, mean, variance, 1);
  const std::int32_t sum = Score([&](qxSignificanceLevel level) {
                             return !(distance > qxArrays::KolmogorovLimit(m_size, qxArrays::KolmogorovFactor(level)));
                           }) +
                           Score([&](qxSignificanceLevel level) { return TestNormalMean(mean, level) != 0; }) +
                           Score([&](qxSignificanceLevel level) { return TestNormalVariance(variance, level) != 0; });
  return Grade(sum, 4);
}

template <qxReal T>
qxStatisticalTest CQXStatistics<T>::TestUniformity(T a, T b) const {
  const double distance = qxArrays::KolmogorovDistance(m_size, m_data, a, b, 0);
  const double chiSquare = qxArrays::EquidistributionChiSquare(m_size, m_data, a, b);
  const std::int32_t sum =
      Score([&](qxSignificanceLevel level) {
        return !(distance > qxArrays::KolmogorovLimit(m_size, qxArrays::KolmogorovFactor(level)));
      }) +
      Score([&](qxSignificanceLevel level) { return !(chiSquare > qxArrays::EquidistributionLimit(level)); });
  return Grade(sum, 3);
}

template <qxReal T>
qxStatisticalTest CQXStatistics<T>::TestRandomness() const {
  CQXRandom<T> random;
  random.SetAlgorithm(0);
  random.SetRandomSeeds();
  random.Initialize();
  const std::int32_t k = random.GetIntegerNumber32(3, 6);
  const double chiSquare = qxArrays::PermutationChiSquare(m_size, m_data, k);
  const std::int32_t sum =
      Score([&](qxSignificanceLevel level) { return RunsUpAndDownTest(level) != 0; }) +
      Score([&](qxSignificanceLevel level) { return !(chiSquare > qxArrays::PermutationLimit(k, level)); });
  return Grade(sum, 3);
}

template class CQXStatistics<float>;
template class CQXStatistics<double>;
