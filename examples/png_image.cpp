#include "png_image.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <system_error>

#include <png.h>
#include <unistd.h>

// Pictures go through the simplified interface of libpng: it keeps its error jumps inside, so that no destructor of
// ours is ever jumped over.

namespace {

constexpr std::int64_t largestPixelCount = 100'000'000;

struct FileCloser {
  void operator()(std::FILE* file) const noexcept { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

struct PngControl : png_image {
  PngControl() noexcept : png_image() { version = PNG_IMAGE_VERSION; }
  ~PngControl() { png_image_free(this); }
  PngControl(const PngControl&) = delete;
  PngControl& operator=(const PngControl&) = delete;
};

[[noreturn]] void Fail(const std::string& path, const std::string& reason) {
  throw std::runtime_error(path + ": " + reason);
}

/// The file behind a symbolic link, so that the link itself survives the renaming.
std::filesystem::path OutputTarget(const std::string& path) {
  std::error_code error;
  std::filesystem::path target = std::filesystem::weakly_canonical(std::filesystem::absolute(path), error);
  if (error) Fail(path, error.message());
  return target;
}

}  // namespace

PngImage ReadPng(const std::string& path) {
  std::error_code error;
  if (std::filesystem::is_directory(path, error)) Fail(path, "is a folder");
  const File file(std::fopen(path.c_str(), "rb"));
  if (!file) Fail(path, std::strerror(errno));

  PngControl png;
  if (png_image_begin_read_from_stdio(&png, file.get()) == 0) Fail(path, png.message);
  if ((png.format & PNG_FORMAT_FLAG_LINEAR) != 0) Fail(path, "has 16 bits a sample, 8 are expected");
  if ((png.format & PNG_FORMAT_FLAG_ALPHA) != 0) Fail(path, "has transparent pixels, gray or RGB is expected");
  if (std::int64_t{png.width} * png.height > largestPixelCount) Fail(path, "has more than 100 megapixels");

  const bool inColour = (png.format & PNG_FORMAT_FLAG_COLOR) != 0;
  png.format = inColour ? PNG_FORMAT_RGB : PNG_FORMAT_GRAY;
  PngImage image;
  image.width = static_cast<std::int32_t>(png.width);
  image.height = static_cast<std::int32_t>(png.height);
  image.channelsNb = inColour ? 3 : 1;
  image.samples.resize(PNG_IMAGE_SIZE(png));
  if (png_image_finish_read(&png, nullptr, image.samples.data(), 0, nullptr) == 0) Fail(path, png.message);
  return image;
}

void WritePng(const std::string& path, const PngImage& image) {
  CheckOutputPath(path);
  const std::filesystem::path target = OutputTarget(path);
  std::filesystem::path partial = target;
  partial += std::to_string(getpid()) + ".part";
  const auto abandon = [&](const std::string& reason) {
    std::error_code ignored;
    std::filesystem::remove(partial, ignored);
    Fail(path, reason);
  };

  File file(std::fopen(partial.c_str(), "wbx"));
  if (!file) Fail(path, std::strerror(errno));
  PngControl png;
  png.width = static_cast<png_uint_32>(image.width);
  png.height = static_cast<png_uint_32>(image.height);
  png.format = image.channelsNb == 1 ? PNG_FORMAT_GRAY : PNG_FORMAT_RGB;
  if (png_image_write_to_stdio(&png, file.get(), 0, image.samples.data(), 0, nullptr) == 0) abandon(png.message);
  if (std::fclose(file.release()) != 0) abandon(std::strerror(errno));
  std::error_code error;
  std::filesystem::rename(partial, target, error);
  if (error) abandon(error.message());
}

void CheckOutputPath(const std::string& path) {
  const std::filesystem::path target = OutputTarget(path);
  std::error_code error;
  if (std::filesystem::exists(target, error) && !std::filesystem::is_regular_file(target, error)) {
    Fail(path, "is not a plain file");
  }
  if (!std::filesystem::is_directory(target.parent_path(), error)) Fail(path, "its folder does not exist");
}
