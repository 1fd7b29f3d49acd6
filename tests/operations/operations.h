#pragma once

#include <qx/qx.h>

#include <bit>
#include <concepts>
#include <cstdint>
#include <functional>
#include <iostream>
#include <limits>
#include <memory>
#include <mutex>
#include <new>
#include <ranges>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

/// @file
/// Every operation of the library on seeded input, as a table that several programs run: bits compares compilers,
/// others refuse memory, run threads or watch memory.

/// Hash of everything that it is given, bit by bit; all not-a-numbers count as one.
class Hash {
 public:
  /// What has effects stands in a call of its own, h(a()), h(b()): compilers evaluate arguments in their own order.
  template <typename... A>
  Hash& operator()(const A&... values) {
    (Add(values), ...);
    return *this;
  }
  [[nodiscard]] std::uint64_t Value() const { return m_value; }

 private:
  void AddWord(std::uint64_t word) {
    m_value = (m_value ^ word) * 0x100000001b3u;
    m_value ^= m_value >> 29;
  }
  // Told apart by their bits, so that the program means the same where the compiler takes all numbers for finite.
  void Add(float x) {
    const auto bits = std::bit_cast<std::uint32_t>(x);
    AddWord((bits & 0x7fffffffu) > 0x7f800000u ? 0x7fc00000u : bits);
  }
  void Add(double x) {
    const auto bits = std::bit_cast<std::uint64_t>(x);
    AddWord((bits & 0x7fffffffffffffffu) > 0x7ff0000000000000u ? 0x7ff8000000000000u : bits);
  }
  template <typename A>
  requires std::integral<A> || std::is_enum_v<A>
  void Add(A x) { AddWord(static_cast<std::uint64_t>(x)); }
  template <typename T>
  void Add(const CQXComplex<T>& z) {
    (*this)(z.Real(), z.Imag(), z.IsTrigCalculated(), z.GetPrecision());
  }
  template <typename A>
  requires qxFixedVector<A> || qxFixedMatrix<A>
  void Add(const A& a) {
    for (std::size_t i = 0; i < sizeof(A) / sizeof(typename A::Element); ++i) Add(a.Data()[i]);
  }
  template <typename T>
  void Add(const CQXBaseVector<T>& v) {
    AddBlock(v.Dim(), v.Data());
  }
  template <typename T>
  void Add(const CQXBaseMatrix<T>& m) {
    Add(m.RowsNb());
    AddBlock(m.RowsNb() * m.ColsNb(), m.Data());
  }
  template <typename T>
  void Add(const CQXQuaternion<T>& q) {
    (*this)(q.w, q.x, q.y, q.z);
  }
  template <typename T>
  void Add(const CQXBase3DTransform<T>& transform) {
    Add(transform.GetMatrix());
  }
  template <std::ranges::range A>
  requires(!requires(const A& own) { own.Data(); })  // the library's own arrays are ranges too
      void Add(const A& values) {
    for (const auto& value : values) Add(value);
  }
  template <typename T>
  void Add(const CQXChannel<T>& c) {
    (*this)(c.GetColsNb(), c.GetRowsNb(), c.GetOffsetX(), c.GetOffsetY(), c.IsDecomposed(), c.GetSubChannelsNb());
    AddBlock(c.GetColsNb() * c.GetRowsNb(), c.GetData());
    for (std::int32_t i = 0; i < c.GetSubChannelsNb(); ++i) AddPointee(c[i]);
  }
  template <typename T>
  void Add(const CQXWaveletDecomposition<T>& d) {
    (*this)(d.GetChannelsNb(), d.GetWaveletType(), d.GetTypeOfNormalization());
    for (std::int32_t i = 0; i < d.GetChannelsNb(); ++i) AddPointee(d[i]);
  }
  template <typename A>
  void Add(const qxOwner<A>& pointer) {
    AddPointee(pointer.get());
  }
  template <typename A>
  void AddPointee(const A* pointer) {
    AddWord(pointer != nullptr);
    if (pointer != nullptr) Add(*pointer);
  }
  template <typename A>
  void AddBlock(std::int32_t count, const A* block) {
    (*this)(count, block != nullptr);
    for (std::int32_t i = 0; block != nullptr && i < count; ++i) Add(block[i]);
  }

  std::uint64_t m_value = 0xcbf29ce484222325u;
};

template <typename T>
inline constexpr const char* typeName = sizeof(T) == 4 ? "float" : "double";

/// One line of the table: computes and gives what it finds to the hash.
struct Operation {
  std::string name;
  const char* type;
  bool isPlatform;  ///< calls the platform's mathematics (sin, exp, pow ...)
  std::function<void(Hash&)> compute;
};

/// Calls the visitor with every operation, for float and double.
void VisitOperations(const std::function<void(const Operation&)>& visitor);

/// The visitor of this thread.
inline thread_local const std::function<void(const Operation&)>* visitOperation = nullptr;

template <typename T, typename Function>
void Row(const std::string& name, Function compute, bool isPlatform = false) {
  (*visitOperation)({name, typeName<T>, isPlatform, compute});
}
template <typename T, typename Function>
void PlatformRow(const std::string& name, Function compute) {
  Row<T>(name, compute, true);
}

/// Hands a run-time-sized object or a pointer on, unless its memory was refused without an exception.
template <typename A>
A Made(A a) {
  bool isMade = true;
  if constexpr (requires { a.RowsNb(); }) {
    isMade = a.Data() != nullptr || qxElementCount(a.RowsNb(), a.ColsNb()) == 0;
  } else if constexpr (requires { a.Dim(); }) {
    isMade = a.Data() != nullptr || a.Dim() <= 0;
  } else {
    isMade = a != nullptr;
  }
  if (!isMade) throw std::bad_alloc();
  return a;
}

/// What a function writes to the standard output.
template <typename Function>
std::string Printed(Function print) {
  static std::mutex oneAtATime;
  const std::lock_guard lock(oneAtATime);
  std::ostringstream stream;
  const struct Redirection {
    std::streambuf* old;
    ~Redirection() { std::cout.rdbuf(old); }
  } redirection{std::cout.rdbuf(stream.rdbuf())};
  print();
  return stream.str();
}

/// Reproducible numbers, exact in both types.
template <typename T>
class Numbers {
 public:
  explicit Numbers(std::uint32_t seed) : m_state(seed * 2654435761u + 12345u) {}

  /// In [-1, 1), a multiple of 2^-23.
  T operator()() {
    m_state = m_state * 6364136223846793005u + 1442695040888963407u;
    return static_cast<T>(static_cast<std::int32_t>(m_state >> 40) - 0x800000) / T(0x800000);
  }
  T operator()(T low, T high) { return low + (high - low) * ((*this)() + 1) / 2; }
  std::vector<T> Array(std::size_t count, T low = -1, T high = 1) {
    std::vector<T> values(count);
    for (T& value : values) value = (*this)(low, high);
    return values;
  }
  /// A fixed vector or matrix.
  template <typename A>
  A Make() {
    A a;
    for (std::size_t i = 0; i < sizeof(A) / sizeof(T); ++i) a.Data()[i] = (*this)();
    return a;
  }

 private:
  std::uint64_t m_state;
};

/// Numbers at the edges of the type and of the tolerances.
template <typename T>
inline const std::vector<T> edges = {T(0),
                                     -T(0),
                                     T(1),
                                     T(-1),
                                     T(0.5),
                                     T(-2.5),
                                     T(1e-6),
                                     T(-1e-9),
                                     T(1e-7),
                                     T(3e-13),
                                     T(1000),
                                     T(-1e10),
                                     T(3e9),
                                     std::numeric_limits<T>::denorm_min(),
                                     std::numeric_limits<T>::min(),
                                     std::numeric_limits<T>::max(),
                                     std::numeric_limits<T>::lowest(),
                                     std::numeric_limits<T>::infinity(),
                                     -std::numeric_limits<T>::infinity(),
                                     std::numeric_limits<T>::quiet_NaN()};

template <typename T>
void FoundationRows();
template <typename T>
void VectorRows();
template <typename T>
void MatrixRows();
template <typename T>
void FixedMatrixRows();
template <typename T>
void TransformRows();
template <typename T>
void SolverRows();
template <typename T>
void ArrayRows();
template <typename T>
void GeometryRows();
template <typename T>
void WaveletRows();
