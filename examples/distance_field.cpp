// Rasterises a polygon with holes and draws its coverage beside its distance field: blue outside, orange inside, a line
// at every tenth pixel.

#include <qx/grids/grid.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <exception>
#include <iostream>
#include <numbers>
#include <string>
#include <vector>

#include "pictures/picture_file.h"

namespace {

using Grid = CQXGrid<float>;
using Vector = CQXVector2<float>;

constexpr std::int32_t size = 400;

/// A gear wheel of 12 teeth with a square hole, two polygons one after the other.
std::vector<Vector> Gear(std::array<std::int32_t, 2>& counts) {
  std::vector<Vector> vertices;
  constexpr std::int32_t teethNb = 12;
  const auto append = [&](double radius, double angle) {
    vertices.emplace_back(static_cast<float>(size / 2.0 + radius * std::cos(angle)),
                          static_cast<float>(size / 2.0 + radius * std::sin(angle)));
  };
  for (std::int32_t i = 0; i < 4 * teethNb; ++i) {
    append(i % 4 < 2 ? 0.42 * size : 0.32 * size, 2 * std::numbers::pi * (i + 0.2 * (i % 2)) / (4 * teethNb));
  }
  counts = {4 * teethNb, 4};
  for (std::int32_t i = 0; i < 4; ++i) append(0.15 * size, std::numbers::pi * (0.5 * i + 0.1));
  return vertices;
}

std::uint8_t ToByte(double x) { return static_cast<std::uint8_t>(std::lround(255 * std::min(std::max(x, 0.0), 1.0))); }

/// Red, green and blue from 0 to 1.
std::array<double, 3> ColourOf(double distance) {
  const double fade = std::exp(-std::abs(distance) / 60);
  const double line = std::min(std::abs(distance - 10 * std::round(distance / 10)), 1.0);  // 0 on a line
  std::array<double, 3> colour = distance < 0 ? std::array{1.0, 0.85 - 0.45 * fade, 0.6 - 0.5 * fade}
                                              : std::array{0.6 - 0.5 * fade, 0.8 - 0.4 * fade, 1.0};
  for (double& c : colour) c *= 0.6 + 0.4 * line;
  return colour;
}

Picture Draw(const Grid& coverage, const Grid& distance) {
  Picture image;
  image.width = 2 * size;
  image.height = size;
  image.channelsNb = 3;
  for (std::int32_t y = 0; y < size; ++y) {
    for (std::int32_t x = 0; x < 2 * size; ++x) {
      const double covered = x < size ? static_cast<double>(coverage(x, y)) : 0;
      const std::array<double, 3> colour = x < size ? std::array{1 - covered, 1 - covered, 1 - covered}
                                                    : ColourOf(static_cast<double>(distance(x - size, y)));
      for (const double c : colour) image.bytes.push_back(ToByte(c));
    }
  }
  return image;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: distance_field PICTURE.png\n";
    return 2;
  }
  try {
    std::array<std::int32_t, 2> counts;
    const std::vector<Vector> vertices = Gear(counts);
    Grid coverage(size, size), distance;
    if (coverage.RasterizePolygons(2, counts.data(), vertices.data(), QX_FILL_EVEN_ODD) == 0 ||
        distance.SetSignedDistance(coverage) == 0) {
      throw std::runtime_error("no memory");
    }
    double area = 0;
    for (std::size_t i = 0; i < coverage.Count(); ++i) area += static_cast<double>(coverage.Data()[i]);
    std::cout << "covered: " << area << " pixels; centre " << distance(size / 2, size / 2)
              << " pixels from the border\n";
    std::vector<OutputFile> files;
    files.emplace_back(argv[1]);
    WritePicture(files.front(), Draw(coverage, distance));
    OutputFile::PublishAll(files);
  } catch (const std::exception& e) {
    std::cerr << "distance_field: " << e.what() << '\n';
    return 1;
  }
}
