#pragma once

#include <cstdio>
#include <stdexcept>
#include <string>

#include "picture.h"
#include "picture_file.h"

/// @file
/// The formats behind picture_file.h. Readers take the stream from its beginning; @p path serves the messages.

namespace pictureFormats {

constexpr std::int64_t largestPixelCount = 400'000'000;

[[noreturn]] inline void Fail(const std::string& path, const std::string& reason) {
  throw std::runtime_error(path + ": " + reason);
}

/// Sets the sizes of @p picture and makes room for its samples.
/// @throws std::runtime_error for no or too many pixels
inline void Shape(Picture& picture, const std::string& path, std::int64_t width, std::int64_t height,
                  std::int32_t channelsNb, std::int32_t bitsPerSample) {
  if (width < 1 || height < 1) Fail(path, "has no pixels");
  if (width > largestPixelCount / height) Fail(path, "has more than 400 megapixels");
  picture.width = static_cast<std::int32_t>(width);
  picture.height = static_cast<std::int32_t>(height);
  picture.channelsNb = channelsNb;
  picture.bitsPerSample = bitsPerSample;
  picture.bytes.resize(picture.RowBytes() * static_cast<std::size_t>(height));
}

Picture ReadPng(std::FILE* stream, const std::string& path, const RowProgress& progress);
Picture ReadJpeg(std::FILE* stream, const std::string& path, const RowProgress& progress);
Picture ReadTiff(std::FILE* stream, const std::string& path, const RowProgress& progress);

void WritePng(std::FILE* stream, const std::string& path, const Picture& picture, const RowProgress& progress);
void WriteJpeg(std::FILE* stream, const std::string& path, const Picture& picture, const RowProgress& progress);
void WriteTiff(std::FILE* stream, const std::string& path, const Picture& picture, const RowProgress& progress);

}  // namespace pictureFormats
