#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

/// The bytes of a fuzzer as numbers; zeros follow after their end.
class Input {
 public:
  Input(const std::uint8_t* data, std::size_t size) : m_data(data), m_size(size) {}

  [[nodiscard]] bool IsAtEnd() const { return m_size == 0; }
  std::uint8_t Byte() {
    if (m_size == 0) return 0;
    --m_size;
    return *m_data++;
  }
  /// From low to high, both included.
  std::int32_t Integer(std::int32_t low, std::int32_t high) { return low + Byte() % (high - low + 1); }
  template <typename E>
  E Choice(std::int32_t count) {
    return static_cast<E>(Integer(0, count - 1));
  }

  /// Small multiples of 1/8, numbers at the edges of the type, and any pattern of bits.
  template <typename T>
  T Number() {
    using Limits = std::numeric_limits<T>;
    static constexpr T edges[] = {T(0),
                                  -T(0),
                                  T(1e-6),
                                  T(-1e-9),
                                  T(1e9),
                                  Limits::min(),
                                  Limits::max(),
                                  Limits::lowest(),
                                  Limits::infinity(),
                                  -Limits::infinity(),
                                  T(-1e30),
                                  Limits::epsilon(),
                                  Limits::denorm_min(),
                                  Limits::quiet_NaN()};
    const std::uint8_t kind = Byte();
    if (kind < 200) return static_cast<T>(kind - 100) / 8;
    if (kind < 200 + std::size(edges)) return edges[kind - 200];
    std::uint8_t bytes[sizeof(T)];
    for (std::uint8_t& byte : bytes) byte = Byte();
    T number;
    std::memcpy(&number, bytes, sizeof(T));
    return number;
  }
  template <typename T>
  std::vector<T> Numbers(std::size_t count) {
    std::vector<T> numbers(count);
    for (T& number : numbers) number = Number<T>();
    return numbers;
  }
  /// A fixed vector or matrix.
  template <typename A>
  A Make() {
    using T = typename A::Element;
    A a;
    for (std::size_t i = 0; i < sizeof(A) / sizeof(T); ++i) a.Data()[i] = Number<T>();
    return a;
  }

 private:
  const std::uint8_t* m_data;
  std::size_t m_size;
};

/// Runs a function template for float or double, by the first byte.
#define QX_FUZZ(run)                                                                  \
  extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);  \
  extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) { \
    Input input(data, size);                                                          \
    input.Byte() % 2 == 0 ? run<float>(input) : run<double>(input);                   \
    return 0;                                                                         \
  }
