#include <qx/foundation/complex.h>
#include <qx/foundation/tolerance.h>
#include <qx/kernels/array_kernels.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <type_traits>

namespace qxKernels {

namespace {

/// Makes the element anew: a complex number is stored exactly, where its assignment would keep a close old value.
template <typename T>
void Store(T& target, const T& value) {
  if constexpr (std::is_arithmetic_v<T>) {
    target = value;
  } else {
    std::construct_at(&target, value);
  }
}

template <typename T>
T Plus(const T& a, const T& b) {
  if constexpr (std::is_integral_v<T>) {
    return static_cast<T>(static_cast<std::uint32_t>(a) + static_cast<std::uint32_t>(b));
  } else {
    return a + b;
  }
}

template <typename T>
T Minus(const T& a, const T& b) {
  if constexpr (std::is_integral_v<T>) {
    return static_cast<T>(static_cast<std::uint32_t>(a) - static_cast<std::uint32_t>(b));
  } else {
    return a - b;
  }
}

template <typename T>
T Times(const T& a, const T& b) {
  if constexpr (std::is_integral_v<T>) {
    return static_cast<T>(static_cast<std::uint32_t>(a) * static_cast<std::uint32_t>(b));
  } else {
    return a * b;
  }
}

template <typename T>
T Over(const T& a, const T& b) {
  if constexpr (std::is_integral_v<T>) {
    if (b == 0) return std::numeric_limits<T>::min();
    return b == -1 ? Minus(T(0), a) : a / b;  // the smallest number over -1 would trap
  } else {
    return a / b;
  }
}

/// The sum of term(i) for i below count, in the order told at Dot().
template <typename T, typename Term>
T PartialSums(std::size_t count, Term term) {
  constexpr std::size_t width = 16;
  T sums[width] = {};
  if (count <= width) {
    for (std::size_t i = 0; i < count; ++i) sums[0] += term(i);
    return sums[0];
  }
  const std::size_t whole = count - count % width;
  for (std::size_t i = 0; i < whole; i += width) {
    for (std::size_t j = 0; j < width; ++j) sums[j] += term(i + j);
  }
  for (std::size_t i = whole; i < count; ++i) sums[i - whole] += term(i);
  for (std::size_t half = width / 2; half > 0; half /= 2) {
    for (std::size_t j = 0; j < half; ++j) sums[j] += sums[j + half];
  }
  return sums[0];
}

template <typename T, typename Value>
std::size_t IndexOfLargest(std::size_t count, Value value) {
  std::size_t index = 0;
  if (count == 0) return index;
  T largest = value(0);
  for (std::size_t i = 1; i < count; ++i) {
    const T x = value(i);
    if (x > largest) {
      largest = x;
      index = i;
    }
  }
  return index;
}

}  // namespace

template <typename T>
void SetToZero(std::size_t count, T* target) noexcept {
  for (std::size_t i = 0; i < count; ++i) Store(target[i], T(0));
}

template <typename T>
void SetToConstant(std::size_t count, const T& value, T* target) noexcept {
  const T constant(value);
  for (std::size_t i = 0; i < count; ++i) target[i] = constant;
}

template <typename T>
void Copy(std::size_t count, const T* source, T* target) noexcept {
  for (std::size_t i = 0; i < count; ++i) target[i] = source[i];
}

template <typename T>
void Add(std::size_t count, const T* v, T* target) noexcept {
  if constexpr (std::is_integral_v<T>) {
    Sum(count, target, v, target);
  } else {
    for (std::size_t i = 0; i < count; ++i) target[i] += v[i];
  }
}

template <typename T>
void Subtract(std::size_t count, const T* v, T* target) noexcept {
  if constexpr (std::is_integral_v<T>) {
    Difference(count, target, v, target);
  } else {
    for (std::size_t i = 0; i < count; ++i) target[i] -= v[i];
  }
}

template <typename T>
void Multiply(std::size_t count, T factor, T* target) noexcept {
  if constexpr (std::is_integral_v<T>) {
    Product(count, target, factor, target);
  } else {
    for (std::size_t i = 0; i < count; ++i) target[i] *= factor;
  }
}

template <typename T>
void Divide(std::size_t count, T divisor, T* target) noexcept {
  if constexpr (std::is_integral_v<T>) {
    Quotient(count, target, divisor, target);
  } else {
    for (std::size_t i = 0; i < count; ++i) target[i] /= divisor;
  }
}

template <typename T>
void MultiplyByPowerOfTwo(std::size_t count, std::int32_t exponent, T* target) noexcept {
  if (exponent == 0) return;
  const std::int32_t half = exponent / 2;  // each half of any exponent is itself a number of the type
  Multiply(count, std::ldexp(T(1), half), target);
  Multiply(count, std::ldexp(T(1), exponent - half), target);
}

template <typename T>
void Sum(std::size_t count, const T* a, const T* b, T* target) noexcept {
  for (std::size_t i = 0; i < count; ++i) Store(target[i], Plus(a[i], b[i]));
}

template <typename T>
void Difference(std::size_t count, const T* a, const T* b, T* target) noexcept {
  for (std::size_t i = 0; i < count; ++i) Store(target[i], Minus(a[i], b[i]));
}

template <typename T>
void Product(std::size_t count, const T* a, T factor, T* target) noexcept {
  for (std::size_t i = 0; i < count; ++i) Store(target[i], Times(a[i], factor));
}

template <typename T>
void Quotient(std::size_t count, const T* a, T divisor, T* target) noexcept {
  for (std::size_t i = 0; i < count; ++i) Store(target[i], Over(a[i], divisor));
}

template <typename T>
void Negation(std::size_t count, const T* a, T* target) noexcept {
  if constexpr (std::is_integral_v<T>) {
    for (std::size_t i = 0; i < count; ++i) target[i] = Minus(T(0), a[i]);
  } else {
    for (std::size_t i = 0; i < count; ++i) Store(target[i], -a[i]);
  }
}

template <typename T>
T Dot(std::size_t count, const T* a, const T* b) noexcept {
  if constexpr (std::is_floating_point_v<T>) {
    return PartialSums<T>(count, [=](std::size_t i) { return a[i] * b[i]; });
  } else if constexpr (std::is_integral_v<T>) {
    T sum = 0;
    for (std::size_t i = 0; i < count; ++i) sum = Plus(sum, Times(a[i], b[i]));
    return sum;
  } else {
    T sum;
    for (std::size_t i = 0; i < count; ++i) sum += a[i] * b[i];
    return sum;
  }
}

template <typename T>
T SumOfSquares(std::size_t count, const T* a) noexcept {
  return PartialSums<T>(count, [=](std::size_t i) { return a[i] * a[i]; });
}

template <typename T>
T SumOfAbsolutes(std::size_t count, const T* a) noexcept {
  return PartialSums<T>(count, [=](std::size_t i) { return std::abs(a[i]); });
}

template <typename T>
T SumOfElements(std::size_t count, const T* a) noexcept {
  return PartialSums<T>(count, [=](std::size_t i) { return a[i]; });
}

template <typename T>
bool AreDifferent(std::size_t count, const T* a, const T* b) noexcept {
  for (std::size_t i = 0; i < count; ++i) {
    if constexpr (std::is_floating_point_v<T>) {
      if (std::abs(a[i] - b[i]) > QX_TOLERANCE<T>) return true;
    } else if constexpr (std::is_integral_v<T>) {
      if (a[i] != b[i]) return true;
    } else {
      if (qxIsGreater(T(qxAbs(a[i] - b[i])), T())) return true;
    }
  }
  return false;
}

template <typename T>
bool AreWithin(std::size_t count, const T* a, const T* b, T tolerance) noexcept {
  for (std::size_t i = 0; i < count; ++i) {
    if (!(std::abs(a[i] - b[i]) <= tolerance)) return false;
  }
  return true;
}

template <typename T>
bool AreWithin(std::size_t count, const T* a, T tolerance) noexcept {
  for (std::size_t i = 0; i < count; ++i) {
    if (!(std::abs(a[i]) <= tolerance)) return false;
  }
  return true;
}

template <typename T>
void AnnulateSmall(std::size_t count, T tolerance, T* target) noexcept {
  for (std::size_t i = 0; i < count; ++i) target[i] = std::abs(target[i]) < tolerance ? T(0) : target[i];
}

template <typename T>
std::size_t IndexOfMin(std::size_t count, const T* a, bool absolute) noexcept {
  if (absolute) return IndexOfLargest<T>(count, [=](std::size_t i) { return -std::abs(a[i]); });
  return IndexOfLargest<T>(count, [=](std::size_t i) { return -a[i]; });
}

template <typename T>
std::size_t IndexOfMax(std::size_t count, const T* a, bool absolute) noexcept {
  if (absolute) return IndexOfLargest<T>(count, [=](std::size_t i) { return std::abs(a[i]); });
  return IndexOfLargest<T>(count, [=](std::size_t i) { return a[i]; });
}

#define QX_INSTANTIATE_FOR_ALL(T)                                            \
  template void SetToZero<T>(std::size_t, T*) noexcept;                      \
  template void SetToConstant<T>(std::size_t, const T&, T*) noexcept;        \
  template void Copy<T>(std::size_t, const T*, T*) noexcept;                 \
  template void Add<T>(std::size_t, const T*, T*) noexcept;                  \
  template void Subtract<T>(std::size_t, const T*, T*) noexcept;             \
  template void Multiply<T>(std::size_t, T, T*) noexcept;                    \
  template void Divide<T>(std::size_t, T, T*) noexcept;                      \
  template void Sum<T>(std::size_t, const T*, const T*, T*) noexcept;        \
  template void Difference<T>(std::size_t, const T*, const T*, T*) noexcept; \
  template void Product<T>(std::size_t, const T*, T, T*) noexcept;           \
  template void Quotient<T>(std::size_t, const T*, T, T*) noexcept;          \
  template void Negation<T>(std::size_t, const T*, T*) noexcept;             \
  template T Dot<T>(std::size_t, const T*, const T*) noexcept;               \
  template bool AreDifferent<T>(std::size_t, const T*, const T*) noexcept;

#define QX_INSTANTIATE_FOR_REAL(T)                                               \
  template void MultiplyByPowerOfTwo<T>(std::size_t, std::int32_t, T*) noexcept; \
  template T SumOfSquares<T>(std::size_t, const T*) noexcept;                    \
  template T SumOfAbsolutes<T>(std::size_t, const T*) noexcept;                  \
  template T SumOfElements<T>(std::size_t, const T*) noexcept;                   \
  template bool AreWithin<T>(std::size_t, const T*, const T*, T) noexcept;       \
  template bool AreWithin<T>(std::size_t, const T*, T) noexcept;                 \
  template void AnnulateSmall<T>(std::size_t, T, T*) noexcept;                   \
  template std::size_t IndexOfMin<T>(std::size_t, const T*, bool) noexcept;      \
  template std::size_t IndexOfMax<T>(std::size_t, const T*, bool) noexcept;

QX_INSTANTIATE_FOR_ALL(std::int32_t)
QX_INSTANTIATE_FOR_ALL(float)
QX_INSTANTIATE_FOR_ALL(double)
QX_INSTANTIATE_FOR_ALL(CQXComplex<float>)
QX_INSTANTIATE_FOR_ALL(CQXComplex<double>)
QX_INSTANTIATE_FOR_REAL(float)
QX_INSTANTIATE_FOR_REAL(double)

#undef QX_INSTANTIATE_FOR_ALL
#undef QX_INSTANTIATE_FOR_REAL

}  // namespace qxKernels
