#include <qx/wavelets/channel.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include <benchmark/benchmark.h>
#include <malloc.h>
#ifdef QX_LINK_OPENCV
#include <opencv2/imgproc.hpp>
#endif

/// Every row works on a square picture of the given side; the bytes per second are those of the picture, so that a row
/// stands beside the plain copy of the same picture. Forward and inverse alternate, each timed apart from the other.

namespace {

/// Blocks stay in the heap between iterations: what is measured is the transform, not fresh pages of the system.
const bool warmHeap = mallopt(M_MMAP_THRESHOLD, 1 << 30) != 0 && mallopt(M_TRIM_THRESHOLD, 2000000000) != 0;

template <typename T>
std::vector<T> MakePicture(std::int64_t side) {
  std::vector<T> picture(static_cast<std::size_t>(side * side));
  std::uint32_t state = 1;
  for (T& sample : picture) {
    state = state * 1664525u + 1013904223u;
    sample = static_cast<T>(state >> 24);
  }
  return picture;
}

template <typename T>
CQXChannel<T> MakeChannel(const std::vector<T>& picture, std::int64_t side) {
  const auto size = static_cast<std::int32_t>(side);
  CQXChannel<T> channel(size, size, picture.data(), 0, 0);
  channel.SetTypeOfNormalization(QX_NORMALIZATION_NONE);
  return channel;
}

template <typename T>
void Finish(benchmark::State& state) {
  state.SetBytesProcessed(state.iterations() * state.range(0) * state.range(0) * static_cast<std::int64_t>(sizeof(T)));
  state.SetLabel(warmHeap ? "warm heap" : "");
}

template <typename T>
void Memcpy(benchmark::State& state) {
  const std::vector<T> picture = MakePicture<T>(state.range(0));
  std::vector<T> target(picture.size());
  for (auto _ : state) {
    std::memcpy(target.data(), picture.data(), picture.size() * sizeof(T));
    benchmark::DoNotOptimize(target.data());
    benchmark::ClobberMemory();
  }
  Finish<T>(state);
}

template <typename T, qxWaveletType wavelet>
void Forward(benchmark::State& state) {
  const std::vector<T> picture = MakePicture<T>(state.range(0));
  const CQXWaveletFilter<T> filter(wavelet);
  const auto depth = qxCalculateMaximumDepth(static_cast<std::int32_t>(state.range(0)));
  for (auto _ : state) {
    state.PauseTiming();
    CQXChannel<T> channel = MakeChannel(picture, state.range(0));
    state.ResumeTiming();
    channel.FWTInPlace(&filter, QX_CHANNEL_2D, depth);
    state.PauseTiming();
    channel.Destroy();
    state.ResumeTiming();
  }
  Finish<T>(state);
}

template <typename T, qxWaveletType wavelet>
void Inverse(benchmark::State& state) {
  const std::vector<T> picture = MakePicture<T>(state.range(0));
  const CQXWaveletFilter<T> filter(wavelet);
  const auto depth = qxCalculateMaximumDepth(static_cast<std::int32_t>(state.range(0)));
  for (auto _ : state) {
    state.PauseTiming();
    CQXChannel<T> channel = MakeChannel(picture, state.range(0));
    channel.FWTInPlace(&filter, QX_CHANNEL_2D, depth);
    state.ResumeTiming();
    channel.IFWTInPlace();
    state.PauseTiming();
    channel.Destroy();
    state.ResumeTiming();
  }
  Finish<T>(state);
}

/// Transform, threshold and inverse: what a program does with a picture.
template <typename T, qxWaveletDenoising method>
void ReduceNoise(benchmark::State& state) {
  const std::vector<T> picture = MakePicture<T>(state.range(0));
  const CQXWaveletFilter<T> filter(QX_WAVELET_2_6);
  for (auto _ : state) {
    CQXChannel<T> channel = MakeChannel(picture, state.range(0));
    channel.SetTypeOfNormalization(QX_NORMALIZATION_2);
    channel.FWTInPlace(&filter, QX_CHANNEL_2D, 4);
    T threshold = 0, ratio = 0;
    const auto raw = channel.CleanBelowThreshold(threshold, ratio, 1, method)->DestroyingIFWT();
    benchmark::DoNotOptimize(raw->GetData());
  }
  Finish<T>(state);
}

/// To half the size, where each kernel averages what the smaller grid cannot hold.
template <qxResampling method>
void Resample(benchmark::State& state) {
  const std::vector<float> picture = MakePicture<float>(state.range(0));
  const CQXChannel<float> channel = MakeChannel(picture, state.range(0));
  for (auto _ : state) benchmark::DoNotOptimize(channel.ScaleRawChannelTwiceDown(method)->GetData());
  Finish<float>(state);
}

#ifdef QX_LINK_OPENCV
/// The same size by the peer: INTER_AREA averages as our area kernel does, the others do not average.
template <int method>
void OpenCvResample(benchmark::State& state) {
  std::vector<float> picture = MakePicture<float>(state.range(0));
  const int side = static_cast<int>(state.range(0));
  const cv::Mat source(side, side, CV_32F, picture.data());
  cv::Mat target;
  cv::setNumThreads(1);
  for (auto _ : state) {
    cv::resize(source, target, cv::Size(side / 2, side / 2), 0, 0, method);
    benchmark::DoNotOptimize(target.data);
  }
  Finish<float>(state);
}
#endif

#define QX_BENCHMARK_SIDES(...) BENCHMARK(__VA_ARGS__)->Arg(512)->Arg(2048)->Arg(4096)->Unit(benchmark::kMillisecond)

QX_BENCHMARK_SIDES(Memcpy<float>);
QX_BENCHMARK_SIDES(Forward<float, QX_WAVELET_2_2>);
QX_BENCHMARK_SIDES(Inverse<float, QX_WAVELET_2_2>);
QX_BENCHMARK_SIDES(Forward<float, QX_WAVELET_2_6>);
QX_BENCHMARK_SIDES(Inverse<float, QX_WAVELET_2_6>);
QX_BENCHMARK_SIDES(Forward<float, QX_WAVELET_4_6>);
QX_BENCHMARK_SIDES(ReduceNoise<float, QX_DENOISING_UNIVERSAL>);
QX_BENCHMARK_SIDES(ReduceNoise<float, QX_DENOISING_BAND_VARIANCE>);
QX_BENCHMARK_SIDES(ReduceNoise<float, QX_DENOISING_BAND_SIGNAL_MASKED>);
QX_BENCHMARK_SIDES(Memcpy<double>);
QX_BENCHMARK_SIDES(Forward<double, QX_WAVELET_2_2>);
QX_BENCHMARK_SIDES(Inverse<double, QX_WAVELET_2_2>);
QX_BENCHMARK_SIDES(ReduceNoise<double, QX_DENOISING_BAND_VARIANCE>);
QX_BENCHMARK_SIDES(Resample<QX_RESAMPLING_AREA>);
QX_BENCHMARK_SIDES(Resample<QX_RESAMPLING_CUBIC>);
QX_BENCHMARK_SIDES(Resample<QX_RESAMPLING_LANCZOS3>);
#ifdef QX_LINK_OPENCV
QX_BENCHMARK_SIDES(OpenCvResample<cv::INTER_AREA>);
QX_BENCHMARK_SIDES(OpenCvResample<cv::INTER_CUBIC>);
QX_BENCHMARK_SIDES(OpenCvResample<cv::INTER_LANCZOS4>);
#endif

}  // namespace
