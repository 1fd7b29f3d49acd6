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
