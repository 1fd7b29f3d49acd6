#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

struct PictureText {
  std::string keyword, content;
  bool isUtf8 = false;
};

/// What a picture file says beside its samples; carried from the input to the output as far as its format can hold it.
struct PictureInformation {
  std::vector<std::uint8_t> iccProfile;
  std::vector<std::uint8_t> exif;  ///< the TIFF structure, without the header of a JPEG marker
  /// The exponent of encoding as PNG states it, 0.45455 for 1 / 2.2; 0 where the file states none.
  double gamma = 0;
  bool isSrgb = false;
  /// Samples a metre; 0 where the file states none.
  double horizontalResolution = 0, verticalResolution = 0;
  /// How the rows lie, as TIFF counts it; 1 from top to bottom.
  std::int32_t orientation = 1;
  std::vector<PictureText> texts;
};

/// A picture as files hold it: rows from top to bottom, the channels of a pixel side by side.
struct Picture {
  std::int32_t width = 0;
  std::int32_t height = 0;
  /// 1 gray, 2 gray and alpha, 3 RGB, 4 RGB and alpha.
  std::int32_t channelsNb = 0;
  /// 8 or 16; samples of 16 bits are in the order of the machine.
  std::int32_t bitsPerSample = 8;
  /// The colours were multiplied by alpha, as some TIFF files have them; PNG files never do.
  bool isPremultiplied = false;
  std::vector<std::uint8_t> bytes;
  PictureInformation information;

  [[nodiscard]] bool HasAlpha() const noexcept { return channelsNb % 2 == 0; }
  /// Channels that are not alpha: 1 or 3.
  [[nodiscard]] std::int32_t ColoursNb() const noexcept { return HasAlpha() ? channelsNb - 1 : channelsNb; }
  [[nodiscard]] std::size_t PixelsNb() const noexcept {
    return static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
  }
  [[nodiscard]] std::size_t RowBytes() const noexcept {
    return static_cast<std::size_t>(width) * static_cast<std::size_t>(channelsNb * bitsPerSample / 8);
  }
  [[nodiscard]] std::uint8_t* Row(std::int32_t y) noexcept {
    return bytes.data() + static_cast<std::size_t>(y) * RowBytes();
  }
  [[nodiscard]] const std::uint8_t* Row(std::int32_t y) const noexcept {
    return bytes.data() + static_cast<std::size_t>(y) * RowBytes();
  }
  /// 255 or 65535.
  [[nodiscard]] std::int32_t Peak() const noexcept { return bitsPerSample == 8 ? 255 : 65535; }
};
