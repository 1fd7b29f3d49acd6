#pragma once

#include <optional>
#include <string>
#include <vector>

#include "options.h"
#include "pictures/picture_file.h"

/// One picture and where its results go.
struct Task {
  std::string input, output;
  std::string sideBySide;  ///< empty for none
};

/// What became of a picture.
struct Report {
  std::int32_t width = 0, height = 0, channelsNb = 0, bitsPerSample = 0;
  /// Noise of the planes that were cleaned.
  std::vector<double> planeNoise;
  /// The picture is not constant and no noise was found in it.
  bool noiseIsMissing = false;
  struct Ratios {
    double noisy, cleaned;
  };
  /// Peak signal-to-noise ratios in decibels, where noise was added.
  std::optional<Ratios> psnr;
  double milliseconds = 0;
};

/// Folders become their pictures, in the order of the alphabet; patterns are filled in.
/// @throws std::runtime_error with one line: several pictures without a pattern, a folder without pictures, two results
/// in one place, a result in the place of an input
std::vector<Task> ListTasks(const Options& options);

/// Reads, cleans and writes one picture. When it throws, no file has changed.
/// @throws std::runtime_error with one line that names the file
Report Clean(const Task& task, const Options& options);
