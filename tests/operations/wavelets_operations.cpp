#include "tests/operations/operations.h"

namespace {

constexpr std::int32_t sizes[][2] = {{1, 1},  {2, 2},  {3, 3},   {4, 7},   {8, 8},
                                     {9, 16}, {17, 5}, {31, 33}, {64, 48}, {101, 67}};

template <typename T>
CQXChannel<T> Picture(std::int32_t columns, std::int32_t rows, std::uint32_t seed = 101, std::int32_t offset = 0) {
  return CQXChannel<T>(columns, rows, Numbers<T>(seed).Array(qxElementCount(rows, columns), -100, 100).data(), offset,
                       offset / 2);
}

/// A tree of each type, size, parity of the offsets and depth, with the filter that the caller keeps.
template <typename T, typename Function>
void OverTrees(const CQXWaveletFilter<T>& filter, Function f) {
  for (const qxChannelType type : {QX_CHANNEL_ROWS, QX_CHANNEL_COLUMNS, QX_CHANNEL_2D}) {
    for (const auto& [columns, rows] : sizes) {
      for (const std::int32_t offset : {0, 1, 2, -3}) {
        CQXChannel<T> picture = Picture<T>(columns, rows, 101, offset);
        picture.SetTypeOfNormalization(static_cast<qxWaveletNormalization>((columns + offset + 3) % 3));
        const auto tree = picture.FWT(&filter, type, offset == 0 ? 1 : 3);
        if (tree != nullptr) f(*tree, columns, rows);
      }
    }
  }
}

template <typename T>
void TransformRows(std::int32_t code) {
  const CQXWaveletFilter<T> filter(static_cast<qxWaveletType>(code));
  const std::string wavelet = "Wavelet " + std::to_string(code) + ' ';
  Row<T>(wavelet + "filter", [&](Hash& h) {
    for (const std::int32_t i : {0, 1}) h(filter.GetLowNorm(i)), h(filter.GetHighNorm(i));
    for (std::int32_t i = 0; i < filter.GetPrimeSize(); ++i) h(Made(filter.PrimeCoefficients())[i]);
    for (std::int32_t i = 0; i < filter.GetDualSize(); ++i) h(Made(filter.DualCoefficients())[i]);
    for (std::int32_t i = 0; i < filter.GetPrimeSize2(); ++i) h(Made(filter.Prime2Coefficients())[i]);
    h(filter.GetPrimeStartInd()), h(filter.GetPrimeEndInd()), h(filter.GetDualStartInd()), h(filter.GetDualEndInd());
  });
  Row<T>(wavelet + "FWT", [&](Hash& h) { OverTrees<T>(filter, [&](const auto& tree, auto...) { h(tree); }); });
  Row<T>(wavelet + "IFWT", [&](Hash& h) {
    OverTrees<T>(filter, [&](auto& tree, std::int32_t columns, std::int32_t rows) {
      h(tree.IFWT()), h(tree.IFWT(columns / 3, rows / 4, (columns + 1) / 2, (rows + 1) / 2));
      tree.IFWTInPlace();
      h(tree);
    });
  });
  Row<T>(wavelet + "FWTStep", [&](Hash& h) {
    for (const auto& [columns, rows] : sizes) {
      CQXChannel<T> picture = Picture<T>(columns, rows);
      const qxOwner<CQXChannel<T>> step(picture.FWTStep(&filter, QX_CHANNEL_2D));
      h(step);
      if (step != nullptr) h(step->IFWTStep());
    }
  });
  Row<T>(wavelet + "normalization", [&](Hash& h) {
    OverTrees<T>(filter, [&](auto& tree, auto...) {
      tree.SetTypeOfNormalization(QX_NORMALIZATION_2);
      tree.Normalize();
      h(tree), h(tree.GetScaledLowChannel()), h(tree.GetScaledHighChannel(1, 1));
      tree.Denormalize(2, QX_NORMALIZATION_1);
      tree.Normalize(1, QX_NORMALIZATION_2, T(1.5), T(0.75));
      h(tree);
    });
  });
}

template <typename T>
void ChannelRows() {
  const CQXWaveletFilter<T> filter(QX_WAVELET_2_6);
  const auto overTrees = [&](const std::string& operation, auto f, bool isPlatform = false) {
    Row<T>(
        "Channel " + operation,
        [&](Hash& h) { OverTrees<T>(filter, [&](auto& tree, auto w, auto r) { f(h, tree, w, r); }); }, isPlatform);
  };
  overTrees("packed form", [&](Hash& h, auto& tree, auto...) {
    const auto packed = tree.PackDecomposedChannel();
    h(packed,
      Made(packed.get())->UnpackDecomposedChannel(&filter, tree.GetType(), tree.GetDepth(), QX_NORMALIZATION_1));
  });
  overTrees("Cut and Paste", [](Hash& h, auto& tree, std::int32_t columns, std::int32_t rows) {
    const auto part = tree.Cut(columns / 3, rows / 4, (columns + 1) / 2, (rows + 1) / 2);
    h(part);
    const auto copy = tree.CloneDecomposedChannel();
    Made(copy.get())->EnhanceRawData(T(2));
    copy->Clean();
    if (part != nullptr) copy->Paste(*part);
    h(copy), h(qxAreChannelsAlmostEqual(tree, *copy, T(1e-3))), h(tree.DestroyingIFWT());
    copy->DestroyLowestSubChannel();
    h(copy);
  });
  overTrees("enhancement", [](Hash& h, auto& tree, auto...) {
    const std::vector<T> weights = Numbers<T>(102).Array(64);
    const auto other = tree.CloneDecomposedChannel();
    tree.Enhance(T(3));
    tree.EnhanceSubLevel(T(1.25), 1, 1);
    tree.EnhanceHRLevel(T(0.75), 2);
    h(tree);
    tree.EditByLevels(weights.data());
    h(tree), h(tree.MixByLevels(other.get(), weights.data(), nullptr)),
        h(tree.Combine(other.get(), T(2), T(-3), nullptr));
  });
  overTrees("printed", [](Hash& h, auto& tree, std::int32_t columns, auto) {
    if (columns < 10) h(Printed([&] { tree.Print(); }));
  });
  overTrees("EstimateNoise", [](Hash& h, auto& tree, auto...) {
    T threshold = 0, ratio = 0;
    tree.EstimateThreshold(threshold, ratio);
    h(tree.EstimateNoise()), h(threshold), h(ratio), h(tree.CleanDirectly(T(20), T(0.75), 0)),
        h(tree.CleanDirectly(T(20), T(2), 1));
  });
  for (std::int32_t method = 0; method <= 5; ++method) {
    overTrees(
        "CleanBelowThreshold " + std::to_string(method),
        [method](Hash& h, auto& tree, auto...) {
          for (const std::int32_t soft : {0, 1}) {
            T threshold = T(10), ratio = T(1.5);
            h(tree.CleanBelowThreshold(threshold, ratio, soft, static_cast<qxWaveletDenoising>(method)), threshold,
              ratio);
          }
        },
        method == 1 || method == 2);
  }
  PlatformRow<T>("Channel CleanWithCircularShifts", [&](Hash& h) {
    for (std::int32_t method = 0; method <= 5; ++method) {
      CQXChannel<T> picture = Picture<T>(64, 48);
      picture.SetTypeOfNormalization(QX_NORMALIZATION_2);
      T threshold = T(10), ratio = T(1.5);
      h(picture.CleanWithCircularShifts(threshold, ratio, 3, &filter, 3, method % 2,
                                        static_cast<qxWaveletDenoising>(method)),
        threshold, ratio);
    }
  });
  Row<T>("Lifting", [](Hash& h) {
    const std::vector<T> coefficients = Numbers<T>(103).Array(6);
    for (std::int32_t n = 1; n < 40; ++n) {
      for (const std::int32_t direction : {0, 1}) {
        const qxChannelType type = direction == 0 ? QX_CHANNEL_COLUMNS : QX_CHANNEL_ROWS;
        const std::int32_t low = (n + 1) / 2, high = n / 2;
        CQXChannel<T> a = direction == 0 ? Picture<T>(5, low) : Picture<T>(low, 5);
        CQXChannel<T> b = direction == 0 ? Picture<T>(5, high, 104) : Picture<T>(high, 5, 104);
        CQXLifting<T> lifting(&a, &b, direction);
        for (const std::int32_t target : {0, 1}) {
          lifting.LiftUsing2Coef(target, coefficients.data(), type);
          lifting.LiftUsing4Coef(target, coefficients.data(), type);
          lifting.LiftUsing6Coef(target, coefficients.data(), type);
          h(a, b);
          lifting.InvLiftUsing4Coef(target, coefficients.data(), type);
          lifting.InvLiftUsing2Coef(target, coefficients.data(), type);
          lifting.InvLiftUsing6Coef(target, coefficients.data(), type);
          h(a, b);
        }
      }
      for (std::int32_t i = -3 * n; i < 3 * n; ++i) {
        for (std::int32_t ends = 0; ends < 4; ++ends) h(qxSymExtension(i, n, ends % 2, ends / 2));
      }
    }
  });
}

template <typename T>
void DecompositionRows() {
  using D = CQXWaveletDecomposition<T>;
  PlatformRow<T>("WaveletDecomposition", [](Hash& h) {
    for (const auto& [columns, rows] : sizes) {
      for (std::int32_t planes = 1; planes <= 3; ++planes) {
        std::vector<T> pixels = Numbers<T>(105).Array(qxElementCount(rows, columns * planes), 0, 255);
        std::vector<std::uint8_t> bytes(pixels.size());
        D image(QX_WAVELET_2_6);
        image.SetImage(columns, rows, planes, pixels.data());
        image.SetTypeOfNormalization(QX_NORMALIZATION_2);
        image.GetImageIn8BitsFormat(bytes.data());
        auto tree = image.FWT(2, QX_CHANNEL_2D);
        Made(tree.get());
        h(tree), h(bytes), h(tree->GetImageInPackedForm()), h(tree->GetScaledLowImage()),
            h(tree->GetScaledHighImage(1, 1));
        std::vector<T> thresholds(3, T(10)), ratios(3, T(1.5));
        tree->EstimateThresholds(thresholds.data(), ratios.data());
        for (std::int32_t method = 0; method <= 5; ++method) {
          h(tree->ReduceNoise(thresholds.data(), ratios.data(), method % 2, static_cast<qxWaveletDenoising>(method)),
            thresholds, ratios);
        }
        h(tree->ReduceNoiseDirectly(thresholds.data(), ratios.data(), 1)), h(tree->MixByLevels(*tree, pixels.data())),
            h(tree->Combine(*tree, T(2), T(3)));
        tree->EnhanceSharpFeatures(T(1.5));
        tree->EnhanceSharpFeatures(T(1.5), 1);
        tree->EnhanceSharpFeatures(T(1.5), 1, 1);
        h(tree);
        tree->GetImageInPixelForm(pixels.data());
        tree->FWTMaxDepthInPlace(QX_CHANNEL_ROWS);
        h(pixels, tree, tree->IFWT());
        image.Set8BitsImage(columns, rows, planes, bytes.data());
        h(image.ReduceNoiseByCircularShifts(thresholds.data(), ratios.data(), 2, 2, 0, QX_DENOISING_UNIVERSAL));
      }
    }
  });
}

}  // namespace

template <typename T>
void WaveletRows() {
  for (std::int32_t code = 0; code < 12; ++code) TransformRows<T>(code);
  ChannelRows<T>();
  DecompositionRows<T>();
}

template void WaveletRows<float>();
template void WaveletRows<double>();
