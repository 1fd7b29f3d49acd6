#include <qx/foundation/internal/instantiate.h>
#include <qx/kernels/wavelet_kernels.h>
#include <qx/wavelets/internal/saturation.h>
#include <qx/wavelets/pixel_form.h>

#include <algorithm>

template <qxReal T>
void qxToOpponentColours(std::size_t pixelsNb, std::int32_t channelsNb, T* pixels) noexcept {
  if (channelsNb == 3) qxKernels::RotateColours(pixelsNb, 3, true, pixels, pixels + 1, pixels + 2);
}

template <qxReal T>
void qxFromOpponentColours(std::size_t pixelsNb, std::int32_t channelsNb, T* pixels) noexcept {
  if (channelsNb == 3) qxKernels::RotateColours(pixelsNb, 3, false, pixels, pixels + 1, pixels + 2);
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
  std::transform(samples, samples + count, target, qxInternal::Saturated<std::uint8_t, T>);
}

template <qxReal T>
void qxSaturate(std::size_t count, const T* samples, std::uint16_t* target) noexcept {
  std::transform(samples, samples + count, target, qxInternal::Saturated<std::uint16_t, T>);
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
