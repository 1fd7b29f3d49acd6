#include <qx/wavelets/channel.h>
#include <qx/wavelets/wavelet_decomposition.h>

#include <utility>

#include "fuzz/input.h"

namespace {

template <typename T>
CQXChannel<T> Picture(Input& input) {
  const std::int32_t columns = input.Integer(0, 17), rows = input.Integer(0, 17);
  const std::int32_t x = input.Integer(-3, 3), y = input.Integer(-3, 3);
  std::vector<T> samples(qxElementCount(rows, columns));
  for (std::size_t i = 0; i < samples.size(); ++i) {
    samples[i] = i % 7 == 0 && !input.IsAtEnd() ? input.Number<T>() : static_cast<T>(i % 11);
  }
  return CQXChannel<T>(columns, rows, samples.data(), x, y);
}

/// One operation on a channel, raw or decomposed.
template <typename T>
void Change(Input& input, CQXChannel<T>& channel, CQXChannel<T>& other, const CQXWaveletFilter<T>& filter) {
  const std::int32_t a = input.Integer(-2, 18), b = input.Integer(-2, 18), c = input.Integer(-2, 18),
                     d = input.Integer(-2, 18);
  const auto type = input.Choice<qxChannelType>(5);
  const std::vector<T> weights = input.Numbers<T>(12);
  T threshold = input.Number<T>(), ratio = input.Number<T>();
  switch (input.Integer(0, 15)) {
    case 0:
      return (void)channel.FWTInPlace(&filter, type, a % 6);
    case 1:
      return (void)channel.IFWTInPlace();
    case 2:
      return (void)channel.IFWT(a, b, c, d);
    case 3:
      if (const auto part = channel.Cut(a, b, c, d)) other.Paste(*part);
      return;
    case 4:
      return channel.SetTypeOfNormalization(input.Choice<qxWaveletNormalization>(4));
    case 5:
      return (void)channel.CleanBelowThreshold(threshold, ratio, a % 2, input.Choice<qxWaveletDenoising>(7));
    case 6:
      return (void)channel.MixByLevels(&other, weights.data(), nullptr);
    case 7:
      return (void)channel.Combine(&other, threshold, ratio, &channel);
    case 8:
      if (const auto packed = channel.PackDecomposedChannel())
        (void)packed->UnpackDecomposedChannel(&filter, type, a % 6, QX_NORMALIZATION_2);
      return;
    case 9:
      return channel.Normalize();
    case 10:
      return channel.Denormalize();
    case 11:
      return std::swap(channel, other);
    case 12:
      return (void)channel.GetScaledHighChannel(a, b);
    case 13:
      return channel.DestroyLowestSubChannel();
    case 14:
      return (void)channel.EstimateNoise();
    default:
      return channel.Enhance(threshold);
  }
}

template <typename T>
void Run(Input& input) {
  const CQXWaveletFilter<T> filter(input.Choice<qxWaveletType>(13));
  CQXChannel<T> channel = Picture<T>(input), other = Picture<T>(input);
  for (int i = 0; i < 12 && !input.IsAtEnd(); ++i) Change(input, channel, other, filter);
}

}  // namespace

QX_FUZZ(Run)
