#pragma once

#include <qx/foundation/api.h>

#include <cstdint>

/// The twelve lifting wavelets; the digits are the numbers of vanishing moments, the first one names the family.
///
/// Families 1 and 2 update the high band and then the low band; families 3 and 4 begin with the low band. For noise
/// reduction take family 2 (QX_WAVELET_2_6 or QX_WAVELET_2_2): families 3 and 4 clean worse, and the low band of
/// QX_WAVELET_3_3 is no low-pass. Any other value counts as QX_WAVELET_2_2; -1 stands for no wavelet.
enum qxWaveletType : std::int32_t {
  QX_WAVELET_1_1 = 0,
  QX_WAVELET_1_3 = 1,
  QX_WAVELET_1_5 = 2,
  QX_WAVELET_2_2 = 3,
  QX_WAVELET_2_4 = 4,
  QX_WAVELET_2_6 = 5,
  QX_WAVELET_3_1 = 6,
  QX_WAVELET_3_3 = 7,
  QX_WAVELET_3_5 = 8,
  QX_WAVELET_4_2 = 9,
  QX_WAVELET_4_4 = 10,
  QX_WAVELET_4_6 = 11
};

/// The directions of one level of a transform.
enum qxChannelType : std::int32_t {
  QX_CHANNEL_RAW = 0,      ///< no transform
  QX_CHANNEL_ROWS = 1,     ///< along each row: the columns divide into a low and a high band
  QX_CHANNEL_COLUMNS = 2,  ///< along each column: the rows divide into a low and a high band
  QX_CHANNEL_2D = 3        ///< rows, then columns: four bands
};

/// Index of a band among the sub-channels of a level. A level along one direction has the first two.
enum qxSubChannelType : std::int32_t {
  QX_SUBCHANNEL_LOW = 0,   ///< the low band of a level along one direction
  QX_SUBCHANNEL_HIGH = 1,  ///< the high band of a level along one direction
  QX_SUBCHANNEL_LL = 0,    ///< low columns, low rows
  QX_SUBCHANNEL_HH = 1,    ///< high columns, high rows
  QX_SUBCHANNEL_LH = 2,    ///< high columns, low rows
  QX_SUBCHANNEL_HL = 3     ///< low columns, high rows
};

/// Amplitude of the bands. Noise reduction wants QX_NORMALIZATION_2, where white noise has the same deviation in every
/// band up to the shape of the wavelet; without it thresholds do not fit: one pass of cleaning loses 1.5 to 9 dB.
enum qxWaveletNormalization : std::int32_t {
  QX_NORMALIZATION_NONE = 0,  ///< the bands as lifting leaves them
  QX_NORMALIZATION_1 = 1,     ///< low and high norm 1 of the filter
  QX_NORMALIZATION_2 = 2      ///< low and high norm 0 of the filter; so does any other value
};

/// How CQXChannel::CleanBelowThreshold() finds its threshold. Other values change nothing.
enum qxWaveletDenoising : std::int32_t {
  QX_DENOISING_GIVEN = 0,              ///< the caller's threshold, multiplied by the caller's ratio once per level
  QX_DENOISING_UNIVERSAL = 1,          ///< sigma sqrt(2 ln N), N samples: one value for all levels
  QX_DENOISING_LEVEL_DEPENDENT = 2,    ///< the universal value reduced for the finest level, times sqrt(2) per level
  QX_DENOISING_BAND_VARIANCE = 3,      ///< per band, from the band's variance
  QX_DENOISING_BAND_SIGNAL = 4,        ///< per band, from the band's variance less that of the noise
  QX_DENOISING_BAND_SIGNAL_MASKED = 5  ///< as before; a coefficient goes only when its neighbours are small too
};

/// How CQXChannel::Resize() makes a sample of those around its place.
enum qxResampling : std::int32_t {
  QX_RESAMPLING_AREA = 0,     ///< mean over the area that one sample of the coarser grid covers
  QX_RESAMPLING_CUBIC = 1,    ///< cubic convolution with a = -1/2 (Keys, 1981)
  QX_RESAMPLING_LANCZOS3 = 2  ///< windowed sinc of six samples, the sharpest; so does any other value
};
