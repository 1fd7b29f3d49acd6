#include "picture_file.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <memory>

#include "formats.h"

namespace {

using namespace pictureFormats;

struct Format {
  std::array<const char*, 2> endings;
  Picture (*read)(std::FILE*, const std::string&, const RowProgress&);
  void (*write)(std::FILE*, const std::string&, const Picture&, const RowProgress&);
  bool holdsAlphaAnd16Bits;
};

constexpr Format png = {{".png", ".png"}, ReadPng, WritePng, true};
constexpr Format jpeg = {{".jpg", ".jpeg"}, ReadJpeg, WriteJpeg, false};
constexpr Format tiff = {{".tif", ".tiff"}, ReadTiff, WriteTiff, true};

/// Null for an unknown ending.
const Format* FormatOf(const std::string& path) {
  std::string ending = std::filesystem::path(path).extension().string();
  std::transform(ending.begin(), ending.end(), ending.begin(),
                 [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
  for (const Format* format : {&png, &jpeg, &tiff}) {
    if (ending == format->endings[0] || ending == format->endings[1]) return format;
  }
  return nullptr;
}

/// Null when the first bytes are those of no format.
const Format* FormatOf(const std::array<unsigned char, 8>& first) {
  const auto begins = [&](const char* bytes, std::size_t count) {
    return std::memcmp(first.data(), bytes, count) == 0;
  };
  if (begins("\x89PNG\r\n\x1a\n", 8)) return &png;
  if (begins("\xff\xd8\xff", 3)) return &jpeg;
  if (begins("II*\0", 4) || begins("MM\0*", 4) || begins("II+\0", 4) || begins("MM\0+", 4)) return &tiff;
  return nullptr;
}

struct FileCloser {
  void operator()(std::FILE* file) const noexcept { std::fclose(file); }
};

}  // namespace

Picture ReadPicture(const std::string& path, const RowProgress& progress) {
  std::error_code error;
  if (std::filesystem::is_directory(path, error)) Fail(path, "is a folder");
  const std::unique_ptr<std::FILE, FileCloser> file(std::fopen(path.c_str(), "rb"));
  if (!file) Fail(path, std::strerror(errno));
  std::array<unsigned char, 8> first = {};
  const std::size_t count = std::fread(first.data(), 1, first.size(), file.get());
  if (count == 0 && std::ferror(file.get()) != 0) Fail(path, std::strerror(errno));
  const Format* format = FormatOf(first);
  if (format == nullptr) Fail(path, "is no PNG, JPEG or TIFF picture");
  std::rewind(file.get());
  return format->read(file.get(), path, progress);
}

bool IsPicturePath(const std::string& path) { return FormatOf(path) != nullptr; }

void CheckFormat(const std::string& path, const Picture& picture) {
  const Format* format = FormatOf(path);
  if (format == nullptr) Fail(path, "its ending is none of .png, .jpg, .jpeg, .tif, .tiff");
  if (format->holdsAlphaAnd16Bits) return;
  if (picture.HasAlpha()) Fail(path, "JPEG holds no transparency: write PNG or TIFF");
  if (picture.bitsPerSample == 16) Fail(path, "JPEG holds 8 bits a sample: write PNG or TIFF");
  if (std::max(picture.width, picture.height) > 65500) Fail(path, "JPEG holds no more than 65500 rows or columns");
}

void WritePicture(OutputFile& file, const Picture& picture, const RowProgress& progress) {
  CheckFormat(file.Path(), picture);
  FormatOf(file.Path())->write(file.Stream(), file.Path(), picture, progress);
}
