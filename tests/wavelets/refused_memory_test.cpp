#include <qx/wavelets/wavelet_decomposition.h>

#include <cstdlib>
#include <functional>
#include <new>
#include <utility>
#include <vector>

#include "tests/wavelets/wavelet_test.h"

namespace {

/// Every block of the library comes from `operator new[]`; here it refuses the one that the count says.
class Refusal {
 public:
  Refusal(std::int32_t first, bool throws, bool goesOn) {
    s_left = first;
    s_throws = throws;
    s_goesOn = goesOn;
    s_refused = false;
  }
  ~Refusal() { s_left = -1; }

  [[nodiscard]] static bool HasHappened() { return s_refused; }

  static bool IsDue() {
    if (s_left < 0 || s_left-- > 0) return false;
    s_refused = true;
    s_left = s_goesOn ? 0 : -1;
    if (s_throws) throw std::bad_alloc();
    return true;
  }

 private:
  static inline std::int32_t s_left = -1;
  static inline bool s_throws = false;
  static inline bool s_goesOn = false;
  static inline bool s_refused = false;
};

}  // namespace

// Null is what is tried here: the sanitizer would take it for a fault of the operator.
__attribute__((noinline, no_sanitize("undefined"))) void* operator new[](std::size_t bytes) {
  return Refusal::IsDue() ? nullptr : std::malloc(bytes);
}
void operator delete[](void* block) noexcept { std::free(block); }
void operator delete[](void* block, std::size_t) noexcept { std::free(block); }

namespace {

using Channel = CQXChannel<double>;
using Image = CQXWaveletDecomposition<double>;

const CQXWaveletFilter<double> filter(QX_WAVELET_2_4);
const double factors[] = {0.5, 2, 0.25, 3};
const Channel other = [] {
  Channel picture = MakeNoisyChannel<double>(21, 18, 1, 0, 5);
  picture.SetTypeOfNormalization(QX_NORMALIZATION_2);
  return Channel(*picture.FWT(&filter, QX_CHANNEL_2D, 2));
}();

bool AreSame(const Channel& a, const Channel& b) {
  return qxAreChannelsAlmostEqual(a, b, 0) != 0 && a.GetType() == b.GetType() && a.GetFilter() == b.GetFilter() &&
         a.GetTypeOfNormalization() == b.GetTypeOfNormalization();
}

bool AreSame(const Image& a, const Image& b) {
  if (a.DecompositionsAreAlmostEqual(b, 0) == 0 || a.GetWaveletType() != b.GetWaveletType()) return false;
  if (a.GetChannelsNb() != 0 && a[0] != nullptr && a[0]->GetType() != b[0]->GetType()) return false;
  return a.GetTypeOfNormalization() == b.GetTypeOfNormalization();
}

/// An operation on a raw or on a decomposed object: it gives a new object, or null when it works in place.
template <typename Object>
struct Operation {
  const char* name;
  bool onTree;
  bool makes;
  std::function<qxOwner<Object>(Object&)> run;
};

/// Refuses each block of the operation in turn. After a refusal the object is as it was and nothing was made, and the
/// same call without one gives what it always gives.
template <typename Object>
void ExpectAllOrNothing(const Operation<Object>& operation, const Object& start) {
  Object done(start);
  const qxOwner<Object> made = operation.run(done);
  ASSERT_EQ(made != nullptr, operation.makes) << operation.name;
  for (std::int32_t mode = 0; mode < 4; ++mode) {
    bool refused = true;
    for (std::int32_t k = 0; refused; ++k) {
      Object object(start);
      qxOwner<Object> result;
      try {
        const Refusal refusal(k, (mode & 1) != 0, (mode & 2) != 0);
        result = operation.run(object);
      } catch (const std::bad_alloc&) {
        ASSERT_EQ(mode & 1, 1) << operation.name;
      }
      refused = Refusal::HasHappened();
      if (!refused) break;
      ASSERT_TRUE(result == nullptr) << operation.name << " block " << k << " mode " << mode;
      ASSERT_TRUE(AreSame(object, start)) << operation.name << " block " << k << " mode " << mode;
      result = operation.run(object);
      ASSERT_TRUE(AreSame(object, done)) << operation.name << " again after block " << k;
      ASSERT_TRUE(!operation.makes || AreSame(*result, *made)) << operation.name << " again after block " << k;
      ASSERT_LT(k, 1000) << operation.name;
    }
  }
}

template <typename Object, typename Function>
std::function<qxOwner<Object>(Object&)> InPlace(Function function) {
  return [function](Object& object) {
    function(object);
    return qxOwner<Object>();
  };
}

TEST(RefusedMemory, LeavesChannelsAsTheyWere) {
  constexpr auto rule = [](std::int32_t code) { return static_cast<qxWaveletDenoising>(code); };
  const auto inPlace = [](auto function) { return InPlace<Channel>(function); };
  std::vector<Operation<Channel>> operations = {
      {"Initialize", false, false, inPlace([](Channel& c) { c.Initialize(); })},
      {"assignment", false, false, inPlace([](Channel& c) { c = other; })},
      {"CopyRawChannel", true, false, inPlace([](Channel& c) { c.CopyRawChannel(*other.SubChannel(1)); })},
      {"CreateOneLevelSubChannels", false, false,
       inPlace([](Channel& c) { c.CreateOneLevelSubChannels(&filter, QX_CHANNEL_2D, QX_NORMALIZATION_1); })},
      {"CreateOneLevelSubChannels of", true, false, inPlace([](Channel& c) { c.CreateOneLevelSubChannels(other); })},
      {"DestroyLowestSubChannel", true, false, inPlace([](Channel& c) { c.DestroyLowestSubChannel(); })},
      {"CloneRawChannel", false, true, [](Channel& c) { return c.CloneRawChannel(); }},
      {"CloneDecomposedChannel", true, true, [](Channel& c) { return c.CloneDecomposedChannel(); }},
      {"CloneOneLevelSubChannels", false, false, inPlace([](Channel& c) { other.CloneOneLevelSubChannels(&c); })},
      {"PackDecomposedChannel", true, true, [](Channel& c) { return c.PackDecomposedChannel(); }},
      {"UnpackDecomposedChannel", false, true,
       [](Channel& c) { return c.UnpackDecomposedChannel(&filter, QX_CHANNEL_ROWS, 2, QX_NORMALIZATION_1); }},
      {"Cut of samples", false, true, [](Channel& c) { return c.Cut(1, 1, 7, 6); }},
      {"Cut of a tree", true, true, [](Channel& c) { return c.Cut(1, 1, 7, 6); }},
      {"FWTStep", false, true, [](Channel& c) { return qxOwner<Channel>(c.FWTStep(&filter, QX_CHANNEL_2D)); }},
      {"FWTStep of a tree", true, false,
       inPlace([](Channel& c) { static_cast<void>(c.FWTStep(&filter, QX_CHANNEL_2D)); })},
      {"FWT", false, true, [](Channel& c) { return c.FWT(&filter, QX_CHANNEL_2D, 3); }},
      {"FWT of a tree", true, true, [](Channel& c) { return c.FWT(&filter, QX_CHANNEL_2D, 1); }},
      {"FWTInPlace", false, false, inPlace([](Channel& c) { c.FWTInPlace(&filter, QX_CHANNEL_2D, 2); })},
      {"FWTInPlace of a tree", true, false, inPlace([](Channel& c) { c.FWTInPlace(&filter, QX_CHANNEL_2D, 1); })},
      {"IFWT", true, true, [](Channel& c) { return c.IFWT(); }},
      {"IFWT of a rectangle", true, true, [](Channel& c) { return c.IFWT(2, 3, 9, 5); }},
      {"IFWTInPlace", true, false, inPlace([](Channel& c) { c.IFWTInPlace(); })},
      {"DestroyingIFWT", true, true, [](Channel& c) { return c.DestroyingIFWT(); }},
      {"GetScaledLowChannel", true, true, [](Channel& c) { return c.GetScaledLowChannel(); }},
      {"GetScaledHighChannel", true, true, [](Channel& c) { return c.GetScaledHighChannel(1, 2); }},
      {"Resize", false, true, [](Channel& c) { return c.Resize(9, 30, QX_RESAMPLING_CUBIC); }},
      {"CleanDirectly", true, true, [](Channel& c) { return c.CleanDirectly(0.2, 1, 1); }},
      {"MixByLevels", true, true, [](Channel& c) { return c.MixByLevels(&other, factors, nullptr); }},
      {"Combine into itself", true, false, inPlace([](Channel& c) { c.Combine(&other, 1, 2, &c); })},
  };
  for (std::int32_t code = 0; code <= 5; ++code) {
    operations.push_back({"CleanBelowThreshold", true, true, [=](Channel& c) {
                            double threshold = 0.1, ratio = 1;
                            auto clean = c.CleanBelowThreshold(threshold, ratio, 1, rule(code));
                            EXPECT_EQ(clean != nullptr || (threshold == 0.1 && ratio == 1), true);
                            return clean;
                          }});
    operations.push_back({"CleanWithCircularShifts", false, true, [=](Channel& c) {
                            double threshold = 0.1, ratio = 1;
                            auto clean = c.CleanWithCircularShifts(threshold, ratio, 2, &filter, 2, 0, rule(code));
                            EXPECT_EQ(clean != nullptr || (threshold == 0.1 && ratio == 1), true);
                            return clean;
                          }});
  }
  Channel picture = MakeNoisyChannel<double>(21, 18, 1, 0);
  picture.SetTypeOfNormalization(QX_NORMALIZATION_2);
  Channel tree(picture);
  tree.FWTInPlace(&filter, QX_CHANNEL_2D, 2);
  for (const auto& operation : operations) ExpectAllOrNothing(operation, operation.onTree ? tree : picture);
}

TEST(RefusedMemory, ShowsInNumbersAndConstructors) {
  Channel picture = MakeNoisyChannel<double>(21, 18);
  const Channel tree(*Channel(picture).FWT(&filter, QX_CHANNEL_2D, 2));
  double threshold = 1, ratio = 1;
  const Refusal refusal(0, false, true);
  const double noise = tree.EstimateNoise(), ofSamples = picture.EstimateNoiseOfSamples(-1, 1);
  tree.EstimateThreshold(threshold, ratio);
  const Channel copy(tree), filled(2, 2, factors, 0, 0);
  const Image image(QX_WAVELET_2_2);
  for (const double x : {noise, ofSamples, threshold, ratio}) EXPECT_NE(x, x);
  EXPECT_EQ(copy.GetSubChannelsNb(), 0);
  EXPECT_EQ(filled.GetData(), nullptr);
  EXPECT_EQ(image.GetFilter(), nullptr);
}

TEST(RefusedMemory, LeavesImagesAsTheyWere) {
  const auto inPlace = [](auto function) { return InPlace<Image>(function); };
  const std::vector<double> pixels = MakeNoise<double>(24 * 20 * 2), noises(2, 0.5);
  Image image(QX_WAVELET_2_6);
  image.SetTypeOfNormalization(QX_NORMALIZATION_2);
  image.SetImage(24, 20, 2, pixels.data());
  Image tree(image);
  tree.FWTInPlace(2, QX_CHANNEL_2D);
  const auto cleaned = [](auto clean) {
    return [clean](Image& i) {
      double thresholds[] = {0.1, 0.2}, ratios[] = {1, 2};
      auto result = clean(i, thresholds, ratios);
      const bool untouched = thresholds[0] == 0.1 && thresholds[1] == 0.2 && ratios[0] == 1 && ratios[1] == 2;
      EXPECT_EQ(result != nullptr || untouched, true);
      return result;
    };
  };
  const Operation<Image> operations[] = {
      {"CloneDecomposition", true, true, [](Image& i) { return i.CloneDecomposition(); }},
      {"Copy", false, false, inPlace([&](Image& i) { i.Copy(tree); })},
      {"SetImage", true, false, inPlace([&](Image& i) { i.SetImage(10, 8, 3, pixels.data()); })},
      {"CreateChannels", true, false, inPlace([](Image& i) { i.CreateChannels(5, 6, 3); })},
      {"SetChannelsNb", true, false, inPlace([](Image& i) { i.SetChannelsNb(4); })},
      {"SetFilter", true, false, inPlace([](Image& i) { i.SetFilter(QX_WAVELET_1_3); })},
      {"SetTypeOfNormalization", true, false, inPlace([](Image& i) { i.SetTypeOfNormalization(QX_NORMALIZATION_1); })},
      {"SetDecompositionTypes", true, false,
       inPlace([](Image& i) { i.SetDecompositionTypes(QX_WAVELET_4_2, QX_CHANNEL_ROWS, QX_NORMALIZATION_1); })},
      {"SetDecompositionTypesToChannels", true, false,
       inPlace([](Image& i) { i.SetDecompositionTypesToChannels(QX_CHANNEL_ROWS); })},
      {"FWT", false, true, [](Image& i) { return i.FWT(2, QX_CHANNEL_2D); }},
      {"FWT of trees", true, true, [](Image& i) { return i.FWT(1, QX_CHANNEL_2D); }},
      {"FWTInPlace", false, false, inPlace([](Image& i) { i.FWTInPlace(2, QX_CHANNEL_ROWS); })},
      {"FWTInPlace of trees", true, false, inPlace([](Image& i) { i.FWTInPlace(1, QX_CHANNEL_2D); })},
      {"IFWT", true, true, [](Image& i) { return i.IFWT(); }},
      {"IFWTInPlace", true, false, inPlace([](Image& i) { i.IFWTInPlace(); })},
      {"GetImageInPackedForm", true, true, [](Image& i) { return i.GetImageInPackedForm(); }},
      {"UnpackDecomposedImage", false, true,
       [](Image& i) { return i.UnpackDecomposedImage(QX_CHANNEL_2D, 2, QX_NORMALIZATION_2); }},
      {"ReduceNoise", true, true, cleaned([](Image& i, double* thresholds, double* ratios) {
         return i.ReduceNoise(thresholds, ratios, 1, QX_DENOISING_BAND_SIGNAL);
       })},
      {"ReduceNoiseByCircularShifts", false, true, cleaned([&](Image& i, double* thresholds, double* ratios) {
         return i.ReduceNoiseByCircularShifts(thresholds, ratios, 1, 2, 1, QX_DENOISING_UNIVERSAL, noises.data());
       })},
      {"GetScaledHighImage", true, true, [](Image& i) { return i.GetScaledHighImage(2, 1); }},
      {"MixByLevels", true, true, [&](Image& i) { return i.MixByLevels(tree, factors); }},
  };
  for (const auto& operation : operations) ExpectAllOrNothing(operation, operation.onTree ? tree : image);
}

}  // namespace
