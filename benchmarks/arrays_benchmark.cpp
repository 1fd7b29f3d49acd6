#include <qx/arrays/gauss.h>
#include <qx/arrays/random.h>
#include <qx/arrays/sorting.h>
#include <qx/arrays/statistics.h>

#include <algorithm>
#include <cstdint>
#include <numeric>
#include <random>
#include <vector>

#include <benchmark/benchmark.h>
#ifdef QX_LINK_GSL
#include <gsl/gsl_cdf.h>
#endif

namespace {

constexpr std::int32_t n = 1000000;

std::vector<double> MakeNumbers() {
  CQXRandom<double> random;
  random.SetNormal(0, 1);
  random.Initialize();
  std::vector<double> numbers(n);
  random.GetArrayNumbers(n, numbers.data());
  return numbers;
}

void CountItems(benchmark::State& state) { state.SetItemsProcessed(state.iterations() * n); }

template <typename Sort>
void SortNumbers(benchmark::State& state, Sort sort) {
  const std::vector<double> source = MakeNumbers();
  std::vector<double> target(n);
  std::vector<std::int32_t> indices(n);
  for (auto _ : state) {
    sort(source, target, indices);
    benchmark::ClobberMemory();
  }
  CountItems(state);
}

BENCHMARK_CAPTURE(SortNumbers, qxSort, [](const auto& source, auto& target, auto&) {
  qxSort(n, source.data(), target.data(), 1, 0);
}) -> Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(SortNumbers, std_sort, [](const auto& source, auto& target, auto&) {
  target = source;
  std::sort(target.begin(), target.end());
}) -> Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(SortNumbers, qxSort_absolute, [](const auto& source, auto& target, auto&) {
  qxSort(n, source.data(), target.data(), 1, 1);
}) -> Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(SortNumbers, qxSort_indices, [](const auto& source, auto& target, auto& indices) {
  qxSort(n, source.data(), target.data(), indices.data(), 1, 0);
}) -> Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(SortNumbers, std_sort_indices, [](const auto& source, auto&, auto& indices) {
  std::iota(indices.begin(), indices.end(), 0);
  std::sort(indices.begin(), indices.end(), [&](std::int32_t a, std::int32_t b) {
    return source[static_cast<std::size_t>(a)] < source[static_cast<std::size_t>(b)];
  });
}) -> Unit(benchmark::kMillisecond);

void Median(benchmark::State& state) {
  std::vector<double> numbers = MakeNumbers();
  const CQXStatistics<double> statistics(n, numbers.data());
  for (auto _ : state) benchmark::DoNotOptimize(statistics.Median());
  CountItems(state);
}
BENCHMARK(Median)->Unit(benchmark::kMillisecond);

void StdNthElement(benchmark::State& state) {
  const std::vector<double> numbers = MakeNumbers();
  for (auto _ : state) {
    std::vector<double> copy = numbers;
    std::nth_element(copy.begin(), copy.begin() + (n - 1) / 2, copy.end());
    benchmark::DoNotOptimize(copy[(n - 1) / 2] + *std::min_element(copy.begin() + n / 2, copy.end()));
  }
  CountItems(state);
}
BENCHMARK(StdNthElement)->Unit(benchmark::kMillisecond);

/// Arguments: algorithm, distribution.
void GetArrayNumbers(benchmark::State& state) {
  CQXRandom<double> random;
  random.SetAlgorithm(static_cast<std::int32_t>(state.range(0)));
  if (state.range(1) == 1) random.SetNormal(0, 1);
  if (state.range(1) == 2) random.SetExponential(1);
  random.Initialize();
  std::vector<double> numbers(n);
  for (auto _ : state) {
    random.GetArrayNumbers(n, numbers.data());
    benchmark::ClobberMemory();
  }
  CountItems(state);
}
BENCHMARK(GetArrayNumbers)->ArgsProduct({{0, 1, 2}, {0, 1, 2}})->Unit(benchmark::kMillisecond);

/// One call a number. Argument: algorithm.
void GetNumber(benchmark::State& state) {
  CQXRandom<double> random;
  random.SetAlgorithm(static_cast<std::int32_t>(state.range(0)));
  random.Initialize();
  std::vector<double> numbers(n);
  for (auto _ : state) {
    for (double& number : numbers) number = random.GetNumber();
    benchmark::ClobberMemory();
  }
  CountItems(state);
}
BENCHMARK(GetNumber)->DenseRange(0, 2)->Unit(benchmark::kMillisecond);

template <typename Distribution>
void StdNumbers(benchmark::State& state, Distribution distribution) {
  std::mt19937_64 engine(1);
  std::vector<double> numbers(n);
  for (auto _ : state) {
    for (double& number : numbers) number = distribution(engine);
    benchmark::ClobberMemory();
  }
  CountItems(state);
}
BENCHMARK_CAPTURE(StdNumbers, uniform, std::uniform_real_distribution<double>(0, 1))->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(StdNumbers, normal, std::normal_distribution<double>(0, 1))->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(StdNumbers, exponential, std::exponential_distribution<double>(1))->Unit(benchmark::kMillisecond);

/// The normal curve and its inverse at a million numbers.
template <typename Function>
void NormalCurve(benchmark::State& state, Function function, bool ofProbabilities) {
  std::vector<double> numbers = MakeNumbers();
  if (ofProbabilities) {
    for (double& x : numbers) x = qxCalculateGaussIntegral(x);
  }
  for (auto _ : state) {
    double sum = 0;
    for (const double x : numbers) sum += function(x);
    benchmark::DoNotOptimize(sum);
  }
  CountItems(state);
}
BENCHMARK_CAPTURE(
    NormalCurve, integral, [](double x) { return qxCalculateGaussIntegral(x); }, false)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(
    NormalCurve, inverse, [](double p) { return qxCalculateInverseGaussIntegral(p); }, true)
    ->Unit(benchmark::kMillisecond);
#ifdef QX_LINK_GSL
BENCHMARK_CAPTURE(
    NormalCurve, integral_gsl, [](double x) { return gsl_cdf_ugaussian_P(x); }, false)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(
    NormalCurve, inverse_gsl, [](double p) { return gsl_cdf_ugaussian_Pinv(p); }, true)
    ->Unit(benchmark::kMillisecond);
#endif

}  // namespace
