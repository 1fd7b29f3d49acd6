// Reduces the noise of a photograph by wavelet thresholding; with --noise it adds the noise first and says how much of
// it went away.

#include <qx/arrays/random.h>
#include <qx/wavelets/wavelet_decomposition.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <iostream>
#include <string>
#include <vector>

#include "png_image.h"
#include <CLI/CLI.hpp>
#include <unistd.h>

namespace {

constexpr std::array<const char*, 12> waveletNames = {"1_1", "1_3", "1_5", "2_2", "2_4", "2_6",
                                                      "3_1", "3_3", "3_5", "4_2", "4_4", "4_6"};
constexpr std::array<const char*, 6> methodNames = {"given",         "universal",   "level-dependent",
                                                    "band-variance", "band-signal", "band-signal-masked"};
/// Noise of the finest diagonal band over the noise of the picture, by family of wavelets, with normalization 2.
constexpr std::array<float, 4> diagonalBandGains = {1, 0.75, 0.625, 0.546875};

struct Options {
  std::string input, output, sideBySide;
  std::string method = "given", thresholding = "hard", wavelet = "2_6";
  std::int32_t depth = 4, shifts = 16;
  float threshold = 0, thresholdFactor = 3, ratio = 1;
  bool thresholdIsAbsolute = false;
  double noise = 0;
  std::uint64_t seed = 1;
};

/// Samples as numbers, in the layout of PngImage.
struct Picture {
  std::int32_t width, height, channelsNb;
  std::vector<float> samples;
};

struct Cleaning {
  Picture picture;
  std::vector<float> estimatedNoise, thresholds, ratios;  // one a channel
  double milliseconds;
};

template <std::size_t n>
std::int32_t IndexOf(const std::string& name, const std::array<const char*, n>& names) {
  return static_cast<std::int32_t>(std::find(names.begin(), names.end(), name) - names.begin());
}

template <std::size_t n>
CLI::Validator OneOf(const std::array<const char*, n>& names) {
  return CLI::IsMember(std::vector<std::string>(names.begin(), names.end()));
}

/// Unlike the ranges of the parser it refuses what is not a number.
CLI::Validator Between(double low, double high) {
  const auto text = [](double value) { return CLI::detail::to_string(value); };
  const std::string range = text(low) + " to " + text(high);
  return CLI::Validator(
      [=](std::string& value) {
        double number = 0;
        const bool inside = CLI::detail::lexical_cast(value, number) && number >= low && number <= high;
        return inside ? std::string() : value + " is not a number from " + range;
      },
      range);
}

void DeclareOptions(CLI::App& app, Options& options) {
  app.add_option("input", options.input, "Gray or RGB picture of 8 bits a sample (PNG)")->required();
  app.add_option("output", options.output, "Cleaned picture to write (PNG)")->required();
  app.add_option("--side-by-side", options.sideBySide, "Also write original | noisy | cleaned in one picture (PNG)");
  app.add_option("--method", options.method, "How the threshold is found")
      ->check(OneOf(methodNames))
      ->capture_default_str();
  app.add_option("--thresholding", options.thresholding,
                 "hard keeps a coefficient above the threshold as it is, soft shrinks it by the threshold")
      ->check(CLI::IsMember({"hard", "soft"}))
      ->capture_default_str();
  app.add_option("--wavelet", options.wavelet, "Wavelet; families 1 and 2 clean best")
      ->check(OneOf(waveletNames))
      ->capture_default_str();
  app.add_option("--depth", options.depth, "Levels of the transform")->check(Between(1, 8))->capture_default_str();
  app.add_option("--shifts", options.shifts, "Circular shifts to average over, 0 for one plain pass")
      ->check(Between(0, 1000))
      ->capture_default_str();

  CLI::Option* factor = app.add_option("--threshold-factor", options.thresholdFactor,
                                       "Method given: threshold in multiples of the estimated noise")
                            ->check(Between(0, 1000))
                            ->capture_default_str();
  CLI::Option* threshold =
      app.add_option("--threshold", options.threshold, "Method given: threshold in gray levels instead")
          ->check(Between(0, 100000))
          ->excludes(factor);
  CLI::Option* ratio =
      app.add_option("--ratio", options.ratio, "Method given: the threshold is multiplied by this from level to level")
          ->check(Between(0, 1000))
          ->capture_default_str();
  app.add_option("--noise", options.noise, "Add Gaussian noise of this standard deviation first, in gray levels")
      ->check(Between(0, 1000));
  app.add_option("--seed", options.seed, "Seed of the added noise")
      ->check(CLI::NonNegativeNumber)
      ->capture_default_str();

  app.final_callback([&options, factor, threshold, ratio] {
    for (const CLI::Option* option : {factor, threshold, ratio}) {
      if (*option && options.method != "given") throw CLI::ValidationError(option->get_name(), "needs --method given");
    }
    options.thresholdIsAbsolute = static_cast<bool>(*threshold);
    if (options.sideBySide == options.output) throw CLI::ValidationError("--side-by-side", "is the output too");
  });
}

Picture ToPicture(const PngImage& image) {
  return {image.width, image.height, image.channelsNb, {image.samples.begin(), image.samples.end()}};
}

/// Rounds to the nearest of 0 to 255. The library's own conversion wraps modulo 256 and is not meant for display.
PngImage ToPng(const Picture& picture) {
  PngImage image{picture.width, picture.height, picture.channelsNb, {}};
  image.samples.reserve(picture.samples.size());
  for (const float sample : picture.samples) {
    image.samples.push_back(static_cast<std::uint8_t>(std::lround(std::clamp(sample, 0.0f, 255.0f))));
  }
  return image;
}

void AddNoise(Picture& picture, double sigma, std::uint64_t seed) {
  CQXRandom<float> random;
  random.SetAlgorithm(1);
  random.SetNormal(0, static_cast<float>(sigma));
  random.SetXorshift64Seed(seed);
  random.Initialize();
  for (float& sample : picture.samples) sample += random.GetNumber();
}

/// The window of this size whose upper left corner is at (@p left, @p top); beyond its edges the picture is mirrored.
Picture Window(const Picture& source, std::int32_t left, std::int32_t top, std::int32_t width, std::int32_t height) {
  const auto mirrored = [](std::int32_t index, std::int32_t size) {
    const std::int32_t period = 2 * size;
    const std::int32_t folded = (index % period + period) % period;
    return static_cast<std::size_t>(folded < size ? folded : period - 1 - folded);
  };
  Picture result{width, height, source.channelsNb, {}};
  const auto channelsNb = static_cast<std::size_t>(source.channelsNb);
  result.samples.reserve(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * channelsNb);
  for (std::int32_t y = top; y < top + height; ++y) {
    const std::size_t row = mirrored(y, source.height) * static_cast<std::size_t>(source.width);
    for (std::int32_t x = left; x < left + width; ++x) {
      const std::size_t first = (row + mirrored(x, source.width)) * channelsNb;
      for (std::size_t c = 0; c < channelsNb; ++c) result.samples.push_back(source.samples[first + c]);
    }
  }
  return result;
}

/// A bar on the terminal; nothing when the messages go elsewhere.
void ShowProgress(std::int32_t done, std::int32_t total) {
  static const bool onTerminal = isatty(STDERR_FILENO) != 0;
  if (!onTerminal || total < 1) return;
  constexpr std::int32_t length = 40;
  const auto filled = static_cast<std::size_t>(std::int64_t{length} * done / total);
  std::cerr << '\r' << '[' << std::string(filled, '#') << std::string(length - filled, ' ') << "] " << done << '/'
            << total << (done < total ? "" : "\r\033[K") << std::flush;
}

/// Cleans the picture mirrored beyond its edges, so that both sides are multiples of 2^depth and the seam of the
/// circular shifts, where opposite edges meet, stays outside; then crops it.
Cleaning ReduceNoise(const Picture& noisy, const Options& options) {
  const std::int32_t multiple = std::int32_t{1} << options.depth;
  const std::int32_t margin = options.shifts > 0 ? multiple : 0;
  const auto extended = [=](std::int32_t size) { return (size + 2 * margin + multiple - 1) / multiple * multiple; };
  Picture picture = Window(noisy, -margin, -margin, extended(noisy.width), extended(noisy.height));
  const std::int32_t wavelet = IndexOf(options.wavelet, waveletNames);
  const std::int32_t soft = options.thresholding == "soft" ? 1 : 0;
  const auto method = static_cast<qxWaveletDenoising>(IndexOf(options.method, methodNames));

  const auto start = std::chrono::steady_clock::now();
  CQXWaveletDecomposition<float> image(static_cast<qxWaveletType>(wavelet));
  image.SetTypeOfNormalization(QX_NORMALIZATION_2);
  image.SetImage(picture.width, picture.height, picture.channelsNb, picture.samples.data());
  CQXWaveletDecomposition<float> finest = image;
  finest.FWTInPlace(1, QX_CHANNEL_2D);

  Cleaning cleaning;
  for (std::int32_t c = 0; c < picture.channelsNb; ++c) {
    const float noise = finest[c]->EstimateNoise() / diagonalBandGains[static_cast<std::size_t>(wavelet / 3)];
    cleaning.estimatedNoise.push_back(noise);
    const float threshold = options.thresholdIsAbsolute ? options.threshold : options.thresholdFactor * noise;
    cleaning.thresholds.push_back(method == QX_DENOISING_GIVEN ? threshold : 0.0f);
    cleaning.ratios.push_back(method == QX_DENOISING_GIVEN ? options.ratio : 0.0f);
  }
  const auto cleaned = image.ReduceNoiseByCircularShifts(cleaning.thresholds.data(), cleaning.ratios.data(),
                                                         options.shifts, options.depth, soft, method, ShowProgress);
  if (!cleaned) throw std::bad_alloc();
  cleaned->GetImageInPixelForm(picture.samples.data());
  cleaning.milliseconds = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
  cleaning.picture = Window(picture, margin, margin, noisy.width, noisy.height);
  return cleaning;
}

/// Peak signal-to-noise ratio in decibels, for a peak of 255; infinite for equal pictures.
template <typename T>
double Psnr(const std::vector<std::uint8_t>& reference, const std::vector<T>& samples) {
  double sum = 0;
  for (std::size_t i = 0; i < reference.size(); ++i) {
    const double difference = static_cast<double>(samples[i]) - reference[i];
    sum += difference * difference;
  }
  return 10 * std::log10(255.0 * 255.0 * static_cast<double>(reference.size()) / sum);
}

/// The pictures from left to right, with a white gap between them. All have the same size.
PngImage SideBySide(const std::vector<PngImage>& pictures) {
  constexpr std::size_t gap = 8;
  const PngImage& first = pictures.front();
  const auto channelsNb = static_cast<std::size_t>(first.channelsNb);
  const std::size_t rowLength = static_cast<std::size_t>(first.width) * channelsNb;
  PngImage result{0, first.height, first.channelsNb, {}};
  for (std::size_t y = 0; y < static_cast<std::size_t>(first.height); ++y) {
    for (const PngImage& picture : pictures) {
      if (&picture != &first) result.samples.insert(result.samples.end(), gap * channelsNb, 255);
      const auto row = picture.samples.begin() + static_cast<std::ptrdiff_t>(y * rowLength);
      result.samples.insert(result.samples.end(), row, row + static_cast<std::ptrdiff_t>(rowLength));
    }
  }
  const std::size_t count = pictures.size();
  result.width = static_cast<std::int32_t>(count * static_cast<std::size_t>(first.width) + (count - 1) * gap);
  return result;
}

void PrintPerChannel(const char* label, const std::vector<float>& values) {
  std::printf("%-16s", label);
  for (const float value : values) std::printf(" %.3f", static_cast<double>(value));
  std::printf("\n");
}

void Run(const Options& options) {
  CheckOutputPath(options.output);
  if (!options.sideBySide.empty()) CheckOutputPath(options.sideBySide);
  const PngImage original = ReadPng(options.input);
  const bool hasReference = options.noise > 0;

  Picture noisy = ToPicture(original);
  if (hasReference) AddNoise(noisy, options.noise, options.seed);
  const Cleaning cleaning = ReduceNoise(noisy, options);
  const PngImage cleaned = ToPng(cleaning.picture);

  WritePng(options.output, cleaned);
  if (!options.sideBySide.empty()) {
    std::vector<PngImage> pictures = {original, cleaned};
    if (hasReference) pictures.insert(pictures.begin() + 1, ToPng(noisy));
    WritePng(options.sideBySide, SideBySide(pictures));
  }

  std::printf("%-16s %s, %d x %d, %s\n", "picture", options.input.c_str(), original.width, original.height,
              original.channelsNb == 1 ? "gray" : "RGB");
  std::printf("%-16s %s, %s thresholding, wavelet %s, depth %d, %d circular shifts\n", "method", options.method.c_str(),
              options.thresholding.c_str(), options.wavelet.c_str(), options.depth, options.shifts);
  if (hasReference) std::printf("%-16s %g\n", "added noise", options.noise);
  PrintPerChannel("estimated noise", cleaning.estimatedNoise);
  PrintPerChannel("threshold", cleaning.thresholds);
  PrintPerChannel("ratio", cleaning.ratios);
  if (hasReference) {
    const double before = Psnr(original.samples, noisy.samples);
    const double after = Psnr(original.samples, cleaned.samples);
    std::printf("%-16s %.2f dB noisy, %.2f dB cleaned, gain %.2f dB\n", "PSNR", before, after, after - before);
  }
  const double megapixels = static_cast<double>(original.width) * original.height / 1e6;
  std::printf("%-16s %.1f ms, %.1f ms per megapixel\n", "time", cleaning.milliseconds,
              cleaning.milliseconds / megapixels);
  std::printf("%-16s %s", "written", options.output.c_str());
  if (!options.sideBySide.empty()) std::printf(", %s", options.sideBySide.c_str());
  std::printf("\n");
}

int Fail(const char* reason) {
  std::cerr << "denoise_image: " << reason << '\n';
  return 1;
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app("Reduces the noise of a photograph by wavelet thresholding.", "denoise_image");
  Options options;
  DeclareOptions(app, options);
  try {
    app.parse(argc, argv);
    Run(options);
  } catch (const CLI::CallForHelp& help) {
    return app.exit(help);
  } catch (const std::bad_alloc&) {
    return Fail("not enough memory");
  } catch (const std::exception& error) {
    return Fail(error.what());
  }
  return 0;
}
