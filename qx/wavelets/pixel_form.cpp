#include <qx/foundation/internal/instantiate.h>
#include <qx/wavelets/pixel_form.h>

#include <algorithm>
#include <limits>
#include <numbers>

namespace {

constexpr double rootOf2 = std::numbers::sqrt2;
constexpr double rootOf3 = std::numbers::sqrt3;

template <qxReal T>
constexpr T third = T(1 / rootOf3);
template <qxReal T>
constexpr T half = T(1 / rootOf2);
template <qxReal T>
constexpr T sixth = T(1 / (rootOf2 * rootOf3));

template <typename Sample, qxReal T>
void Saturate(std::size_t count, const T* samples, Sample* target) noexcept {
  constexpr T peak = std::numeric_limits<Sample>::max();
  for (std::size_t i = 0; i < count; ++i) {
    const T sample = samples[i] + T(0.5);
    // The comparison with 0 comes first and fails for not a number.
    target[i] = static_cast<Sample>(sample > 0 ? std::min(sample, peak) : T(0));
  }
}

}  // namespace

template <qxReal T>
void qxToOpponentColours(std::size_t pixelsNb, std::int32_t channelsNb, T* pixels) noexcept {
  if (channelsNb != 3) return;
  for (T* pixel = pixels; pixel != pixels + 3 * pixelsNb; pixel += 3) {
    const T red = pixel[0], green = pixel[1], blue = pixel[2];
    pixel[0] = (red + green + blue) * third<T>;
    pixel[1] = (red - blue) * half<T>;
    pixel[2] = (red - 2 * green + blue) * sixth<T>;
  }
}

template <qxReal T>
void qxFromOpponentColours(std::size_t pixelsNb, std::int32_t channelsNb, T* pixels) noexcept {
  if (channelsNb != 3) return;
  for (T* pixel = pixels; pixel != pixels + 3 * pixelsNb; pixel += 3) {
    const T luma = pixel[0] * third<T>, redOverBlue = pixel[1] * half<T>, magentaOverGreen = pixel[2] * sixth<T>;
    pixel[0] = luma + redOverBlue + magentaOverGreen;
    pixel[1] = luma - 2 * magentaOverGreen;
    pixel[2] = luma - redOverBlue + magentaOverGreen;
  }
}

template <qxReal T>
void qxCopyMirroredWindow(std::int32_t width, std::int32_t height, std::int32_t channelsNb, const T* source,
                          std::int32_t left, std::int32_t top, std::int32_t targetWidth, std::int32_t targetHeight,
                          T* target) noexcept {
  if (width < 1 || height < 1 || channelsNb < 1) return;
  const auto pixel = static_cast<std::size_t>(channelsNb);
  for (std::int32_t y = 0; y < targetHeight; ++y) {
    const T* row =
        source + static_cast<std::size_t>(qxMirroredIndex(top + y, height)) * static_cast<std::size_t>(width) * pixel;
    for (std::int32_t x = 0; x < targetWidth; ++x, target += pixel) {
      std::copy_n(row + static_cast<std::size_t>(qxMirroredIndex(left + x, width)) * pixel, pixel, target);
    }
  }
}

template <qxReal T>
void qxSaturate(std::size_t count, const T* samples, std::uint8_t* target) noexcept {
  Saturate(count, samples, target);
}

template <qxReal T>
void qxSaturate(std::size_t count, const T* samples, std::uint16_t* target) noexcept {
  Saturate(count, samples, target);
}

#define QX_INSTANTIATE(T)                                                                                            \
  template void qxToOpponentColours(std::size_t, std::int32_t, T*) noexcept;                                         \
  template void qxFromOpponentColours(std::size_t, std::int32_t, T*) noexcept;                                       \
  template void qxCopyMirroredWindow(std::int32_t, std::int32_t, std::int32_t, const T*, std::int32_t, std::int32_t, \
                                     std::int32_t, std::int32_t, T*) noexcept;                                       \
  template void qxSaturate(std::size_t, const T*, std::uint8_t*) noexcept;                                           \
  template void qxSaturate(std::size_t, const T*, std::uint16_t*) noexcept;
QX_FOR_FLOAT_AND_DOUBLE(QX_INSTANTIATE)
#undef QX_INSTANTIATE
