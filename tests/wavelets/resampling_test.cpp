#include <qx/wavelets/channel.h>

#include <algorithm>
#include <cmath>

#include "tests/wavelets/wavelet_test.h"

namespace {

constexpr qxResampling methods[] = {QX_RESAMPLING_AREA, QX_RESAMPLING_CUBIC, QX_RESAMPLING_LANCZOS3};

template <typename T>
class Resampling : public ::testing::Test {
 protected:
  template <typename Value>
  static CQXChannel<T> Make(std::int32_t columns, std::int32_t rows, Value value) {
    CQXChannel<T> channel(columns, rows, 3, 5);
    channel.Initialize();
    for (std::int32_t r = 0; r < rows; ++r) {
      for (std::int32_t c = 0; c < columns; ++c) channel(r, c) = static_cast<T>(value(r, c));
    }
    return channel;
  }
};
TYPED_TEST_SUITE(Resampling, FloatTypes);

TYPED_TEST(Resampling, KeepsConstantsToTheBitAndMeansOfDivisors) {
  const auto constant = this->Make(13, 7, [](auto, auto) { return 0.1; });
  const auto noise = MakeNoisyChannel<TypeParam>(12, 8);
  for (const qxResampling method : methods) {
    for (const std::int32_t columns : {1, 2, 5, 13, 14, 40}) {
      const auto resized = constant.Resize(columns, 41 - columns, method);
      ASSERT_EQ(resized->GetColsNb() * 100 + resized->GetRowsNb(), columns * 100 + 41 - columns);
      EXPECT_EQ(resized->GetOffsetX(), 0);
      for (std::int32_t i = 0; i < columns * (41 - columns); ++i) ASSERT_EQ(resized->GetData()[i], TypeParam(0.1));
    }
  }
  // The area of one new sample covers whole old ones: their mean.
  const auto small = noise.Resize(4, 2, QX_RESAMPLING_AREA);
  for (std::int32_t r = 0; r < 2; ++r) {
    for (std::int32_t c = 0; c < 4; ++c) {
      double sum = 0;
      for (std::int32_t i = 0; i < 12; ++i) sum += static_cast<double>(noise(4 * r + i / 3, 3 * c + i % 3));
      EXPECT_NEAR((*small)(r, c), sum / 12, 8 * std::numeric_limits<TypeParam>::epsilon());
    }
  }
}

TYPED_TEST(Resampling, StandsWhereTheGridsSay) {
  // A slope tells the place of every sample; the symmetric kernels keep it away from the edges.
  const auto slope = this->Make(60, 40, [](auto r, auto c) { return 2.0 * c - 3.0 * r; });
  const auto check = [&](const auto& resampled, double stepX, double stepY, double bound) {
    const std::int32_t left = static_cast<std::int32_t>(14 / std::min(stepX, stepY));
    for (std::int32_t r = left; r < resampled->GetRowsNb() - left; ++r) {
      for (std::int32_t c = left; c < resampled->GetColsNb() - left; ++c) {
        const double expected = 2 * ((c + 0.5) * stepX - 0.5) - 3 * ((r + 0.5) * stepY - 0.5);
        ASSERT_NEAR((*resampled)(r, c), expected, bound) << r << ' ' << c;
      }
    }
  };
  const double eps = 2000 * static_cast<double>(std::numeric_limits<TypeParam>::epsilon());
  for (const qxResampling method : methods) {
    const double bound = method == QX_RESAMPLING_LANCZOS3 ? 0.2 : method == QX_RESAMPLING_CUBIC ? 0.02 : eps;
    check(slope.ScaleRawChannelTwiceDown(method), 2, 2, bound);
    check(slope.ScaleRawChannelTwiceUp(method), 0.5, 0.5, method == QX_RESAMPLING_CUBIC ? eps : bound);
    check(slope.Resize(120, 20, method), 0.5, 2, bound);
    check(slope.Scale(2, 0.5, method), 0.5, 2, bound);
  }
  // An odd size: the last new sample stands beyond the last old one.
  const auto odd = MakeNoisyChannel<TypeParam>(7, 5).ScaleRawChannelTwiceDown(QX_RESAMPLING_AREA);
  EXPECT_EQ(odd->GetColsNb(), 4);
  EXPECT_EQ((*odd)(2, 3), MakeNoisyChannel<TypeParam>(7, 5)(4, 6));
}

TYPED_TEST(Resampling, InterpolatesWithThePublishedKernels) {
  const auto impulse = this->Make(15, 1, [](auto, auto c) { return c == 7 ? 1 : 0; });
  const auto cubic = impulse.ScaleRawChannelTwiceUp(QX_RESAMPLING_CUBIC),
             lanczos = impulse.ScaleRawChannelTwiceUp(methods[2]);
  for (std::int32_t i = 8; i < 22; ++i) {
    const double x = std::abs(0.5 * i - 0.25 - 7), pi = std::acos(-1.0);
    const double keys = x < 1   ? 1.5 * x * x * x - 2.5 * x * x + 1
                        : x < 2 ? -0.5 * x * x * x + 2.5 * x * x - 4 * x + 2
                                : 0;
    EXPECT_NEAR((*cubic)(0, i), keys, 1e-6);
    const double sinc = x < 3 ? std::sin(pi * x) / (pi * x) * std::sin(pi * x / 3) / (pi * x / 3) : 0;
    EXPECT_NEAR((*lanczos)(0, i), sinc, 0.01);  // the six weights add up to 1 only nearly
  }
}

TYPED_TEST(Resampling, RefusesWhatHasNoSize) {
  const CQXWaveletFilter<TypeParam> filter(QX_WAVELET_2_2);
  const TypeParam infinity = std::numeric_limits<TypeParam>::infinity();
  CQXChannel<TypeParam> picture = MakeNoisyChannel<TypeParam>(8, 8);
  for (const double factor : {0.0, -1.0, std::nan(""), static_cast<double>(infinity), 1e300}) {
    EXPECT_EQ(picture.Scale(factor, 1, QX_RESAMPLING_CUBIC), nullptr) << factor;
    EXPECT_EQ(picture.Scale(1, factor, QX_RESAMPLING_CUBIC), nullptr) << factor;
  }
  EXPECT_EQ(picture.Scale(0.01, 0.01, QX_RESAMPLING_CUBIC)->GetColsNb(), 1);
  EXPECT_EQ(picture.Resize(0, 4, QX_RESAMPLING_AREA), nullptr);
  EXPECT_EQ(picture.Resize(4, -1, QX_RESAMPLING_AREA), nullptr);
  EXPECT_EQ(CQXChannel<TypeParam>().ScaleRawChannelTwiceUp(QX_RESAMPLING_AREA), nullptr);
  picture.FWTInPlace(&filter, QX_CHANNEL_2D, 1);
  EXPECT_EQ(picture.ScaleRawChannelTwiceDown(QX_RESAMPLING_AREA), nullptr);
}

}  // namespace
