#include <qx/arrays/internal/goodness_of_fit.h>
#include <qx/arrays/sorting.h>
#include <qx/foundation/block.h>
#include <qx/foundation/internal/instantiate.h>
#include <qx/foundation/tolerance.h>
#include <qx/solvers/algebra.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

namespace qxArrays {

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

/// Elements of the table go by the level of significance; what is not listed counts as 5 percent.
double ByLevel(const double (&table)[3], qxSignificanceLevel level) noexcept {
  return table[level == QX_SIGNIFICANCE_20 || level == QX_SIGNIFICANCE_10 ? level : QX_SIGNIFICANCE_5];
}

/// Closed approximation of the normal distribution function.
double NormalDistribution(double v, double tolerance) noexcept {
  const double t = v * v;
  const double p = (7 * std::exp(-t / 2) + 16 * std::exp(-0.5857864376269051 * t) +  // 2 - sqrt(2)
                    (7 + 0.7853981633974483 * t) * std::exp(-t)) /                   // pi / 4
                   30;
  const double radicand = 1 - p;
  const double half = std::abs(radicand) < tolerance ? 0 : 0.5 * std::sqrt(radicand);
  return v >= 0 ? 0.5 + half : 0.5 - half;
}

/// Greatest distance between the distribution function and the steps of the m sorted elements x[0], x[stride], ...
template <typename T, typename Distribution>
double GreatestDistance(const T* x, std::ptrdiff_t m, std::ptrdiff_t stride, Distribution distribution) noexcept {
  double greatest = 0;
  for (std::ptrdiff_t i = 0; i < m; ++i) {
    const double f = distribution(static_cast<double>(x[i * stride]));
    const double above = std::abs(static_cast<double>(i + 1) / static_cast<double>(m) - f);
    const double below = std::abs(f - static_cast<double>(i) / static_cast<double>(m));
    greatest = std::max(greatest, above);
    greatest = std::max(greatest, below);
  }
  return greatest;
}

}  // namespace

double NormalQuantile(qxSignificanceLevel level) noexcept { return ByLevel({1.28, 1.645, 1.96}, level); }
double KolmogorovFactor(qxSignificanceLevel level) noexcept { return ByLevel({1.07, 1.22, 1.36}, level); }
double EquidistributionLimit(qxSignificanceLevel level) noexcept { return ByLevel({25.0, 28.4, 31.4}, level); }

double KolmogorovLimit(std::int32_t n, double c) noexcept {
  constexpr double rootOfSample = 0.03125;  // 1 / sqrt(1024)
  return n < 1024 ? c / std::sqrt(static_cast<double>(n)) : c * rootOfSample;
}

double RunsLimit(std::int32_t size, qxSignificanceLevel level) noexcept {
  const double n = size;
  return ((n + 1) + std::sqrt(n - 1) * ByLevel({-0.84, -1.28, -1.645}, level)) / 2;
}

double PermutationLimit(std::int32_t k, qxSignificanceLevel level) noexcept {
  if (k == 3) return ByLevel({11.0, 13.4, 15.5}, level);
  if (k == 4) return ByLevel({28.8, 32.0, 35.2}, level);
  const double root = std::sqrt(2.0 * CQXAlgebra::Permutations(k) - 3) + NormalQuantile(level);
  return 0.5 * (root * root);
}

template <qxReal T>
double KolmogorovDistance(std::int32_t size, const T* data, double a, double b, std::int32_t kind) {
  const std::ptrdiff_t n = std::max(size, 0);
  const qxBlock<T> block = qxMakeBlock<T>(static_cast<std::size_t>(n));
  if (block == nullptr) return infinity;
  const T* const sorted = block.get();
  qxSort(size, data, block.get(), 1, 0);
  const std::ptrdiff_t samples = std::max<std::ptrdiff_t>(n / 1024, 1);
  double greatest = 0;
  for (std::ptrdiff_t sample = 0; sample < samples; ++sample) {
    const std::ptrdiff_t m = (n - sample + samples - 1) / samples;
    const double distance =
        kind == 0 ? GreatestDistance(sorted + sample, m, samples, [=](double x) { return (x - a) / (b - a); })
                  : GreatestDistance(sorted + sample, m, samples,
                                     [=](double x) { return NormalDistribution((x - a) / b, QX_TOLERANCE<T>); });
    greatest = std::max(greatest, distance);
  }
  return greatest;
}

template <qxReal T>
double EquidistributionChiSquare(std::int32_t n, const T* data, double a, double b) noexcept {
  std::int32_t counts[20] = {};
  const double width = (b - a) / 20;
  for (std::int32_t i = 0; i < n; ++i) {
    const double quotient = (data[i] - a) / width;
    if (!(quotient > -1 && quotient < 21)) return infinity;
    ++counts[std::min(static_cast<std::int32_t>(quotient), 19)];
  }
  const double expected = n / 20.0;
  double chiSquare = 0;
  for (const std::int32_t count : counts) chiSquare += (count - expected) * (count - expected) / expected;
  return chiSquare;
}

template <qxReal T>
std::int32_t CountRuns(std::int32_t n, const T* data) noexcept {
  std::int32_t runs = 1;
  bool isRising = n > 1 && data[0] < data[1];
  for (std::int32_t i = 2; i < n; ++i) {
    if (isRising ? data[i - 1] > data[i] : data[i - 1] < data[i]) {
      isRising = !isRising;
      ++runs;
    }
  }
  return runs;
}

template <qxReal T>
std::int32_t RankOrdering(std::int32_t k, T* block) noexcept {
  std::uint32_t rank = 0;
  for (std::int32_t m = k; m > 0; --m) {
    std::int32_t largest = 0;
    for (std::int32_t i = 1; i < m; ++i) {
      if (block[i] > block[largest]) largest = i;
    }
    rank = rank * static_cast<std::uint32_t>(m) + static_cast<std::uint32_t>(largest);
    block[largest] = block[m - 1];
  }
  return static_cast<std::int32_t>(rank);
}

template <qxReal T>
double PermutationChiSquare(std::int32_t n, const T* data, std::int32_t k) {
  constexpr std::int32_t largestK = 12;  // 13! is beyond 32 bits
  if (k < 1 || k > largestK) return infinity;
  const std::ptrdiff_t blocks = std::max(n / k, 0);
  const qxBlock<std::int32_t> block = qxMakeBlock<std::int32_t>(static_cast<std::size_t>(blocks));
  if (block == nullptr) return infinity;
  std::int32_t* const ranks = block.get();
  for (std::ptrdiff_t i = 0; i < blocks; ++i) {
    T ordering[largestK];
    std::copy_n(data + i * k, k, ordering);
    ranks[i] = RankOrdering(k, ordering);
  }
  // Sorted ranks are counted run by run: a table of k! counts would take 2 GB for k = 12.
  std::sort(ranks, ranks + blocks);
  const double permutations = CQXAlgebra::Permutations(k);
  const double expected = static_cast<double>(blocks) / permutations;
  double chiSquare = 0;
  double missing = permutations;
  for (const std::int32_t* run = ranks; run != ranks + blocks; --missing) {
    const std::int32_t* const end = std::upper_bound(run, static_cast<const std::int32_t*>(ranks + blocks), *run);
    const double excess = static_cast<double>(end - run) - expected;
    chiSquare += excess * excess / expected;
    run = end;
  }
  return chiSquare + missing * (expected * expected / expected);
}

#define QX_INSTANTIATE(T)                                                                     \
  template double KolmogorovDistance(std::int32_t, const T*, double, double, std::int32_t);   \
  template double EquidistributionChiSquare(std::int32_t, const T*, double, double) noexcept; \
  template std::int32_t CountRuns(std::int32_t, const T*) noexcept;                           \
  template double PermutationChiSquare(std::int32_t, const T*, std::int32_t);                 \
  template std::int32_t RankOrdering(std::int32_t, T*) noexcept;
QX_FOR_FLOAT_AND_DOUBLE(QX_INSTANTIATE)
#undef QX_INSTANTIATE

}  // namespace qxArrays
