#include "options.h"

#include <qx/foundation/thread_executor.h>

#include <algorithm>
#include <array>
#include <charconv>

#include <CLI/CLI.hpp>

namespace {

constexpr std::array<const char*, 12> waveletNames = {"1_1", "1_3", "1_5", "2_2", "2_4", "2_6",
                                                      "3_1", "3_3", "3_5", "4_2", "4_4", "4_6"};
/// In the order of qxWaveletDenoising, then the rule that is none of them.
constexpr std::array<const char*, 7> methodNames = {
    "given", "universal", "level-dependent", "band-variance", "band-signal", "band-signal-masked", "bivariate"};

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

/// Decimal whole numbers; zeros in front mean nothing.
template <typename Integer>
CLI::Validator WholeNumber(Integer low, Integer high) {
  const std::string range = std::to_string(low) + " to " + std::to_string(high);
  return CLI::Validator(
      [=](std::string& value) {
        Integer number = 0;
        const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), number);
        const bool isWhole =
            error == std::errc() && end == value.data() + value.size() && number >= low && number <= high;
        if (!isWhole) return value + " is not a whole number from " + range;
        value = std::to_string(number);
        return std::string();
      },
      range);
}

void DeclareFiles(CLI::App& app, Options& options) {
  app.add_option(
         "files", options.inputs,
         "Pictures (PNG, JPEG, TIFF; gray or RGB, 8 or 16 bits, with or without alpha) or folders of pictures, "
         "and last the cleaned picture to write. For several pictures it is a pattern: {} stands for the name of "
         "the input without its ending, as in cleaned/{}.png")
      ->required()
      ->expected(2, 1000000);
  app.add_option("--side-by-side", options.sideBySide, "Also write original | noisy | cleaned in one picture");
  app.add_flag("--json", options.asJson, "Say what was done as JSON, one line a picture");
  app.add_option("--jobs", options.jobs, "Threads; the result does not depend on it, the memory does")
      ->transform(WholeNumber<std::int32_t>(1, 64))
      ->capture_default_str();
}

void DeclareNoise(CLI::App& app, Options& options) {
  app.add_option(
         "--sigma", options.sigma,
         "Standard deviation of the noise in levels of the file, where it is known: one number, or one for each "
         "channel but alpha")
      ->check(Between(0, 100000))
      ->delimiter(',');
  app.add_option(
         "--noise", options.addedNoise,
         "Add Gaussian noise of this standard deviation first, in levels of the file, and say how much went away")
      ->check(Between(0, 100000));
  app.add_option("--seed", options.seed, "Seed of the added noise")
      ->transform(WholeNumber<std::uint64_t>(0, UINT64_MAX))
      ->capture_default_str();
}

}  // namespace

void DeclareOptions(CLI::App& app, Options& options) {
  DeclareFiles(app, options);
  app.add_option("--method", options.method,
                 "Rule by which coefficients are cleaned; all but bivariate compare them with a threshold")
      ->check(OneOf(methodNames))
      ->capture_default_str();
  CLI::Option* thresholding =
      app.add_option("--thresholding", options.thresholding,
                     "hard keeps a coefficient above the threshold as it is, soft shrinks it by the threshold")
          ->check(CLI::IsMember({"hard", "soft"}))
          ->capture_default_str();
  app.add_option("--wavelet", options.wavelet, "Wavelet; families 1 and 2 clean best")
      ->check(OneOf(waveletNames))
      ->capture_default_str();
  app.add_option("--color,--colour", options.colour,
                 "opponent cleans luma and two colour differences, channels cleans red, green and blue")
      ->check(CLI::IsMember({"opponent", "channels"}))
      ->capture_default_str();
  app.add_option("--depth", options.depth, "Levels of the transform")
      ->transform(WholeNumber<std::int32_t>(1, 8))
      ->capture_default_str();
  app.add_option("--shifts", options.shifts, "Shifted passes to average over beside the first, 0 for one plain pass")
      ->transform(WholeNumber<std::int32_t>(0, 1000))
      ->capture_default_str();

  CLI::Option* factor =
      app.add_option("--threshold-factor", options.thresholdFactor, "Method given: threshold in multiples of the noise")
          ->check(Between(0, 1000))
          ->capture_default_str();
  CLI::Option* threshold =
      app.add_option("--threshold", options.threshold, "Method given: threshold in levels of the file instead")
          ->check(Between(0, 100000))
          ->excludes(factor);
  CLI::Option* ratio =
      app.add_option("--ratio", options.ratio, "Method given: the threshold is multiplied by this from level to level")
          ->check(Between(0, 1000))
          ->capture_default_str();
  DeclareNoise(app, options);

  app.final_callback([&options, thresholding, factor, threshold, ratio] {
    for (const CLI::Option* option : {factor, threshold, ratio}) {
      if (*option && options.method != "given") throw CLI::ValidationError(option->get_name(), "needs --method given");
    }
    if (*thresholding && options.method == "bivariate") {
      throw CLI::ValidationError("--thresholding", "needs another method than bivariate");
    }
    options.output = options.inputs.back();
    options.inputs.pop_back();
  });
}

qxNoiseReductionOptions ToLibraryOptions(const Options& options) {
  const std::int32_t method = IndexOf(options.method, methodNames);
  qxNoiseReductionOptions result;
  result.wavelet = static_cast<qxWaveletType>(IndexOf(options.wavelet, waveletNames));
  result.rule = options.method == "bivariate" ? QX_NOISE_REDUCTION_BIVARIATE : QX_NOISE_REDUCTION_THRESHOLD;
  if (result.rule == QX_NOISE_REDUCTION_THRESHOLD) result.method = static_cast<qxWaveletDenoising>(method);
  result.soft = options.thresholding == "soft" ? 1 : 0;
  result.colour = options.colour == "opponent" ? QX_COLOUR_OPPONENT : QX_COLOUR_CHANNELS;
  result.depth = options.depth;
  result.shifts = options.shifts;
  result.thresholdIsAbsolute = options.threshold >= 0;
  result.threshold = result.thresholdIsAbsolute ? options.threshold : options.thresholdFactor;
  result.ratio = options.ratio;
  result.executor = qxThreadExecutor(options.jobs);
  return result;
}
