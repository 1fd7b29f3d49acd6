#include <qx/wavelets/wavelet_filter.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <vector>

#include "tests/wavelets/wavelet_test.h"

namespace {

template <typename T>
class WaveletFilter : public ::testing::Test {};
TYPED_TEST_SUITE(WaveletFilter, FloatTypes);

/// First and second digit of the name of a wavelet: vanishing moments of the analysis and of the synthesis wavelet.
struct Moments {
  std::int32_t analysis, synthesis;
};
Moments MomentsOf(std::int32_t code) {
  const std::int32_t family = code / 3 + 1;
  return {family, 2 * (code % 3) + (family % 2 != 0 ? 1 : 2)};
}

template <typename T>
std::vector<T> InverseOfUnitHighSample(const CQXWaveletFilter<T>& filter, std::int32_t size) {
  CQXChannel<T> tree(size, 2, 0, 0);
  tree.CreateOneLevelSubChannels(&filter, QX_CHANNEL_ROWS, QX_NORMALIZATION_NONE);
  (*tree[QX_SUBCHANNEL_HIGH])(0, size / 4) = 1;
  const auto raw = tree.IFWT();
  return {raw->GetData(), raw->GetData() + size};
}

TYPED_TEST(WaveletFilter, HaveTheVanishingMomentsOfTheirNames) {
  constexpr std::int32_t size = 64;
  const TypeParam bound = 64 * std::numeric_limits<TypeParam>::epsilon();
  for (std::int32_t code = 0; code < waveletsCount; ++code) {
    const CQXWaveletFilter<TypeParam> filter(WaveletOf(code));
    const auto [analysis, synthesis] = MomentsOf(code);
    // Polynomials below the first digit leave no high samples away from the ends; the next degree does.
    for (std::int32_t degree = 0; degree <= analysis; ++degree) {
      CQXChannel<TypeParam> signal(size, 2, 0, 0);
      signal.Initialize();
      for (std::int32_t i = 0; i < size; ++i) {
        signal(0, i) = static_cast<TypeParam>(std::pow((i - size / 2) / 16.0, degree));
      }
      const auto tree = signal.FWT(&filter, QX_CHANNEL_ROWS, 1);
      TypeParam largest = 0;
      for (std::int32_t i = 8; i < size / 2 - 8; ++i) {
        largest = std::max(largest, std::abs((*(*tree)[QX_SUBCHANNEL_HIGH])(0, i)));
      }
      EXPECT_EQ(largest <= bound, degree < analysis) << code << " degree " << degree;
    }
    // The synthesis wavelet has the moments of the second digit. In 3_3 the signs are turned: it has none.
    const std::vector<TypeParam> wavelet = InverseOfUnitHighSample(filter, size);
    for (std::int32_t degree = 0; degree <= synthesis; ++degree) {
      double moment = 0;
      for (std::int32_t i = 0; i < size; ++i) {
        moment += std::pow((i - size / 2) / 4.0, degree) * static_cast<double>(wavelet[static_cast<std::size_t>(i)]);
      }
      const bool vanishes = degree < synthesis && code != QX_WAVELET_3_3;
      EXPECT_EQ(std::abs(moment) <= 64 * static_cast<double>(bound), vanishes) << code << " degree " << degree;
    }
  }
}

/// The catalogue in decimals: arrays, reach and the bits of the norms of index 0.
struct Entry {
  std::vector<double> prime, dual, prime2;
  std::int32_t reach[4];
  std::uint64_t norms0[2];
  double lowNorm1, highNorm1;
};

const std::vector<Entry>& Catalogue() {
  constexpr std::uint64_t root = 0x3FF6A09E667F3BCC, minusHalfRoot = 0xBFE6A09E667F3BCC;
  constexpr std::uint64_t low3 = 0x4000F876CCDF6CD9, high3 = 0xBFDE2B7DDDFEFA65;
  constexpr std::uint64_t low4 = 0x4006A09E667F3BCC, high4 = 0x3FD6A09E667F3BCC;
  static const std::vector<Entry> catalogue = {
      {{0, 0.5}, {-1, 0}, {}, {0, 1, 0, 1}, {root, minusHalfRoot}, 1, -0.5},
      {{0, 0.0625, 0.5, -0.0625}, {-1, 0}, {}, {0, 1, -2, 3}, {root, minusHalfRoot}, 1, -0.5},
      {{0, -0.01171875, 0.0859375, 0.5, -0.0859375, 0.01171875},
       {-1, 0},
       {},
       {0, 1, -4, 5},
       {root, minusHalfRoot},
       1,
       -0.5},
      {{0.25, 0.25}, {-0.5, -0.5}, {}, {0, 2, -2, 2}, {root, minusHalfRoot}, 1, -0.5},
      {{-0.046875, 0.296875, 0.296875, -0.046875}, {-0.5, -0.5}, {}, {0, 2, -4, 4}, {root, minusHalfRoot}, 1, -0.5},
      {{0.009765625, -0.076171875, 0.31640625, 0.31640625, -0.076171875, 0.009765625},
       {-0.5, -0.5},
       {},
       {0, 2, -6, 6},
       {root, minusHalfRoot},
       1,
       -0.5},
      {{-1.0 / 3, 0}, {-1.125, -0.375}, {0, 4.0 / 9}, {-1, 2, -1, 2}, {low3, high3}, 2, -1.0 / 12},
      {{-1.0 / 3, 0},
       {-1.125, -0.375},
       {0, 1.0 / 12, -4.0 / 9, -1.0 / 12},
       {-1, 2, -3, 4},
       {low3, high3},
       2,
       -1.0 / 12},
      {{-1.0 / 3, 0},
       {-1.125, -0.375},
       {0, -5.0 / 288, 17.0 / 144, 4.0 / 9, -17.0 / 144, 5.0 / 288},
       {-1, 2, -5, 6},
       {low3, high3},
       2,
       -1.0 / 12},
      {{-0.25, -0.25}, {-1, -1}, {0.1875, 0.1875}, {-1, 3, -3, 3}, {low4, high4}, 2, -0.25},
      {{-0.25, -0.25},
       {-1, -1},
       {-0.0390625, 0.2265625, 0.2265625, -0.0390625},
       {-1, 3, -5, 5},
       {low4, high4},
       2,
       -0.25},
      {{-0.25, -0.25},
       {-1, -1},
       {0.008544921875, -0.064697265625, 0.24365234375, 0.24365234375, -0.064697265625, 0.008544921875},
       {-1, 3, -7, 7},
       {low4, high4},
       2,
       -0.25}};
  return catalogue;
}

template <typename T>
void ExpectArray(const T* array, std::int32_t size, const std::vector<double>& expected, std::int32_t code) {
  ASSERT_EQ(size, static_cast<std::int32_t>(expected.size())) << code;
  ASSERT_EQ(array == nullptr, expected.empty()) << code;
  for (std::size_t i = 0; i < expected.size(); ++i)
    EXPECT_EQ(array[i], static_cast<T>(expected[i])) << code << ' ' << i;
}

TYPED_TEST(WaveletFilter, HoldTheCatalogue) {
  for (std::int32_t code = 0; code <= waveletsCount; ++code) {
    const CQXWaveletFilter<TypeParam> filter(WaveletOf(code));
    const Entry& entry = Catalogue()[static_cast<std::size_t>(code < waveletsCount ? code : QX_WAVELET_2_2)];
    EXPECT_EQ(filter.GetWavelet(), code);
    ExpectArray(filter.PrimeCoefficients(), filter.GetPrimeSize(), entry.prime, code);
    ExpectArray(filter.DualCoefficients(), filter.GetDualSize(), entry.dual, code);
    ExpectArray(filter.Prime2Coefficients(), filter.GetPrimeSize2(), entry.prime2, code);
    const std::int32_t reach[] = {filter.GetPrimeStartInd(), filter.GetPrimeEndInd(), filter.GetDualStartInd(),
                                  filter.GetDualEndInd()};
    for (std::size_t i = 0; i < 4; ++i) EXPECT_EQ(reach[i], entry.reach[i]) << code;
    EXPECT_EQ(filter.GetLowNorm(0), static_cast<TypeParam>(std::bit_cast<double>(entry.norms0[0])));
    EXPECT_EQ(filter.GetHighNorm(0), static_cast<TypeParam>(std::bit_cast<double>(entry.norms0[1])));
    EXPECT_EQ(filter.GetLowNorm(1), static_cast<TypeParam>(entry.lowNorm1));
    EXPECT_EQ(filter.GetHighNorm(5), static_cast<TypeParam>(entry.highNorm1));
    EXPECT_EQ(filter.GetLowShift() + filter.GetHighShift(), -2);
  }
  CQXWaveletFilter<TypeParam> empty;
  EXPECT_EQ(empty.GetWavelet(), -1);
  EXPECT_EQ(empty.PrimeCoefficients(), nullptr);
  EXPECT_EQ(empty.GetLowShift(), -1);
  empty.Set();  // -1 is none of the twelve
  ExpectArray(empty.PrimeCoefficients(), empty.GetPrimeSize(), Catalogue()[QX_WAVELET_2_2].prime, -1);
  EXPECT_EQ(empty.GetWavelet(), -1);
  empty.Set3_5();
  EXPECT_EQ(empty.GetPrimeSize2(), 6);
  empty.SetWavelet(QX_WAVELET_1_1);
  EXPECT_EQ(empty.GetWavelet(), QX_WAVELET_1_1);
  EXPECT_EQ(empty.GetPrimeSize2(), 6);
  empty.AllocateMemory();
  EXPECT_EQ(empty.Prime2Coefficients()[5], 0);
}

TYPED_TEST(WaveletFilter, CopiesKeepTheShapeAndAssignmentSharesTheArrays) {
  CQXWaveletFilter<TypeParam> first(QX_WAVELET_4_6);
  const TypeParam* superseded = first.PrimeCoefficients();
  const CQXWaveletFilter<TypeParam> copy(first);
  EXPECT_EQ(copy.GetPrimeSize2(), 6);
  EXPECT_EQ(copy.GetDualEndInd(), 7);
  EXPECT_EQ(copy.GetLowNorm(0), 0);
  for (std::int32_t i = 0; i < 6; ++i) EXPECT_EQ(copy.Prime2Coefficients()[i], 0);

  {
    const CQXWaveletFilter<TypeParam> other(QX_WAVELET_1_3);
    first = other;
    EXPECT_EQ(first.DualCoefficients(), other.DualCoefficients());
    EXPECT_EQ(first.GetHighNorm(1), other.GetHighNorm(1));
  }
  EXPECT_EQ(first.DualCoefficients()[0], -1);  // the shared arrays outlive the filter they came from
  EXPECT_EQ(superseded[0], TypeParam(-0.25));  // and the superseded ones their use
}

}  // namespace
