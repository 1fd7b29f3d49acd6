#include <qx/arrays/internal/random_report.h>
#include <qx/arrays/random.h>
#include <qx/foundation/block.h>
#include <qx/foundation/conversion.h>
#include <qx/foundation/tolerance.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <ctime>
#include <type_traits>

namespace {

constexpr std::uint32_t defaultX32[4] = {0x075BCD15, 0x159A55E5, 0x1F123BB5, 0x05491333};
constexpr std::uint64_t defaultX64[4] = {0x0139408DCBBF7A44, 0x07F4809ED9054ADF, 0x62C6C85408A4C66C,
                                         0x908FAC67FA2A9A82};
constexpr std::uint64_t seedFactor = 0xB11924E1;
constexpr std::uint64_t seedPrimes[13] = {3, 5, 7, 13, 17, 19, 23, 37, 47, 59, 61, 67, 71};

constexpr double scale32 = 4294967295.0;  // for float too, where it has no equal: one rounding at the end
template <qxReal T>
constexpr T scale64 = T(0x1p-64);

/// The ziggurat of 128 layers: where the tail begins, the area of a layer, and -r^2 / 2.
template <qxReal T>
constexpr T zigguratR = T(3.442619855899);
template <qxReal T>
constexpr T zigguratV = T(0.00991256303526217);
template <qxReal T>
constexpr T zigguratExponent = T(-5.925815736115027);

/// The word as a number, the same as by static_cast, which branches on the highest bit: a coin toss in every draw.
template <qxReal T>
T WordToFloat(std::uint64_t word) noexcept {
  if (word < std::uint64_t{1} << 56) return static_cast<T>(static_cast<std::int64_t>(word));
  // Half the word, its last bit standing for the two below it, rounds as the word does.
  return static_cast<T>(static_cast<std::int64_t>((word >> 1) | (word & 1))) * 2;
}

template <qxReal T>
T GuardedLog(T x) noexcept {
  return std::log(x <= QX_TOLERANCE<T> ? QX_TOLERANCE<T> : x);
}

/// Bound of the draws for one normal number.
constexpr std::int32_t largestDrawsNb = 1000;

double RoundingShift(double x) noexcept { return x >= 0 ? x + 0.5 : x - 0.5; }

/// Truncates a number that is not negative to 64 bits without a sign.
std::uint64_t TruncateToWord(double x) noexcept {
  constexpr double half = 0x1p63;
  if (x < half) return static_cast<std::uint64_t>(qxToInt64(x));
  return static_cast<std::uint64_t>(qxToInt64(x - half)) + (std::uint64_t{1} << 63);
}

/// high - low in double, formed without overflow.
template <typename Integer>
double Span(Integer low, Integer high) noexcept {
  using Word = std::make_unsigned_t<Integer>;
  const auto difference = [](Integer larger, Integer smaller) {
    return static_cast<double>(static_cast<Word>(larger) - static_cast<Word>(smaller));
  };
  return high >= low ? difference(high, low) : -difference(low, high);
}

/// low plus the rounded offset, modulo the width of the integer.
template <typename Integer>
Integer AddRounded(Integer low, double offset) noexcept {
  using Word = std::make_unsigned_t<Integer>;
  const double shifted = RoundingShift(offset);
  const std::uint64_t word = shifted < 0 ? 0 - TruncateToWord(-shifted) : TruncateToWord(shifted);
  return static_cast<Integer>(static_cast<Word>(low) + static_cast<Word>(word));
}

template <typename Integer, typename Unit>
void FillIntegers(Integer low, Integer high, std::int32_t n, Integer* target, Unit unit) noexcept {
  if (high == low) {
    for (std::int32_t i = 0; i < n; ++i) target[i] = low;
    return;
  }
  const double span = Span(low, high);
  for (std::int32_t i = 0; i < n; ++i) target[i] = AddRounded(low, span * static_cast<double>(unit()));
}

}  // namespace

template <qxReal T>
CQXRandom<T>::CQXRandom() noexcept {
  SetDefaultSeeds();
  // The table of a new object differs from run to run and from object to object.
  const std::uint64_t ticks = static_cast<std::uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count());
  const std::uint64_t address = reinterpret_cast<std::uintptr_t>(this);
  const std::uint64_t variation = ticks ^ address;
  m_x32[3] = static_cast<std::uint32_t>(variation ^ (variation >> 32));
  SetRandomSWBSeeds();
  SetDefaultSeeds();
}

template <qxReal T>
void CQXRandom<T>::SetDefaultSeeds() noexcept {
  std::copy_n(defaultX32, 4, m_x32);
  std::copy_n(defaultX64, 4, m_x64);
}

template <qxReal T>
void CQXRandom<T>::SetAlgorithm(std::int32_t algorithm) noexcept {
  m_algorithm = algorithm;
  m_initialised = 0;
}

template <qxReal T>
void CQXRandom<T>::SetUniform(T left, T right) noexcept {
  m_lower = left;
  m_range = right - left;
  m_distribution = 0;
  m_initialised = 0;
}

template <qxReal T>
void CQXRandom<T>::SetNormal(T mean, T sigma) noexcept {
  m_mean = mean;
  m_sigma = sigma;
  m_distribution = 1;
  m_initialised = 0;
}

template <qxReal T>
void CQXRandom<T>::SetExponential(T rate) noexcept {
  m_rate = rate;
  m_distribution = 2;
  m_initialised = 0;
}

template <qxReal T>
void CQXRandom<T>::Initialize() noexcept {
  m_methods = GetChooseNumberMethod();
  m_borrowUnit = borrowUnit;
  CreateZigguratTables();
  m_initialised = 1;
}

template <qxReal T>
auto CQXRandom<T>::GetChooseNumberMethod() const noexcept -> Methods {
  using Random = CQXRandom<T>;
  constexpr Methods methods[3][3] = {
      {{&Random::GetUniformXorshift32, &Random::template Fill<&Random::GetUniformXorshift32>},
       {&Random::GetUniformXorshift64, &Random::template Fill<&Random::GetUniformXorshift64>},
       {&Random::GetUniformSWB, &Random::template Fill<&Random::GetUniformSWB>}},
      {{&Random::GetNormalXorshift32, &Random::template Fill<&Random::GetNormalXorshift32>},
       {&Random::GetNormalXorshift64, &Random::template Fill<&Random::GetNormalXorshift64>},
       {&Random::GetNormalSWB, &Random::template Fill<&Random::GetNormalSWB>}},
      {{&Random::GetExponentialXorshift32, &Random::template Fill<&Random::GetExponentialXorshift32>},
       {&Random::GetExponentialXorshift64, &Random::template Fill<&Random::GetExponentialXorshift64>},
       {&Random::GetExponentialSWB, &Random::template Fill<&Random::GetExponentialSWB>}}};
  if (m_distribution < 0 || m_distribution > 2) return {};
  return methods[m_distribution][m_algorithm == 1 || m_algorithm == 2 ? m_algorithm : 0];
}

template <qxReal T>
void CQXRandom<T>::CreateZigguratTables() noexcept {
  T f = std::exp(zigguratExponent<T>);
  m_zigX[0] = zigguratV<T> / f;
  m_zigX[1] = zigguratR<T>;
  m_zigX[layersNb] = 0;
  for (std::int32_t i = 2; i < layersNb; ++i) {
    m_zigX[i] = qxGuardedSqrt(-2 * GuardedLog(zigguratV<T> / m_zigX[i - 1] + f));
    f = std::exp(T(-0.5) * m_zigX[i] * m_zigX[i]);
  }
  for (std::int32_t i = 0; i < layersNb; ++i) m_zigR[i] = m_zigX[i + 1] / m_zigX[i];
}

template <qxReal T>
std::uint32_t CQXRandom<T>::Xorshift32() noexcept {
  const std::uint32_t t = m_x32[0] ^ (m_x32[0] << 11);
  m_x32[0] = m_x32[1];
  m_x32[1] = m_x32[2];
  m_x32[2] = m_x32[3];
  m_x32[3] = m_x32[3] ^ (m_x32[3] >> 19) ^ t ^ (t >> 8);
  return m_x32[3];
}

template <qxReal T>
std::uint64_t CQXRandom<T>::Xorshift64() noexcept {
  const std::uint64_t t = m_x64[0] ^ (m_x64[0] << 13);
  m_x64[0] = m_x64[1];
  m_x64[1] = m_x64[2];
  m_x64[2] = m_x64[3];
  m_x64[3] = m_x64[3] ^ (m_x64[3] >> 17) ^ t ^ (t >> 7);
  return m_x64[3];
}

template <qxReal T>
T CQXRandom<T>::GetXorshift32() noexcept {
  return static_cast<T>(static_cast<T>(Xorshift32()) / scale32);
}

template <qxReal T>
T CQXRandom<T>::GetXorshift64() noexcept {
  return WordToFloat<T>(Xorshift64()) * scale64<T>;
}

template <qxReal T>
T CQXRandom<T>::SWB() noexcept {
  constexpr std::uint32_t mask = lagsNb - 1;
  const std::uint32_t slot = static_cast<std::uint32_t>(m_lagIndex);  // a negative index counts modulo 32 too
  T value = m_lags[(slot + 20) & mask] - m_lags[(slot + 5) & mask] - m_borrow;
  if (value <= 0) {
    value += 1;
    m_borrow = m_borrowUnit;
  } else {
    m_borrow = 0;
  }
  m_lags[slot & mask] = value;
  ++m_lagIndex;
  if (m_lagIndex == lagsNb) m_lagIndex = 0;
  return value;
}

template <qxReal T>
T CQXRandom<T>::GetUniformXorshift32() noexcept {
  return static_cast<T>(static_cast<T>(Xorshift32()) * m_range / scale32 + m_lower);
}

template <qxReal T>
T CQXRandom<T>::GetUniformXorshift64() noexcept {
  return WordToFloat<T>(Xorshift64()) * m_range * scale64<T> + m_lower;
}

template <qxReal T>
T CQXRandom<T>::GetUniformSWB() noexcept {
  return m_range * SWB() + m_lower;
}

/// Beyond layer 0. What a table of SWB yields in turn may fit no number there, so that the draws are counted.
template <qxReal T>
template <typename Unit>
T CQXRandom<T>::GetNormalTail(Unit unit) noexcept {
  T tail = 0;
  T y = 0;
  std::int32_t drawsNb = 0;
  do {
    tail = GuardedLog(unit()) / zigguratR<T>;
    y = GuardedLog(unit());
  } while (-2 * y < tail * tail && y <= 0 && ++drawsNb < largestDrawsNb);
  return zigguratR<T> - tail;
}

/// The ziggurat. Numbers outside [0, 1], which only a foreign SWB table yields, end it with what they give; so does a
/// table whose numbers are refused again and again. One draw in 80 is refused by chance, some thousand never are.
template <qxReal T>
template <typename Unit, typename Word>
T CQXRandom<T>::GetNormal(Unit unit, Word word) noexcept {
  T result = 0;
  for (std::int32_t drawsNb = 0; drawsNb < largestDrawsNb; ++drawsNb) {
    const T u = 2 * unit() - 1;
    const auto layer = word() % layersNb;
    result = u * m_zigX[layer];
    if (std::abs(u) < m_zigR[layer] || !(std::abs(u) <= 1)) break;
    if (layer == 0) {
      const T tail = GetNormalTail(unit);
      result = u >= 0 ? tail : -tail;
      break;
    }
    const T square = result * result;
    const T f0 = std::exp(T(-0.5) * (m_zigX[layer] * m_zigX[layer] - square));
    const T f1 = std::exp(T(-0.5) * (m_zigX[layer + 1] * m_zigX[layer + 1] - square));
    if (f1 + unit() * (f0 - f1) < 1) break;
  }
  return result * m_sigma + m_mean;
}

template <qxReal T>
T CQXRandom<T>::GetNormalXorshift32() noexcept {
  return GetNormal([this] { return GetXorshift32(); }, [this] { return Xorshift32(); });
}

template <qxReal T>
T CQXRandom<T>::GetNormalXorshift64() noexcept {
  return GetNormal([this] { return GetXorshift64(); }, [this] { return Xorshift64(); });
}

template <qxReal T>
T CQXRandom<T>::GetNormalSWB() noexcept {
  return GetNormal([this] { return SWB(); }, [this] { return Xorshift32(); });
}

template <qxReal T>
T CQXRandom<T>::GetExponential(T unit) const noexcept {
  return -GuardedLog(unit) / m_rate;
}

template <qxReal T>
T CQXRandom<T>::GetExponentialXorshift32() noexcept {
  return GetExponential(GetXorshift32());
}

template <qxReal T>
T CQXRandom<T>::GetExponentialXorshift64() noexcept {
  return GetExponential(GetXorshift64());
}

template <qxReal T>
T CQXRandom<T>::GetExponentialSWB() noexcept {
  return GetExponential(SWB());
}

template <qxReal T>
template <T (CQXRandom<T>::*method)() noexcept>
void CQXRandom<T>::Fill(std::int32_t n, T* target) noexcept {
  for (std::int32_t i = 0; i < n; ++i) target[i] = (this->*method)();
}

template <qxReal T>
void CQXRandom<T>::GetArrayNumbers(std::int32_t n, T* target) noexcept {
  if (IsReady()) (this->*m_methods.fill)(n, target);
}

template <qxReal T>
std::int32_t CQXRandom<T>::GetIntegerNumber32(std::int32_t low, std::int32_t high) noexcept {
  if (high <= low) return low;
  const double unit = m_algorithm == 2 ? SWB() : GetXorshift32();
  return qxToInt32(RoundingShift(low - 0.5 + (Span(low, high) + 1) * unit));
}

template <qxReal T>
std::int64_t CQXRandom<T>::GetIntegerNumber64(std::int64_t low, std::int64_t high) noexcept {
  if (high <= low) return low;
  const double unit = m_algorithm == 2 ? SWB() : GetXorshift64();
  return AddRounded(low, Span(low, high) * unit);
}

template <qxReal T>
void CQXRandom<T>::GetArrayIntegerNumbers32(std::int32_t low, std::int32_t high, std::int32_t n,
                                            std::int32_t* target) noexcept {
  if (m_algorithm == 2) {
    FillIntegers(low, high, n, target, [this] { return SWB(); });
  } else {
    FillIntegers(low, high, n, target, [this] { return GetXorshift32(); });
  }
}

template <qxReal T>
void CQXRandom<T>::GetArrayIntegerNumbers64(std::int64_t low, std::int64_t high, std::int32_t n,
                                            std::int64_t* target) noexcept {
  if (m_algorithm == 2) {
    FillIntegers(low, high, n, target, [this] { return SWB(); });
  } else {
    FillIntegers(low, high, n, target, [this] { return GetXorshift64(); });
  }
}

template <qxReal T>
void CQXRandom<T>::SetXorshift32Seed(std::uint32_t seed) noexcept {
  const std::uint32_t x = static_cast<std::uint32_t>(seed * seedFactor * seedPrimes[seed % 13]);
  SetXorshift32Seeds(x, (x << 5) ^ defaultX32[0], (x << 7) ^ defaultX32[1], (x >> 15) ^ defaultX32[2]);
}

template <qxReal T>
void CQXRandom<T>::SetXorshift64Seed(std::uint64_t seed) noexcept {
  const std::uint64_t x = seed * seedFactor * seedPrimes[seed % 13];
  // The constant of the third word is that of the second: changing it would change every stream.
  SetXorshift64Seeds(x, (x << 13) ^ defaultX64[0], (x << 21) ^ defaultX64[0], (x << 9) ^ defaultX64[1]);
}

template <qxReal T>
void CQXRandom<T>::SetXorshift32Seeds(std::uint32_t w0, std::uint32_t w1, std::uint32_t w2, std::uint32_t w3) noexcept {
  m_x32[0] = w0;
  m_x32[1] = w1;
  m_x32[2] = w2;
  m_x32[3] = w3;
}

template <qxReal T>
void CQXRandom<T>::SetXorshift64Seeds(std::uint64_t s0, std::uint64_t s1, std::uint64_t s2, std::uint64_t s3) noexcept {
  m_x64[0] = s0;
  m_x64[1] = s1;
  m_x64[2] = s2;
  m_x64[3] = s3;
}

template <qxReal T>
void CQXRandom<T>::GetXorshift32Seeds(std::uint32_t& w0, std::uint32_t& w1, std::uint32_t& w2,
                                      std::uint32_t& w3) const noexcept {
  w0 = m_x32[0];
  w1 = m_x32[1];
  w2 = m_x32[2];
  w3 = m_x32[3];
}

template <qxReal T>
void CQXRandom<T>::GetXorshift64Seeds(std::uint64_t& s0, std::uint64_t& s1, std::uint64_t& s2,
                                      std::uint64_t& s3) const noexcept {
  s0 = m_x64[0];
  s1 = m_x64[1];
  s2 = m_x64[2];
  s3 = m_x64[3];
}

template <qxReal T>
void CQXRandom<T>::SetSWBSeeds(const T* lags) noexcept {
  std::copy_n(lags, lagsNb, m_lags);
}

template <qxReal T>
void CQXRandom<T>::GetSWBSeeds(T* lags) const noexcept {
  std::copy_n(m_lags, lagsNb, lags);
}

template <qxReal T>
void CQXRandom<T>::SetSWBState(std::int32_t index, T borrow) noexcept {
  m_lagIndex = index % lagsNb;
  m_borrow = borrow;
}

template <qxReal T>
void CQXRandom<T>::GetSWBState(std::int32_t& index, T& borrow) const noexcept {
  index = m_lagIndex;
  borrow = m_borrow;
}

/// Spreads one word over the 32-bit state; 0 would yield nothing but zeros and takes the default seeds.
template <qxReal T>
void CQXRandom<T>::SpreadXorshift32(std::uint32_t x) noexcept {
  if (x == 0) {
    std::copy_n(defaultX32, 4, m_x32);
    return;
  }
  const std::uint32_t w1 = x ^ (x << 5);
  const std::uint32_t w2 = (x >> 7) ^ (w1 << 13);
  SetXorshift32Seeds(x, w1, w2, (w1 << 11) ^ (w2 >> 3));
}

/// Spreads one word over the 64-bit state; 0 would yield nothing but zeros and takes the default seeds.
template <qxReal T>
void CQXRandom<T>::SpreadXorshift64(std::uint64_t x) noexcept {
  if (x == 0) {
    std::copy_n(defaultX64, 4, m_x64);
    return;
  }
  const std::uint64_t s1 = x ^ (x << 11);
  const std::uint64_t s2 = (x >> 13) ^ (s1 << 27);
  SetXorshift64Seeds(x, s1, s2, (s1 << 21) ^ (s2 >> 7));
}

template <qxReal T>
void CQXRandom<T>::SetRandomXorshiftSeeds(std::uint64_t seed) noexcept {
  if (m_algorithm == 2) return;
  const std::uint64_t x = seed - static_cast<std::uint64_t>(std::time(nullptr));
  if (m_algorithm == 1) {
    SpreadXorshift64(x + m_x64[3]);
  } else {
    SpreadXorshift32(static_cast<std::uint32_t>(x + m_x32[3]));
  }
}

template <qxReal T>
void CQXRandom<T>::SetRandomSWBSeeds(std::uint64_t seed) noexcept {
  SetRandomXorshiftSeeds(seed);
  FillSWBTable();
}

template <qxReal T>
void CQXRandom<T>::SetRandomSeeds(std::uint64_t seed) noexcept {
  if (m_algorithm == 2) {
    FillSWBTable();
  } else {
    SetRandomXorshiftSeeds(seed);
  }
}

template <qxReal T>
void CQXRandom<T>::FillSWBTable() noexcept {
  for (T& lag : m_lags) lag = GetXorshift32();
}

template <qxReal T>
void CQXRandom<T>::TestFloatRandomArray(std::int32_t n, const T* data, std::int32_t firstToPrint) const {
  const qxArrays::RandomLaw<T> law = {m_algorithm, m_distribution, m_lower, m_range, m_mean, m_sigma, m_rate};
  qxArrays::WriteRandomReport(law, n, data, firstToPrint);
}

template <qxReal T>
template <typename Integer>
void CQXRandom<T>::TestIntegers(Integer left, Integer right, std::int32_t n, const Integer* data,
                                std::int32_t firstToPrint) {
  const qxBlock<T> values = qxMakeBlock<T>(qxElementCount(n));
  if (values == nullptr) return;
  for (std::int32_t i = 0; i < n; ++i) values.get()[i] = static_cast<T>(data[i]);
  m_lower = static_cast<T>(left);
  m_range = static_cast<T>(right) - m_lower;
  qxArrays::WriteSegment(left, right);
  TestFloatRandomArray(n, values.get(), firstToPrint);
}

template <qxReal T>
void CQXRandom<T>::TestIntegerRandomArray(std::int32_t left, std::int32_t right, std::int32_t n,
                                          const std::int32_t* data, std::int32_t firstToPrint) {
  TestIntegers(left, right, n, data, firstToPrint);
}

template <qxReal T>
void CQXRandom<T>::TestIntegerRandomArray(std::int64_t left, std::int64_t right, std::int32_t n,
                                          const std::int64_t* data, std::int32_t firstToPrint) {
  TestIntegers(left, right, n, data, firstToPrint);
}

template class CQXRandom<float>;
template class CQXRandom<double>;
