#pragma once

#include <qx/foundation/api.h>
#include <qx/foundation/scalar.h>

#include <cstdint>

/// Random number generator: one of three core generators with one of three distributions.
///
/// Core generators, by the code of SetAlgorithm():
/// - 0, and any code other than 1 and 2: Xorshift of 128 bits in four 32-bit words (G. Marsaglia, Xorshift RNGs,
/// Journal
///   of Statistical Software 8, 2003);
/// - 1: the same scheme in four 64-bit words;
/// - 2: subtract with borrow (SWB) over a table of 32 numbers (G. Marsaglia, A. Zaman, A new class of random number
///   generators, The Annals of Applied Probability 1, 1991).
///
/// Distributions: uniform (0, the default, on [0, 1]), normal (1, by the ziggurat: G. Marsaglia, W. W. Tsang, The
/// ziggurat method for generating random variables, Journal of Statistical Software 5, 2000, in the form of J. A.
/// Doornik, An improved ziggurat method to generate normal random samples, 2005) and exponential (2, by inversion).
///
/// Initialize() must follow the last of SetAlgorithm(), SetUniform(), SetNormal() and SetExponential(): each of them
/// puts the object back into the uninitialised state, where GetNumber() gives 0. Seeds may be set before or after.
/// A new object has the same Xorshift streams in every run; its SWB table differs from run to run until it is set.
///
/// The float generator draws in float: its uniform numbers take 24 bits, reach both ends of the segment, and its SWB
/// never carries a borrow, because the unit of the borrow is 0 in float.
///
/// An object belongs to one thread; distinct objects share nothing. A copy continues the stream of its original.
template <qxReal T>
class QX_API CQXRandom {
 public:
  /// Uniform on [0, 1], algorithm 0, default seeds, not initialised. The SWB table is filled from the wall clock, the
  /// clock ticks and the object's address.
  CQXRandom() noexcept;

  /// Core generator: 0 Xorshift 32, 1 Xorshift 64, 2 SWB; any other code is kept and draws as 0 does.
  void SetAlgorithm(std::int32_t algorithm) noexcept;
  /// The code given to SetAlgorithm().
  [[nodiscard]] std::int32_t GetAlgorithm() const noexcept { return m_algorithm; }
  /// 0 uniform, 1 normal, 2 exponential.
  [[nodiscard]] std::int32_t GetDistribution() const noexcept { return m_distribution; }

  /// Uniform distribution from @p left to @p right; both ends can occur.
  void SetUniform(T left, T right) noexcept;
  /// Normal distribution; @p sigma is the standard deviation.
  void SetNormal(T mean, T sigma) noexcept;
  /// Exponential distribution of density rate exp(-rate x), mean 1 / rate.
  void SetExponential(T rate) noexcept;

  /// Makes the generator ready for the algorithm and the distribution in force. The streams are not touched.
  void Initialize() noexcept;

  /// Next number; 0 when not initialised.
  ///
  /// Exponential numbers end at -log(1e-9) / rate, float: -log(1e-7) / rate: smaller uniform numbers count as that.
  T GetNumber() noexcept { return IsReady() ? (this->*m_methods.number)() : T(0); }

  /// 1 when the next number is below 0.5, 0 otherwise; always 1 when not initialised. A fair coin with the uniform
  /// distribution on [0, 1].
  std::int32_t GetBoolean() noexcept { return GetNumber() < T(0.5); }

  /// Writes the next @p n numbers; nothing when not initialised or n <= 0.
  void GetArrayNumbers(std::int32_t n, T* target) noexcept;

  /// Whole number from @p low to @p high with equal weights; @p low when high <= low.
  ///
  /// The distribution and Initialize() play no part; the number comes from SWB when that is the algorithm, otherwise
  /// from Xorshift 32. The two extreme words of the generator step over the ends: a unit number of exactly 1 gives
  /// high + 1, one of exactly 0 gives low - 1 for a low end of 0 and below. In double that is one word in 2^32 each,
  /// in float the upper one is one word in 2^25: clamp where it matters. Beyond 32 bits the result is -2^31. The unit
  /// numbers of the float generator have 24 bits: of a span above 2^24 it skips numbers.
  std::int32_t GetIntegerNumber32(std::int32_t low, std::int32_t high) noexcept;

  /// Whole number from @p low to @p high; @p low when high <= low. The two ends have half the weight of the others.
  ///
  /// The distribution and Initialize() play no part; the number comes from SWB when that is the algorithm, otherwise
  /// from Xorshift 64. It goes through double: of a span above 2^53, in the float generator above 2^24, not every
  /// number occurs, and above 2^53 the rounding of the span may step over the upper end and wrap around beyond 64 bits.
  std::int64_t GetIntegerNumber64(std::int64_t low, std::int64_t high) noexcept;

  /// Writes @p n whole numbers between @p low and @p high, in either order; the two ends have half the weight of the
  /// others, unlike those of GetIntegerNumber32(). The generator is chosen as there.
  void GetArrayIntegerNumbers32(std::int32_t low, std::int32_t high, std::int32_t n, std::int32_t* target) noexcept;

  /// Writes @p n whole numbers between @p low and @p high, in either order, as GetIntegerNumber64() does.
  void GetArrayIntegerNumbers64(std::int64_t low, std::int64_t high, std::int32_t n, std::int64_t* target) noexcept;

  /// Fills the 32-bit state from one seed. A seed of 0 is a seed like any other.
  void SetXorshift32Seed(std::uint32_t seed) noexcept;
  /// Fills the 64-bit state from one seed. A seed of 0 is a seed like any other.
  void SetXorshift64Seed(std::uint64_t seed) noexcept;
  /// The last state word, which is the word drawn last.
  [[nodiscard]] std::uint32_t GetXorshift32Seed() const noexcept { return m_x32[3]; }
  /// The last state word, which is the word drawn last.
  [[nodiscard]] std::uint64_t GetXorshift64Seed() const noexcept { return m_x64[3]; }

  /// Sets the whole 32-bit state. Four zeros yield nothing but zeros.
  void SetXorshift32Seeds(std::uint32_t w0, std::uint32_t w1, std::uint32_t w2, std::uint32_t w3) noexcept;
  /// Sets the whole 64-bit state. Four zeros yield nothing but zeros.
  void SetXorshift64Seeds(std::uint64_t s0, std::uint64_t s1, std::uint64_t s2, std::uint64_t s3) noexcept;
  /// The whole state, in order.
  void GetXorshift32Seeds(std::uint32_t& w0, std::uint32_t& w1, std::uint32_t& w2, std::uint32_t& w3) const noexcept;
  /// The whole state, in order.
  void GetXorshift64Seeds(std::uint64_t& s0, std::uint64_t& s1, std::uint64_t& s2, std::uint64_t& s3) const noexcept;

  /// Copies 32 numbers, which should be in [0, 1], into the SWB table. Index and borrow stay. Normal numbers of a table
  /// without chance, such as 0 and 1 in turn, are what comes after 1000 draws that the method refuses.
  void SetSWBSeeds(const T* lags) noexcept;
  /// Copies the 32 numbers of the SWB table.
  void GetSWBSeeds(T* lags) const noexcept;
  /// Sets the place in the SWB table, stored as the remainder of @p index by 32 with the sign of @p index, and the
  /// borrow. Every stored index is used modulo 32.
  void SetSWBState(std::int32_t index, T borrow) noexcept;
  /// The stored place in the SWB table, -31 to 31, and the borrow.
  void GetSWBState(std::int32_t& index, T& borrow) const noexcept;

  /// Seeds what the algorithm in force draws from by the wall clock in whole seconds: the Xorshift state of its width,
  /// or for SWB the table, from Xorshift 32 as it stands.
  ///
  /// The table of SWB does not depend on the clock then: to have it do so, seed under algorithm 0 with
  /// SetRandomSWBSeeds() and choose SWB afterwards. Seeding twice in a second from one state gives one stream.
  /// @param seed a number of 32 or 64 bits that is added to the clock; Xorshift 32 uses its low 32 bits, SWB ignores it
  void SetRandomSeeds(std::uint64_t seed = 0) noexcept;
  /// Seeds the Xorshift state of the algorithm in force by the wall clock; for SWB nothing happens.
  void SetRandomXorshiftSeeds(std::uint64_t seed = 0) noexcept;
  /// SetRandomXorshiftSeeds(), and then fills the SWB table from Xorshift 32. Index and borrow stay.
  void SetRandomSWBSeeds(std::uint64_t seed = 0) noexcept;

  /// Writes a report about @p n numbers to the standard output: mean and standard deviation beside those of the
  /// distribution in force. For the uniform distribution each number outside the segment is named. Nothing is judged.
  /// @param n number of elements; 1 and 0 show what a division by zero gives
  /// @param data the numbers
  /// @param firstToPrint how many of the first numbers are printed, at most @p n; 0 for none
  void TestFloatRandomArray(std::int32_t n, const T* data, std::int32_t firstToPrint) const;

  /// The same for whole numbers. The uniform segment of this object becomes @p left to @p right and stays so; the
  /// distribution is not touched: call it with the uniform one. Nothing is printed, and the segment stays, where work
  /// memory is refused without an exception.
  void TestIntegerRandomArray(std::int32_t left, std::int32_t right, std::int32_t n, const std::int32_t* data,
                              std::int32_t firstToPrint);
  void TestIntegerRandomArray(std::int64_t left, std::int64_t right, std::int32_t n, const std::int64_t* data,
                              std::int32_t firstToPrint);

 private:
  /// How one number is drawn, and how an array of them; null for an unknown distribution.
  struct Methods {
    T (CQXRandom::*number)() noexcept = nullptr;
    void (CQXRandom::*fill)(std::int32_t, T*) noexcept = nullptr;
  };

  static constexpr T borrowUnit = T(0x1p-153);  ///< 0 in float
  static constexpr std::int32_t layersNb = 128;
  static constexpr std::int32_t lagsNb = 32;

  [[nodiscard]] bool IsReady() const noexcept { return m_initialised != 0 && m_methods.number != nullptr; }

  std::uint32_t Xorshift32() noexcept;
  std::uint64_t Xorshift64() noexcept;
  T GetXorshift32() noexcept;
  T GetXorshift64() noexcept;
  T SWB() noexcept;

  T GetUniformXorshift32() noexcept;
  T GetUniformXorshift64() noexcept;
  T GetUniformSWB() noexcept;
  T GetNormalXorshift32() noexcept;
  T GetNormalXorshift64() noexcept;
  T GetNormalSWB() noexcept;
  T GetExponentialXorshift32() noexcept;
  T GetExponentialXorshift64() noexcept;
  T GetExponentialSWB() noexcept;

  template <typename Unit>
  T GetNormalTail(Unit unit) noexcept;
  template <typename Unit, typename Word>
  T GetNormal(Unit unit, Word word) noexcept;
  T GetExponential(T unit) const noexcept;

  template <T (CQXRandom::*method)() noexcept>
  void Fill(std::int32_t n, T* target) noexcept;
  [[nodiscard]] Methods GetChooseNumberMethod() const noexcept;
  void CreateZigguratTables() noexcept;

  void SpreadXorshift32(std::uint32_t x) noexcept;
  void SpreadXorshift64(std::uint64_t x) noexcept;
  void FillSWBTable() noexcept;
  void SetDefaultSeeds() noexcept;

  template <typename Integer>
  void TestIntegers(Integer left, Integer right, std::int32_t n, const Integer* data, std::int32_t firstToPrint);

  Methods m_methods;
  std::int32_t m_algorithm = 0;
  std::int32_t m_distribution = 0;
  std::int32_t m_initialised = 0;
  T m_lower = 0;
  T m_range = 1;
  std::uint32_t m_x32[4] = {};
  std::uint64_t m_x64[4] = {};
  T m_lags[lagsNb] = {};
  T m_borrow = 0;
  T m_borrowUnit = borrowUnit;
  std::int32_t m_lagIndex = 0;
  T m_mean = 0;
  T m_sigma = 1;
  T m_zigX[layersNb + 1] = {};  ///< right edges of the layers, from the base up
  T m_zigR[layersNb] = {};      ///< m_zigX[i + 1] / m_zigX[i]
  T m_rate = 1;
};

extern template class QX_API CQXRandom<float>;
extern template class QX_API CQXRandom<double>;
