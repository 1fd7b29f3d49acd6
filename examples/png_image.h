#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// A picture of 8 bits a sample: rows from top to bottom, the channels of a pixel side by side.
struct PngImage {
  std::int32_t width = 0;
  std::int32_t height = 0;
  /// 1 for gray, 3 for red, green and blue.
  std::int32_t channelsNb = 0;
  std::vector<std::uint8_t> samples;
};

/// Reads a gray or colour PNG; a palette is resolved, 1 to 4 bits a sample become 8, and a file that states another
/// gamma is brought to sRGB.
/// @throws std::runtime_error with one line that names the file: it cannot be opened, is damaged or no PNG, has an
/// alpha channel or 16 bits a sample, or more than 100 megapixels.
PngImage ReadPng(const std::string& path);

/// Writes @p image under another name and renames it: a file of that name is replaced by a whole one or not at all.
/// @throws std::runtime_error with one line that names the file.
void WritePng(const std::string& path, const PngImage& image);

/// Finds out before the work is done whether WritePng() has a place to write to.
/// @throws std::runtime_error when the folder does not exist or the path is something other than a plain file.
void CheckOutputPath(const std::string& path);
