// Draws a zone plate, rings that grow finer outwards, and what each resampling kernel makes of it: rings that the small
// grid cannot hold should fade to gray, and not come back as false rings about other centres.

#include <qx/wavelets/channel.h>
#include <qx/wavelets/pixel_form.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <iostream>
#include <numbers>
#include <string>
#include <vector>

#include "pictures/picture_file.h"
#include <CLI/CLI.hpp>

namespace {

using Channel = CQXChannel<float>;

constexpr std::array<const char*, 3> kernelNames = {"area", "cubic", "lanczos3"};

/// Rings about the centre whose frequency reaches half a ring a sample at the middle of an edge.
Channel ZonePlate(std::int32_t size) {
  Channel plate(size, size, 0, 0);
  plate.Initialize();
  if (plate.GetData() == nullptr) throw std::bad_alloc();
  for (std::int32_t y = 0; y < size; ++y) {
    for (std::int32_t x = 0; x < size; ++x) {
      const double u = x - 0.5 * (size - 1), v = y - 0.5 * (size - 1);
      plate(y, x) = static_cast<float>(127.5 + 127.5 * std::cos(std::numbers::pi * (u * u + v * v) / size));
    }
  }
  return plate;
}

/// Root mean square about gray of the outer ring of a picture, where the rings are too fine for it: what came back.
double FalseRings(const Channel& channel) {
  const std::int32_t size = channel.GetRowsNb();
  double sum = 0;
  std::int32_t count = 0;
  for (std::int32_t y = 0; y < size; ++y) {
    for (std::int32_t x = 0; x < size; ++x) {
      const double radius = std::hypot(x - 0.5 * (size - 1), y - 0.5 * (size - 1));
      if (radius < 0.35 * size || radius > 0.49 * size) continue;
      sum += std::pow(static_cast<double>(channel(y, x)) - 127.5, 2);
      ++count;
    }
  }
  return std::sqrt(sum / count);
}

void CopyTo(const Channel& channel, std::int32_t left, std::int32_t top, Picture& picture) {
  for (std::int32_t y = 0; y < channel.GetRowsNb(); ++y) {
    qxSaturate(static_cast<std::size_t>(channel.GetColsNb()), &channel(y, 0), picture.Row(top + y) + left);
  }
}

void Draw(const std::string& path, std::int32_t size, double factor) {
  const Channel plate = ZonePlate(size);
  std::vector<OutputFile> files;
  files.emplace_back(path);
  Picture picture;
  picture.channelsNb = 1;
  std::int32_t left = 0;
  for (std::size_t kernel = 0; kernel < kernelNames.size(); ++kernel) {
    const auto small = plate.Scale(factor, factor, static_cast<qxResampling>(kernel));
    if (small == nullptr) throw std::bad_alloc();
    if (kernel == 0) {
      picture.width = size + 3 * (small->GetColsNb() + 8);
      picture.height = size;
      picture.bytes.assign(picture.PixelsNb(), 255);
      CopyTo(plate, 0, 0, picture);
      left = size;
    }
    CopyTo(*small, left + 8, 0, picture);
    left += small->GetColsNb() + 8;
    std::printf("%-9s %d x %d, false rings %.2f gray levels\n", kernelNames[kernel], small->GetColsNb(),
                small->GetRowsNb(), FalseRings(*small));
  }
  WritePicture(files.front(), picture);
  OutputFile::PublishAll(files);
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app("Resamples a zone plate with each kernel, side by side.", "resample_zone_plate");
  std::string path;
  std::int32_t size = 512;
  double factor = 0.5;
  app.add_option("picture", path, "Picture to write (PNG, JPEG or TIFF)")->required();
  app.add_option("--size", size, "Sides of the zone plate")->check(CLI::Range(16, 8192))->capture_default_str();
  app.add_option("--factor", factor, "Factor of the smaller pictures")
      ->check(CLI::Range(0.05, 1.0))
      ->capture_default_str();
  try {
    app.parse(argc, argv);
    Draw(path, size, factor);
  } catch (const CLI::CallForHelp& help) {
    return app.exit(help);
  } catch (const std::bad_alloc&) {
    std::cerr << "resample_zone_plate: not enough memory\n";
    return 1;
  } catch (const std::exception& error) {
    std::cerr << "resample_zone_plate: " << error.what() << '\n';
    return 1;
  }
  return 0;
}
