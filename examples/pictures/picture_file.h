#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "output_file.h"
#include "picture.h"

/// Called while rows are read or written.
using RowProgress = std::function<void(std::int32_t done, std::int32_t total)>;

/// Reads a gray or RGB picture of 8 or 16 bits, with or without alpha: PNG, JPEG or TIFF, told by its first bytes.
///
/// Palettes and low bit depths become 8 bits a sample; interlaced, tiled and planar files are put in order.
/// @throws std::runtime_error with one line that names the file: it cannot be opened, is damaged, cut short, none of
/// these formats or in other colours (CMYK), or has more than 400 megapixels.
Picture ReadPicture(const std::string& path, const RowProgress& progress = {});

/// Whether the ending of @p path names a format that can be written: .png, .jpg, .jpeg, .tif, .tiff.
bool IsPicturePath(const std::string& path);

/// Finds out before the work is done whether the format that the ending of @p path names can hold @p picture.
/// @throws std::runtime_error with one line: an unknown ending, or JPEG for 16 bits or alpha.
void CheckFormat(const std::string& path, const Picture& picture);

/// Writes @p picture in the format that the ending of the file's path names; the caller publishes the file.
/// @throws std::runtime_error with one line that names the file.
void WritePicture(OutputFile& file, const Picture& picture, const RowProgress& progress = {});
