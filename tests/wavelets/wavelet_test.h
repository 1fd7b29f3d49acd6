#pragma once

#include <qx/wavelets/channel.h>

#include <cstdint>
#include <limits>
#include <vector>

#include "tests/typed_test.h"

/// What the wavelet tests share: every wavelet by its code, and pictures of reproducible noise.
constexpr std::int32_t waveletsCount = 12;

inline qxWaveletType WaveletOf(std::int32_t code) { return static_cast<qxWaveletType>(code); }

/// Samples in [-1, 1) from a small congruential generator.
template <typename T>
std::vector<T> MakeNoise(std::size_t count, std::uint32_t seed = 1) {
  std::vector<T> noise(count);
  for (T& sample : noise) {
    seed = seed * 1664525u + 1013904223u;
    sample = static_cast<T>(static_cast<std::int32_t>(seed) / 2147483648.0);
  }
  return noise;
}

template <typename T>
CQXChannel<T> MakeNoisyChannel(std::int32_t columns, std::int32_t rows, std::int32_t offsetX = 0,
                               std::int32_t offsetY = 0, std::uint32_t seed = 1) {
  const std::vector<T> noise = MakeNoise<T>(static_cast<std::size_t>(columns * rows), seed);
  return CQXChannel<T>(columns, rows, noise.data(), offsetX, offsetY);
}
