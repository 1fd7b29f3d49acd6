#include <qx/arrays/random.h>
#include <qx/arrays/statistics.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <vector>

#include "tests/typed_test.h"

namespace {

template <typename T>
class Random : public ::testing::Test {
 protected:
  static CQXRandom<T> Make(std::int32_t algorithm, std::int32_t distribution) {
    CQXRandom<T> random;
    random.SetXorshift32Seed(20240607);
    std::vector<T> lags(32);
    random.Initialize();
    random.GetArrayNumbers(32, lags.data());
    random.SetSWBSeeds(lags.data());
    random.SetAlgorithm(algorithm);
    if (distribution == 1) random.SetNormal(0, 1);
    if (distribution == 2) random.SetExponential(2);
    random.Initialize();
    return random;
  }
};
TYPED_TEST_SUITE(Random, FloatTypes);

TYPED_TEST(Random, WordsAreThoseOfTheRecurrences) {
  CQXRandom<TypeParam> random;
  random.SetUniform(1, 2);
  random.Initialize();
  const auto expectWords = [&](const std::vector<std::uint32_t>& words) {
    for (const std::uint32_t word : words) {
      EXPECT_EQ(random.GetNumber(), static_cast<TypeParam>(static_cast<TypeParam>(word) / 4294967295.0 + 1));
      EXPECT_EQ(random.GetXorshift32Seed(), word);
    }
  };
  expectWords({0xDCA345EA, 0x1B5116E6, 0x951049AA, 0xD88D00B0});
  random.SetXorshift32Seed(1);
  expectWords({0x8734FC59, 0x491B6463});

  random.SetAlgorithm(1);
  random.SetUniform(2, 6);
  random.Initialize();
  const auto expectLongWords = [&](const std::vector<std::uint64_t>& words) {
    for (const std::uint64_t word : words) {
      EXPECT_EQ(random.GetNumber(), static_cast<TypeParam>(word) * 4 * TypeParam(5.421010862427522e-20) + 2);
      EXPECT_EQ(random.GetXorshift64Seed(), word);
    }
  };
  expectLongWords({0xB9F54C29FCA77227, 0x2F3D85DA560D9BFE});
  random.SetXorshift64Seed(1);
  expectLongWords({0x07F4EBFFFABA6BB0, 0x23407372E0B13A1D});
}

TYPED_TEST(Random, SubtractWithBorrowFollowsItsTable) {
  CQXRandom<TypeParam> random;
  std::vector<TypeParam> lags(32);
  for (std::size_t i = 0; i < 32; ++i) lags[i] = static_cast<TypeParam>(i * 7 % 32) / 32;
  random.SetSWBSeeds(lags.data());
  random.SetAlgorithm(2);
  random.Initialize();
  TypeParam borrow = 0;
  const TypeParam unit = std::is_same_v<TypeParam, float> ? 0 : static_cast<TypeParam>(std::ldexp(1.0, -153));
  std::int32_t index = 0;
  const auto expectDraw = [&](std::size_t slot) {
    TypeParam& lag = lags[slot];
    lag = lags[(slot + 20) % 32] - lags[(slot + 5) % 32] - borrow;
    borrow = lag <= 0 ? unit : TypeParam(0);
    if (lag <= 0) lag += 1;
    EXPECT_EQ(random.GetNumber(), lag);
  };
  for (std::size_t draw = 0; draw < 100; ++draw) expectDraw(draw % 32);
  const std::int32_t states[][3] = {
      {33, 1, 2}, {31, 31, 0}, {-1, -1, 0}, {-37, -5, -4}};  // given, stored, after a draw
  for (const auto& state : states) {
    random.SetSWBState(state[0], TypeParam(0.25));
    random.GetSWBState(index, borrow);
    EXPECT_EQ(index, state[1]);
    EXPECT_EQ(borrow, TypeParam(0.25));
    expectDraw(static_cast<std::size_t>((index + 32) % 32));
    random.GetSWBState(index, borrow);
    EXPECT_EQ(index, state[2]);
  }
}

TYPED_TEST(Random, CopiesContinueTheStream) {
  for (std::int32_t pair = 0; pair < 9; ++pair) {
    CQXRandom<TypeParam> one = this->Make(pair / 3, pair % 3), copy = one;
    std::vector<TypeParam> array(500, -1);
    copy.GetArrayNumbers(-1, nullptr);
    copy.GetArrayNumbers(499, array.data());
    EXPECT_EQ(array.back(), -1);
    array.pop_back();
    for (const TypeParam number : array) EXPECT_EQ(one.GetNumber(), number);
  }
}

TYPED_TEST(Random, DistributionsFitInMomentsTailsAndShape) {
  const std::int32_t n = 200000;
  std::vector<TypeParam> numbers(static_cast<std::size_t>(n));
  const double root = std::sqrt(double{n});
  for (std::int32_t algorithm = 0; algorithm < 3; ++algorithm) {
    CQXStatistics<TypeParam> statistics(n, numbers.data());
    this->Make(algorithm, 0).GetArrayNumbers(n, numbers.data());
    EXPECT_LE(statistics.TestUniformity(0, 1), QX_TEST_DOUBTFUL) << algorithm;
    EXPECT_EQ(statistics.PermutationTest(4, QX_SIGNIFICANCE_5), 1) << algorithm;

    this->Make(algorithm, 1).GetArrayNumbers(n, numbers.data());
    EXPECT_NEAR(statistics.Mean(), 0, 4 / root);
    EXPECT_NEAR(statistics.Variance(), 1, 4 * std::sqrt(2.0) / root);
    double fourth = 0;
    std::int32_t beyondTail[2] = {0, 0};
    for (const TypeParam x : numbers) {
      fourth += std::pow(static_cast<double>(x), 4);
      if (std::abs(x) > TypeParam(3.442619855899)) ++beyondTail[x > 0];
    }
    EXPECT_NEAR(fourth / n, 3, 4 * std::sqrt(96.0) / root);
    const double tail = n * 0.5 * std::erfc(3.442619855899 / std::sqrt(2.0));  // 57.6 numbers on either side
    for (const std::int32_t count : beyondTail) EXPECT_NEAR(count, tail, 4 * std::sqrt(tail));
    // Through the normal distribution function the numbers are uniform.
    for (TypeParam& x : numbers) x = static_cast<TypeParam>(0.5 * std::erfc(-static_cast<double>(x) / std::sqrt(2.0)));
    EXPECT_EQ(statistics.TestEquidistribution(0, 1, QX_SIGNIFICANCE_5), 1) << algorithm;

    this->Make(algorithm, 2).GetArrayNumbers(n, numbers.data());
    EXPECT_NEAR(statistics.Mean(), 0.5, 2 / root);
    EXPECT_LE(*std::max_element(numbers.begin(), numbers.end()), -std::log(TypeParam(1e-9)) / 2);
    for (TypeParam& x : numbers) x = std::exp(-2 * x);
    EXPECT_EQ(statistics.TestEquidistribution(0, 1, QX_SIGNIFICANCE_5), 1) << algorithm;
  }
}

TYPED_TEST(Random, WholeNumbersKeepTheirEnds) {
  constexpr std::int32_t n = 60000;
  std::vector<std::int32_t> numbers(n);
  std::vector<std::int64_t> longNumbers(n);
  for (std::int32_t algorithm = 0; algorithm < 3; ++algorithm) {
    CQXRandom<TypeParam> random = this->Make(algorithm, 1);
    std::map<std::int64_t, double> single, singleLong, array, arrayLong;
    random.GetArrayIntegerNumbers32(2, -3, n, numbers.data());
    random.GetArrayIntegerNumbers64(-3, 2, n, longNumbers.data());
    for (std::size_t i = 0; i < n; ++i) {
      ++single[random.GetIntegerNumber32(-3, 2)];
      ++singleLong[random.GetIntegerNumber64(-3, 2)];
      ++array[numbers[i]];
      ++arrayLong[longNumbers[i]];
    }
    for (std::int64_t value = -3; value <= 2; ++value) {
      const double half = value == -3 || value == 2 ? 0.5 : 1;  // of all forms but the first
      EXPECT_NEAR(single[value], n / 6.0, 400) << value;
      for (auto* counts : {&singleLong, &array, &arrayLong}) EXPECT_NEAR((*counts)[value], half * n / 5, 450) << value;
    }
    EXPECT_EQ(single.size() + singleLong.size() + array.size() + arrayLong.size(), 24u);
  }
  // The extreme words step over the ends.
  CQXRandom<TypeParam> random;
  random.SetXorshift32Seeds(0, 0, 0, 0);
  EXPECT_EQ(random.GetIntegerNumber32(0, 9), -1);
  EXPECT_EQ(random.GetIntegerNumber32(1, 9), 1);
  const std::int32_t lowest = std::numeric_limits<std::int32_t>::min();
  EXPECT_EQ(random.GetIntegerNumber32(lowest, 9), lowest);
  random.SetXorshift32Seeds(0, 0, 0, 0xFFFFE000);  // w3 ^ (w3 >> 19) is all ones
  EXPECT_EQ(random.GetIntegerNumber32(0, 9), 10);
}

TYPED_TEST(Random, WholeNumbersSpanTheirWholeType) {
  using Int32 = std::numeric_limits<std::int32_t>;
  using Int64 = std::numeric_limits<std::int64_t>;
  const auto expectSpread = [](double limit, auto draw) {
    double sum = 0;
    for (int i = 0; i < 4000; ++i) sum += static_cast<double>(draw()) / limit;
    EXPECT_NEAR(sum / 4000, 0, 0.04);
  };
  for (std::int32_t algorithm = 0; algorithm < 3; ++algorithm) {
    CQXRandom<TypeParam> random = this->Make(algorithm, 0);
    std::int32_t number = 0;
    std::int64_t longNumber = 0;
    expectSpread(0x1p31, [&] { return random.GetIntegerNumber32(Int32::min(), Int32::max()); });
    expectSpread(0x1p63, [&] { return random.GetIntegerNumber64(Int64::min(), Int64::max()); });
    expectSpread(0x1p31, [&] {
      random.GetArrayIntegerNumbers32(Int32::min(), Int32::max(), 1, &number);
      return number;
    });
    expectSpread(0x1p63, [&] {
      random.GetArrayIntegerNumbers64(Int64::max(), Int64::min(), 1, &longNumber);
      return longNumber;
    });
  }
}

TYPED_TEST(Random, ForeignTablesEndEveryDraw) {
  using Limits = std::numeric_limits<TypeParam>;
  for (const TypeParam value : {Limits::quiet_NaN(), Limits::infinity(), Limits::max(), TypeParam(-3), TypeParam(0)}) {
    for (std::int32_t distribution = 0; distribution < 3; ++distribution) {
      CQXRandom<TypeParam> random = this->Make(2, distribution);
      std::vector<TypeParam> table(32, value), numbers(1000);
      for (std::size_t i = 0; i < 32; i += 3) table[i] = -value / 2;
      random.SetSWBSeeds(table.data());
      random.GetArrayNumbers(1000, numbers.data());
      random.GetIntegerNumber32(-9, 9);
      random.GetIntegerNumber64(-9, 9);
    }
  }
}

TYPED_TEST(Random, ReportsReadAsPromised) {
  CQXRandom<TypeParam> random;
  random.SetAlgorithm(1);
  random.SetUniform(0, 6);
  const TypeParam data[] = {1, 7, 4};
  testing::internal::CaptureStdout();
  random.TestFloatRandomArray(3, data, 2);
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "Element 7 with index 1 is out the given segment for uniform distribution\n"
            "Type of algorithm: Xorshift 64 bits.  Type of distribution: Uniform.\n"
            "Number of generated random values = 3\n"
            "First 2 values: 1 7 \n"
            "Theoretical values: mean = 3, standard deviation = 1.73205\n"
            "Statistical values: mean = 4, standard deviation = 3\n"
            "Difference in means = 1, relative difference dif/n = 0.333333\n"
            "Difference in SD = 1.26795, relative difference dif/n = 0.42265\n");
  random.SetAlgorithm(2);
  random.SetExponential(4);
  const std::int64_t whole[] = {-2, -2};
  testing::internal::CaptureStdout();
  random.TestIntegerRandomArray(-2, 8, 2, whole, 99);
  EXPECT_EQ(testing::internal::GetCapturedStdout().substr(0, 165),
            "Segment: left end = -2, right end = 8\n"
            "Type of algorithm: SWB.  Type of distribution: Exponential.\n"
            "Number of generated random values = 2\n"
            "First 99 values: -2 -2 \n"
            "Theor");
  testing::internal::CaptureStdout();
  for (const std::int32_t n : {1, 0, -5}) random.TestFloatRandomArray(n, data, 0);
  EXPECT_NE(testing::internal::GetCapturedStdout().find("nan"), std::string::npos);
}

}  // namespace
