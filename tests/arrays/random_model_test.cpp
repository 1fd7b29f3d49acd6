#include <qx/arrays/random.h>

#include <array>
#include <cmath>
#include <ctime>
#include <limits>
#include <vector>

#include "tests/typed_test.h"

namespace {

/// The generator by the book: four words, a table, and the methods in long double over what they yield.
template <typename T>
struct Model {
  std::int32_t algorithm = 0;
  std::array<std::uint32_t, 4> x32 = {123456789, 362436069, 521288629, 88675123};
  std::array<std::uint64_t, 4> x64 = {1, 20, 300, 4000};
  std::array<T, 32> lags = {};
  T borrow = 0;
  std::size_t slot = 0;

  template <typename Word>
  static Word Step(std::array<Word, 4>& x, int left, int right) {
    const Word t = x[0] ^ static_cast<Word>(x[0] << left);
    x = {x[1], x[2], x[3], static_cast<Word>(x[3] ^ (x[3] >> right) ^ t ^ (t >> (left == 11 ? 8 : 7)))};
    return x[3];
  }
  std::uint64_t Word() { return algorithm == 1 ? Step(x64, 13, 17) : Step(x32, 11, 19); }
  T Unit() {
    if (algorithm == 0) return static_cast<T>(static_cast<T>(Word()) / 4294967295.0);
    if (algorithm == 1) return static_cast<T>(Word()) * T(0x1p-64);
    T value = lags[(slot + 20) % 32] - lags[(slot + 5) % 32] - borrow;
    borrow = value <= 0 ? T(0x1p-153) : T(0);
    if (value <= 0) value += 1;
    lags[slot] = value;
    slot = (slot + 1) % 32;
    return value;
  }
  static long double Log(long double x) {
    const long double guard = std::is_same_v<T, float> ? 1e-7L : 1e-9L;
    return std::log(x <= guard ? guard : x);
  }
  long double Normal() {
    static const std::vector<long double> edges = [] {
      const long double v = 0.00991256303526217L;
      std::vector<long double> x = {v / std::exp(-5.925815736115027L), 3.442619855899L};
      for (int i = 2; i < 128; ++i)
        x.push_back(std::sqrt(-2 * std::log(v / x.back() + std::exp(-x.back() * x.back() / 2))));
      x.push_back(0);
      return x;
    }();
    for (;;) {
      const long double u = 2 * Unit() - 1;
      const std::size_t i = (algorithm == 2 ? Step(x32, 11, 19) : Word()) % 128;
      const long double x = u * edges[i];
      if (std::abs(x) < edges[i + 1]) return x;
      if (i == 0) {
        long double tail = 0, y = 0;
        do {
          tail = Log(Unit()) / edges[1];
          y = Log(Unit());
        } while (-2 * y < tail * tail);
        return u >= 0 ? edges[1] - tail : tail - edges[1];
      }
      const long double f0 = std::exp(-(edges[i] * edges[i] - x * x) / 2);
      const long double f1 = std::exp(-(edges[i + 1] * edges[i + 1] - x * x) / 2);
      if (f1 + Unit() * (f0 - f1) < 1) return x;
    }
  }
  static std::int64_t Round(long double x) { return static_cast<std::int64_t>(x >= 0 ? x + 0.5L : x - 0.5L); }
};

template <typename T>
class RandomModel : public ::testing::Test {
 protected:
  /// A model and a generator in one state, unlike the one that a new generator has.
  static void Prepare(std::int32_t algorithm, Model<T>& model, CQXRandom<T>& random) {
    model.algorithm = algorithm;
    for (T& lag : model.lags) lag = static_cast<T>(Model<T>::Step(model.x32, 11, 19) >> 9) / 8388608;
    const auto& w = model.x32;
    const auto& s = model.x64;
    random.SetAlgorithm(algorithm);
    random.SetXorshift32Seeds(w[0], w[1], w[2], w[3]);
    random.SetXorshift64Seeds(s[0], s[1], s[2], s[3]);
    random.SetSWBSeeds(model.lags.data());
    random.SetSWBState(0, 0);
  }
};
TYPED_TEST_SUITE(RandomModel, FloatTypes);

TYPED_TEST(RandomModel, EveryDrawIsThatOfTheModel) {
  const double eps = std::numeric_limits<TypeParam>::epsilon();
  for (std::int32_t algorithm = 0; algorithm < 3; ++algorithm) {
    Model<TypeParam> model;
    CQXRandom<TypeParam> random;
    this->Prepare(algorithm, model, random);
    random.SetUniform(-3, 11);
    random.Initialize();
    for (int i = 0; i < 300; ++i) {
      ASSERT_NEAR(random.GetNumber(), static_cast<double>(-3 + 14.0L * model.Unit()), 16 * eps)
          << algorithm << ' ' << i;
    }
    random.SetNormal(TypeParam(2.5), TypeParam(0.75));
    random.Initialize();
    for (int i = 0; i < 40000; ++i) {  // some 23 in the tail, 3 of them drawn anew
      const double expected = static_cast<double>(2.5L + 0.75L * model.Normal());
      ASSERT_NEAR(random.GetNumber(), expected, 256 * eps) << algorithm << ' ' << i;
    }
    random.SetExponential(TypeParam(0.3125));
    random.Initialize();
    for (int i = 0; i < 300; ++i) {
      const double expected = static_cast<double>(-model.Log(model.Unit()) / 0.3125L);
      ASSERT_NEAR(random.GetNumber(), expected, 64 * eps * (1 + expected)) << algorithm << ' ' << i;
    }
    model.algorithm = algorithm == 2 ? 2 : 0;
    std::int32_t numbers[40];
    random.GetArrayIntegerNumbers32(20, -5, 40, numbers);
    for (const std::int32_t number : numbers) ASSERT_EQ(number, 20 + model.Round(-25.0L * model.Unit()));
    for (int i = 0; i < 300; ++i) {
      ASSERT_EQ(random.GetIntegerNumber32(-5, 20), model.Round(-5.5L + 26.0L * model.Unit())) << algorithm;
    }
    model.algorithm = algorithm == 2 ? 2 : 1;
    for (int i = 0; i < 300; ++i) {
      ASSERT_EQ(random.GetIntegerNumber64(-5, 1000), -5 + model.Round(1005.0L * model.Unit())) << algorithm;
    }
    std::int64_t longNumbers[40];
    random.GetArrayIntegerNumbers64(-7, 90, 40, longNumbers);
    for (const std::int64_t number : longNumbers) ASSERT_EQ(number, -7 + model.Round(97.0L * model.Unit()));
  }
}

TYPED_TEST(RandomModel, SeedsSpreadOverAllWords) {
  const std::uint32_t primes[] = {3, 5, 7, 13, 17, 19, 23, 37, 47, 59, 61, 67, 71};
  CQXRandom<TypeParam> random;
  for (std::uint32_t i = 0; i < 26; ++i) {
    const std::uint32_t seed = i < 13 ? i : 0xF0000000 + 977 * i;
    std::array<std::uint32_t, 4> w;
    std::array<std::uint64_t, 4> s;
    random.SetXorshift32Seed(seed);
    random.GetXorshift32Seeds(w[0], w[1], w[2], w[3]);
    const std::uint32_t x = seed * 0xB11924E1u * primes[seed % 13];
    EXPECT_EQ(w, (std::array<std::uint32_t, 4>{x, (x << 5) ^ 123456789, (x << 7) ^ 362436069, (x >> 15) ^ 521288629}));
    const std::uint64_t longSeed = std::uint64_t{seed} << 20 | seed;
    random.SetXorshift64Seed(longSeed);
    random.GetXorshift64Seeds(s[0], s[1], s[2], s[3]);
    const std::uint64_t y = longSeed * 0xB11924E1u * primes[longSeed % 13];
    EXPECT_EQ(s, (std::array<std::uint64_t, 4>{y, (y << 13) ^ 0x0139408DCBBF7A44, (y << 21) ^ 0x0139408DCBBF7A44,
                                               (y << 9) ^ 0x07F4809ED9054ADF}));
    EXPECT_EQ(random.GetXorshift64Seed(), s[3]);
  }
}

TYPED_TEST(RandomModel, TheClockSeedsWhatTheAlgorithmDrawsFrom) {
  for (std::int32_t algorithm = 0; algorithm < 3; ++algorithm) {
    for (const bool withTable : {false, true}) {
      std::time_t before, after;
      Model<TypeParam> model;
      CQXRandom<TypeParam> random;
      const std::uint64_t seed = 0x123456789ABCDEF;
      do {  // once more where the second changes
        model = Model<TypeParam>();
        this->Prepare(algorithm, model, random);
        before = std::time(nullptr);
        withTable ? random.SetRandomSWBSeeds(seed) : random.SetRandomSeeds(seed);
        after = std::time(nullptr);
      } while (before != after);
      const std::uint64_t shift = seed - static_cast<std::uint64_t>(before);
      if (algorithm == 0) {
        const std::uint32_t x = static_cast<std::uint32_t>(shift) + model.x32[3];
        const std::uint32_t w1 = x ^ (x << 5), w2 = (x >> 7) ^ (w1 << 13);
        model.x32 = {x, w1, w2, (w1 << 11) ^ (w2 >> 3)};
      } else if (algorithm == 1) {
        const std::uint64_t x = shift + model.x64[3], s1 = x ^ (x << 11), s2 = (x >> 13) ^ (s1 << 27);
        model.x64 = {x, s1, s2, (s1 << 21) ^ (s2 >> 7)};
      }
      if (withTable || algorithm == 2) {
        model.algorithm = 0;
        for (TypeParam& lag : model.lags) lag = model.Unit();
      }
      std::array<std::uint32_t, 4> w;
      std::array<std::uint64_t, 4> s;
      std::array<TypeParam, 32> lags;
      random.GetXorshift32Seeds(w[0], w[1], w[2], w[3]);
      random.GetXorshift64Seeds(s[0], s[1], s[2], s[3]);
      random.GetSWBSeeds(lags.data());
      EXPECT_EQ(w, model.x32) << algorithm;
      EXPECT_EQ(s, model.x64) << algorithm;
      EXPECT_EQ(lags, model.lags) << algorithm;
    }
  }
}

TYPED_TEST(RandomModel, EverySetterEndsReadiness) {
  CQXRandom<TypeParam> random;
  const auto expectIdle = [&](std::int32_t algorithm, std::int32_t distribution) {
    TypeParam untouched = 5;
    random.GetArrayNumbers(1, &untouched);
    EXPECT_EQ(untouched, 5);
    EXPECT_EQ(random.GetNumber(), 0);
    EXPECT_EQ(random.GetBoolean(), 1);
    EXPECT_EQ(random.GetAlgorithm(), algorithm);
    EXPECT_EQ(random.GetDistribution(), distribution);
    random.Initialize();
    EXPECT_NE(random.GetNumber(), 0);
  };
  expectIdle(0, 0);
  random.SetNormal(9, 1);
  expectIdle(0, 1);
  EXPECT_EQ(random.GetBoolean(), 0);
  random.SetExponential(3);
  expectIdle(0, 2);
  random.SetAlgorithm(7);
  expectIdle(7, 2);
  random.SetUniform(1, 2);
  expectIdle(7, 0);
  EXPECT_EQ(random.GetBoolean(), 0);
  random.SetUniform(0, 0);
  random.Initialize();
  EXPECT_EQ(random.GetBoolean(), 1);
}

TYPED_TEST(RandomModel, ATableWithoutChanceEndsEveryNormalNumber) {
  CQXRandom<TypeParam> random;
  std::vector<TypeParam> lags(32);
  for (std::size_t i = 0; i < 32; ++i) lags[i] = static_cast<TypeParam>(i % 2);
  random.SetAlgorithm(2);
  random.SetNormal(0, 1);
  random.SetSWBSeeds(lags.data());
  random.Initialize();
  for (int i = 0; i < 300; ++i) EXPECT_LT(std::abs(random.GetNumber()), 20);
}

}  // namespace
