#include <qx/wavelets/wavelet_decomposition.h>

#include <cmath>
#include <limits>
#include <utility>
#include <vector>

#include "tests/wavelets/wavelet_test.h"

namespace {

template <typename T>
class WaveletDecomposition : public ::testing::Test {
 protected:
  static constexpr std::int32_t width = 24, height = 20, planes = 3;
  static constexpr std::size_t samples = std::size_t{width} * height * planes;
  const std::vector<T> m_pixels = MakeNoise<T>(samples);

  CQXWaveletDecomposition<T> MakeImage(qxWaveletType wavelet = QX_WAVELET_2_6) const {
    CQXWaveletDecomposition<T> image(wavelet);
    image.SetImage(width, height, planes, m_pixels.data());
    image.SetTypeOfNormalization(QX_NORMALIZATION_2);
    return image;
  }

  void ExpectPixels(CQXWaveletDecomposition<T>& image) const {
    std::vector<T> pixels(samples);
    image.GetImageInPixelForm(pixels.data());
    for (std::size_t i = 0; i < samples; ++i) {
      ASSERT_NEAR(pixels[i], m_pixels[i], 50 * std::numeric_limits<T>::epsilon());
    }
    EXPECT_EQ(image.IsDecomposed(), 0);
  }
};
TYPED_TEST_SUITE(WaveletDecomposition, FloatTypes);

TYPED_TEST(WaveletDecomposition, PixelsAreInterleaved) {
  const TypeParam pixels[] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11};
  CQXWaveletDecomposition<TypeParam> image;
  image.SetImage(2, 2, 3, pixels);
  for (std::int32_t i = 0; i < 4; ++i) EXPECT_EQ(image[0]->GetData()[i], 3 * i);
  EXPECT_EQ((*image[2])(1, 0), 8);

  const std::uint8_t bytes[] = {0, 255, 7, 9};
  image.Set8BitsImage(2, 1, 2, bytes);
  EXPECT_EQ((*image[1])(0, 0), 255);
  std::uint8_t back[4];
  image.GetImageIn8BitsFormat(back);
  for (std::size_t i = 0; i < 4; ++i) EXPECT_EQ(back[i], bytes[i]);
}

TYPED_TEST(WaveletDecomposition, BytesWrapAndAreNeverUndefined) {
  const TypeParam infinity = std::numeric_limits<TypeParam>::infinity();
  const std::pair<TypeParam, int> cases[] = {{TypeParam(255.6), 0},

                                             {300, 44},
                                             {-1, 255},
                                             {TypeParam(-0.4), 0},

                                             {TypeParam(-2.5), 253},
                                             {infinity, 0},
                                             {-infinity, 0},
                                             {std::nanf(""), 0},
                                             {TypeParam(1e30), 0}};
  for (const auto& [value, byte] : cases) {
    CQXWaveletDecomposition<TypeParam> image;
    image.SetImage(1, 1, 1, &value);
    std::uint8_t result = 77;
    image.GetImageIn8BitsFormat(&result);
    EXPECT_EQ(result, byte) << value;
  }
}

TYPED_TEST(WaveletDecomposition, EveryDecompositionHasItsOwnFilter) {
  qxOwner<CQXWaveletDecomposition<TypeParam>> tree, copy, inverse;
  {
    CQXWaveletDecomposition<TypeParam> image = this->MakeImage();
    tree = image.FWT(2, QX_CHANNEL_2D);
    EXPECT_EQ(image.GetImageWidth(), 0);  // the planes were consumed
    copy = tree->CloneDecomposition();
    inverse = tree->IFWT();
  }
  EXPECT_EQ((*tree)[1]->SubChannel(2, 3)->GetFilter(), tree->GetFilter());
  EXPECT_NE(copy->GetFilter(), tree->GetFilter());
  EXPECT_EQ(tree->DecompositionsAreAlmostEqual(*copy, 0), 1);
  std::int32_t depth = 0;
  EXPECT_EQ(tree->HasCommonDepth(depth), 1);
  EXPECT_EQ(depth, 2);
  (*copy)[2]->DestroyLowestSubChannel();
  EXPECT_EQ(copy->HasCommonDepth(depth), 0);
  *copy = *tree;
  tree.reset();
  this->ExpectPixels(*inverse);
  this->ExpectPixels(*copy);
}

TYPED_TEST(WaveletDecomposition, ChangesOfFilterTypeAndNormalizationTakeTheImageBackFirst) {
  for (std::int32_t change = 0; change < 4; ++change) {
    CQXWaveletDecomposition<TypeParam> image = this->MakeImage();
    image.FWTInPlace(3, QX_CHANNEL_2D);
    if (change == 0) image.SetFilter(QX_WAVELET_4_4);
    if (change == 1) image.SetTypeOfNormalization(QX_NORMALIZATION_1);
    if (change == 2) image.SetDecompositionTypesToChannels(QX_CHANNEL_ROWS);
    if (change == 3) image.SetDecompositionTypes(QX_WAVELET_1_5, QX_CHANNEL_COLUMNS, QX_NORMALIZATION_NONE);
    EXPECT_EQ(image.IsDecomposed(), 0) << change;
    image.FWTInPlace(1, image[0]->GetType());
    EXPECT_EQ(image.IsDecomposed(), change == 0 || change == 1 ? 0 : 1);
    image.FWTInPlace(2, QX_CHANNEL_2D);
    this->ExpectPixels(image);
  }
  CQXWaveletDecomposition<TypeParam> image = this->MakeImage();
  // A tree from elsewhere is taken back with its own filter.
  const CQXWaveletFilter<TypeParam> foreign(QX_WAVELET_3_1);
  CQXChannel<TypeParam> plane = MakeNoisyChannel<TypeParam>(24, 20);
  const CQXChannel<TypeParam> before(plane);
  image.SetChannel(plane.FWT(&foreign, QX_CHANNEL_2D, 2), 1);
  EXPECT_EQ(image[1]->RawChannelIsAlmostEqual(before, 50 * std::numeric_limits<TypeParam>::epsilon()), 1);
  EXPECT_EQ(image[1]->GetFilter(), image.GetFilter());
  image.SetChannel(qxMakeOwner<CQXChannel<TypeParam>>(), 3);
}

TYPED_TEST(WaveletDecomposition, ChannelsMayBeChangedFromOutside) {
  CQXWaveletDecomposition<TypeParam> image = this->MakeImage();
  image[0]->FWTInPlace(image.GetFilter(), QX_CHANNEL_2D, 2);
  EXPECT_EQ(image.IsDecomposed(), 1);
  image[0]->SetTypeOfNormalization(QX_NORMALIZATION_NONE);  // the image's own counts on the way back
  this->ExpectPixels(image);

  // The new pixels may be those of an old plane.
  CQXWaveletDecomposition<TypeParam> gray;
  gray.SetImage(24, 20, 1, this->m_pixels.data());
  gray.SetImage(20, 24, 1, gray[0]->GetData());
  EXPECT_EQ(gray.GetImageWidth(), 20);
  EXPECT_EQ((*gray[0])(1, 0), this->m_pixels[20]);
}

TYPED_TEST(WaveletDecomposition, DepthsAndTypesMayDifferByChannel) {
  CQXWaveletDecomposition<TypeParam> image = this->MakeImage();
  const std::int32_t depths[] = {1, 0, 3};
  const qxChannelType types[] = {QX_CHANNEL_2D, QX_CHANNEL_ROWS, QX_CHANNEL_COLUMNS};
  const auto tree = image.FWT(depths, types);
  for (std::int32_t i = 0; i < 3; ++i) EXPECT_EQ((*tree)[i]->GetDepth(), depths[i]);
  this->ExpectPixels(*tree);

  for (const qxChannelType type : {QX_CHANNEL_ROWS, QX_CHANNEL_COLUMNS, QX_CHANNEL_2D}) {
    CQXWaveletDecomposition<TypeParam> raw = this->MakeImage(), inPlace(raw);
    std::int32_t depth = -1;
    const auto deepest = raw.FWTMaxDepth(type, depth);
    inPlace.FWTMaxDepthInPlace(type);
    EXPECT_EQ(depth, 3);
    EXPECT_EQ((*deepest)[0]->GetDepth(), depth);
    EXPECT_EQ(inPlace.DecompositionsAreAlmostEqual(*deepest, 0), 1);
    const auto unpacked = deepest->GetImageInPackedForm()->UnpackDecomposedImage(type, depth, QX_NORMALIZATION_2);
    EXPECT_EQ(unpacked->DecompositionsAreAlmostEqual(*deepest, 0), 1);
    this->ExpectPixels(*unpacked);
  }
  EXPECT_EQ(qxCalculateMaximumDepth(1024, 8), 2);
  EXPECT_EQ(qxCalculateMaximumDepth(-9), 0);
}

TYPED_TEST(WaveletDecomposition, EveryPlaneIsTreatedLikeAChannelWithItsOwnEntries) {
  using Channel = CQXChannel<TypeParam>;
  using Image = CQXWaveletDecomposition<TypeParam>;
  CQXWaveletDecomposition<TypeParam> raw = this->MakeImage(), other = this->MakeImage();
  other.FWTInPlace(2, QX_CHANNEL_2D);
  other.EnhanceSharpFeatures(3);
  Image tree(raw);
  tree.FWTInPlace(2, QX_CHANNEL_2D);
  const TypeParam starts[] = {TypeParam(0.1), TypeParam(0.3), TypeParam(0.7)};
  const TypeParam factors[] = {TypeParam(0.5), TypeParam(1.5), TypeParam(0.25)};
  const auto check = [&](const auto& image, const auto& from, auto ofChannel) {
    ASSERT_NE(image, nullptr);
    for (std::int32_t i = 0; i < this->planes; ++i) {
      const qxOwner<Channel> expected = ofChannel(*from[i], i);
      EXPECT_EQ(qxAreChannelsAlmostEqual(*(*image)[i], *expected, 0), 1) << i;
    }
  };
  for (std::int32_t method = 0; method <= 5; ++method) {
    const auto rule = static_cast<qxWaveletDenoising>(method);
    for (std::int32_t form = 0; form < 4; ++form) {
      const bool isKnown = form % 2 != 0, isShifted = form / 2 != 0;
      TypeParam thresholds[] = {starts[0], starts[1], starts[2]}, ratios[] = {1, TypeParam(0.5), 2};
      const TypeParam* t = thresholds;
      std::vector<std::int32_t> heard;
      const auto listen = [&heard](std::int32_t done, std::int32_t total) { heard.push_back(100 * done + total); };
      const auto image =
          isShifted ? isKnown ? raw.ReduceNoiseByCircularShifts(thresholds, ratios, 1, 2, 1, rule, starts, listen)
                              : raw.ReduceNoiseByCircularShifts(thresholds, ratios, 1, 2, 1, rule, listen)
          : isKnown ? tree.ReduceNoise(thresholds, ratios, 1, rule, starts)
                    : tree.ReduceNoise(thresholds, ratios, 1, rule);
      EXPECT_EQ(heard.size(), isShifted ? 6u : 0u);
      for (std::size_t k = 0; k < heard.size(); ++k) EXPECT_EQ(heard[k], 100 * static_cast<std::int32_t>(k + 1) + 6);
      const TypeParam startRatios[] = {1, TypeParam(0.5), 2};
      check(image, isShifted ? raw : tree, [&](const Channel& channel, std::int32_t i) {
        TypeParam a = starts[i], b = startRatios[i];
        auto clean = isShifted ? isKnown
                                     ? channel.CleanWithCircularShifts(a, b, 1, raw.GetFilter(), 2, 1, rule, starts[i])
                                     : channel.CleanWithCircularShifts(a, b, 1, raw.GetFilter(), 2, 1, rule)
                     : isKnown ? channel.CleanBelowThreshold(a, b, 1, rule, starts[i])
                               : channel.CleanBelowThreshold(a, b, 1, rule);
        EXPECT_EQ(t[i], a) << method;
        EXPECT_EQ(ratios[i], b) << method;
        return clean;
      });
    }
  }
  check(tree.ReduceNoiseDirectly(starts, factors, 1), tree,
        [&](const Channel& channel, std::int32_t i) { return channel.CleanDirectly(starts[i], factors[i], 1); });
  check(tree.MixByLevels(other, factors), tree,
        [&](const Channel& channel, std::int32_t i) { return channel.MixByLevels(other[i], factors, nullptr); });
  check(tree.Combine(other, 2, -1), tree,
        [&](const Channel& channel, std::int32_t i) { return channel.Combine(other[i], 2, -1, nullptr); });
  TypeParam thresholds[3], ratios[3];
  tree.EstimateThresholds(thresholds, ratios);
  for (std::int32_t i = 0; i < 3; ++i) {
    TypeParam a = 0, b = 0;
    tree[i]->EstimateThreshold(a, b);
    EXPECT_EQ(thresholds[i], a);
    EXPECT_EQ(ratios[i], b);
  }
  Image edited(tree), enhanced(tree);
  edited.EditByLevels(factors);
  enhanced.EnhanceSharpFeatures(2, 2);
  enhanced.EnhanceSharpFeatures(5, 1, 3);
  for (std::int32_t i = 0; i < 3; ++i) {
    Channel a(*tree[i]), b(*tree[i]);
    a.EditByLevels(factors);
    b.EnhanceHRLevel(2, 2);
    b.EnhanceSubLevel(5, 1, 3);
    EXPECT_EQ(qxAreChannelsAlmostEqual(*edited[i], a, 0), 1);
    EXPECT_EQ(qxAreChannelsAlmostEqual(*enhanced[i], b, 0), 1);
  }
  EXPECT_EQ(tree.MixByLevels(Image(QX_WAVELET_2_2), factors), nullptr);
}

TYPED_TEST(WaveletDecomposition, OpponentColoursAreARotationOfThreePlanes) {
  CQXWaveletDecomposition<TypeParam> image = this->MakeImage(), turned(image);
  EXPECT_EQ(turned.ToOpponentColours(), 1);
  for (std::int32_t i = 0; i < this->width * this->height; ++i) {
    const auto at = [i](const auto& of, std::int32_t c) { return static_cast<double>(of[c]->GetData()[i]); };
    const double r = at(image, 0), g = at(image, 1), b = at(image, 2);
    EXPECT_NEAR(at(turned, 0), (r + g + b) / std::sqrt(3), 1e-6);
    EXPECT_NEAR(at(turned, 1), (r - b) / std::sqrt(2), 1e-6);
    EXPECT_NEAR(at(turned, 2), (r - 2 * g + b) / std::sqrt(6), 1e-6);
  }
  EXPECT_EQ(turned.FromOpponentColours(), 1);
  this->ExpectPixels(turned);
  turned[1]->FWTInPlace(turned.GetFilter(), QX_CHANNEL_2D, 1);
  EXPECT_EQ(turned.ToOpponentColours(), 0);
  turned.SetImage(10, 10, 4, this->m_pixels.data());
  EXPECT_EQ(turned.ToOpponentColours(), 0);
}

TYPED_TEST(WaveletDecomposition, SaturatedSamplesAreTheNearest) {
  const TypeParam infinity = std::numeric_limits<TypeParam>::infinity();
  const struct {
    TypeParam value;
    std::int32_t byte, word;
  } cases[] = {{TypeParam(-0.5), 0, 0}, {std::nextafter(TypeParam(0.5), TypeParam(0)), 0, 0},
               {TypeParam(0.5), 1, 1},  {TypeParam(254.5), 255, 255},
               {300, 255, 300},         {TypeParam(65535.5), 255, 65535},
               {infinity, 255, 65535},  {-infinity, 0, 0},
               {std::nanf(""), 0, 0}};
  for (const auto& c : cases) {
    CQXWaveletDecomposition<TypeParam> image;
    image.SetImage(1, 1, 1, &c.value);
    std::uint8_t byte = 77;
    std::uint16_t word = 77;
    image.GetSaturatedImage(&byte);
    image.GetSaturatedImage(&word);
    EXPECT_EQ(byte, c.byte) << c.value;
    EXPECT_EQ(word, c.word) << c.value;
  }
}

TYPED_TEST(WaveletDecomposition, ScaledBandsKeepTheBrightnessOfAConstantPicture) {
  for (std::int32_t code = 0; code < waveletsCount; ++code) {
    for (std::int32_t normalization = 0; normalization <= 2; ++normalization) {
      for (const qxChannelType type : {QX_CHANNEL_ROWS, QX_CHANNEL_2D}) {
        CQXWaveletDecomposition<TypeParam> image(WaveletOf(code));
        const std::vector<TypeParam> white(32 * 32, 100);
        image.SetImage(32, 32, 1, white.data());
        image.SetTypeOfNormalization(static_cast<qxWaveletNormalization>(normalization));
        image.FWTInPlace(3, type);
        const auto low = image.GetScaledLowImage();
        EXPECT_NEAR((*(*low)[0])(1, 1), 100, 2e4 * std::numeric_limits<TypeParam>::epsilon()) << code;
        const auto high = image.GetScaledHighImage(2, 1);
        EXPECT_EQ(high->GetImageWidth(), 8);
        EXPECT_EQ(image.GetScaledHighImage(4, 1), nullptr);
      }
    }
  }
}

}  // namespace
