#include <qx/foundation/internal/instantiate.h>
#include <qx/kernels/wavelet_kernels.h>

#include <cmath>
#include <numbers>

namespace qxKernels {

namespace {

template <std::int32_t taps, bool subtract, typename T>
void LiftTaps(T* __restrict target, const T* const* sources, const T* coefficients, std::size_t count) noexcept {
  // The pointers and coefficients are copied out so that they stay in registers. Unused ones repeat the first.
  const T* const s0 = sources[0];
  const T* const s1 = sources[taps > 1 ? 1 : 0];
  const T* const s2 = sources[taps > 2 ? 2 : 0];
  const T* const s3 = sources[taps > 2 ? 3 : 0];
  const T* const s4 = sources[taps > 4 ? 4 : 0];
  const T* const s5 = sources[taps > 4 ? 5 : 0];
  const T c0 = coefficients[0];
  const T c1 = coefficients[taps > 1 ? 1 : 0];
  const T c2 = coefficients[taps > 2 ? 2 : 0];
  const T c3 = coefficients[taps > 2 ? 3 : 0];
  const T c4 = coefficients[taps > 4 ? 4 : 0];
  const T c5 = coefficients[taps > 4 ? 5 : 0];
  for (std::size_t i = 0; i < count; ++i) {
    T sum = c0 * s0[i];
    if constexpr (taps > 1) sum += c1 * s1[i];
    if constexpr (taps > 2) {
      sum += c2 * s2[i];
      sum += c3 * s3[i];
    }
    if constexpr (taps > 4) {
      sum += c4 * s4[i];
      sum += c5 * s5[i];
    }
    target[i] = subtract ? target[i] - sum : target[i] + sum;
  }
}

template <bool subtract, typename T>
void LiftAnyTaps(T* target, const T* const* sources, const T* coefficients, std::int32_t taps,
                 std::size_t count) noexcept {
  switch (taps) {
    case 1:
      return LiftTaps<1, subtract>(target, sources, coefficients, count);
    case 2:
      return LiftTaps<2, subtract>(target, sources, coefficients, count);
    case 4:
      return LiftTaps<4, subtract>(target, sources, coefficients, count);
    case 6:
      return LiftTaps<6, subtract>(target, sources, coefficients, count);
    default:
      return;
  }
}

template <bool clearsAtThreshold, bool shrink, typename T>
void ThresholdSamples(T* data, std::size_t count, T threshold) noexcept {
  for (std::size_t i = 0; i < count; ++i) {
    const T x = data[i];
    const bool small = clearsAtThreshold ? std::abs(x) <= threshold : std::abs(x) < threshold;
    const T kept = shrink ? x - std::copysign(threshold, x) : x;
    data[i] = small ? T(0) : kept;
  }
}

}  // namespace

template <typename T>
void Deinterleave(std::size_t count, const T* __restrict source, T* __restrict first, T* __restrict second) noexcept {
  const std::size_t pairs = count / 2;
  for (std::size_t i = 0; i < pairs; ++i) {
    first[i] = source[2 * i];
    second[i] = source[2 * i + 1];
  }
  if (count % 2 != 0) first[pairs] = source[count - 1];
}

template <typename T>
void Interleave(std::size_t count, const T* __restrict first, const T* __restrict second,
                T* __restrict target) noexcept {
  const std::size_t pairs = count / 2;
  for (std::size_t i = 0; i < pairs; ++i) {
    target[2 * i] = first[i];
    target[2 * i + 1] = second[i];
  }
  if (count % 2 != 0) target[count - 1] = first[pairs];
}

template <typename T>
void Lift(std::size_t count, const T* const* sources, const T* coefficients, std::int32_t taps, bool subtract,
          T* target) noexcept {
  if (subtract) {
    LiftAnyTaps<true>(target, sources, coefficients, taps, count);
  } else {
    LiftAnyTaps<false>(target, sources, coefficients, taps, count);
  }
}

template <typename T>
void Blend(std::size_t count, const T* a, const T* b, T weightA, T weightB, T* target) noexcept {
  for (std::size_t i = 0; i < count; ++i) target[i] = a[i] * weightA + b[i] * weightB;
}

template <typename T>
void RotateColours(std::size_t count, std::size_t stride, bool forward, T* first, T* second, T* last) noexcept {
  constexpr double rootOf2 = std::numbers::sqrt2;
  constexpr double rootOf3 = std::numbers::sqrt3;
  constexpr T third = static_cast<T>(1 / rootOf3);
  constexpr T half = static_cast<T>(1 / rootOf2);
  constexpr T sixth = static_cast<T>(1 / (rootOf2 * rootOf3));
  for (std::size_t i = 0; i < count * stride; i += stride) {
    const T a = first[i];
    const T b = second[i];
    const T c = last[i];
    if (forward) {
      first[i] = (a + b + c) * third;
      second[i] = (a - c) * half;
      last[i] = (a - 2 * b + c) * sixth;
    } else {
      first[i] = a * third + b * half + c * sixth;
      second[i] = a * third - 2 * (c * sixth);
      last[i] = a * third - b * half + c * sixth;
    }
  }
}

template <typename T>
T LargestMagnitude(std::size_t count, const T* data) noexcept {
  T largest = 0;
  for (std::size_t i = 0; i < count; ++i) {
    const T magnitude = std::abs(data[i]);
    largest = magnitude > largest ? magnitude : largest;
  }
  return largest;
}

template <typename T>
void Threshold(std::size_t count, T threshold, bool clearsAtThreshold, bool shrink, T* data) noexcept {
  if (clearsAtThreshold) {
    shrink ? ThresholdSamples<true, true>(data, count, threshold)
           : ThresholdSamples<true, false>(data, count, threshold);
  } else {
    shrink ? ThresholdSamples<false, true>(data, count, threshold)
           : ThresholdSamples<false, false>(data, count, threshold);
  }
}

#define QX_INSTANTIATE(T)                                                                      \
  template void Deinterleave(std::size_t, const T*, T*, T*) noexcept;                          \
  template void Interleave(std::size_t, const T*, const T*, T*) noexcept;                      \
  template void Lift(std::size_t, const T* const*, const T*, std::int32_t, bool, T*) noexcept; \
  template void Blend(std::size_t, const T*, const T*, T, T, T*) noexcept;                     \
  template void RotateColours(std::size_t, std::size_t, bool, T*, T*, T*) noexcept;            \
  template T LargestMagnitude(std::size_t, const T*) noexcept;                                 \
  template void Threshold(std::size_t, T, bool, bool, T*) noexcept;

QX_FOR_FLOAT_AND_DOUBLE(QX_INSTANTIATE)
#undef QX_INSTANTIATE

}  // namespace qxKernels
