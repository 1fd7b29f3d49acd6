#include <qx/arrays/random.h>
#include <qx/wavelets/channel.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <vector>

#include "tests/wavelets/wavelet_test.h"

namespace {

constexpr qxWaveletDenoising MethodOf(std::int32_t code) { return static_cast<qxWaveletDenoising>(code); }

template <typename T>
class Denoising : public ::testing::Test {
 protected:
  static constexpr std::int32_t size = 64;
  const CQXWaveletFilter<T> m_filter{QX_WAVELET_2_2};

  /// Two crossing bars that go round the edges without a break, and noise of the given height on top.
  static CQXChannel<T> MakePicture(T noise) {
    CQXChannel<T> picture = MakeNoisyChannel<T>(size, size);
    for (std::int32_t r = 0; r < size; ++r) {
      for (std::int32_t c = 0; c < size; ++c) {
        picture(r, c) =
            picture(r, c) * noise + static_cast<T>((c > 13 && c < 40 ? 40 : 0) + (r > 20 && r < 50 ? 30 : 0));
      }
    }
    picture.SetTypeOfNormalization(QX_NORMALIZATION_2);
    return picture;
  }

  qxOwner<CQXChannel<T>> MakeTree(std::int32_t depth = 3) const {
    return MakePicture(10).FWT(&m_filter, QX_CHANNEL_2D, depth);
  }

  static double Error(const CQXChannel<T>& a, const CQXChannel<T>& b) {
    double sum = 0;
    for (std::int32_t i = 0; i < size * size; ++i) {
      const double difference = static_cast<double>(a.GetData()[i]) - static_cast<double>(b.GetData()[i]);
      sum += difference * difference;
    }
    return sum / (size * size);
  }

  /// Checks every coefficient of the high bands against the rule for its threshold.
  template <typename Rule>
  static void ExpectRule(const CQXChannel<T>& before, const CQXChannel<T>& after, Rule rule) {
    for (std::int32_t level = 1; level <= before.GetDepth(); ++level) {
      for (std::int32_t b = 1; b < 4; ++b) {
        const CQXChannel<T>&from = *before.SubChannel(level, b), &to = *after.SubChannel(level, b);
        for (std::int32_t i = 0; i < from.GetColsNb() * from.GetRowsNb(); ++i) {
          ASSERT_EQ(to.GetData()[i], rule(from.GetData()[i], level)) << "level " << level << " band " << b;
        }
      }
    }
    const std::int32_t depth = before.GetDepth();
    EXPECT_EQ(before.SubChannel(depth, 0)->RawChannelIsAlmostEqual(*after.SubChannel(depth, 0), 0), 1);
  }

  static T Shrunk(T x, T threshold, bool clearsAtThreshold, bool soft) {
    const T magnitude = std::abs(x);
    if (magnitude < threshold || (clearsAtThreshold && magnitude == threshold)) return 0;
    return !soft ? x : x < 0 ? x + threshold : x - threshold;
  }
};
TYPED_TEST_SUITE(Denoising, FloatTypes);

TYPED_TEST(Denoising, NoiseIsTheMedianOfTheFinestDiagonalBand) {
  const auto tree = this->MakeTree();
  const CQXChannel<TypeParam>& band = *(*tree)[QX_SUBCHANNEL_HH];
  std::vector<TypeParam> magnitudes(band.GetData(), band.GetData() + 32 * 32);
  for (TypeParam& x : magnitudes) x = std::abs(x);
  std::sort(magnitudes.begin(), magnitudes.end());
  const TypeParam median = TypeParam(0.5) * (magnitudes[511] + magnitudes[512]);
  EXPECT_EQ(tree->EstimateNoise(), median / TypeParam(0.6745));
  EXPECT_EQ((*tree)[1]->EstimateNoise(), 0);
}

TYPED_TEST(Denoising, NoiseOfTheSamplesLeavesClippedOnesOut) {
  const TypeParam infinity = std::numeric_limits<TypeParam>::infinity();
  // By hand: one place, 4 - 2 (1 + 2 + 3 + 4) + (5 + 6 + 7 + 8) = 10 with a centre of 1.
  const TypeParam samples[] = {5, 1, 6, 2, 1, 3, 7, 4, 8};
  const CQXChannel<TypeParam> small(3, 3, samples, 0, 0);
  EXPECT_EQ(small.EstimateNoiseOfSamples(-infinity, infinity), 10 / TypeParam(6 * 0.6745));
  for (const auto& [lowest, highest] : {std::pair(1, 9), std::pair(0, 8)}) {
    const TypeParam none =
        small.EstimateNoiseOfSamples(static_cast<TypeParam>(lowest), static_cast<TypeParam>(highest));
    EXPECT_NE(none, none);
  }
  CQXChannel<TypeParam> picture = this->MakePicture(10);
  const TypeParam noise = picture.EstimateNoiseOfSamples(-infinity, infinity);
  for (std::int32_t i = 0; i < this->size * 40; ++i) picture.GetData()[i] = 0;
  EXPECT_EQ(picture.EstimateNoiseOfSamples(-infinity, infinity), 0);
  EXPECT_NEAR(picture.EstimateNoiseOfSamples(0, infinity), noise, 0.2 * static_cast<double>(noise));

  constexpr double gains[] = {1, 0.75, 0.625, 0.546875};
  for (std::int32_t code = 0; code < waveletsCount; ++code) {
    const CQXWaveletFilter<TypeParam> filter(WaveletOf(code));
    const double bound = 8 * static_cast<double>(std::numeric_limits<TypeParam>::epsilon()), gain = gains[code / 3];
    EXPECT_NEAR(qxDiagonalNoiseGain(filter, QX_CHANNEL_2D, QX_NORMALIZATION_2), gain, bound) << code;
    EXPECT_NEAR(qxDiagonalNoiseGain(filter, QX_CHANNEL_ROWS, QX_NORMALIZATION_2), std::sqrt(gain), bound) << code;
  }
}

TYPED_TEST(Denoising, KnownNoiseStandsInTheEstimatesPlace) {
  const auto tree = this->MakeTree();
  const TypeParam sigma = tree->EstimateNoise(), noise = sigma / TypeParam(0.75);
  CQXChannel<TypeParam> picture = this->MakePicture(10);
  for (std::int32_t code = 0; code <= 5; ++code) {
    TypeParam a = code == 0 ? TypeParam(5) : TypeParam(0), b = a, c = a, ra = 1, rb = 1, rc = 1;
    const auto estimated = tree->CleanBelowThreshold(a, ra, 1, MethodOf(code));
    const auto known = tree->CleanBelowThreshold(b, rb, 1, MethodOf(code), noise);
    EXPECT_EQ(qxAreChannelsAlmostEqual(*estimated, *known, TypeParam(1e-3)), 1) << code;
    EXPECT_NEAR(a, b, 1e-4 * static_cast<double>(a)) << code;
    const auto twice = tree->CleanBelowThreshold(c, rc, 1, MethodOf(code), 2 * noise);
    EXPECT_EQ(c > TypeParam(1.9) * b, code != 0) << code;
    a = b = code == 0 ? TypeParam(5) : TypeParam(0);
    const auto spun = picture.CleanWithCircularShifts(a, ra, 0, &this->m_filter, 3, 1, MethodOf(code), noise);
    EXPECT_EQ(spun->RawChannelIsAlmostEqual(*known->IFWT(), 0), 1) << code;
  }
}

TYPED_TEST(Denoising, ThresholdsAreEstimatedByHand) {
  // HH holds +-2, so sigma is 2 / 0.6745; the other bands have the variances 16 v and, without signal, v / 2.
  CQXChannel<TypeParam> tree(64, 64, 0, 0);
  tree.CreateOneLevelSubChannels(&this->m_filter, QX_CHANNEL_2D, QX_NORMALIZATION_2);
  const double sigma = 2 / 0.6745, v = sigma * sigma;
  const double magnitudes[2][4] = {{0, 2, 4 * sigma, sigma / 2}, {0, 3 * sigma, 2 * sigma, 5 * sigma}};
  tree[0]->CreateOneLevelSubChannels(&this->m_filter, QX_CHANNEL_2D, QX_NORMALIZATION_2);
  double sums[2] = {};
  for (std::int32_t level = 0; level < 2; ++level) {
    const std::int32_t count = level == 0 ? 1024 : 256;
    for (std::int32_t b = 1; b < 4; ++b) {
      const double x = magnitudes[level][b], signal = x * x * count / (count - 1) - v;
      for (std::int32_t i = 0; i < count; ++i) {
        tree.SubChannel(level + 1, b)->GetData()[i] = static_cast<TypeParam>(i % 2 != 0 ? x : -x);
      }
      sums[level] += signal >= 1e-6 ? v / std::sqrt(signal) : 1000000;
    }
  }
  TypeParam threshold = 7, ratio = 7;
  tree.EstimateThreshold(threshold, ratio);
  EXPECT_NEAR(threshold, sums[0] / 3, 1e-6 * sums[0]);
  EXPECT_NEAR(ratio, sums[1] / sums[0], 1e-5 * sums[1] / sums[0]);
  tree.DestroyLowestSubChannel();
  tree.EstimateThreshold(threshold, ratio);
  EXPECT_EQ(ratio, 0);
  tree[1]->EstimateThreshold(threshold, ratio);
  EXPECT_EQ(threshold, 0);
}

TYPED_TEST(Denoising, GivenAndUniversalThresholdsFollowTheirLevels) {
  const auto tree = this->MakeTree();
  const double sigma = static_cast<double>(tree->EstimateNoise());
  const double universal = sigma * std::sqrt(2 * std::log(64.0 * 64.0));
  const struct {
    std::int32_t method;
    double first, ratio;
  } cases[] = {{0, 5, 0.5}, {1, universal, 1}, {2, universal / 2, 1.4142135623730951}};
  for (const auto& c : cases) {
    for (const std::int32_t soft : {0, 1}) {
      TypeParam threshold = 5, ratio = TypeParam(0.5);
      const auto clean = tree->CleanBelowThreshold(threshold, ratio, soft, MethodOf(c.method));
      EXPECT_NEAR(static_cast<double>(threshold), c.first, 1e-5 * c.first);
      EXPECT_NEAR(static_cast<double>(ratio), c.ratio, 1e-6);
      TypeParam perLevel[4] = {0, threshold, 0, 0};
      const TypeParam step = c.method == 0 ? TypeParam(0.5) : static_cast<TypeParam>(c.ratio);
      for (std::int32_t level = 2; level <= 3; ++level) perLevel[level] = perLevel[level - 1] * step;
      this->ExpectRule(*tree, *clean, [&](TypeParam x, std::int32_t level) {
        return this->Shrunk(x, perLevel[level], true, soft != 0);
      });
    }
  }
}

TYPED_TEST(Denoising, DirectCleaningTakesTheRatioOnceAndKeepsTheThresholdItself) {
  const auto tree = this->MakeTree();
  const TypeParam exact = std::abs((*(*tree)[1])(3, 3));
  for (const std::int32_t soft : {0, 1}) {
    const auto clean = tree->CleanDirectly(exact, TypeParam(0.5), soft);
    this->ExpectRule(*tree, *clean, [&](TypeParam x, std::int32_t level) {
      return this->Shrunk(x, level == 1 ? exact : exact * TypeParam(0.5), false, soft != 0);
    });
  }
  EXPECT_NE((*(*tree->CleanDirectly(exact, 1, 0))[1])(3, 3), 0);
}

TYPED_TEST(Denoising, VarianceRulesSetOneThresholdABand) {
  const auto tree = this->MakeTree();
  const double v = std::pow(static_cast<double>(tree->EstimateNoise()), 2);
  for (std::int32_t method = 3; method <= 4; ++method) {
    TypeParam threshold = 0, ratio = 0;
    const auto clean = tree->CleanBelowThreshold(threshold, ratio, 1, MethodOf(method));
    double sum = 0, last = 0;
    for (std::int32_t level = 1; level <= 3; ++level) {
      for (std::int32_t b = 1; b < 4; ++b) {
        const CQXChannel<TypeParam>&from = *tree->SubChannel(level, b), &to = *clean->SubChannel(level, b);
        const std::int32_t count = from.GetColsNb() * from.GetRowsNb();
        double squares = 0, largest = 0;
        for (std::int32_t i = 0; i < count; ++i) {
          const double x = static_cast<double>(from.GetData()[i]);
          squares += x * x;
          largest = std::max(largest, std::abs(x));
        }
        const double variance = squares / (count - 1) - (method == 3 ? 0 : v);
        const double t = variance > 1e-6 ? std::sqrt(std::log(count / 3.0)) * v / std::sqrt(variance) : largest;
        if (level == 1) sum += t / 3;
        if (level == 2) last = t;
        for (std::int32_t i = 0; i < count; ++i) {
          const double x = static_cast<double>(from.GetData()[i]);
          const double expected = std::abs(x) <= t ? 0 : x - std::copysign(t, x);
          ASSERT_NEAR(static_cast<double>(to.GetData()[i]), expected, 1e-3) << method << " " << level << " " << b;
        }
      }
    }
    EXPECT_NEAR(static_cast<double>(threshold), sum, 1e-4 * sum);
    EXPECT_NEAR(static_cast<double>(ratio), last / sum, 1e-3);
  }
}

TYPED_TEST(Denoising, MaskLooksUpLeftRightAndLowerRight) {
  constexpr std::int32_t columns = 4, rows = 3;
  const CQXChannel<TypeParam> channel;
  for (std::int32_t index = 0; index < columns * rows; ++index) {
    for (std::int32_t other = 0; other < columns * rows; ++other) {
      TypeParam data[columns * rows] = {};
      data[other] = -1;
      const std::int32_t c = index % columns, d = other - index;
      const bool seen = d == -columns || (d == -1 && c > 0) || (d == 1 && c + 1 < columns) || d == columns + 1;
      const TypeParam expected = other == index ? TypeParam(0) : TypeParam(seen);  // the centre counts with its sign
      EXPECT_EQ(channel.GetAbsMaxInMask(data, index, columns, rows), expected) << index << " " << other;
    }
  }
}

TYPED_TEST(Denoising, MaskedRuleWorksInPlace) {
  const auto tree = this->MakeTree(1);
  const TypeParam v = tree->EstimateNoise() * tree->EstimateNoise();
  for (const std::int32_t soft : {0, 1}) {
    TypeParam threshold = 0, ratio = 0;
    const auto clean = tree->CleanBelowThreshold(threshold, ratio, soft, QX_DENOISING_BAND_SIGNAL_MASKED);
    for (std::int32_t b = 1; b < 4; ++b) {
      CQXChannel<TypeParam> band(*(*tree)[b]);
      const auto square = [](TypeParam sum, TypeParam x) { return sum + x * x; };
      const TypeParam signal = std::accumulate(band.GetData(), band.GetData() + 1024, TypeParam(0), square) / 1023 - v;
      // A band of noise alone takes its largest magnitude, which the hard rule keeps: it is not below itself.
      const auto larger = [](TypeParam m, TypeParam x) { return std::max(m, std::abs(x)); };
      const TypeParam t = signal >= TypeParam(1e-6)
                              ? std::sqrt(std::log(TypeParam(1024))) * v / std::sqrt(signal)
                              : std::accumulate(band.GetData(), band.GetData() + 1024, TypeParam(0), larger);
      std::int32_t same = 0;
      for (std::int32_t i = 0; i < 1024; ++i) {
        TypeParam& x = band.GetData()[i];
        const bool small = band.GetAbsMaxInMask(band.GetData(), i, 32, 32) < t;
        x = soft != 0 && std::abs(x) >= t ? x - std::copysign(t, x) : small ? TypeParam(0) : x;
        same += std::abs(x - (*clean)[b]->GetData()[i]) <= TypeParam(1e-3);
      }
      EXPECT_EQ(same, 1024) << "band " << b << " soft " << soft;
    }
  }
}

TYPED_TEST(Denoising, CircularShiftsAverageTheShiftedPasses) {
  const CQXChannel<TypeParam> clean = this->MakePicture(0), noisy = this->MakePicture(10);
  TypeParam threshold = 0, ratio = 0;
  const auto once = noisy.CleanWithCircularShifts(threshold, ratio, 0, &this->m_filter, 3, 1, MethodOf(3));
  TypeParam a = 0, b = 0;
  CQXChannel<TypeParam> copy(noisy);
  const auto plain = copy.FWT(&this->m_filter, QX_CHANNEL_2D, 3)->CleanBelowThreshold(a, b, 1, MethodOf(3))->IFWT();
  EXPECT_EQ(plain->RawChannelIsAlmostEqual(*once, 0), 1);
  EXPECT_EQ(threshold, a);
  threshold = ratio = 0;
  const auto spun = noisy.CleanWithCircularShifts(threshold, ratio, 8, &this->m_filter, 3, 1, MethodOf(3));
  EXPECT_LT(this->Error(*once, clean), 0.5 * this->Error(noisy, clean));
  EXPECT_LT(this->Error(*spun, clean), 0.95 * this->Error(*once, clean));
  // The schedule replayed: the generator's own start, rows before columns, turned round by copying.
  CQXRandom<TypeParam> random;
  random.SetUniform(0, 1);
  random.Initialize();
  CQXChannel<TypeParam> sum(*once);
  TypeParam thresholds = a, ratios = b;
  for (std::int32_t round = 1; round <= 8; ++round) {
    const std::int32_t down = random.GetIntegerNumber32(0, this->size / 4);
    const std::int32_t right = random.GetIntegerNumber32(0, this->size / 4);
    const auto turned = [&](const CQXChannel<TypeParam>& from, std::int32_t y, std::int32_t x) {
      CQXChannel<TypeParam> to(from);
      for (std::int32_t i = 0; i < this->size * this->size; ++i) {
        to((i / this->size + y) % this->size, (i + x) % this->size) = from.GetData()[i];
      }
      return to;
    };
    CQXChannel<TypeParam> shifted = turned(noisy, down, right);
    TypeParam t = 0, r = 0;
    const auto back = shifted.FWT(&this->m_filter, QX_CHANNEL_2D, 3)->CleanBelowThreshold(t, r, 1, MethodOf(3))->IFWT();
    const CQXChannel<TypeParam> placed = turned(*back, this->size - down, this->size - right);
    for (std::int32_t i = 0; i < this->size * this->size; ++i) sum.GetData()[i] += placed.GetData()[i];
    thresholds += t;
    ratios += r;
  }
  sum.EnhanceRawData(TypeParam(1) / 9);
  EXPECT_EQ(spun->RawChannelIsAlmostEqual(sum, 0), 1);
  EXPECT_EQ(threshold, thresholds * (TypeParam(1) / 9));
  EXPECT_EQ(ratio, ratios * (TypeParam(1) / 9));

  std::vector<std::int32_t> heard;
  const TypeParam kept = threshold;
  const auto stopAtThird = [&heard](std::int32_t done, std::int32_t total) {
    heard.push_back(10 * done + total);
    return done < 3;
  };
  EXPECT_EQ(noisy.CleanWithCircularShifts(threshold, ratio, 4, &this->m_filter, 3, 1, MethodOf(3), stopAtThird),
            nullptr);
  EXPECT_EQ(heard, (std::vector<std::int32_t>{15, 25, 35}));
  EXPECT_EQ(threshold, kept);
  // Sizes below the shifts' reach, and a threshold that lets all through: the rotation is undone.
  for (std::int32_t columns = 1; columns <= 9; ++columns) {
    CQXChannel<TypeParam> small = MakeNoisyChannel<TypeParam>(columns, 10 - columns);
    small.SetTypeOfNormalization(QX_NORMALIZATION_2);
    TypeParam none = 0, one = 1;
    const auto same = small.CleanWithCircularShifts(none, one, 5, &this->m_filter, 2, 0, MethodOf(0));
    EXPECT_EQ(same->RawChannelIsAlmostEqual(small, 50 * std::numeric_limits<TypeParam>::epsilon()), 1);
  }
}

TYPED_TEST(Denoising, BlocksWithoutSamplesAreLeftAlone) {
  for (const std::int32_t columns : {0, 5, -3}) {
    for (const std::int32_t rows : {0, 6, -2}) {
      if (columns > 0 && rows > 0) continue;
      CQXChannel<TypeParam> empty(columns, rows, 0, 0);
      empty.Initialize();
      TypeParam threshold = 2, ratio = 3;
      const auto same = empty.CleanWithCircularShifts(threshold, ratio, 3, &this->m_filter, 2, 1, MethodOf(5));
      EXPECT_EQ(same->RawChannelIsAlmostEqual(empty, 0), 1);
      EXPECT_EQ(ratio, 3);
      EXPECT_EQ(empty.GetAbsMaxInMask(empty.GetData(), 0, 0, rows), 0);
    }
  }
}

TYPED_TEST(Denoising, EnhancementFadesOutTowardsCoarseLevels) {
  const struct {
    TypeParam factor;
    TypeParam levels[3];
  } cases[] = {{TypeParam(1.5), {TypeParam(1.5), 1, 1}},
               {4, {4, 2, 1}},
               {16, {16, 8, 4}},
               {TypeParam(0.25), {TypeParam(0.25), TypeParam(0.5), 1}},
               {TypeParam(1.0000001), {1, 1, 1}},
               {1, {1, 1, 1}}};
  const auto tree = this->MakeTree();
  for (const auto& c : cases) {
    CQXChannel<TypeParam> enhanced(*tree), edited(*tree);
    enhanced.Enhance(c.factor);
    const TypeParam factors[] = {c.levels[0], c.levels[1], c.levels[2], 1};
    edited.EditByLevels(factors);
    EXPECT_EQ(qxAreChannelsAlmostEqual(enhanced, edited, 0), 1) << c.factor;
    this->ExpectRule(*tree, enhanced, [&](TypeParam x, std::int32_t level) { return x * c.levels[level - 1]; });
  }
  CQXChannel<TypeParam> same(*tree), low(*tree);
  low.EnhanceSubLevel(2, 1, 0);  // the tree that stands for the low band of level 1
  EXPECT_EQ((*low.SubChannel(3, 2))(1, 1), 2 * (*tree->SubChannel(3, 2))(1, 1));
  EXPECT_EQ(low[1]->RawChannelIsAlmostEqual(*(*tree)[1], 0), 1);
  low.EnhanceSubLevel(2, 3, 1);
  EXPECT_EQ((*low.SubChannel(3, 1))(1, 1), 4 * (*tree->SubChannel(3, 1))(1, 1));
  same.EnhanceHRLevel(2, 4);
  same.EnhanceHRLevel(2, 0);
  same.EnhanceSubLevel(2, 1, 4);
  same.EnhanceSubLevel(2, 1, -1);
  EXPECT_EQ(qxAreChannelsAlmostEqual(same, *tree, 0), 1);
}

TYPED_TEST(Denoising, BlendsMayWriteIntoAnOperand) {
  const auto a = this->MakeTree();
  CQXChannel<TypeParam> picture = this->MakePicture(3);
  const auto b = picture.FWT(&this->m_filter, QX_CHANNEL_2D, 3);
  const TypeParam weights[] = {0, 1, TypeParam(0.5), TypeParam(0.25)};
  const auto mix = a->MixByLevels(b.get(), weights, nullptr);
  EXPECT_EQ((*mix)[1]->RawChannelIsAlmostEqual(*(*a)[1], 0), 1);
  EXPECT_EQ(mix->SubChannel(2, 2)->RawChannelIsAlmostEqual(*b->SubChannel(2, 2), 0), 1);
  EXPECT_EQ((*mix->SubChannel(3, 0))(1, 1),
            (*a->SubChannel(3, 0))(1, 1) * TypeParam(0.75) + (*b->SubChannel(3, 0))(1, 1) * TypeParam(0.25));
  const auto sum = a->Combine(b.get(), 2, -1, nullptr);
  CQXChannel<TypeParam> left(*a), right(*b);
  EXPECT_EQ(left.Combine(b.get(), 2, -1, &left), nullptr);
  EXPECT_EQ(a->Combine(&right, 2, -1, &right), nullptr);
  EXPECT_EQ(qxAreChannelsAlmostEqual(left, *sum, 0), 1);
  EXPECT_EQ(qxAreChannelsAlmostEqual(right, *sum, 0), 1);
}

}  // namespace
