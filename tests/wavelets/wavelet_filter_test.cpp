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

TYPED_TEST(WaveletFilter, NormsAreTheExactNumbers) {
  const std::uint64_t bits[][2] = {{0x3FF6A09E667F3BCC, 0xBFE6A09E667F3BCC},
                                   {0x3FF6A09E667F3BCC, 0xBFE6A09E667F3BCC},
                                   {0x4000F876CCDF6CD9, 0xBFDE2B7DDDFEFA65},
                                   {0x4006A09E667F3BCC, 0x3FD6A09E667F3BCC}};
  const TypeParam norms1[][2] = {
      {1, TypeParam(-0.5)}, {1, TypeParam(-0.5)}, {2, TypeParam(-1) / 12}, {2, TypeParam(-0.25)}};
  for (std::int32_t code = 0; code < waveletsCount; ++code) {
    const CQXWaveletFilter<TypeParam> filter(WaveletOf(code));
    EXPECT_EQ(filter.GetLowNorm(0), static_cast<TypeParam>(std::bit_cast<double>(bits[code / 3][0])));
    EXPECT_EQ(filter.GetHighNorm(0), static_cast<TypeParam>(std::bit_cast<double>(bits[code / 3][1])));
    EXPECT_EQ(filter.GetLowNorm(1), norms1[code / 3][0]);
    EXPECT_EQ(filter.GetHighNorm(5), norms1[code / 3][1]);
  }
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
