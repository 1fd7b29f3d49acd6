#include <qx/grids/derivative.h>
#include <qx/grids/grid.h>

#include <cmath>
#include <cstdint>
#include <numbers>
#include <vector>

#include <benchmark/benchmark.h>

#ifdef QX_LINK_OPENCV
#include <opencv2/imgproc.hpp>
#endif

namespace {

constexpr std::int32_t size = 1024;

/// A star of 2 n vertices that fills most of the grid.
std::vector<CQXVector2<float>> Star(std::int64_t n) {
  std::vector<CQXVector2<float>> star;
  for (std::int64_t i = 0; i < 2 * n; ++i) {
    const double angle = std::numbers::pi * static_cast<double>(i) / static_cast<double>(n);
    const double radius = size * (i % 2 == 0 ? 0.49 : 0.35);
    star.emplace_back(static_cast<float>(size / 2 + radius * std::cos(angle)),
                      static_cast<float>(size / 2 + radius * std::sin(angle)));
  }
  return star;
}

CQXGrid<float> Coverage() {
  CQXGrid<float> grid(size, size);
  const auto star = Star(20);
  (void)grid.RasterizePolygon(40, star.data());
  return grid;
}

void Rasterise_qx(benchmark::State& state) {
  const auto star = Star(state.range(0));
  CQXGrid<float> grid(size, size);
  for (auto _ : state)
    benchmark::DoNotOptimize(grid.RasterizePolygon(static_cast<std::int32_t>(star.size()), star.data()));
  state.SetItemsProcessed(state.iterations() * size * size);
}
BENCHMARK(Rasterise_qx)->Arg(20)->Arg(2000)->Unit(benchmark::kMillisecond);

void DistanceField_qx(benchmark::State& state) {
  const CQXGrid<float> coverage = Coverage();
  CQXGrid<float> field;
  for (auto _ : state) benchmark::DoNotOptimize(field.SetSignedDistance(coverage));
  state.SetItemsProcessed(state.iterations() * size * size);
}
BENCHMARK(DistanceField_qx)->Unit(benchmark::kMillisecond);

void DeriveAlongX_qx(benchmark::State& state) {
  const CQXGrid<float> coverage = Coverage();
  CQXGrid<float> derivative;
  for (auto _ : state) {
    benchmark::DoNotOptimize(
        CQXDerivative<float>::DeriveAlongX(coverage, 1, 1, static_cast<std::int32_t>(state.range(0)), derivative));
  }
  state.SetItemsProcessed(state.iterations() * size * size);
}
BENCHMARK(DeriveAlongX_qx)->Arg(2)->Arg(6)->Unit(benchmark::kMillisecond);

void DeriveAlongY_qx(benchmark::State& state) {
  const CQXGrid<float> coverage = Coverage();
  CQXGrid<float> derivative;
  for (auto _ : state) {
    benchmark::DoNotOptimize(
        CQXDerivative<float>::DeriveAlongY(coverage, 1, 1, static_cast<std::int32_t>(state.range(0)), derivative));
  }
  state.SetItemsProcessed(state.iterations() * size * size);
}
BENCHMARK(DeriveAlongY_qx)->Arg(2)->Arg(6)->Unit(benchmark::kMillisecond);

#ifdef QX_LINK_OPENCV
/// Lines smoothed at the border, 8 bits a pixel.
void Rasterise_opencv(benchmark::State& state) {
  cv::setNumThreads(1);
  std::vector<cv::Point> star;
  for (const auto& p : Star(state.range(0)))
    star.emplace_back(static_cast<int>(p.X() * 16), static_cast<int>(p.Y() * 16));
  cv::Mat image(size, size, CV_8UC1);
  for (auto _ : state) {
    image.setTo(0);
    cv::fillPoly(image, std::vector<std::vector<cv::Point>>{star}, cv::Scalar(255), cv::LINE_AA, 4);
  }
  state.SetItemsProcessed(state.iterations() * size * size);
}
BENCHMARK(Rasterise_opencv)->Arg(20)->Arg(2000)->Unit(benchmark::kMillisecond);

/// Inside and outside, each from its own call.
void DistanceField_opencv(benchmark::State& state) {
  cv::setNumThreads(1);
  const CQXGrid<float> coverage = Coverage();
  cv::Mat inside(size, size, CV_8UC1), outside, distances[2];
  for (std::int32_t y = 0; y < size; ++y) {
    for (std::int32_t x = 0; x < size; ++x) inside.at<unsigned char>(y, x) = coverage(x, y) >= 0.5f ? 255 : 0;
  }
  outside = 255 - inside;
  for (auto _ : state) {
    cv::distanceTransform(inside, distances[0], cv::DIST_L2, cv::DIST_MASK_PRECISE);
    cv::distanceTransform(outside, distances[1], cv::DIST_L2, cv::DIST_MASK_PRECISE);
  }
  state.SetItemsProcessed(state.iterations() * size * size);
}
BENCHMARK(DistanceField_opencv)->Unit(benchmark::kMillisecond);
#endif

}  // namespace
