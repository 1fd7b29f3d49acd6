#pragma once

#include <qx/foundation/api.h>
#include <qx/foundation/scalar.h>

#include <cstddef>
#include <cstdint>

/// @file
/// Interleaved pixels on their way into and out of the wavelet classes: colours that are independent of each other,
/// windows with mirrored edges, and output that saturates. Rows run from top to bottom, sample i of channel c stands at
/// i x channels + c. Everything here may be called from any thread.

/// Turns red, green and blue into luma and two colour differences, in place and orthonormally:
///
///     L  = (R + G + B) / sqrt(3)      C1 = (R - B) / sqrt(2)      C2 = (R - 2 G + B) / sqrt(6)
///
/// The noise of the three stays what it was, while the picture gathers in L: noise reduction gains one to two decibels.
/// Gray pixels have C1 = C2 = 0.
/// @param channelsNb samples a pixel; unless there are 3, nothing changes
template <qxReal T>
QX_API void qxToOpponentColours(std::size_t pixelsNb, std::int32_t channelsNb, T* pixels) noexcept;

/// The inverse of qxToOpponentColours(), its transpose: R = L / sqrt(3) + C1 / sqrt(2) + C2 / sqrt(6) and so on.
/// @param channelsNb samples a pixel; unless there are 3, nothing changes
template <qxReal T>
QX_API void qxFromOpponentColours(std::size_t pixelsNb, std::int32_t channelsNb, T* pixels) noexcept;

/// The smallest multiple of 2^depth that holds @p size samples and @p margin more at each end: what
/// qxCopyMirroredWindow() is asked for so that every level of a transform divides evenly.
[[nodiscard]] constexpr std::int32_t qxExtendedSize(std::int32_t size, std::int32_t margin,
                                                    std::int32_t depth) noexcept {
  const std::int32_t multiple = std::int32_t{1} << depth;
  return (size + 2 * margin + multiple - 1) / multiple * multiple;
}

/// The sample that stands at @p index when @p size samples are mirrored at their ends, again and again, the outermost
/// ones repeated: ... 1 0 | 0 1 2 ... size-1 | size-1 size-2 ...
[[nodiscard]] constexpr std::int32_t qxMirroredIndex(std::int32_t index, std::int32_t size) noexcept {
  const std::int32_t period = 2 * size;
  const std::int32_t folded = (index % period + period) % period;
  return folded < size ? folded : period - 1 - folded;
}

/// Copies the window of @p targetWidth x @p targetHeight pixels whose upper left corner stands at (@p left, @p top) of
/// the source; beyond its edges the source is mirrored (qxMirroredIndex()).
///
/// To extend a picture: left = top = -margin and the sizes of qxExtendedSize(); to crop the result back: left = top =
/// margin and the sizes of the picture. A source without pixels copies nothing. The arrays must not overlap.
template <qxReal T>
QX_API void qxCopyMirroredWindow(std::int32_t width, std::int32_t height, std::int32_t channelsNb, const T* source,
                                 std::int32_t left, std::int32_t top, std::int32_t targetWidth,
                                 std::int32_t targetHeight, T* target) noexcept;

/// Rounds to the nearest of 0 to 255, halves up; what lies outside becomes 0 or 255, and not a number 0.
///
/// This is the form to show and to store, where CQXWaveletDecomposition::GetImageIn8BitsFormat() wraps modulo 256.
template <qxReal T>
QX_API void qxSaturate(std::size_t count, const T* samples, std::uint8_t* target) noexcept;
/// The same with 0 to 65535.
template <qxReal T>
QX_API void qxSaturate(std::size_t count, const T* samples, std::uint16_t* target) noexcept;
