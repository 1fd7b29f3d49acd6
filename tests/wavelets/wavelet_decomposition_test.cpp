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
  EXPECT_EQ(image[3], nullptr);
  EXPECT_EQ(image.GetImageWidth(), 2);

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
                                             {256, 0},
                                             {300, 44},
                                             {-1, 255},
                                             {TypeParam(-0.4), 0},
                                             {TypeParam(2.5), 3},
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
  CQXWaveletDecomposition<TypeParam> decomposed = this->MakeImage();
  decomposed.FWTInPlace(1, QX_CHANNEL_2D);
  std::vector<std::uint8_t> bytes(this->samples, 77);
  decomposed.GetImageIn8BitsFormat(bytes.data());
  EXPECT_EQ(std::count(bytes.begin(), bytes.end(), 0), static_cast<std::ptrdiff_t>(this->samples));
}

TYPED_TEST(WaveletDecomposition, EveryDecompositionHasItsOwnFilter) {
  std::unique_ptr<CQXWaveletDecomposition<TypeParam>> tree, copy, inverse;
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
  copy->Destroy();
  EXPECT_EQ(copy->GetChannelsNb(), 0);
  EXPECT_EQ(copy->FWT(1, QX_CHANNEL_2D), nullptr);
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
  // The same filter again leaves the tree alone.
  CQXWaveletDecomposition<TypeParam> image = this->MakeImage();
  image.FWTInPlace(3, QX_CHANNEL_2D);
  image.SetFilter(QX_WAVELET_2_6);
  EXPECT_EQ(image.IsDecomposed(), 1);
  // A tree from elsewhere is taken back with its own filter.
  const CQXWaveletFilter<TypeParam> foreign(QX_WAVELET_3_1);
  CQXChannel<TypeParam> plane = MakeNoisyChannel<TypeParam>(24, 20);
  const CQXChannel<TypeParam> before(plane);
  image.SetChannel(plane.FWT(&foreign, QX_CHANNEL_2D, 2), 1);
  EXPECT_EQ(image[1]->RawChannelIsAlmostEqual(before, 50 * std::numeric_limits<TypeParam>::epsilon()), 1);
  EXPECT_EQ(image[1]->GetFilter(), image.GetFilter());
  image.SetChannel(std::make_unique<CQXChannel<TypeParam>>(), 3);
}

TYPED_TEST(WaveletDecomposition, ChannelsMayBeChangedFromOutside) {
  CQXWaveletDecomposition<TypeParam> image = this->MakeImage();
  image[0]->FWTInPlace(image.GetFilter(), QX_CHANNEL_2D, 2);
  EXPECT_EQ(image.IsDecomposed(), 1);
  image[0]->SetTypeOfNormalization(QX_NORMALIZATION_NONE);  // the image's own counts on the way back
  this->ExpectPixels(image);

  // A plane with fields of its own is transformed with those of the image.
  image[1]->CopyRawChannel(MakeNoisyChannel<TypeParam>(24, 20));
  CQXWaveletDecomposition<TypeParam> inPlace(this->MakeImage());
  inPlace[1]->CopyRawChannel(MakeNoisyChannel<TypeParam>(24, 20));
  const auto tree = image.FWT(2, QX_CHANNEL_2D);
  inPlace.FWTInPlace(2, QX_CHANNEL_2D);
  for (const auto* channel : {(*tree)[1], inPlace[1]}) {
    EXPECT_EQ(channel->GetDepth(), 2);
    EXPECT_EQ(channel->GetTypeOfNormalization(), QX_NORMALIZATION_2);
  }
  EXPECT_EQ(qxAreChannelsAlmostEqual(*(*tree)[1], *inPlace[1], 0), 1);

  // The new pixels may be those of an old plane.
  CQXWaveletDecomposition<TypeParam> gray;
  gray.SetImage(24, 20, 1, this->m_pixels.data());
  gray.SetImage(20, 24, 1, gray[0]->GetData());
  EXPECT_EQ(gray.GetImageWidth(), 20);
  EXPECT_EQ((*gray[0])(1, 0), this->m_pixels[20]);

  // Without a filter a tree is taken back: nothing points to the filter of another image.
  gray.SetChannel((*tree)[0]->CloneDecomposedChannel(), 0);
  EXPECT_EQ(gray.IsDecomposed(), 0);
  EXPECT_EQ(gray[0]->GetFilter(), nullptr);
}

TYPED_TEST(WaveletDecomposition, DepthsAndTypesMayDifferByChannel) {
  CQXWaveletDecomposition<TypeParam> image = this->MakeImage();
  const std::int32_t depths[] = {1, 0, 3};
  const qxChannelType types[] = {QX_CHANNEL_2D, QX_CHANNEL_ROWS, QX_CHANNEL_COLUMNS};
  const auto tree = image.FWT(depths, types);
  for (std::int32_t i = 0; i < 3; ++i) EXPECT_EQ((*tree)[i]->GetDepth(), depths[i]);
  this->ExpectPixels(*tree);

  const std::pair<qxChannelType, std::int32_t> maxima[] = {
      {QX_CHANNEL_ROWS, 3}, {QX_CHANNEL_COLUMNS, 3}, {QX_CHANNEL_2D, 3}};
  for (const auto& [type, expected] : maxima) {
    CQXWaveletDecomposition<TypeParam> raw = this->MakeImage(), inPlace(raw);
    std::int32_t depth = -1;
    const auto deepest = raw.FWTMaxDepth(type, depth);
    inPlace.FWTMaxDepthInPlace(type);
    EXPECT_EQ(depth, expected);
    EXPECT_EQ((*deepest)[0]->GetDepth(), depth);
    EXPECT_EQ(inPlace.DecompositionsAreAlmostEqual(*deepest, 0), 1);
    const auto unpacked = deepest->GetImageInPackedForm()->UnpackDecomposedImage(type, depth, QX_NORMALIZATION_2);
    EXPECT_EQ(unpacked->DecompositionsAreAlmostEqual(*deepest, 0), 1);
    this->ExpectPixels(*unpacked);
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

TYPED_TEST(WaveletDecomposition, ChannelOperationsRunOnEveryPlane) {
  CQXWaveletDecomposition<TypeParam> image = this->MakeImage();
  TypeParam thresholds[3] = {}, ratios[3] = {};
  std::int32_t calls = 0;
  const auto spun = image.ReduceNoiseByCircularShifts(thresholds, ratios, 2, 2, 1, QX_DENOISING_BAND_VARIANCE,
                                                      [&calls](std::int32_t done, std::int32_t total) {
                                                        EXPECT_EQ(done, ++calls);
                                                        EXPECT_EQ(total, 9);
                                                      });
  EXPECT_EQ(calls, 9);
  EXPECT_EQ(spun->IsDecomposed(), 0);
  const auto tree = image.FWT(2, QX_CHANNEL_2D);
  EXPECT_EQ(tree->ReduceNoiseByCircularShifts(thresholds, ratios, 1, 1, 0, QX_DENOISING_GIVEN), nullptr);
  tree->EstimateThresholds(thresholds, ratios);
  const auto direct = tree->ReduceNoiseDirectly(thresholds, ratios, 0);
  const TypeParam half[] = {TypeParam(0.5), TypeParam(0.5), TypeParam(0.5)};
  const auto mixed = tree->MixByLevels(*direct, half), sum = tree->Combine(*direct, half[0], half[0]);
  EXPECT_EQ(mixed->DecompositionsAreAlmostEqual(*sum, 0), 1);
  CQXWaveletDecomposition<TypeParam> sharp(*tree), levels(*tree), bands(*tree), edited(*tree);
  const TypeParam factors[] = {2, 1, 1};
  sharp.EnhanceSharpFeatures(2);
  levels.EnhanceSharpFeatures(2, 1);
  edited.EditByLevels(factors);
  for (std::int32_t band = 1; band < 4; ++band) bands.EnhanceSharpFeatures(2, 1, band);
  for (const auto* same : {&levels, &bands, &edited}) EXPECT_EQ(sharp.DecompositionsAreAlmostEqual(*same, 0), 1);
  EXPECT_EQ(sharp.DecompositionsAreAlmostEqual(*tree, TypeParam(1e-3)), 0);
  const auto reduced = tree->ReduceNoise(thresholds, ratios, 0, QX_DENOISING_UNIVERSAL);
  for (std::int32_t i = 0; i < 3; ++i) {
    TypeParam threshold, ratio;
    (*tree)[i]->EstimateThreshold(threshold, ratio);
    EXPECT_EQ(qxAreChannelsAlmostEqual(*(*tree)[i]->CleanDirectly(threshold, ratio, 0), *(*direct)[i], 0), 1);
    EXPECT_EQ(qxAreChannelsAlmostEqual(*(*tree)[i]->CleanBelowThreshold(threshold, ratio, 0, QX_DENOISING_UNIVERSAL),
                                       *(*reduced)[i], 0),
              1);
    EXPECT_EQ(thresholds[i], threshold);
  }
}

}  // namespace
