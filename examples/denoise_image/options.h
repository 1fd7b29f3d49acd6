#pragma once

#include <qx/wavelets/image_noise_reduction.h>

#include <cstdint>
#include <string>
#include <vector>

namespace CLI {
class App;
}

/// What the command line says.
struct Options {
  /// Pictures and folders.
  std::vector<std::string> inputs;
  /// A path, or a pattern: "{}" stands for the name of the input without its ending.
  std::string output, sideBySide;
  std::string method = "bivariate", thresholding = "hard", wavelet = "2_6", colour = "opponent";
  std::int32_t depth = 5, shifts = 16, jobs = 1;
  double threshold = -1, thresholdFactor = 3, ratio = 1;  ///< the threshold counts when it is not negative
  /// One number for all channels or one for each; none where the noise is estimated.
  std::vector<double> sigma;
  double addedNoise = 0;
  std::uint64_t seed = 1;
  bool asJson = false;
};

void DeclareOptions(CLI::App& app, Options& options);

/// What does not depend on the picture, in the words of the library.
qxNoiseReductionOptions ToLibraryOptions(const Options& options);
