#pragma once

#include <qx/foundation/api.h>
#include <qx/foundation/executor.h>
#include <qx/foundation/progress.h>
#include <qx/wavelets/wavelet_types.h>

#include <cstdint>
#include <limits>

/// @file
/// The noise out of a picture in one call.

/// How qxReduceImageNoise() treats the coefficients.
enum qxNoiseReductionRule : std::int32_t {
  QX_NOISE_REDUCTION_BIVARIATE = 0,  ///< by the coefficient, its parent and its neighbourhood; the best of the rules
  QX_NOISE_REDUCTION_THRESHOLD = 1   ///< by a threshold: see qxWaveletDenoising
};

/// What qxReduceImageNoise() makes of three colours.
enum qxColourTreatment : std::int32_t {
  QX_COLOUR_OPPONENT = 0,  ///< luma and two colour differences are cleaned: qxToOpponentColours()
  QX_COLOUR_CHANNELS = 1   ///< each channel is cleaned by itself
};

/// What qxReduceImageNoise() is to do; as it stands, what is best for photographs.
struct qxNoiseReductionOptions {
  qxNoiseReductionRule rule = QX_NOISE_REDUCTION_BIVARIATE;
  qxColourTreatment colour = QX_COLOUR_OPPONENT;
  qxWaveletType wavelet = QX_WAVELET_2_6;
  /// Levels of the transform, 1 to 12.
  std::int32_t depth = 5;
  /// Passes beside the first one, each with the picture moved against the grid of the transform; the result is the
  /// mean.
  std::int32_t shifts = 16;

  // For QX_NOISE_REDUCTION_THRESHOLD.

  qxWaveletDenoising method = QX_DENOISING_UNIVERSAL;
  /// 0 keeps what is above the threshold, otherwise it moves towards 0 by the threshold.
  std::int32_t soft = 0;
  /// For QX_DENOISING_GIVEN: the threshold of level 1, in multiples of the noise of the plane or in units of the
  /// samples, and its factor from level to level.
  double threshold = 3;
  bool thresholdIsAbsolute = false;
  double ratio = 1;

  /// Index of a channel that stays as it is, transparency; -1 for none.
  std::int32_t alphaChannel = -1;
  /// Standard deviation of the noise in units of the samples, one number for each channel but alpha; null: estimated.
  const double* noise = nullptr;
  /// Samples at or beyond these are clipped, and the estimate leaves their neighbourhoods out. Whole numbers are
  /// clipped at the ends of their type in any case.
  double lowest = -std::numeric_limits<double>::infinity();
  double highest = std::numeric_limits<double>::infinity();
  /// Where not null, the noise that was taken is written, one number for each plane that was cleaned: luma, R - B,
  /// R - 2 G + B, or the channels but alpha.
  double* planeNoise = nullptr;

  /// Runs planes and passes at once; every pass that runs needs two planes of floats.
  qxExecutor executor = {};
};

/// Reduces the noise of an interleaved picture, in place: each plane is taken apart by wavelets, cleaned and put
/// together, once for each pass, and the mean of the passes is written.
///
/// A pass moves the window of the transform, which is larger than the picture and mirrored beyond its edges, so there
/// is no seam. Whole numbers are rounded to the nearest and saturate. The bits do not depend on the executor. With a
/// noise of 0, given or estimated, the rules that need one change nothing but the last digits of floats.
/// @param channelsNb samples a pixel: three colours are treated together, with alpha beside them or not
/// @param pixels width x height x channelsNb samples: std::uint8_t, std::uint16_t or float
/// @param progress told after each pass of a plane; when it returns false, the work ends
/// @return 1; 0, and the picture is as it came, when memory was refused with null, when the work was cancelled, and for
/// sizes below 1, a depth outside 1 to 12 or a negative number of shifts
template <typename Sample>
[[nodiscard]] QX_API std::int32_t qxReduceImageNoise(std::int32_t width, std::int32_t height, std::int32_t channelsNb,
                                                     Sample* pixels, const qxNoiseReductionOptions& options = {},
                                                     const qxProgress& progress = {});

/// The noise of each plane that qxReduceImageNoise() would clean, in units of the samples: the median of the magnitudes
/// of second differences along both directions, over what it is for white noise of deviation 1. Neighbourhoods of 3 x 3
/// pixels with a clipped sample are left out.
///
/// A plane of which more than half is flat gives 0,
/// and so does one without a neighbourhood that is not clipped.
/// @param planeNoise one number for each plane is written
/// @return 1; 0 when memory was refused with null, and for sizes below 1
template <typename Sample>
[[nodiscard]] QX_API std::int32_t qxEstimateImageNoise(std::int32_t width, std::int32_t height, std::int32_t channelsNb,
                                                       const Sample* pixels, const qxNoiseReductionOptions& options,
                                                       double* planeNoise);
