#include <qx/arrays/random.h>
#include <qx/foundation/thread_executor.h>
#include <qx/wavelets/bivariate_shrinkage.h>
#include <qx/wavelets/channel.h>
#include <qx/wavelets/image_noise_reduction.h>
#include <qx/wavelets/pixel_form.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <cstdint>
#include <limits>
#include <stdexcept>
#include <vector>

#include "tests/typed_test.h"
#include <gtest/gtest.h>

namespace {

std::vector<float> NormalNumbers(std::size_t count, float deviation) {
  CQXRandom<float> random;
  random.SetAlgorithm(1);
  random.SetNormal(0, deviation);
  random.SetXorshift64Seed(5);
  random.Initialize();
  std::vector<float> numbers(count);
  for (float& number : numbers) number = random.GetNumber();
  return numbers;
}

/// A smooth picture with an edge, for pixels of any number of channels.
std::vector<float> Scene(std::int32_t width, std::int32_t height, std::int32_t channelsNb) {
  std::vector<float> scene;
  for (std::int32_t y = 0; y < height; ++y) {
    for (std::int32_t x = 0; x < width; ++x) {
      for (std::int32_t c = 0; c < channelsNb; ++c) {
        const double wave = std::sin(0.05 * x + c) * std::cos(0.07 * y);
        scene.push_back(static_cast<float>(120 + 40 * wave + (x + y > width ? 30 : 0)));
      }
    }
  }
  return scene;
}

double MeanSquare(const std::vector<float>& a, const std::vector<float>& b) {
  double sum = 0;
  for (std::size_t i = 0; i < a.size(); ++i) sum += (double{a[i]} - b[i]) * (double{a[i]} - b[i]);
  return sum / static_cast<double>(a.size());
}

template <typename T>
class PixelForm : public testing::Test {};
TYPED_TEST_SUITE(PixelForm, FloatTypes);

TYPED_TEST(PixelForm, OpponentColoursAreOrthonormalAndLeaveOtherChannelsAlone) {
  using T = TypeParam;
  const T eps = std::numeric_limits<T>::epsilon();
  std::array<T, 12> pixels = {255, 0, 0, 0, 255, 0, 10, 20, 250, 7, 7, 7};
  const std::array<T, 12> original = pixels;
  qxToOpponentColours(4, 3, pixels.data());
  EXPECT_NEAR(pixels[6], T(280 / std::sqrt(3.0)), 280 * eps);
  EXPECT_NEAR(pixels[7], T(-240 / std::sqrt(2.0)), 240 * eps);
  EXPECT_NEAR(pixels[8], T(220 / std::sqrt(6.0)), 240 * eps);
  EXPECT_EQ(pixels[10], 0) << "gray has no colour differences";
  EXPECT_NEAR(pixels[11], 0, 10 * eps);
  qxFromOpponentColours(4, 3, pixels.data());
  for (std::size_t i = 0; i < pixels.size(); ++i) EXPECT_NEAR(pixels[i], original[i], 512 * eps);
  for (const std::int32_t channelsNb : {1, 2, 4}) {
    pixels = original;
    qxToOpponentColours(2, channelsNb, pixels.data());
    qxFromOpponentColours(1, channelsNb, pixels.data());
    EXPECT_EQ(pixels, original);
  }
}

TYPED_TEST(PixelForm, SaturatesAndRoundsToTheNearest) {
  using T = TypeParam;
  const T infinity = std::numeric_limits<T>::infinity(), none = std::numeric_limits<T>::quiet_NaN();
  const std::vector<T> samples = {-infinity, -1,  T(-0.4), T(0.49), T(0.5),   T(254.4),
                                  T(254.5),  256, 65534.5, 70000,   infinity, none};
  std::array<std::uint8_t, 12> bytes;
  std::array<std::uint16_t, 12> words;
  qxSaturate(samples.size(), samples.data(), bytes.data());
  qxSaturate(samples.size(), samples.data(), words.data());
  EXPECT_EQ(bytes, (std::array<std::uint8_t, 12>{0, 0, 0, 0, 1, 254, 255, 255, 255, 255, 255, 0}));
  EXPECT_EQ(words, (std::array<std::uint16_t, 12>{0, 0, 0, 0, 1, 254, 255, 256, 65535, 65535, 65535, 0}));
}

TYPED_TEST(PixelForm, WindowsAreMirroredAndCroppedBack) {
  using T = TypeParam;
  const std::vector<T> row = {1, 2, 3};
  std::vector<T> window(13);
  qxCopyMirroredWindow(3, 1, 1, row.data(), -5, 0, 13, 1, window.data());
  EXPECT_EQ(window, (std::vector<T>{2, 3, 3, 2, 1, 1, 2, 3, 3, 2, 1, 1, 2}));
  EXPECT_EQ(qxExtendedSize(5, 2, 3), 16);
  EXPECT_EQ(qxExtendedSize(8, 0, 3), 8);

  std::vector<T> picture(5 * 7 * 2), extended(16 * 16 * 2), cropped(picture.size());
  for (std::size_t i = 0; i < picture.size(); ++i) picture[i] = static_cast<T>(i);
  qxCopyMirroredWindow(5, 7, 2, picture.data(), -2, -2, 16, 16, extended.data());
  qxCopyMirroredWindow(16, 16, 2, extended.data(), 2, 2, 5, 7, cropped.data());
  EXPECT_EQ(cropped, picture);
  EXPECT_EQ(extended[1], picture[(1 * 5 + 1) * 2 + 1]) << "the corner is mirrored along both directions";
}

TEST(NoiseGain, AreTheEnergiesOfTheFilters) {
  for (const auto& [wavelet, gain] :
       {std::pair(QX_WAVELET_1_5, 1.0), {QX_WAVELET_2_6, 0.75}, {QX_WAVELET_3_1, 0.625}, {QX_WAVELET_4_4, 0.546875}}) {
    EXPECT_NEAR(qxFindNoiseGain(wavelet, 1, QX_SUBCHANNEL_HH), gain, 1e-12);
    // The mean square of the coefficients of white noise, away from the edges, is the variance of the band.
    constexpr std::int32_t size = 512, edge = 6;
    const std::vector<float> noise = NormalNumbers(size * size, 1);
    CQXChannel<float> channel(size, size, noise.data(), 0, 0);
    channel.SetTypeOfNormalization(QX_NORMALIZATION_2);
    const CQXWaveletFilter<float> filter(wavelet);
    channel.FWTInPlace(&filter, QX_CHANNEL_2D, 3);
    for (std::int32_t level = 1; level <= 3; ++level) {
      for (const std::int32_t band : {QX_SUBCHANNEL_HH, QX_SUBCHANNEL_LH, QX_SUBCHANNEL_HL}) {
        const CQXChannel<float>& coefficients = *channel.SubChannel(level, band);
        double sum = 0;
        std::int32_t count = 0;
        for (std::int32_t y = edge; y < coefficients.GetRowsNb() - edge; ++y) {
          for (std::int32_t x = edge; x < coefficients.GetColsNb() - edge; ++x, ++count) {
            sum += std::pow(double{coefficients(y, x)}, 2);
          }
        }
        EXPECT_NEAR(std::sqrt(sum / count) / qxFindNoiseGain(wavelet, level, band), 1, 0.06)
            << wavelet << ' ' << level << ' ' << band;
      }
    }
  }
}

template <typename T>
class BivariateShrinkage : public testing::Test {};
TYPED_TEST_SUITE(BivariateShrinkage, FloatTypes);

TYPED_TEST(BivariateShrinkage, IsTheFormulaCoefficientByCoefficient) {
  using T = TypeParam;
  constexpr T noise = 6;
  for (const auto& [width, height] : {std::pair(64, 48), {37, 21}, {9, 5}, {4, 4}}) {
    const std::vector<float> scene = Scene(width, height, 1), added = NormalNumbers(scene.size(), 6);
    std::vector<T> samples(scene.size());
    for (std::size_t i = 0; i < samples.size(); ++i) samples[i] = static_cast<T>(scene[i]) + static_cast<T>(added[i]);
    CQXChannel<T> tree(width, height, samples.data(), 0, 0);
    tree.SetTypeOfNormalization(QX_NORMALIZATION_2);
    const CQXWaveletFilter<T> filter(QX_WAVELET_2_6);
    tree.FWTInPlace(&filter, QX_CHANNEL_2D, 2);
    const CQXChannel<T> before = tree;
    ASSERT_EQ(qxShrinkBivariate(tree, noise), 1);
    for (std::int32_t level = 1; level <= 2; ++level) {
      for (const std::int32_t band : {QX_SUBCHANNEL_HH, QX_SUBCHANNEL_LH, QX_SUBCHANNEL_HL}) {
        const CQXChannel<T>&x = *before.SubChannel(level, band), &shrunk = *tree.SubChannel(level, band);
        const double gain = qxFindNoiseGain(QX_WAVELET_2_6, level, band),
                     parentGain = qxFindNoiseGain(QX_WAVELET_2_6, 2, band);
        const double v = gain * gain * noise * noise;
        for (std::int32_t r = 0; r < x.GetRowsNb(); ++r) {
          for (std::int32_t c = 0; c < x.GetColsNb(); ++c) {
            double energy = 0, parent = 0;
            std::int32_t count = 0;
            for (std::int32_t i = std::max(r - 2, 0); i <= std::min(r + 2, x.GetRowsNb() - 1); ++i) {
              for (std::int32_t k = std::max(c - 2, 0); k <= std::min(c + 2, x.GetColsNb() - 1); ++k, ++count) {
                energy += std::pow(double{x(i, k)}, 2);
              }
            }
            if (level == 1) {
              const CQXChannel<T>& above = *before.SubChannel(2, band);
              if (above.GetRowsNb() > 0 && above.GetColsNb() > 0) {
                parent = double{above(std::min(r / 2, above.GetRowsNb() - 1), std::min(c / 2, above.GetColsNb() - 1))} *
                         (gain / parentGain);
              }
            }
            const double signal = std::sqrt(std::max(0.0, energy / count - v));
            const double length = std::hypot(double{x(r, c)}, parent);
            const double factor = signal > 0 ? std::max(0.0, length - std::sqrt(3.0) * v / signal) / length : 0;
            EXPECT_NEAR(shrunk(r, c), x(r, c) * factor, 2e-3 * (1 + std::abs(x(r, c))))
                << width << ' ' << level << ' ' << band;
          }
        }
      }
    }
    EXPECT_EQ(tree.SubChannel(2, QX_SUBCHANNEL_LL)->RawChannelIsAlmostEqual(*before.SubChannel(2, QX_SUBCHANNEL_LL), 0),
              1);
  }
}

TEST(ImageNoiseReduction, TakesOutMostOfTheNoiseWhateverTheShapeAndTheExecutor) {
  for (const auto& [width, height, channelsNb] : {std::array{96, 64, 1}, {65, 33, 3}, {40, 50, 4}}) {
    const std::vector<float> scene = Scene(width, height, channelsNb), added = NormalNumbers(scene.size(), 12);
    std::vector<float> noisy = scene;
    for (std::size_t i = 0; i < noisy.size(); ++i) noisy[i] += added[i];
    qxNoiseReductionOptions options;
    options.shifts = 4;
    options.alphaChannel = channelsNb == 4 ? 3 : -1;
    std::array<double, 4> noise = {};
    options.planeNoise = noise.data();
    std::vector<float> cleaned = noisy, onThreads = noisy;
    std::int32_t last = 0;
    ASSERT_EQ(qxReduceImageNoise(width, height, channelsNb, cleaned.data(), options,
                                 [&](std::int32_t done, std::int32_t total) { last = total - done; }),
              1);
    EXPECT_EQ(last, 0);
    options.executor = qxThreadExecutor(3);
    ASSERT_EQ(qxReduceImageNoise(width, height, channelsNb, onThreads.data(), options), 1);
    EXPECT_EQ(cleaned, onThreads);
    for (std::size_t plane = 0; plane < static_cast<std::size_t>(std::min(channelsNb, 3)); ++plane)
      EXPECT_NEAR(noise[plane], 12, 1.5);
    if (channelsNb == 4) {
      for (std::size_t i = 3; i < scene.size(); i += 4) ASSERT_EQ(cleaned[i], noisy[i]) << "alpha";
    } else {
      EXPECT_LT(MeanSquare(cleaned, scene), 0.22 * MeanSquare(noisy, scene));
    }
  }
}

TEST(ImageNoiseReduction, LeavesThePictureAsItCameWhenItCannotOrNeedNotWork) {
  const std::vector<float> scene = Scene(20, 20, 3);
  std::vector<std::uint16_t> words(scene.begin(), scene.end());
  const std::vector<std::uint16_t> original = words;
  const auto reduce = [&](std::int32_t width, qxNoiseReductionOptions options, const qxProgress& progress = {}) {
    return qxReduceImageNoise(width, 20, 3, words.data(), options, progress);
  };
  qxNoiseReductionOptions options;
  std::int32_t calls = 0;
  EXPECT_EQ(reduce(20, options, [&](std::int32_t, std::int32_t) { return ++calls < 5; }), 0);
  EXPECT_EQ(calls, 5) << "cancelled work ends at once";
  EXPECT_EQ(reduce(0, options), 0);
  for (const std::int32_t depth : {0, 13}) {
    options.depth = depth;
    EXPECT_EQ(reduce(20, options), 0);
  }
  options.depth = 12;
  options.shifts = -1;
  EXPECT_EQ(reduce(20, options), 0);
  options.shifts = 0;
  options.depth = 3;
  const std::array<double, 3> none = {};
  options.noise = none.data();
  EXPECT_EQ(reduce(20, options), 1) << "nothing to take out";
  options.rule = QX_NOISE_REDUCTION_THRESHOLD;
  options.method = QX_DENOISING_GIVEN;
  options.thresholdIsAbsolute = true;
  options.threshold = 0;
  EXPECT_EQ(reduce(20, options), 1) << "a threshold of nothing";
  EXPECT_EQ(words, original);
}

TEST(ImageNoiseReduction, EstimatesNoiseBesideClippedSamples) {
  const std::vector<float> noise = NormalNumbers(128 * 128, 10);
  std::vector<std::uint8_t> bytes(noise.size());
  std::vector<float> samples(noise.size());
  for (std::size_t i = 0; i < noise.size(); ++i) samples[i] = noise[i] + (i % 128 < 80 ? -15.0f : 100.0f);
  qxSaturate(samples.size(), samples.data(), bytes.data());
  double estimate = 0;
  ASSERT_EQ(qxEstimateImageNoise(128, 128, 1, bytes.data(), {}, &estimate), 1);
  EXPECT_NEAR(estimate, 10, 0.8);
  qxNoiseReductionOptions options;
  options.lowest = 100;  // floats are clipped where the caller says so
  options.highest = 90;
  ASSERT_EQ(qxEstimateImageNoise(128, 128, 1, samples.data(), options, &estimate), 1);
  EXPECT_EQ(estimate, 0) << "no neighbourhood is left";
  const std::array<double, 3> known = {0, 0, 6};
  std::array<double, 3> planes = {};
  options.noise = known.data();
  ASSERT_EQ(qxEstimateImageNoise(16, 16, 3, samples.data(), options, planes.data()), 1);
  EXPECT_NEAR(planes[0], 6 / std::sqrt(3.0), 1e-12);
  EXPECT_NEAR(planes[1], 6 / std::sqrt(2.0), 1e-12);
  EXPECT_NEAR(planes[2], 6 / std::sqrt(6.0), 1e-12);
}

TEST(ThreadExecutor, RunsEveryPieceOnceAndHandsExceptionsOn) {
  for (const std::int32_t threadsNb : {0, 1, 4, 100}) {
    std::array<std::atomic<std::int32_t>, 37> runs = {};
    const qxExecutor executor = qxThreadExecutor(threadsNb);
    EXPECT_GE(executor.concurrency, 1);
    executor.Run(37, [&](std::int32_t index) { ++runs[static_cast<std::size_t>(index)]; });
    EXPECT_TRUE(std::all_of(runs.begin(), runs.end(), [](std::int32_t count) { return count == 1; }));
    EXPECT_THROW(executor.Run(5,
                              [](std::int32_t index) {
                                if (index == 3) throw std::runtime_error("piece");
                              }),
                 std::runtime_error);
  }
}

}  // namespace
