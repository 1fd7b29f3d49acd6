#include <algorithm>

#include "tests/operations/operations.h"

namespace {

constexpr std::int32_t lengths[] = {0, 1, 2, 3, 5, 8, 16, 17, 33, 100, 1000};

/// Random arrays, arrays of few different values, sorted and reversed ones.
template <typename E, typename Function>
void OverArrays(Function f) {
  for (const std::int32_t n : lengths) {
    Numbers<double> next(81);
    const auto size = static_cast<std::size_t>(n);
    std::vector<E> random(size), few(size);
    for (std::size_t i = 0; i < size; ++i) {
      random[i] = static_cast<E>(std::is_signed_v<E> ? next() * 120 : next(0, 250));
      few[i] = static_cast<E>(i * 7 % 5);
    }
    std::vector<E> sorted = random;
    std::sort(sorted.begin(), sorted.end());
    const std::vector<E> reversed(sorted.rbegin(), sorted.rend());
    for (const std::vector<E>& array : {random, few, sorted, reversed}) f(n, array);
  }
}

template <typename E>
void SortOne(Hash& h) {
  OverArrays<E>([&](std::int32_t n, const std::vector<E>& array) {
    for (std::int32_t flags = 0; flags < 4; ++flags) {
      std::vector<E> target = array;
      std::vector<std::int32_t> indices(array.size());
      qxSort(n, array.data(), target.data(), flags % 2, flags / 2);
      h(target, qxIsArraySorted(n, target.data(), E(0), flags % 2, flags / 2));
      qxSort(n, array.data(), target.data(), indices.data(), flags % 2, flags / 2);
      h(target, indices);
      qxSort(n / 4, n / 2, n, array.data(), target.data(), flags % 2, flags / 2);
      h(target);
      qxSort2DArray(n / 2, array.data(), target.data(), E(3), flags / 2, flags % 2, 0);
      h(target);
      CQXSorting<E> sorting(n, target.data(), 1, flags % 2, flags / 2);
      sorting.SortReturnIndices(indices.data());
      sorting.Sort();
      h(indices, target, sorting.IsArraySorted(0, n - 1));
      if (n < 3) continue;
      std::int32_t i = 0, j = n - 1;
      target = array;
      flags % 2 ? sorting.AscendingPartition(i, j) : sorting.DescendingPartition(i, j);
      h(target, i, j);
    }
  });
}

template <typename T>
void SortRows() {
  Row<T>("Sorting", [](Hash& h) { SortOne<T>(h); });
  if constexpr (sizeof(T) == 4) {
    Row<T>("Sorting of integers", [](Hash& h) {
      SortOne<std::int8_t>(h), SortOne<std::uint8_t>(h), SortOne<std::int16_t>(h), SortOne<std::uint16_t>(h);
      SortOne<std::int32_t>(h), SortOne<std::uint32_t>(h), SortOne<std::int64_t>(h), SortOne<std::uint64_t>(h);
    });
  }
  Row<T>("Sorting of edges", [](Hash& h) {
    std::vector<T> target(edges<T>.size());
    std::vector<std::int32_t> indices(edges<T>.size());
    for (std::int32_t n = 0; n <= static_cast<std::int32_t>(edges<T>.size()); ++n) {
      for (std::int32_t flags = 0; flags < 4; ++flags) {
        qxSort(n, edges<T>.data(), target.data(), indices.data(), flags % 2, flags / 2);
        h(target, indices);
        qxSort(n, edges<T>.data(), target.data(), flags % 2, flags / 2);
        h(target);
      }
    }
  });
  Row<T>("qxSort2DVectors", [](Hash& h) {
    for (const std::int32_t n : lengths) {
      Numbers<T> next(82);
      std::vector<CQXVector2<T>> points(static_cast<std::size_t>(n)), target(points.size());
      for (auto& p : points) p = next.template Make<CQXVector2<T>>();
      for (std::int32_t flags = 0; flags < 4; ++flags) {
        qxSort2DVectors(0, n - 1, points.data(), target.data(), T(0.1), flags / 2, flags % 2);
        h(target);
      }
    }
  });
}

template <typename T>
void RandomRows() {
  using R = CQXRandom<T>;
  for (std::int32_t algorithm = 0; algorithm < 3; ++algorithm) {
    const auto generator = [algorithm](std::uint64_t seed) {
      R random;
      random.SetAlgorithm(algorithm);
      random.SetXorshift32Seed(static_cast<std::uint32_t>(seed));
      random.SetXorshift64Seed(seed);
      random.SetSWBSeeds(Numbers<T>(static_cast<std::uint32_t>(seed)).Array(32, 0, 1).data());
      random.SetSWBState(3, T(0));
      if (algorithm == 2 && seed > 3) random.SetRandomSeeds(seed);  // the others draw from the clock
      return random;
    };
    const auto draw = [](Hash& h, R random) {
      random.Initialize();
      std::vector<T> numbers(1000);
      random.GetArrayNumbers(1000, numbers.data());
      h(numbers);
      for (int i = 0; i < 100; ++i) h(random.GetNumber());
    };
    const std::string name = "Random " + std::to_string(algorithm);
    Row<T>(name + " uniform", [&](Hash& h) {
      for (const std::uint64_t seed : {1u, 2u, 3u, 12345u, 4000000000u}) {
        R random = generator(seed);
        draw(h, random);
        random.SetUniform(T(-3), T(5));
        draw(h, random);
        random.Initialize();
        std::int32_t words[64];
        std::int64_t longs[64];
        random.GetArrayIntegerNumbers32(-100, 1000000, 64, words);
        random.GetArrayIntegerNumbers64(-100, 1000000000000, 64, longs);
        h(words), h(longs), h(random.GetBoolean()), h(random.GetIntegerNumber32(0, 9)),
            h(random.GetIntegerNumber64(-9, 9));
        std::uint32_t w[4];
        std::uint64_t s[4];
        T lags[32], borrow = 0;
        std::int32_t index = 0;
        random.GetXorshift32Seeds(w[0], w[1], w[2], w[3]);
        random.GetXorshift64Seeds(s[0], s[1], s[2], s[3]);
        random.GetSWBSeeds(lags);
        random.GetSWBState(index, borrow);
        h(w, s, lags, index, borrow);
      }
    });
    PlatformRow<T>(name + " normal", [&](Hash& h) {
      for (const std::uint64_t seed : {1u, 2u, 12345u}) {
        R random = generator(seed);
        random.SetNormal(T(2), T(0.5));
        draw(h, random);
      }
    });
    PlatformRow<T>(name + " exponential", [&](Hash& h) {
      for (const std::uint64_t seed : {1u, 2u, 12345u}) {
        R random = generator(seed);
        random.SetExponential(T(1.5));
        draw(h, random);
      }
    });
  }
  PlatformRow<T>("Random reports", [](Hash& h) {
    const std::vector<T> numbers = Numbers<T>(83).Array(500);
    std::vector<std::int32_t> integers(500);
    for (std::size_t i = 0; i < 500; ++i) integers[i] = static_cast<std::int32_t>((numbers[i] + 1) * 50);
    CQXRandom<T> random;
    random.SetUniform(-1, 1);
    h(Printed([&] { random.TestFloatRandomArray(500, numbers.data(), 10); })),
        h(Printed([&] { random.TestIntegerRandomArray(0, 100, 500, integers.data(), 10); }));
  });
}

template <typename T>
void StatisticsRows() {
  const auto overData = [](const std::string& operation, auto f, bool isPlatform = false) {
    Row<T>(
        "Statistics " + operation,
        [&](Hash& h) {
          for (const std::int32_t n : lengths) {
            std::vector<T> data = Numbers<T>(84).Array(static_cast<std::size_t>(n));
            const std::vector<T> other = Numbers<T>(85).Array(static_cast<std::size_t>(n));
            CQXStatistics<T> statistics(n, data.data());
            f(h, statistics, n, other.data());
            h(data);
          }
        },
        isPlatform);
  };
  using S = CQXStatistics<T>;
  overData("moments", [](Hash& h, S& s, std::int32_t n, const T* other) {
    h(s.Mean()), h(s.Median()), h(s.Variance()), h(s.Variance(T(0.1))), h(s.StandardDeviation()),
        h(s.StandardDeviation(T(0.1))), h(s.Momentum2()), h(s.MixMomentum(n, other)),
        h(s.CorrelationCoefficient(n, other));
  });
  overData("intervals", [](Hash& h, S& s, std::int32_t, const T*) {
    for (const qxProbability p : {QX_PROBABILITY_90, QX_PROBABILITY_95, QX_PROBABILITY_99, QX_PROBABILITY_995}) {
      T low = 0, high = 0;
      s.MeanConfidenceInterval(p, T(0.5), T(2), low, high);
      h(low, high);
      s.VarianceConfidenceInterval(p, T(2), low, high);
      h(low, high);
      S::ChebyshevLimits(T(0.9), T(0.5), T(2), low, high);
      h(low, high);
    }
  });
  overData("LinearRegression", [](Hash& h, S& s, std::int32_t n, const T* other) {
    T a = 0, b = 0, variance = 0;
    h(s.LinearRegression(n, other, 1, a, b)), h(a), h(b), h(s.GetResidualVariance(variance)), h(variance);
  });
  overData(
      "tests",
      [](Hash& h, S& s, std::int32_t, const T*) {
        for (const qxSignificanceLevel level : {QX_SIGNIFICANCE_20, QX_SIGNIFICANCE_10, QX_SIGNIFICANCE_5}) {
          h(s.KolmogorovSmirnovTest(-1, 1, level, 0)), h(s.KolmogorovSmirnovTest(0, 1, level, 1)),
              h(s.TestEquidistribution(-1, 1, level)), h(s.RunsUpAndDownTest(level)), h(s.TestNormalMean(0, level)),
              h(s.TestNormalVariance(1, level));
          for (const std::int32_t k : {3, 4, 5}) h(s.PermutationTest(k, level));
        }
        h(s.TestNormality(0, 1)), h(s.TestUniformity(-1, 1));
      },
      true);
  overData("AverageFiltering", [](Hash&, S& s, std::int32_t n, const T*) {
    s.AverageFiltering(3);
    s.AverageFiltering(6, n / 4, n / 2);
  });
  overData(
      "GaussFiltering",
      [](Hash&, S& s, std::int32_t n, const T*) {
        s.GaussFiltering(5);
        s.GaussFiltering(8, n / 4, n / 2);
      },
      true);
}

}  // namespace

template <typename T>
void ArrayRows() {
  SortRows<T>();
  RandomRows<T>();
  StatisticsRows<T>();
}

template void ArrayRows<float>();
template void ArrayRows<double>();
